#pragma once

class KVN_network;

/// Makes an empty network that lives until the process ends. A host may still be told about the
/// last network while the next is read, and there is no call by which it could release one, so a
/// network is abandoned and never destroyed (intended). Null without memory.
KVN_network* MakeKeptNetwork();
