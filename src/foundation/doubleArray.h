#pragma once

#include "foundation/valueArray.h"

/// List or block of doubles; heap blocks pass through the pool of doublePool.h. See KVN_valueArray.
class KVN_doubleArray : public KVN_valueArray<double, 4> {};
