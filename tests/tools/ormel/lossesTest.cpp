// The report of losses against what writing and reading does: every difference is reported, and
// every reported loss is a difference.

#include "ormel/losses.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "definitions/truthTable.h"
#include "expressions/expressionParser.h"
#include "network/extraDefinition.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "ormel/featureChecks.h"
#include "ormel/formatCapacity.h"
#include "ormel/lossReport.h"
#include "ormel/networkFile.h"
#include "tests/support/builders.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"
#include "tests/support/scratchFolder.h"
#include "tests/tools/ormel/lossTruth.h"
#include "values/nodeValue.h"

namespace {

/// The first node of the kind, -1 if there is none.
int FirstOf(KVN_network& network, int type) {
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    if (network.TypeOf(handle) == type) return handle;
  }
  return -1;
}

void SetSettings(KVN_network& network) {
  network.SetDiscSamples(77);
  network.SetDefaultBNAlgorithm(2);
  network.SetNoisyMaxRelevance(1);
  EpisParameters epis;
  epis.proplen = 9;
  EXPECT_EQ(network.SetEpisParams(epis), 0);
  KVN_solverParameters solver;
  solver.i2 = 11;
  EXPECT_EQ(network.SetSolverParameters(solver), 0);
  network.SetUpdateFlags(1);
}

/// An outcome for the first chance node that takes one, likelihoods for the next.
void SetEvidence(KVN_network& network) {
  bool hasOutcome = false;
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    if (network.TypeOf(node) != KVN_TYPE_CPT) continue;
    KVN_nodeValue& value = *network.ValueOf(node);
    if (!hasOutcome) {
      hasOutcome = value.SetEvidence(0) == 0 || value.SetEvidence(1) == 0;
      continue;
    }
    std::vector<double> likelihoods(network.DefinitionOf(node)->GetNumberOfOutcomes(), 0.0);
    likelihoods[0] = 0.25;
    likelihoods[1] = 0.75;
    if (value.SetVirtualEvidence(likelihoods) == 0) return;
  }
}

void SpoilNumbers(KVN_network& network) {
  if (int node = FirstOf(network, KVN_TYPE_TABLE); node >= 0) {
    KVN_Dmatrix* table = nullptr;
    ASSERT_EQ(network.DefinitionOf(node)->GetDefinition(table), 0);
    (*table)[0] = std::numeric_limits<double>::infinity();
  }
  if (int node = FirstOf(network, KVN_TYPE_TRUTHTABLE); node >= 0) {
    KVN_Dmatrix* table = nullptr;
    ASSERT_EQ(network.DefinitionOf(node)->GetDefinition(table), 0);
    (*table)[0] = 0.25;
  }
  if (int node = FirstOf(network, KVN_TYPE_LIST); node >= 0) {
    EXPECT_EQ(network.DefinitionOf(node)->SetDefinition(DoublesOf({1.0, 2.0})), 0);
  }
  if (int node = FirstOf(network, KVN_TYPE_CPT); node >= 0) {
    network.GetNode(node)->Cost()->GetCosts()[0] = std::nan("");
  }
}

void SpoilTexts(KVN_network& network) {
  const std::string longText(10211, 'x');
  EXPECT_EQ(network.Header().SetComment(longText.c_str()), 0);
  const int first = network.GetFirstNode();
  EXPECT_EQ(network.GetNode(first)->SetName(longText.c_str()), 0);
  EXPECT_EQ(network.GetNode(first)->ExtraDefinition()->SetQuestion(longText.c_str()), 0);
  KVN_submodel& root = *network.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  EXPECT_GE(root.TextBoxes().AddTextBox({1, 2, 3, 4}, nullptr), 0);
  // Nodes that no reader can make again, and what follows for their children.
  const char* const lastId = network.GetNode(network.GetLastNode())->GetId();
  EXPECT_GE(network.Submodels().Create(KVN_ROOT_SUBMODEL, lastId), 0);
}

void SpoilControls(KVN_network& network) {
  EXPECT_EQ(network.UserProperties().AddProperty("control", "a\x1F"), 0);
}

/// Constants beyond six digits, a conditional in the last branch of another, bounds beyond sixteen
/// digits; weights beside a formula, and parents that don't stand as the formulas name them.
void SpoilFormulas(KVN_network& network) {
  AddEquation(network, "E1", "E1 = 1234567.5");
  const int two = AddEquation(network, "E2", "E2 = (E1 ? 1 : (E1-1 ? 2 : 3))");
  EquationNode(network, two).SetBounds(0.25, 0.1 + 0.2);
  AddEquation(network, "E3", "E3 = -(E1 + -0.5)*Max(E2, 1)");
  const int four = AddEquation(network, "E4", "E4 = E1 + E2 + E3");
  (void)network.ChangeOrderOfParents(four, IntsOf({1, 0, 2}));  // "not applicable", and done
  for (const char* id : {"V", "U"}) EXPECT_GE(network.AddNode(KVN_TYPE_TABLE, id), 0);
  const int sum = network.AddNode(KVN_TYPE_MAU, "M");
  KVN_mauExpressionTable formulas;
  ASSERT_EQ(formulas.Setup(IntsOf({1})), 0);
  formulas.SetItem(0, ParseExpression("U + 0.12345678*V", nullptr, nullptr));
  auto& utility = static_cast<KVN_mau&>(*network.DefinitionOf(sum));
  ASSERT_EQ(utility.SetExpressions(&formulas, nullptr), 0);
  EXPECT_EQ(network.ChangeOrderOfParents(sum, IntsOf({1, 0})), 0);
  EXPECT_EQ(utility.SetDefinition(DoublesOf({2.0, 3.0})), 0);
}

