#include "network/extraDefinition.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <limits>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "network/node.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkComparer.h"

namespace {

using Texts = std::vector<std::string>;

int Rotate(KVN_nodeDefinition& d) { return d.ChangeOrderOfOutcomes(IntsOf({2, 0, 1})); }

/// Node x with three outcomes, whose every list tells the outcomes apart, and y with two.
class ExtraDefinition : public testing::Test {
 protected:
  ExtraDefinition() { FillX(); }

  void FillX() {
    EXPECT_EQ(DefinitionOfX().SetNumberOfOutcomes(3), 0);
    EXPECT_EQ(ExtraOf(x).SetFaultStates(IntsOf({1, 0, 0})), 0);
    EXPECT_EQ(ExtraOf(x).SetFaultNames(StringsOf({"n0", "n1", "n2"})), 0);
    EXPECT_EQ(ExtraOf(x).SetFaultLabels(StringsOf({"l0", "l1", "l2"})), 0);
    EXPECT_EQ(ExtraOf(x).SetStateComments(StringsOf({"c0", "c1", "c2"})), 0);
    EXPECT_EQ(ExtraOf(x).SetStateRepairInfo(StringsOf({"r0", "r1", "r2"})), 0);
    EXPECT_EQ(ExtraOf(x).SetDefaultOutcome(1), 0);
    for (int i = 0; i < 3; i++) {
      EXPECT_EQ(ExtraOf(x).GetStateDocumentation(i)->AddDocument(std::to_string(i).c_str(), ""), 0);
    }
  }

  KVN_nodeDefinition& DefinitionOfX() { return *network.DefinitionOf(x); }
  KVN_extraDefinition& ExtraOf(int node) { return *network.GetNode(node)->ExtraDefinition(); }

  /// Title of the document of each outcome, "-" for none: what outcome it was made for.
  static Texts TitlesOf(KVN_extraDefinition& extra) {
    Texts titles;
    for (int i = 0; extra.GetStateDocumentation(i) != nullptr; i++) {
      const char* title = extra.GetStateDocumentation(i)->GetTitle(0);
      titles.emplace_back(title == nullptr ? "-" : title);
    }
    return titles;
  }

  KVN_network network;
  int x = network.AddNode(KVN_TYPE_CPT, "x");
  int y = network.AddNode(KVN_TYPE_CPT, "y");
};

}  // namespace

