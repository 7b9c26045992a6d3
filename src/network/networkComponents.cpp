// Groups of nodes whose equations need each other in a circle.

#include <set>
#include <string>

#include "expressions/equationSCC.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"

namespace {

KVN_equationSCC* CoupledEquationOf(const KVN_network& network, int handle) {
  if (network.TypeOf(handle) != KVN_TYPE_EQUATION_SCC) return nullptr;
  return static_cast<KVN_equationSCC*>(network.DefinitionOf(handle));
}

}  // namespace

int KVN_network::DeclareComponent(const KVN_intArray& handles) {
  const int count = UsedCount(handles);
  if (count < 1) return KVN_REFUSED;
  std::set<std::string> names;
  for (int i = 0; i < count; i++) {
    if (CoupledEquationOf(*this, handles[i]) == nullptr) return KVN_REFUSED;
    names.insert(GetNode(handles[i])->GetId());
  }
  for (int i = 0; i < count; i++) {
    CoupledEquationOf(*this, handles[i])->SetSccVariables(names);
  }
  // Behind all sets, since an update may follow; they stand, whatever it says.
  for (int i = 0; i < count; i++) (void)NotifyChange(handles[i], KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

int KVN_network::ClearComponent(int handle) {
  KVN_equationSCC* definition = CoupledEquationOf(*this, handle);
  if (definition == nullptr) return KVN_REFUSED;
  definition->SetSccVariables({});
  (void)NotifyChange(handle, KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}
