#pragma once

class KVN_cast;
class KVN_cpt;
class KVN_demorgan;
class KVN_equation;
class KVN_list;
class KVN_mau;
class KVN_nodeDefinition;
class KVN_noisyAdder;
class KVN_noisyMAX;
class KVN_table;
class KVN_truthTable;

/// Work that differs by the class of a definition, one operation for each. Operations keep their
/// order.
class NodeDefVisitor {
 public:
  virtual void VisitMau(KVN_mau& definition) = 0;
  virtual void VisitTable(KVN_table& definition) = 0;
  virtual void VisitList(KVN_list& definition) = 0;
  virtual void VisitEquation(KVN_equation& definition) = 0;
  virtual void VisitDemorgan(KVN_demorgan& definition) = 0;
  virtual void VisitCast(KVN_cast& definition) = 0;
  virtual void VisitNoisyAdder(KVN_noisyAdder& definition) = 0;
  virtual void VisitNoisyMax(KVN_noisyMAX& definition) = 0;
  virtual void VisitTruthTable(KVN_truthTable& definition) = 0;
  virtual void VisitCpt(KVN_cpt& definition) = 0;
  virtual ~NodeDefVisitor() = default;

  /// Whether there is an operation for the type; the hybrid kinds have none.
  static bool IsVisited(int definitionType);
  /// Calls the operation for the definition's class; nothing for kinds without one.
  void VisitDefinition(KVN_nodeDefinition& definition);
};