/// What a network has for identifier and name after it was read from a format without them.
void TakeTheNameAway(KVN_network& network) {
  EXPECT_EQ(network.Header().SetId(HeaderBeforeReading().GetId()), 0);
  EXPECT_EQ(network.Header().SetName(HeaderBeforeReading().GetName()), 0);
}

void SetId(KVN_network& network, const char* id) { EXPECT_EQ(network.Header().SetId(id), 0); }

void CallANodeAsAnEmptiedNetwork(KVN_network& network) {
  KVN_node& first = *network.GetNode(network.GetFirstNode());
  EXPECT_EQ(first.SetId(HeaderBeforeReading().GetId()), 0);
}

void SpoilSubmodels(KVN_network& network) {
  const int above = network.Submodels().Create(KVN_ROOT_SUBMODEL, "@a b");
  EXPECT_GE(network.Submodels().Create(above, "Below"), 0);
  EXPECT_EQ(network.GetNode(network.GetFirstNode())->SetSubmodel(above), 0);
}

struct Spoiling {
  const char* name;
  void (*spoil)(KVN_network& network);
};

const Spoiling kSpoilings[] = {
    {"as generated", [](KVN_network&) {}},
    {"settings", SetSettings},
    {"evidence", SetEvidence},
    {"numbers", SpoilNumbers},
    {"texts", SpoilTexts},
    {"controls", SpoilControls},
    {"unnamed", TakeTheNameAway},
    {"formulas", SpoilFormulas},
    {"infinite constant", [](KVN_network& n) { AddEquation(n, "E", "E = 1e400"); }},
    {"identifier with blanks", [](KVN_network& n) { SetId(n, "@two  blanks"); }},
    {"identifier with a line end", [](KVN_network& n) { SetId(n, "@a\nb"); }},
    {"identifier that ends in a blank", [](KVN_network& n) { SetId(n, "@a "); }},
    {"identifier with a control", [](KVN_network& n) { SetId(n, "@\x01"); }},
    {"identifier of a node",
     [](KVN_network& n) { SetId(n, n.GetNode(n.GetFirstNode())->GetId()); }},
    {"node called as an emptied network", CallANodeAsAnEmptiedNetwork},
    {"submodel behind @", SpoilSubmodels},
};

TEST(Losses, AreWhatWritingAndReadingLoses) {
  for (const int format : kHeldFormats) {
    for (const Spoiling& spoiling : kSpoilings) {
      const std::uint64_t seeds = &spoiling == kSpoilings ? 24 : 6;
      for (std::uint64_t seed = 0; seed < seeds; seed++) {
        SCOPED_TRACE(std::string(spoiling.name) + ", seed " + std::to_string(seed) + ", format " +
                     std::to_string(format));
        RandomNetworkOptions options;
        options.nodes = 12;
        options.kinds = KindsTakenBy(format);
        KVN_network network;
        FillRandomNetwork(network, seed, options);
        spoiling.spoil(network);
        ExpectTruth(network, format);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

/// The generator itself: the messages above name the seed.
TEST(RandomNetwork, IsConsistentAndFollowsFromItsSeed) {
  for (std::uint64_t seed = 0; seed < 30; seed++) {
    SCOPED_TRACE(seed);
    KVN_network first, second;
    FillRandomNetwork(first, seed);
    FillRandomNetwork(second, seed);
    EXPECT_EQ(first.CheckConsistency(/*deep=*/1), 0);
    EXPECT_TRUE(NetworksEqual(first, second));
  }
}

TEST(LossReport, ManyAlikeShareALine) {
  std::vector<Loss> losses = {{"", "name", "none"}, {"S", "texts", "cut", /*ofSubmodel=*/true}};
  for (int i = 0; i < 11; i++) losses.push_back({"N" + std::to_string(i), "position", "no place"});
  losses.insert(losses.begin() + 3, {"N0", "digits", "rounded"});
  const std::vector<std::string> expected = {"network: name: none", "submodel S: texts: cut",
                                             "node N0 and 10 more: position: no place",
                                             "node N0: digits: rounded"};
  EXPECT_EQ(DescribeLosses(losses), expected);
  losses.pop_back();
  EXPECT_EQ(DescribeLosses(losses).size(), 13u);
}

}  // namespace
