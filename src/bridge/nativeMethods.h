#pragma once

#include <jni.h>

/// The native methods of the host's class org.qorl.belief.io.kvn.ORMELReader, twice each. Those
/// whose names end in W do the same on a state of their own (see bridgeState.h).
///
/// Nothing that the standard library throws leaves them: the answer is then that of a failure.

extern "C" {

/// The format code of which librarySupports has something to say.
constexpr jint kFeatureXml = 8;

/// Always true (intended): for kFeatureXml because the first use of the bridge turns it on, for
/// every other code without a look.
JNIEXPORT jboolean JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_librarySupports(JNIEnv* env,
                                                                                   jobject receiver,
                                                                                   jint code);
JNIEXPORT jboolean JNICALL
Java_org_qorl_belief_io_kvn_ORMELReader_librarySupportsW(JNIEnv* env, jobject receiver, jint code);

/// 16384 or -1; see LoadNetwork.
JNIEXPORT jint JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_loadKVN(JNIEnv* env,
                                                                       jobject receiver,
                                                                       jstring fileName,
                                                                       jint fileFormat);
JNIEXPORT jint JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_loadKVNW(JNIEnv* env,
                                                                        jobject receiver,
                                                                        jstring fileName,
                                                                        jint fileFormat);

/// See UpdateFile.
JNIEXPORT jboolean JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_updateKVN(
    JNIEnv* env, jobject receiver, jstring inputFile, jint inputFormat, jstring outputFile,
    jint outputFormat, jobjectArray nodeIds, jobjectArray probabilities, jobjectArray networkKeys,
    jobjectArray networkValues, jobjectArray nodeKeys, jobjectArray nodeValues,
    jobjectArray diagnosisTypes);
JNIEXPORT jboolean JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_updateKVNW(
    JNIEnv* env, jobject receiver, jstring inputFile, jint inputFormat, jstring outputFile,
    jint outputFormat, jobjectArray nodeIds, jobjectArray probabilities, jobjectArray networkKeys,
    jobjectArray networkValues, jobjectArray nodeKeys, jobjectArray nodeValues,
    jobjectArray diagnosisTypes);

/// Prints the number of nodes of the last network read, 0 before the first. Always 0.
JNIEXPORT jint JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_testJNI(JNIEnv* env,
                                                                       jobject receiver);
JNIEXPORT jint JNICALL Java_org_qorl_belief_io_kvn_ORMELReader_testJNIW(JNIEnv* env,
                                                                        jobject receiver);

/// JNI_VERSION_1_4, and nothing else happens. JNI_OnLoadW is a second name of the same function.
JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void* reserved);
JNIEXPORT jint JNICALL JNI_OnLoadW(JavaVM* vm, void* reserved);

}  // extern "C"
