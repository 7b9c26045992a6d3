#include "bridge/propertyEdits.h"

#include <string>

#include "bridge/hostValues.h"
#include "network/userProperties.h"

namespace {

constexpr const char* kListKey = "user_properties";
constexpr int kMostListedKeys = 99;

void DeleteKey(KVN_userProperties& properties, const char* key) {
  const int position = properties.FindProperty(key);
  if (position >= 0) (void)properties.DeleteProperty(position);  // it was found just now
}

}  // namespace

void RemoveListedProperties(KVN_userProperties& properties) {
  const int position = properties.FindProperty(kListKey);
  if (position < 0) return;
  // A copy: the deletions below move, and at last free, the text itself.
  const char* value = properties.GetValue(position);
  const std::string list(value != nullptr ? value : "");
  std::size_t start = 0;
  for (int count = 0; count < kMostListedKeys; count++) {
    start = list.find_first_not_of(',', start);
    if (start == std::string::npos) break;
    const std::size_t end = list.find(',', start);
    const std::string key = list.substr(start, end - start);
    DeleteKey(properties, key.c_str());
    if (end == std::string::npos) break;
    start = end;
  }
  DeleteKey(properties, kListKey);
  (void)properties.CheckReadiness(/*deep=*/1);
  (void)properties.CheckConsistency(/*deep=*/1);
}

bool MergeProperties(JNIEnv* env, KVN_userProperties& properties, jobjectArray keys,
                     jobjectArray values, bool replace) {
  if (keys == nullptr || values == nullptr) return true;
  const int count = LengthFromHost(env, keys);
  if (count < 1 || count != LengthFromHost(env, values)) return true;
  for (int i = 0; i < count; i++) {
    const LocalRef<jstring> keyText = ElementFromHost<jstring>(env, keys, i);
    const LocalRef<jstring> valueText = ElementFromHost<jstring>(env, values, i);
    if (keyText.Get() == nullptr) continue;
    const char* key = CharactersFromHost(env, keyText.Get());
    if (key == nullptr) return false;
    const char* value = CharactersFromHost(env, valueText.Get());
    if (value == nullptr && valueText.Get() != nullptr) return false;
    if (replace) DeleteKey(properties, key);
    // A key that is no identifier is the host's business: the other edits still count.
    (void)properties.AddProperty(key, value);
  }
  return true;
}
