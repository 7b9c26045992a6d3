// The one place that knows which algorithms the engine has. The model calls them through these
// tables and so depends on none of them.

#include "network/updateAlgorithm.h"

const KVN_updateAlgorithm theUpdateAlgorithms[] = {
    {-1, nullptr},
};

// Entries that are left out are null.
const KVN_specialUpdates theSpecialUpdates = {};
