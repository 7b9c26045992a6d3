#pragma once

#include "bridge/bridgeState.h"

/// Looks up the classes and methods of the host that `state.receiver` belongs to. False, with the
/// documented exception pending, when any is missing; a host class that lacks a method that is
/// never called is refused all the same (intended: hosts and the bridge must be of one version).
bool ResolveHostInterface(BridgeState& state);

/// Leaves a java.lang.Exception pending for the host. Nothing happens where even that class
/// couldn't be found.
void ThrowToHost(const BridgeState& state, const char* text);

/// First use of the bridge: from now on the native XML format counts as supported.
void InitializeOnFirstUse(BridgeState& state);
