#pragma once

#include "bridge/bridgeState.h"

/// What loadKVN answers: the handle of the root submodel, the host's way into the tree.
constexpr jint kLoadSucceeded = 16384;
constexpr jint kLoadFailed = -1;

/// Reads a network file and delivers the network to the host: its properties, the submodels, the
/// nodes. A format of 0 or below is told by the file name's extension. kLoadFailed for a host class
/// of another shape, a syntax error (both with an exception pending), any other failure to read
/// (nothing pending), and an exception of a callback, which stays pending. The network stays in
/// `state` whatever happens after the host's methods are found.
jint LoadNetwork(BridgeState& state, JNIEnv* env, jobject receiver, jstring fileName, jint format);

/// Reads into a new network, which becomes `state.theNet`. False on failure, with an exception
/// pending only for a syntax error. A null name is a failure to read.
bool ReadIntoNewNetwork(BridgeState& state, const char* fileName, int format);
