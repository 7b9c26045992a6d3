#pragma once

#include <utility>

#include "bridge/bridgeState.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"

class KVN_userProperties;

/// Owns a local reference and deletes it: a load makes about ten for each node, and the JVM would
/// keep all of them until the native method returns.
template <typename T>
class LocalRef {
 public:
  LocalRef() = default;
  LocalRef(JNIEnv* ofEnv, T made) : env(ofEnv), ref(made) {}
  LocalRef(LocalRef&& other) noexcept : env(other.env), ref(std::exchange(other.ref, nullptr)) {}
  LocalRef& operator=(LocalRef&& other) noexcept {
    std::swap(env, other.env);
    std::swap(ref, other.ref);
    return *this;
  }
  ~LocalRef() {
    if (ref != nullptr) env->DeleteLocalRef(ref);
  }

  T Get() const { return ref; }

 private:
  JNIEnv* env = nullptr;
  T ref = nullptr;
};

// --- To the host. Each makes a new Java object in `out`. False when the JVM couldn't: its error is
// pending then, and the caller returns at once.

/// A null text gives a null reference.
bool TextToHost(const BridgeState& state, const char* text, LocalRef<jstring>& out);
/// A String[] of the used items, unset ones null. A null list gives an empty array.
bool TextsToHost(const BridgeState& state, const KVN_stringArray* list,
                 LocalRef<jobjectArray>& out);
bool IntsToHost(const BridgeState& state, const int* items, int count, LocalRef<jintArray>& out);
/// The used items; a null list gives an empty array.
bool DoublesToHost(const BridgeState& state, const KVN_doubleArray* list,
                   LocalRef<jdoubleArray>& out);
/// Two String[] of equal length; a null list gives empty arrays.
bool PropertiesToHost(const BridgeState& state, const KVN_userProperties* properties,
                      LocalRef<jobjectArray>& keys, LocalRef<jobjectArray>& values);

// --- From the host. A null reference counts as an empty array, or as a null text.

int LengthFromHost(JNIEnv* env, jarray array);
/// Element as a reference of its real type, which the caller knows from the method's contract. Null
/// for a null array or an index outside.
template <typename T>
LocalRef<T> ElementFromHost(JNIEnv* env, jobjectArray array, int index) {
  if (index < 0 || index >= LengthFromHost(env, array)) return LocalRef<T>();
  return LocalRef<T>(env, static_cast<T>(env->GetObjectArrayElement(array, index)));
}
/// The characters of a String, never released (intended): like the networks they belong to, they
/// stay until the process ends.
const char* CharactersFromHost(JNIEnv* env, jstring text);
/// Replace the contents of `list`. False when the JVM or the engine had no memory.
bool TextsFromHost(JNIEnv* env, jobjectArray array, KVN_stringArray& list);
bool IntsFromHost(JNIEnv* env, jintArray array, KVN_intArray& list);
bool DoublesFromHost(JNIEnv* env, jdoubleArray array, KVN_doubleArray& list);
