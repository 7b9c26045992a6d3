#include "bridge/hostValues.h"

#include <algorithm>

#include "bridge/hostText.h"
#include "network/userProperties.h"

namespace {

/// A String[] whose item i is textAt(i).
template <typename TextAt>
bool MakeTexts(const BridgeState& state, int count, TextAt textAt, LocalRef<jobjectArray>& out) {
  JNIEnv* env = state.env;
  out = LocalRef(env, env->NewObjectArray(count, state.stringClass, state.emptyString));
  if (out.Get() == nullptr) return false;
  for (int i = 0; i < count; i++) {
    LocalRef<jstring> item;
    if (!TextToHost(state, textAt(i), item)) return false;
    env->SetObjectArrayElement(out.Get(), i, item.Get());
    if (env->ExceptionCheck() != JNI_FALSE) return false;
  }
  return true;
}

}  // namespace

bool TextToHost(const BridgeState& state, const char* text, LocalRef<jstring>& out) {
  if (text == nullptr) {
    out = LocalRef<jstring>();
    return true;
  }
  const HostText lent(text);
  out = LocalRef(state.env, state.env->NewStringUTF(lent.Get()));
  return out.Get() != nullptr;
}

bool TextsToHost(const BridgeState& state, const KVN_stringArray* list,
                 LocalRef<jobjectArray>& out) {
  const int count = list != nullptr ? list->GetNumItems() : 0;
  return MakeTexts(
      state, count, [list](int i) { return (*list)[i]; }, out);
}

bool IntsToHost(const BridgeState& state, const int* items, int count, LocalRef<jintArray>& out) {
  JNIEnv* env = state.env;
  out = LocalRef(env, env->NewIntArray(count));
  if (out.Get() == nullptr) WriteHostError("We're in trouble.");
  // It is meant that the copy is attempted all the same: a host that has no memory for a few ints
  // is past saving, and must not go on with half a node.
  env->SetIntArrayRegion(out.Get(), 0, count, items);
  return out.Get() != nullptr && env->ExceptionCheck() == JNI_FALSE;
}

bool DoublesToHost(const BridgeState& state, const KVN_doubleArray* list,
                   LocalRef<jdoubleArray>& out) {
  JNIEnv* env = state.env;
  const int count = list != nullptr ? list->GetNumItems() : 0;
  out = LocalRef(env, env->NewDoubleArray(count));
  if (out.Get() == nullptr) return false;
  if (count > 0) env->SetDoubleArrayRegion(out.Get(), 0, count, list->GetItems());
  return env->ExceptionCheck() == JNI_FALSE;
}

bool PropertiesToHost(const BridgeState& state, const KVN_userProperties* properties,
                      LocalRef<jobjectArray>& keys, LocalRef<jobjectArray>& values) {
  const int count = properties != nullptr ? properties->GetCount() : 0;
  const auto keyAt = [properties](int i) { return properties->GetKey(i); };
  const auto valueAt = [properties](int i) { return properties->GetValue(i); };
  return MakeTexts(state, count, keyAt, keys) && MakeTexts(state, count, valueAt, values);
}

int LengthFromHost(JNIEnv* env, jarray array) {
  return array != nullptr ? env->GetArrayLength(array) : 0;
}

const char* CharactersFromHost(JNIEnv* env, jstring text) {
  return text != nullptr ? env->GetStringUTFChars(text, nullptr) : nullptr;
}

bool TextsFromHost(JNIEnv* env, jobjectArray array, KVN_stringArray& list) {
  const int count = LengthFromHost(env, array);
  if (list.SetSize(count) < 0) return false;
  for (int i = 0; i < count; i++) {
    const LocalRef<jstring> item = ElementFromHost<jstring>(env, array, i);
    if (item.Get() == nullptr) continue;  // stays a null text
    const char* characters = env->GetStringUTFChars(item.Get(), nullptr);
    if (characters == nullptr) return false;
    const int result = list.SetString(i, characters);
    env->ReleaseStringUTFChars(item.Get(), characters);
    if (result < 0) return false;
  }
  list.UseAsList(-1);
  return true;
}

// The elements are only read, so JNI_ABORT spares the JVM the way back.

bool IntsFromHost(JNIEnv* env, jintArray array, KVN_intArray& list) {
  const int count = LengthFromHost(env, array);
  if (list.SetSize(count) < 0) return false;
  list.UseAsList(-1);
  if (count == 0) return true;
  jint* elements = env->GetIntArrayElements(array, nullptr);
  if (elements == nullptr) return false;
  std::copy_n(elements, count, list.GetItems());
  env->ReleaseIntArrayElements(array, elements, JNI_ABORT);
  return true;
}

bool DoublesFromHost(JNIEnv* env, jdoubleArray array, KVN_doubleArray& list) {
  const int count = LengthFromHost(env, array);
  if (list.SetSize(count) < 0) return false;
  list.UseAsList(-1);
  if (count == 0) return true;
  jdouble* elements = env->GetDoubleArrayElements(array, nullptr);
  if (elements == nullptr) return false;
  std::copy_n(elements, count, list.GetItems());
  env->ReleaseDoubleArrayElements(array, elements, JNI_ABORT);
  return true;
}
