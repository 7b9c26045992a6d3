#include "bridge/hostInterface.h"

#include "bridge/hostText.h"

namespace {

struct HostMethod {
  jmethodID BridgeState::*field;
  const char* name;
  const char* signature;
};

// In the order of the look-ups.
constexpr HostMethod kHostMethods[] = {
    {&BridgeState::midLoadNode, "loadNode",
     "(Ljava/lang/String;Ljava/lang/String;[Ljava/lang/Object;[I[Ljava/lang/String;[D[I"
     "[Ljava/lang/String;[Ljava/lang/String;)V"},
    {&BridgeState::midLoadChildOfRootSubmodels, "loadChildOfRootSubmodels",
     "([I[Ljava/lang/String;[I[I)V"},
    {&BridgeState::midLoadSubmodel, "loadSubmodel", "(ILjava/lang/String;II[I)V"},
    {&BridgeState::midDebugLoadNode, "debugLoadNode", "(Ljava/lang/String;)V"},
    {&BridgeState::midPutNetworkParameterObject, "putNetworkParameter",
     "(Ljava/lang/Object;Ljava/lang/Object;)V"},
    {&BridgeState::midPutNetworkParameterInt, "putNetworkParameter", "(Ljava/lang/Object;I)V"},
};

/// Passes a reference or method id on. A look-up that failed left an error pending, and no other
/// JNI call is allowed until that is cleared; the host gets our own exception in its place.
template <typename Found>
Found Cleared(JNIEnv* env, Found found) {
  if (found == nullptr) env->ExceptionClear();
  return found;
}

}  // namespace

bool ResolveHostInterface(BridgeState& state) {
  JNIEnv* env = state.env;
  state.stringClass = Cleared(env, env->FindClass("java/lang/String"));
  state.exceptionClass = Cleared(env, env->FindClass("java/lang/Exception"));
  state.receiverClass = Cleared(env, env->GetObjectClass(state.receiver));
  bool complete = state.stringClass != nullptr && state.receiverClass != nullptr;
  for (const HostMethod& method : kHostMethods) {
    jmethodID& id = state.*method.field;
    id = nullptr;
    if (state.receiverClass != nullptr) {
      id = Cleared(env, env->GetMethodID(state.receiverClass, method.name, method.signature));
    }
    complete = complete && id != nullptr;
  }
  state.emptyString = Cleared(env, env->NewStringUTF(""));
  complete = complete && state.emptyString != nullptr;
  InitializeOnFirstUse(state);
  if (!complete) {
    ThrowToHost(state, "C++ failed to find expected interface to class ORMELReader.");
  }
  return complete;
}

void ThrowToHost(const BridgeState& state, const char* text) {
  if (state.exceptionClass == nullptr) return;
  const HostText message(text);
  // A result other than 0 means that another exception is pending instead: just as good.
  (void)state.env->ThrowNew(state.exceptionClass, message.Get());
}

void InitializeOnFirstUse(BridgeState& state) {
  if (state.supportsFlag == 0) state.supportsFlag = 1;
}
