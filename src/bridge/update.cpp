#include "bridge/update.h"

#include <cstdio>

#include "bridge/diagnosisType.h"
#include "bridge/hostInterface.h"
#include "bridge/hostValues.h"
#include "bridge/load.h"
#include "bridge/propertyEdits.h"
#include "definitions/nodeDefinition.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"

namespace {

constexpr int kMessageSize = 255;

bool HaveEqualLengths(JNIEnv* env, const UpdateArguments& arguments) {
  return LengthFromHost(env, arguments.nodeIds) == LengthFromHost(env, arguments.probabilities);
}

void ThrowUnknownNode(const BridgeState& state, const char* id, const char* fileName) {
  char message[kMessageSize];
  std::snprintf(message, sizeof message,
                "C++ error: Attempt to update node '%s' that does not exist in network '%s'",
                id != nullptr ? id : "(null)", fileName);
  ThrowToHost(state, message);
}

/// A String[] of an Object[].
LocalRef<jobjectArray> TextsAt(JNIEnv* env, jobjectArray array, int index) {
  return ElementFromHost<jobjectArray>(env, array, index);
}

bool UpdateNode(const BridgeState& state, KVN_node& node, const UpdateArguments& arguments, int i) {
  JNIEnv* env = state.env;
  const auto numbersRef = ElementFromHost<jdoubleArray>(env, arguments.probabilities, i);
  const auto typesRef = ElementFromHost<jintArray>(env, arguments.diagnosisTypes, i);
  KVN_doubleArray numbers;
  KVN_intArray types;
  if (!DoublesFromHost(env, numbersRef.Get(), numbers)) return false;
  if (!IntsFromHost(env, typesRef.Get(), types)) return false;

  int diagnosisType = -1;
  if (types.GetNumItems() > 0) {
    diagnosisType = CheckedDiagnosisType(types[0], "diagnosis type");
  }
  if (numbersRef.Get() != nullptr && node.Definition() != nullptr) {
    // It is meant that neither the count nor the result is looked at: as many numbers as fit are
    // taken, and a definition without numbers is left alone.
    (void)node.Definition()->SetDefinition(numbers);
  }
  if (node.UserProperties() != nullptr) {
    const auto keys = TextsAt(env, arguments.nodeKeys, i);
    const auto values = TextsAt(env, arguments.nodeValues, i);
    if (!MergeProperties(env, *node.UserProperties(), keys.Get(), values.Get(), /*replace=*/true)) {
      return false;
    }
  }
  if (diagnosisType >= 0 && node.ExtraDefinition() != nullptr) {
    node.ExtraDefinition()->SetDiagnosisType(diagnosisType);
  }
  return true;
}

bool UpdateNodes(const BridgeState& state, const UpdateArguments& arguments,
                 const char* inputFile) {
  KVN_stringArray ids;
  if (!TextsFromHost(state.env, arguments.nodeIds, ids)) return false;
  for (int i = 0; i < ids.GetNumItems(); i++) {
    KVN_node* node = state.theNet->GetNode(state.theNet->FindNode(ids[i]));
    if (node == nullptr) {
      ThrowUnknownNode(state, ids[i], inputFile);
      return false;
    }
    if (!UpdateNode(state, *node, arguments, i)) return false;
  }
  return true;
}

bool UpdateNetworkProperties(const BridgeState& state, const UpdateArguments& arguments) {
  KVN_userProperties& properties = state.theNet->UserProperties();
  RemoveListedProperties(properties);
  return MergeProperties(state.env, properties, arguments.networkKeys, arguments.networkValues,
                         /*replace=*/false);
}

bool WriteOutput(const BridgeState& state, const char* fileName, int format) {
  if (state.theNet == nullptr) return false;
  if (fileName != nullptr && state.theNet->WriteFile(fileName, format, 0) == 0) return true;
  ThrowToHost(state, "C++ error: Failed to write file.");
  return false;
}

}  // namespace

bool UpdateFile(BridgeState& state, JNIEnv* env, jobject receiver,
                const UpdateArguments& arguments) {
  state.env = env;
  // Before anything else is looked up, so that wrong lengths are reported as such to every host.
  if (!HaveEqualLengths(env, arguments)) {
    state.exceptionClass = env->FindClass("java/lang/Exception");
    ThrowToHost(state, "C++ array of node IDs and array of probabilities are of unequal length.");
    return false;
  }
  state.receiver = receiver;
  if (!ResolveHostInterface(state)) return false;
  const char* inputFile = CharactersFromHost(env, arguments.inputFile);
  if (inputFile == nullptr && arguments.inputFile != nullptr) return false;
  const char* outputFile = CharactersFromHost(env, arguments.outputFile);
  if (outputFile == nullptr && arguments.outputFile != nullptr) return false;
  return ReadIntoNewNetwork(state, inputFile, arguments.inputFormat) &&
         UpdateNetworkProperties(state, arguments) && UpdateNodes(state, arguments, inputFile) &&
         WriteOutput(state, outputFile, arguments.outputFormat);
}