TEST_F(ExtraDefinition, ListsFollowTheOutcomes) {
  // Before each, the default outcome is 1; it is meant that an insertion leaves that number.
  const struct {
    const char* name;
    std::function<int(KVN_nodeDefinition&)> edit;
    int defaultAfter;
    std::vector<int> source;  // the old outcome of each entry, -1 for a new one
  } cases[] = {
      {"inserted", [](auto& d) { return d.InsertOutcome(1, "n"); }, 1, {0, -1, 1, 2}},
      {"appended", [](auto& d) { return d.AddOutcome("n"); }, 1, {0, 1, 2, -1}},
      {"before the default", [](auto& d) { return d.RemoveOutcome(0); }, 0, {1, 2}},
      {"the default", [](auto& d) { return d.RemoveOutcome(1); }, 0, {0, 2}},
      {"behind the default", [](auto& d) { return d.RemoveOutcome(2); }, 1, {0, 1}},
      {"rotated", Rotate, 2, {2, 0, 1}},
      {"replaced", [](auto& d) { return d.SetNumberOfOutcomes(4); }, 0, {-1, -1, -1, -1}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FillX();
    EXPECT_EQ(c.edit(DefinitionOfX()), 0);
    Texts numbers, labels, titles;
    std::vector<int> faults;
    for (int from : c.source) {
      numbers.push_back(from < 0 ? "" : "n" + std::to_string(from));
      labels.push_back(from < 0 ? "" : "l" + std::to_string(from));
      titles.push_back(from < 0 ? "-" : std::to_string(from));
      faults.push_back(from == 0 ? 1 : 0);
    }
    KVN_extraDefinition& extra = ExtraOf(x);
    EXPECT_EQ(extra.GetDefaultOutcome(), c.defaultAfter);
    EXPECT_EQ(ItemsOf(extra.GetFaultStates()), faults);
    EXPECT_EQ(TextsOf(extra.GetFaultNames()), numbers);
    EXPECT_EQ(TextsOf(extra.GetFaultLabels()), labels);
    EXPECT_EQ(TitlesOf(extra), titles);
    EXPECT_EQ(extra.GetStateComments().GetNumItems(), static_cast<int>(faults.size()));
    EXPECT_EQ(extra.GetStateRepairInfo().GetNumItems(), static_cast<int>(faults.size()));
  }
}

TEST_F(ExtraDefinition, RefusedOrderLeavesEarlierListsPermuted) {
  ASSERT_EQ(DefinitionOfX().AddOutcome("n"), 0);
  ASSERT_EQ(DefinitionOfX().RemoveOutcome(3), 0);
  // An order may also count the slots of a list. The flags have grown to more slots than the texts
  // have entries, so an order over all of those fits the flags alone.
  const int slots = ExtraOf(x).GetFaultStates().GetSize();
  ASSERT_GT(slots, 3);
  ASSERT_NE(slots, ExtraOf(x).GetFaultNames().GetSize());
  KVN_intArray order = IntsOf({2, 1, 0});
  for (int i = 3; i < slots; i++) ASSERT_EQ(order.Add(i), 0);
  EXPECT_EQ(ExtraOf(x).ReorderOutcomes(order), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(ExtraOf(x).GetFaultStates()), (std::vector<int>{0, 0, 1}));
  EXPECT_EQ(TextsOf(ExtraOf(x).GetFaultNames()), (Texts{"n0", "n1", "n2"}));
  EXPECT_EQ(ExtraOf(x).GetDefaultOutcome(), 1);
}

TEST_F(ExtraDefinition, LabelsAreUniqueInTheNetwork) {
  KVN_extraDefinition& extra = ExtraOf(y);
  EXPECT_EQ(extra.SetFaultLabel(0, "l1"), KVN_REFUSED);  // x has it
  EXPECT_EQ(extra.SetFaultLabel(0, "a"), 0);
  EXPECT_EQ(extra.SetFaultLabel(0, "a"), 0);
  EXPECT_EQ(extra.SetFaultLabel(1, "a"), KVN_REFUSED);
  EXPECT_EQ(extra.SetFaultLabel(1, "1a"), KVN_REFUSED);
  EXPECT_EQ(extra.SetFaultLabel(2, "b"), KVN_REFUSED);
  EXPECT_EQ(extra.SetFaultLabel(1, "b"), 0);

  EXPECT_EQ(extra.SetFaultLabels(StringsOf({"", nullptr})), 0);
  EXPECT_EQ(TextsOf(extra.GetFaultLabels()), (Texts{"", ""}));
}

TEST(ExtraDefinitionInFiles, LabelsAreComparedWithinTheirNodeAlone) {
  const std::string path = testing::TempDir() + "faultLabels.kvn";
  std::ofstream file(path);
  file << "net N {";
  for (const char* node : {"A", "B"}) {
    file << "node " << node << " { TYPE = CPT; PARENTS = ();"
         << " DEFINITION = { NAMESTATES = (yes, no); PROBABILITIES = (0.3, 0.7); };"
         << " EXTRA_DEFINITION = { FAULT_LABELS = (\"l\", \"" << node << "\"); }; };";
  }
  file << "};";
  file.close();
  KVN_network network;
  EXPECT_EQ(network.ReadFile(path.c_str(), KVN_FORMAT_KVN), 0);
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    EXPECT_EQ(TextsOf(network.GetNode(node)->ExtraDefinition()->GetFaultLabels()),
              (Texts{"l", network.GetNode(node)->GetId()}));
  }
  EXPECT_EQ(network.GetNumberOfNodes(), 2);
}

TEST_F(ExtraDefinition, RefusedLabelsAreReplacedByNumberedOnes) {
  // Numbers begin at 1 plus the outcomes of the network: 3 of x and 2 of y.
  ASSERT_EQ(ExtraOf(x).SetFaultLabels(StringsOf({"l0", "l1", "l6"})), 0);
  KVN_extraDefinition& extra = ExtraOf(y);
  EXPECT_EQ(extra.SetFaultLabels(StringsOf({"l0", "ok"})), KVN_REFUSED);
  EXPECT_EQ(TextsOf(extra.GetFaultLabels()), (Texts{"l06", "ok"}));
  EXPECT_EQ(extra.SetFaultLabels(StringsOf({"q", "q"})), KVN_REFUSED);
  EXPECT_EQ(TextsOf(extra.GetFaultLabels()), (Texts{"q", "q6"}));
  EXPECT_EQ(extra.SetFaultLabels(StringsOf({"1 a", "b"})), KVN_REFUSED);
  EXPECT_EQ(TextsOf(extra.GetFaultLabels()), (Texts{"x1_a6", "b"}));
  // Label by label: the second outcome still has the "b" that the first one asks for.
  EXPECT_EQ(extra.SetFaultLabels(StringsOf({"b", "x1_a6"})), KVN_REFUSED);
  EXPECT_EQ(TextsOf(extra.GetFaultLabels()), (Texts{"b6", "x1_a6"}));
  EXPECT_EQ(extra.MakeLabelsUnique(StringsOf({"p", "q", "r"})), KVN_REFUSED);
  EXPECT_EQ(TextsOf(extra.GetFaultLabels()), (Texts{"p", "q"}));
  const struct {
    const char *base, *label;
  } cases[] = {{"l", "l7"}, {"1 a", "x1_a6"}, {"", "x6"}, {nullptr, "x6"}};  // x has an l6
  for (const auto& c : cases) {
    std::string made;
    extra.CreateLabel(c.base, made);
    EXPECT_EQ(made, c.label);
  }
}

