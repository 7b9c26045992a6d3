#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "definitions/noisyMAX.h"
#include "network/header.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "tests/formats/text/foreignFiles.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Sections in an order of their own, headings in any case and cut short, names that are no
// identifiers or stand in the way of the generated ones, a table in the compact form.
const char* const kFile = R"(3

2 3	2

0
1	1
2	1 2

/* labels */
<5 1early  off a"b caf)"
                          "\xc3\xa9"
                          R"( no
no
/*	Names	*/ Node2 e-mail Node1
/* prob */
2  0.25 7.5e-1
6  1. 0 0  .5 .25 .25
4  1e-1  0.8 0.5 0.7
/* CENTERS */
10 -20 30 40 50 60
)";

TEST(ErgoSpeaker, ReadsSectionsInAnyOrder) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "erg", kFile), IsEmpty());

  ASSERT_EQ(network.GetNumberOfNodes(), 3);
  ASSERT_GE(network.FindNode("e_mail"), 0);
  EXPECT_STREQ(network.GetNode(network.FindNode("e_mail"))->Info().Header().GetName(), "e-mail");
  EXPECT_THAT(ParentsOf(network, "e_mail"), ElementsAre("Node2"));
  EXPECT_THAT(ParentsOf(network, "Node1"), ElementsAre("Node2", "e_mail"));
  EXPECT_THAT(StatesOf(network, "Node2"), ElementsAre("x_5", "x1early"));
  EXPECT_THAT(StatesOf(network, "e_mail"), ElementsAre("off", "a_b", "caf__"));
  EXPECT_THAT(StatesOf(network, "Node1"), ElementsAre("no", "no0"));
  EXPECT_EQ(network.TypeOf(network.FindNode("Node2")), KVN_TYPE_CPT);
  EXPECT_THAT(CellsOf(network, "Node2"), ElementsAre(0.25, 0.75));
  EXPECT_THAT(CellsOf(network, "e_mail"), ElementsAre(1, 0, 0, 0.5, 0.25, 0.25));
  const KVN_rectangle& place = network.GetNode(network.FindNode("Node2"))->Info().Screen().position;
  EXPECT_EQ(place.center_X, 10);
  EXPECT_EQ(place.center_Y, -20);
}

// The leak is 0.1, with the rows of the parents holding it. Below plain tables the first row is the
// last state's, and the first state doesn't act: P(last | 1, 2) = 0.9 * 0.2/0.9 * 0.5/0.9.
TEST(ErgoSpeaker, ReadsACompactTableAsANoisyMax) {
  KVN_network network;
  ReadText(network, "erg", kFile);
  const int node = network.FindNode("Node1");
  EXPECT_EQ(network.TypeOf(node), KVN_TYPE_NOISY_MAX);
  const double last[] = {0.9, 0.3, 0.5, 0.2, 0.06 / 0.9, 0.1 / 0.9};
  std::vector<double> cells;
  for (double p : last) cells.insert(cells.end(), {1 - p, p});
  EXPECT_TRUE(CellsNear(TableOfNode(network, node), cells, 1e-12));
}

// Three states, cumulative in the file: 0.2, 0.2 + 0.5; then one above 1.
TEST(ErgoSpeaker, TurnsCumulativeRowsIntoDistributions) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "erg", "2 2 3 0 1 1 /* P */ 2 0.5 0.5 4 0.2 0.7 0.5 1.7"),
              IsEmpty());
  const auto* const gate = dynamic_cast<KVN_noisyMAX*>(network.DefinitionOf(1));
  ASSERT_NE(gate, nullptr);
  KVN_Dmatrix rows;
  ASSERT_EQ(gate->GetInclusiveParameters(rows), 0);
  EXPECT_TRUE(CellsNear(rows, {0.5, 0.5, 0, 0, 0, 1, 0.2, 0.5, 0.3}, 1e-12));
}

