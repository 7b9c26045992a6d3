#include "inference/hybrid/hybridConversion.h"

#include <string>

#include "expressions/equationNode.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

int ConvertToHybrid(KVN_network& network) {
  const KVN_intArray& order = network.GetOrderOfNodes();
  if (order.GetNumItems() != network.GetNumberOfNodes()) return KVN_NO_MEMORY;
  if (order.GetNumItems() == 0) return KVN_SUCCESS;
  const std::string text =
      "Conversion to HBN failed for node " + IdentifierOfNode(&network, order[0]);
  return LogError(KVN_REFUSED, text.c_str());
}
