#include "expressions/equationSCC.h"

#include <memory>

#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"

namespace {

using Ids = std::vector<std::string>;

std::string TextOfCoupled(const KVN_network& network, int handle) {
  return TextOf(CoupledNode(network, handle).GetEquation());
}

}  // namespace

TEST(EquationSCC, DeclaringPutsEveryMemberIntoEachSet) {
  KVN_network network;
  const std::vector<int> c = AddComponent(network, {"q", "p", "r"}, {});
  for (int handle : c) {
    EXPECT_EQ(CoupledNode(network, handle).GetSccVariables(),
              (std::set<std::string>{"p", "q", "r"}));
    EXPECT_EQ(network.ValueOf(handle)->GetType(), KVN_VALUE_EQUATION);
  }
  std::string text;
  CoupledNode(network, c[0]).GetSccDefault(text);
  EXPECT_EQ(text, "q = p + q + r");

  EXPECT_EQ(network.ClearComponent(c[0]), 0);
  EXPECT_TRUE(CoupledNode(network, c[0]).GetSccVariables().empty());
  EXPECT_EQ(CoupledNode(network, c[1]).GetSccVariables().size(), 3u);
}

TEST(EquationSCC, OnlyLiveCoupledNodesAreDeclared) {
  KVN_network network;
  const int coupled = network.AddNode(KVN_TYPE_EQUATION_SCC, "c");
  const int plain = AddEquation(network, "e");
  for (const std::vector<int>& handles :
       {std::vector<int>{}, {coupled, plain}, {coupled, -1}, {coupled, 99}}) {
    EXPECT_EQ(network.DeclareComponent(IntsOf(handles)), KVN_REFUSED);
    EXPECT_TRUE(CoupledNode(network, coupled).GetSccVariables().empty());
  }
  EXPECT_EQ(network.ClearComponent(plain), KVN_REFUSED);
  EXPECT_EQ(network.ClearComponent(99), KVN_REFUSED);
}

TEST(EquationSCC, EquationMayNameTheNodeItsParentsAndItsComponent) {
  KVN_network network;
  const int p = AddEquation(network, "p");
  (void)AddEquation(network, "stranger");
  const std::vector<int> c = AddComponent(network, {"x", "y"}, {});
  KVN_equationSCC& node = CoupledNode(network, c[0]);
  ASSERT_EQ(network.AddArc(p, c[0], 0), 0);
  EXPECT_EQ(TextOfCoupled(network, c[0]), "x=p");
  EquationValueOf(network, c[0]).SetPoint(1.0);
  ASSERT_EQ(node.SetEquation("x = p - y/2 + x*x"), 0);
  EXPECT_FALSE(network.ValueOf(c[0])->IsValueValid());
  const struct {
    const char* text;
    const char* error;
  } refused[] = {
      {"", "Equation cannot be empty."},
      {"x", "Equation syntax error"},
      {"x = (", "Equation syntax error"},
      {"x = y + stranger",
       "Equation contains a variable (stranger) which is not ID of this node, one of its parents, "
       "or one of its scc varaibles."},
  };
  for (const auto& c2 : refused) {
    SCOPED_TRACE(c2.text);
    const LogWatch log;
    EXPECT_EQ(node.SetEquation(c2.text), KVN_REFUSED);
    EXPECT_EQ(log.Texts(), (Ids{c2.error}));
    EXPECT_EQ(TextOfCoupled(network, c[0]), "x=p-y/2+x*x");
  }
}

TEST(EquationSCC, RemovedParentRebuildsTheSumOnlyOutsideAComponent) {
  KVN_network network;
  const int a = AddEquation(network, "a");
  const int b = AddEquation(network, "b");
  const int c = AddEquation(network, "c");
  const int x = network.AddNode(KVN_TYPE_EQUATION_SCC, "x");
  for (int parent : {a, b, c}) ASSERT_EQ(network.AddArc(parent, x, 0), 0);
  ASSERT_EQ(network.RemoveArc(b, x, 0), 0);
  EXPECT_EQ(TextOfCoupled(network, x), "x=a+c");

  const int chance = AddNodeBelow(network, KVN_TYPE_CPT, "chance", 2, {});
  EXPECT_EQ(network.AddArc(chance, x, 0), KVN_NOT_APPLICABLE);
  EXPECT_EQ(CoupledNode(network, x).AddParent(chance), KVN_REFUSED);
  EXPECT_EQ(TextOfCoupled(network, x), "x=a+c");

  // The last member and the first parent run together into one word.
  ASSERT_EQ(network.DeclareComponent(IntsOf({x})), 0);
  ASSERT_EQ(CoupledNode(network, x).SetEquation("x = x/2 + a*c"), 0);
  const LogWatch log;
  ASSERT_EQ(network.RemoveArc(c, x, 0), 0) << "the arc goes all the same";
  EXPECT_EQ(log.Texts(),
            (Ids{"Equation contains a variable (xa) which is not ID of this node, one of its "
                 "parents, or one of its scc varaibles."}));
  EXPECT_EQ(TextOfCoupled(network, x), "x=x/2+a*c");
  // And `x = ` alone is no equation.
  ASSERT_EQ(network.ClearComponent(x), 0);
  ASSERT_EQ(network.RemoveArc(a, x, 0), 0);
  EXPECT_EQ(log.Texts().back(), "Equation syntax error");
  EXPECT_EQ(TextOfCoupled(network, x), "x=x/2+a*c");
}

TEST(EquationSCC, IsNotCopiedAndFollowsNoRename) {
  KVN_network network;
  const std::vector<int> c = AddComponent(network, {"x", "y"}, {"x = y", "y = x"});
  EXPECT_EQ(CloneDefinition(*network.DefinitionOf(c[0])), nullptr);
  ASSERT_EQ(network.GetNode(c[1])->SetId("z"), 0);
  EXPECT_EQ(TextOfCoupled(network, c[0]), "x=y");
  EXPECT_EQ(CoupledNode(network, c[0]).GetSccVariables().count("y"), 1u);
}