TEST(ErgoSpeaker, TellsWhatIsWrong) {
  const auto told = [](const char* text, int nodes, const std::vector<std::string>& messages,
                       int result = 0) { ExpectMessages("erg", text, nodes, messages, result); };
  told("0 anything", 0, {});
  told("", 0, {"0 End of File : Expecting Integer"}, KVN_SYNTAX_ERROR);
  told("\n-3", 0, {"2 (\"-3\") : Invalid number of nodes"}, KVN_REFUSED);
  told("3.0 2", 0, {"1 '3.0' : Integer expected"}, KVN_SYNTAX_ERROR);
  told("2000000000\n2 2", 2, {"2 End of File : Expecting Integer"}, KVN_SYNTAX_ERROR);
  told("3\n1\n-2\n2000000000\n0 0 0", 3,
       {"2 '1' : Invalid number of states", "3 '-2' : Invalid number of states",
        "4 '2000000000' : Invalid number of states"});
  told(
      "2 2 2\n2 2 3\n2 0 -1\n", 2,
      {"2 Couldn't Add Arc From Parent Node (\"3\")", "3 Couldn't Add Arc From Parent Node (\"0\")",
       "3 Couldn't Add Arc From Parent Node (\"-1\")"});
  told("1 2 -1", 1, {"1 ERROR:'-1' : Invalid number of parents"});
  told("1 2 0\n/* Numbers */ 2", 1, {"2 (\"Numbers\") : Unknown Section"}, KVN_SYNTAX_ERROR);
  told("1 2 0\n/* Names a", 1, {"2 'a' : '*' expected"}, KVN_SYNTAX_ERROR);
  told("1 2 0 /* P */\n-2 1 0", 1, {"2 ERROR:'-2' : Invalid table size"}, KVN_REFUSED);
  told("1 2 0 /* P */\n3 1 0 0", 1, {"2 Couldn't set probabilities"});  // no known size
  told("1 2 0 /* P */\n2 1 0 0", 1, {"2 '0' : Unexpected"});
  told("1 2 0\n/* P */ 2000000000 1 0", 1, {"2 End of File : Expecting Real Number"},
       KVN_SYNTAX_ERROR);
  told("1 2 0 /* P */\n2 0.5 nan", 1, {"2 'nan' : Real Number expected"}, KVN_SYNTAX_ERROR);
  told("2 2 2 0 1 1 /* P */ 2 1 0\n2 1 0.5", 2, {"2 Couldn't set probabilities"});  // certain leak
  told("2 2 2 0 0 /* N */\nNode2 Node2", 2, {"2 [Node2] Duplicated Identifier"});
  told("2 2 2 0 0 /* N */ A\n/* L */ a b a b", 2, {"2 '/' : Identifier expected"},
       KVN_SYNTAX_ERROR);
  told("1 2 0 /* L */ a", 1, {"1 End of File : Expecting Identifier"}, KVN_SYNTAX_ERROR);
  told("1 2 0 /* C */ 1\n2.5", 1, {"2 '2.5' : Integer expected"}, KVN_SYNTAX_ERROR);
}

TEST(ErgoSpeaker, WritesPositionsOfTheSortedOrder) {
  KVN_network network;
  const int c = AddNodeBelow(network, KVN_TYPE_TRUTHTABLE, "C", 2, {});
  const int a = AddCpt(network, "A", 3, {}, {0.25, 0.5, 0.25});
  ASSERT_EQ(network.AddArc(a, c, /*layer=*/0), 0);
  WriteCells(network, c, {1, 0, 0, 1, 1, 0});
  network.GetNode(c)->Info().Screen().position.center_Y = -7;
  EXPECT_EQ(WrittenText(network, "erg"),
            "2\n\n3\t2\t\n\n0\n1\t1\n\n\n"
            "\n/*\tProbabilities\t*/\n"
            "3\n0.25000000\t0.50000000\t0.25000000\t\n\n"
            "6\n1.00000000\t0.00000000\t0.00000000\t1.00000000\t1.00000000\t0.00000000\t\n\n"
            "\n\n"
            "/*\tNames\t*/\nA\tC\t\n\n"
            "\n/*\tLabels\t*/\nState0\tState1\tState2\t\nState0\tState1\t\n\n\n"
            "\n/*\tCenters\t*/\n0\t0\n0\t-7\n");
}

// A reader takes the states of all nodes from one line; tables and lists are broken.
TEST(ErgoSpeaker, BreaksLinesBehindTheStructureOnly) {
  KVN_network network;
  std::string states;
  for (int i = 0; i < 40; i++) {
    (void)AddNodeBelow(network, KVN_TYPE_CPT, nullptr, 12, {});
    states += "12\t";
  }
  const std::string text = WrittenText(network, "erg");
  EXPECT_THAT(text, testing::StartsWith("40\n\n" + states + "\n\n0\n"));
  std::size_t longest = 0;
  std::istringstream lines(text.substr(text.find("Probabilities")));
  for (std::string line; std::getline(lines, line);) longest = std::max(longest, line.size());
  EXPECT_EQ(longest, 70u) << "ten names of six characters and a tab each";
}

TEST(ErgoSpeaker, ReadsBackWhatItWrites) {
  ExpectReadsBack(
      "erg", {KVN_TYPE_CPT, KVN_TYPE_TRUTHTABLE},
      {.tolerance = kHalfOfTheEighthDecimal, .byTable = true, .ignored = {"node.kind", "text"}});
}

TEST(ErgoSpeaker, RefusesToWriteWhatItCannotCarry) {
  for (int type : {KVN_TYPE_LIST, KVN_TYPE_TABLE, KVN_TYPE_NOISY_MAX, KVN_TYPE_CAST}) {
    ExpectRefusedToWrite("erg", type, "ERROR: This Network cannot be saved in Ergo format");
  }
}

TEST(ErgoSpeaker, WritesAllOrNothing) { ExpectWritesAllOrNothing("erg", AddWideTable); }

TEST(ErgoSpeaker, ReadsAllOrTells) { ExpectReadsAllOrTells("erg", kFile); }

// A gate may have been read, which this format can't write.
TEST(ErgoSpeaker, SurvivesDamage) {
  ExpectSurvivesDamage("erg", kFile, {0, KVN_REFUSED, KVN_SYNTAX_ERROR}, "kvn");
}

}  // namespace
