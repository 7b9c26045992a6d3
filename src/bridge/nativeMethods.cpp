#include "bridge/nativeMethods.h"

#include <cstdio>

#include "bridge/bridgeState.h"
#include "bridge/hostInterface.h"
#include "bridge/load.h"
#include "bridge/update.h"
#include "network/network.h"

namespace {

/// The last resort against what the standard library throws: an exception that crossed into the JVM
/// would end the host's process.
template <typename Result, typename Body>
Result Guarded(Result failure, Body body) noexcept {
  try {
    return body();
  } catch (...) {
    return failure;
  }
}

jboolean Supports(BridgeState& state, jint code) {
  InitializeOnFirstUse(state);
  return code == kFeatureXml ? state.supportsFlag : JNI_TRUE;
}

jint Load(BridgeState& state, JNIEnv* env, jobject receiver, jstring fileName, jint format) {
  return Guarded(kLoadFailed, [&] { return LoadNetwork(state, env, receiver, fileName, format); });
}

jboolean Update(BridgeState& state, JNIEnv* env, jobject receiver,
                const UpdateArguments& arguments) {
  const bool done = Guarded(false, [&] { return UpdateFile(state, env, receiver, arguments); });
  return done ? JNI_TRUE : JNI_FALSE;
}

jint PrintNodeCount(const BridgeState& state) {
  char line[64];
  std::snprintf(line, sizeof line, "theNet->GetNumberOfNodes() == %d",
                state.theNet != nullptr ? state.theNet->GetNumberOfNodes() : 0);
  WriteHostLine(line);
  return 0;
}

}  // namespace

jboolean Java_org_qorl_belief_io_kvn_ORMELReader_librarySupports(JNIEnv* /*env*/,
                                                                 jobject /*receiver*/, jint code) {
  return Supports(thePlainBridge, code);
}

jboolean Java_org_qorl_belief_io_kvn_ORMELReader_librarySupportsW(JNIEnv* /*env*/,
                                                                  jobject /*receiver*/, jint code) {
  return Supports(theWideBridge, code);
}

jint Java_org_qorl_belief_io_kvn_ORMELReader_loadKVN(JNIEnv* env, jobject receiver,
                                                     jstring fileName, jint fileFormat) {
  return Load(thePlainBridge, env, receiver, fileName, fileFormat);
}

jint Java_org_qorl_belief_io_kvn_ORMELReader_loadKVNW(JNIEnv* env, jobject receiver,
                                                      jstring fileName, jint fileFormat) {
  return Load(theWideBridge, env, receiver, fileName, fileFormat);
}

jboolean Java_org_qorl_belief_io_kvn_ORMELReader_updateKVN(
    JNIEnv* env, jobject receiver, jstring inputFile, jint inputFormat, jstring outputFile,
    jint outputFormat, jobjectArray nodeIds, jobjectArray probabilities, jobjectArray networkKeys,
    jobjectArray networkValues, jobjectArray nodeKeys, jobjectArray nodeValues,
    jobjectArray diagnosisTypes) {
  return Update(thePlainBridge, env, receiver,
                {inputFile, inputFormat, outputFile, outputFormat, nodeIds, probabilities,
                 networkKeys, networkValues, nodeKeys, nodeValues, diagnosisTypes});
}

jboolean Java_org_qorl_belief_io_kvn_ORMELReader_updateKVNW(
    JNIEnv* env, jobject receiver, jstring inputFile, jint inputFormat, jstring outputFile,
    jint outputFormat, jobjectArray nodeIds, jobjectArray probabilities, jobjectArray networkKeys,
    jobjectArray networkValues, jobjectArray nodeKeys, jobjectArray nodeValues,
    jobjectArray diagnosisTypes) {
  return Update(theWideBridge, env, receiver,
                {inputFile, inputFormat, outputFile, outputFormat, nodeIds, probabilities,
                 networkKeys, networkValues, nodeKeys, nodeValues, diagnosisTypes});
}

jint Java_org_qorl_belief_io_kvn_ORMELReader_testJNI(JNIEnv* /*env*/, jobject /*receiver*/) {
  return PrintNodeCount(thePlainBridge);
}

jint Java_org_qorl_belief_io_kvn_ORMELReader_testJNIW(JNIEnv* /*env*/, jobject /*receiver*/) {
  return PrintNodeCount(theWideBridge);
}

jint JNI_OnLoad(JavaVM* /*vm*/, void* /*reserved*/) { return JNI_VERSION_1_4; }

__attribute__((alias("JNI_OnLoad"))) jint JNI_OnLoadW(JavaVM* vm, void* reserved);
