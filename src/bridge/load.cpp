#include "bridge/load.h"

#include <string>

#include "bridge/hostInterface.h"
#include "bridge/hostValues.h"
#include "bridge/keptNetworks.h"
#include "bridge/replay.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/submodelHandler.h"

static_assert(kLoadSucceeded == KVN_ROOT_SUBMODEL);

bool ReadIntoNewNetwork(BridgeState& state, const char* fileName, int format) {
  state.theNet = MakeKeptNetwork();
  state.theSubmodels = nullptr;
  if (state.theNet == nullptr || fileName == nullptr) return false;
  const int result = state.theNet->ReadFile(fileName, format < 0 ? 0 : format, 0);
  if (result == KVN_SYNTAX_ERROR) {
    ThrowToHost(state, (std::string("KVN_SYNTAX_ERROR; ") + GetLastErrorMessage()).c_str());
  }
  return result == KVN_SUCCESS;
}

jint LoadNetwork(BridgeState& state, JNIEnv* env, jobject receiver, jstring fileName, jint format) {
  state.env = env;
  state.receiver = receiver;
  if (!ResolveHostInterface(state)) return kLoadFailed;
  if (!ReadIntoNewNetwork(state, CharactersFromHost(env, fileName), format)) return kLoadFailed;
  if (!ReplayNetworkParameters(state)) return kLoadFailed;
  state.theSubmodels = &state.theNet->Submodels();
  if (ReplaySubmodels(state, KVN_ROOT_SUBMODEL) < 0) return kLoadFailed;
  return ReplayNodes(state) ? kLoadSucceeded : kLoadFailed;
}
