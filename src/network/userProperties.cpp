#include "network/userProperties.h"

#include <algorithm>
#include <memory>

#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/ownedText.h"

KVN_userProperties::KVN_userProperties() = default;

int KVN_userProperties::FindProperty(const char* key) const { return keys.FindPosition(key); }

int KVN_userProperties::GetInteger(const char* key) const {
  int number = 0;
  (void)TextToInt(GetValue(FindProperty(key)), number);  // no text is 0
  return number;
}

int KVN_userProperties::AddProperty(const char* key, const char* value) {
  return InsertProperty(GetCount(), key, value);
}

int KVN_userProperties::InsertProperty(int position, const char* key, const char* value) {
  if (position < 0 || position > GetCount()) return KVN_REFUSED;
  const int oldPosition = FindProperty(key);
  if (oldPosition == position) return values.SetString(position, value);
  if (oldPosition < 0) return InsertPair(position, key, value);

  // The texts may be the ones of the pair that goes.
  const std::unique_ptr<char[]> ownKey(CopyOfText(key));
  const std::unique_ptr<char[]> ownValue(CopyOfText(value));
  if (ownKey == nullptr || (ownValue == nullptr && value != nullptr)) return KVN_NO_MEMORY;
  if (int result = DeleteProperty(oldPosition); result < 0) return result;
  // Down by one also when the old pair stood behind the position: files and hosts rely on where a
  // repeated key ends up.
  return InsertPair(std::max(position - 1, 0), ownKey.get(), ownValue.get());
}

int KVN_userProperties::InsertPair(int position, const char* key, const char* value) {
  if (int result = keys.Insert(position, key); result < 0) return result;
  const int result = values.Insert(position, value);
  if (result < 0) (void)keys.Delete(position);  // it was inserted just now
  return result;
}

int KVN_userProperties::SetPropertyValue(int position, const char* value) {
  if (position < 0 || position >= GetCount()) return KVN_REFUSED;
  return values.SetString(position, value);
}

int KVN_userProperties::DeleteProperty(int position) {
  if (position < 0 || position >= GetCount()) return KVN_REFUSED;
  if (int result = keys.Delete(position); result < 0) return result;
  return values.Delete(position);
}

int KVN_userProperties::Assign(const KVN_userProperties& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  KVN_stringArray newKeys;
  KVN_stringArray newValues;
  if (int result = newKeys.Assign(source.keys); result < 0) return result;
  if (int result = newValues.Assign(source.values); result < 0) return result;
  keys.Swap(newKeys);
  values.Swap(newValues);
  return CheckReadiness(/*deep=*/0);
}

void KVN_userProperties::CleanUp(int deep) {
  keys.CleanUp(deep);
  values.CleanUp(deep);
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_userProperties::CheckReadiness(int deep) {
  if (deep != 0) {
    (void)keys.CheckReadiness(deep);
    (void)values.CheckReadiness(deep);
  }
  SetReady(keys.IsReady() && values.IsReady());
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_userProperties::CheckConsistency(int deep) {
  if (deep != 0) (void)keys.CheckConsistency(deep);
  SetConsistent(keys.IsConsistent() && keys.GetNumItems() == values.GetNumItems());
  return IsConsistent() ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}