TEST_F(ExtraDefinition, SettersRefuseWhatDoesNotFit) {
  KVN_extraDefinition& extra = ExtraOf(x);
  EXPECT_EQ(extra.SetFaultStates(IntsOf({1, 1})), KVN_REFUSED);
  EXPECT_EQ(extra.SetFaultState(3, 1), KVN_REFUSED);
  EXPECT_EQ(extra.SetFaultNames(StringsOf({"a", "b", "c", "d"})), KVN_REFUSED);
  EXPECT_EQ(extra.SetFaultLabels(StringsOf({"a"})), KVN_REFUSED);
  EXPECT_EQ(extra.SetStateComment(-1, "a"), KVN_REFUSED);
  EXPECT_EQ(extra.SetDefaultOutcome(3), KVN_REFUSED);
  EXPECT_EQ(extra.GetStateDocumentation(3), nullptr);
  EXPECT_EQ(ItemsOf(extra.GetFaultStates()), (std::vector<int>{1, 0, 0}));
  EXPECT_EQ(TextsOf(extra.GetFaultNames()), (Texts{"n0", "n1", "n2"}));
  EXPECT_EQ(extra.GetDefaultOutcome(), 1);

  for (int type : {0, 1, 2, 3, -1, std::numeric_limits<int>::max()}) {
    extra.SetDiagnosisType(type);
    EXPECT_EQ(extra.GetDiagnosisType(), type == 0 || type == 1 ? type : 2) << type;
  }
  extra.SetShowAs(0);
  extra.SetShowAs(5);
  extra.SetShowAs(-1);
  EXPECT_EQ(extra.GetShowAs(), 0);
}

TEST_F(ExtraDefinition, ChangeOfKindFitsTheLists) {
  KVN_node& node = *network.GetNode(x);
  EXPECT_EQ(node.ChangeType(KVN_TYPE_TRUTHTABLE), 0);  // takes the three outcomes over
  EXPECT_EQ(TextsOf(ExtraOf(x).GetFaultNames()), (Texts{"n0", "n1", "n2"}));
  (void)node.ChangeType(KVN_TYPE_CAST);  // can't convert: two outcomes of its own
  EXPECT_EQ(TextsOf(ExtraOf(x).GetFaultNames()), (Texts{"n0", "n1"}));
  EXPECT_EQ(TitlesOf(ExtraOf(x)), (Texts{"0", "1"}));
}

TEST_F(ExtraDefinition, CopyIsDeep) {
  KVN_extraDefinition& extra = ExtraOf(x);
  ASSERT_EQ(extra.SetQuestion("Is it on?"), 0);
  ASSERT_EQ(network.GetNode(x)->SetDiagnosisFlags(1, 0, 1), 0);
  extra.SetShowAs(3);
  KVN_network copy(network);
  EXPECT_TRUE(NetworksEqual(network, copy));
  ASSERT_EQ(extra.SetQuestion(nullptr), 0);
  ASSERT_EQ(extra.SetFaultName(0, "other"), 0);
  ASSERT_EQ(extra.GetStateDocumentation(0)->Delete(0), 0);

  KVN_extraDefinition& made = *copy.GetNode(x)->ExtraDefinition();
  EXPECT_STREQ(made.GetQuestion(), "Is it on?");
  EXPECT_EQ(TextsOf(made.GetFaultNames()), (Texts{"n0", "n1", "n2"}));
  EXPECT_EQ(TitlesOf(made), (Texts{"0", "1", "2"}));
  EXPECT_EQ(made.SetFaultLabel(0, "l9"), 0);  // the copy asks its own network
}

TEST_F(ExtraDefinition, CopyWithoutMemoryChangesNothing) {
  ASSERT_EQ(ExtraOf(x).SetQuestion("Is it on?"), 0);
  ASSERT_EQ(ExtraOf(y).SetFaultName(0, "own"), 0);
  const int failures = FailEachAllocation([&](int n) {
    KVN_extraDefinition target(&network, y);
    EXPECT_EQ(target.Assign(ExtraOf(y)), 0);
    FailingAllocation failing(n);
    const int result = target.Assign(ExtraOf(x));
    EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : KVN_SUCCESS);
    EXPECT_STREQ(target.GetFaultNames()[0], result == 0 ? "n0" : "own");
    EXPECT_STREQ(target.GetQuestion(), result == 0 ? "Is it on?" : "");
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 0);
}
