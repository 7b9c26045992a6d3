#pragma once

#include <jni.h>

class KVN_network;
class KVN_submodelHandler;

/// All that the bridge remembers between and during calls. There are two, one for the plain native
/// methods and one for those whose names end in W: what one set loads the other doesn't see.
///
/// Lives as long as the library. Unguarded: the host makes one call at a time, and a callback must
/// not call back into the same set.
///
/// References are the local ones of the call that looked them up: they are dead once it has
/// returned, so every entry looks all of them up again.
struct BridgeState {
  JNIEnv* env = nullptr;       // of the current loadKVN or updateKVN
  jobject receiver = nullptr;  // the ORMELReader whose method was called

  KVN_network* theNet = nullptr;                // not owned: see keptNetworks.h; null before a load
  KVN_submodelHandler* theSubmodels = nullptr;  // not owned: part of theNet

  jclass stringClass = nullptr;
  jclass exceptionClass = nullptr;
  jclass receiverClass = nullptr;
  jmethodID midLoadNode = nullptr;
  jmethodID midDebugLoadNode = nullptr;             // never called
  jmethodID midLoadChildOfRootSubmodels = nullptr;  // never called
  jmethodID midLoadSubmodel = nullptr;
  jmethodID midPutNetworkParameterObject = nullptr;
  jmethodID midPutNetworkParameterInt = nullptr;  // never called
  jstring emptyString = nullptr;                  // what String arrays are filled with at first

  unsigned char supportsFlag = 0;  // 1 from the first use on
};

extern BridgeState thePlainBridge;
extern BridgeState theWideBridge;

/// One line on standard output or standard error, flushed at once: the host writes to the same
/// files through buffers of its own.
void WriteHostLine(const char* text);
void WriteHostError(const char* text);
