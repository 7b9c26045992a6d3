#pragma once

#include "bridge/bridgeState.h"

/// What updateKVN is called with. The last six hold one element for each identifier, except the
/// network's own properties.
struct UpdateArguments {
  jstring inputFile;
  jint inputFormat;  // 0 or below: told by the extension
  jstring outputFile;
  jint outputFormat;  // 0: told by the extension
  jobjectArray nodeIds;
  jobjectArray probabilities;  // of double[]
  jobjectArray networkKeys;
  jobjectArray networkValues;
  jobjectArray nodeKeys;        // of String[]
  jobjectArray nodeValues;      // of String[]
  jobjectArray diagnosisTypes;  // of int[], of which the first element counts
};

/// Reads the input file into a new network, puts the host's numbers, properties and diagnosis types
/// in, and writes the output file: what the host doesn't know of comes through unchanged. A null in
/// place of an element leaves that part of the node alone. Nothing ties this to an earlier load.
///
/// False on failure, with an exception pending unless the input file couldn't be read for another
/// reason than its syntax, or the engine lacked memory. No output is written then; edits made up to
/// there are lost.
bool UpdateFile(BridgeState& state, JNIEnv* env, jobject receiver,
                const UpdateArguments& arguments);
