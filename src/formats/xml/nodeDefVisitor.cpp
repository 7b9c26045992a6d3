#include "formats/xml/nodeDefVisitor.h"

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

bool NodeDefVisitor::IsVisited(int definitionType) {
  switch (definitionType) {
    case KVN_TYPE_MAU:
    case KVN_TYPE_TABLE:
    case KVN_TYPE_LIST:
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_DEMORGAN:
    case KVN_TYPE_CAST:
    case KVN_TYPE_NOISY_ADDER:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_CPT:
      return true;
    default:
      return false;
  }
}

void NodeDefVisitor::VisitDefinition(KVN_nodeDefinition& definition) {
  switch (definition.GetType()) {
    case KVN_TYPE_MAU:
      return VisitMau(static_cast<KVN_mau&>(definition));
    case KVN_TYPE_TABLE:
      return VisitTable(static_cast<KVN_table&>(definition));
    case KVN_TYPE_LIST:
      return VisitList(static_cast<KVN_list&>(definition));
    case KVN_TYPE_EQUATION:
      return VisitEquation(static_cast<KVN_equation&>(definition));
    case KVN_TYPE_DEMORGAN:
      return VisitDemorgan(static_cast<KVN_demorgan&>(definition));
    case KVN_TYPE_CAST:
      return VisitCast(static_cast<KVN_cast&>(definition));
    case KVN_TYPE_NOISY_ADDER:
      return VisitNoisyAdder(static_cast<KVN_noisyAdder&>(definition));
    case KVN_TYPE_NOISY_MAX:
      return VisitNoisyMax(static_cast<KVN_noisyMAX&>(definition));
    case KVN_TYPE_TRUTHTABLE:
      return VisitTruthTable(static_cast<KVN_truthTable&>(definition));
    case KVN_TYPE_CPT:
      return VisitCpt(static_cast<KVN_cpt&>(definition));
    default:
      return;
  }
}
