#include <memory>
#include <new>

#include "definitions/cast.h"
#include "definitions/cpt.h"
#include "definitions/demorgan.h"
#include "definitions/list.h"
#include "definitions/mau.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "definitions/table.h"
#include "definitions/truthTable.h"
#include "expressions/equation.h"
#include "expressions/equationSCC.h"
#include "foundation/resultCodes.h"

// The one place that knows every class of definition. A new class is a row in kMakers.

namespace {

template <class Definition>
KVN_nodeDefinition* Make(KVN_network* network, int handle) {
  std::unique_ptr<Definition> made(new (std::nothrow) Definition(network, handle));
  if (made == nullptr || made->Init() == KVN_NO_MEMORY) return nullptr;
  return made.release();
}

/// An object without a place or content, to be assigned to.
template <class Definition>
KVN_nodeDefinition* MakeBlank() {
  return new (std::nothrow) Definition(nullptr, -1);
}

struct Maker {
  int typeCode;
  KVN_nodeDefinition* (*make)(KVN_network* network, int handle);
  KVN_nodeDefinition* (*makeBlank)();  // null for a class that can't be copied
};

constexpr Maker kMakers[] = {
    {KVN_TYPE_EQUATION, Make<KVN_equation>, MakeBlank<KVN_equation>},
    {KVN_TYPE_TABLE, Make<KVN_table>, MakeBlank<KVN_table>},
    {KVN_TYPE_LIST, Make<KVN_list>, MakeBlank<KVN_list>},
    {KVN_TYPE_CPT, Make<KVN_cpt>, MakeBlank<KVN_cpt>},
    {KVN_TYPE_TRUTHTABLE, Make<KVN_truthTable>, MakeBlank<KVN_truthTable>},
    {KVN_TYPE_CAST, Make<KVN_cast>, MakeBlank<KVN_cast>},
    {KVN_TYPE_DEMORGAN, Make<KVN_demorgan>, MakeBlank<KVN_demorgan>},
    {KVN_TYPE_NOISY_MAX, Make<KVN_noisyMAX>, MakeBlank<KVN_noisyMAX>},
    {KVN_TYPE_NOISY_ADDER, Make<KVN_noisyAdder>, MakeBlank<KVN_noisyAdder>},
    {KVN_TYPE_EQUATION_SCC, Make<KVN_equationSCC>, nullptr},
    {KVN_TYPE_MAU, Make<KVN_mau>, MakeBlank<KVN_mau>},
};

const Maker* FindMaker(int typeCode) {
  for (const Maker& maker : kMakers) {
    if (maker.typeCode == typeCode) return &maker;
  }
  return nullptr;
}

}  // namespace

KVN_nodeDefinition* NewDefinition(int typeCode, KVN_network* network, int handle) {
  const Maker* maker = FindMaker(typeCode);
  return maker != nullptr ? maker->make(network, handle) : nullptr;
}

bool IsDefinitionType(int typeCode) { return FindMaker(typeCode) != nullptr; }

KVN_nodeDefinition* CloneDefinition(KVN_nodeDefinition& source) {
  const Maker* maker = FindMaker(source.GetType());
  if (maker == nullptr || maker->makeBlank == nullptr) return nullptr;
  std::unique_ptr<KVN_nodeDefinition> made(maker->makeBlank());
  if (made == nullptr || made->Assign(source) < 0) return nullptr;
  return made.release();
}
