#pragma once

#include <set>
#include <string>

#include "definitions/nodeDefinition.h"
#include "expressions/equationSides.h"

/// A continuous node of a group whose equations need each other in a circle, a strongly coupled
/// component. Its equation may mention the node, its parents, and the other members, which no arc
/// joins to it; the update finds the values of all members at once.
///
/// Members are declared through KVN_network::DeclareComponent, which puts all of them, the node
/// itself included, into each one's set: a node that isn't in its own set never gets a number.
///
/// It is meant that a rename isn't followed, neither in equations nor in sets, and that such a node
/// can't be copied.
class KVN_equationSCC : public KVN_nodeDefinition {
 public:
  /// Sets fields only; Init must follow.
  KVN_equationSCC(KVN_network* network, int handle);
  ~KVN_equationSCC() override = default;
  /// `<id> = 0`, no component.
  int Init();

  int GetType() const override { return KVN_TYPE_EQUATION_SCC; }
  const char* GetTypeName() const override { return "EQUATION_SCC"; }

  /// As with KVN_equation.
  int AddParent(int parent) override;
  /// Builds the equation anew from GetSccDefault and the other parents. It is meant that the two
  /// are run together without a sign between: with a component the text is refused, and the old
  /// equation stays.
  int RemoveParent(int parent) override;

  /// Makes the text the node's equation; arcs stay as they are. KVN_REFUSED, unchanged, with the
  /// reason in the log.
  [[nodiscard]] int SetEquation(const std::string& text);
  /// Whether the text is an equation in the node, its parents and the members of its component.
  bool ValidateSccEquation(const std::string& text, std::string& error) const;
  /// "<id> = a + b + c" over the set in ascending order.
  void GetSccDefault(std::string& text) const;
  const KVN_equationSides& GetEquation() const { return equation; }

  /// Identifiers of the members, ascending.
  const std::set<std::string>& GetSccVariables() const { return sccVariables; }
  void SetSccVariables(const std::set<std::string>& names) { sccVariables = names; }

 private:
  std::string OwnId() const;

  KVN_equationSides equation;
  std::set<std::string> sccVariables;
};
