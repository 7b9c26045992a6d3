#include "inference/sampling/samplingFailure.h"

#include <cmath>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"

int FailForWantOfSamples() {
  return LogError(KVN_NO_USEFUL_SAMPLES,
                  "No useful samples have been generated for some of nodes.");
}

bool IsUsefulWeight(double total) { return total > 0.0 && std::isfinite(total); }
