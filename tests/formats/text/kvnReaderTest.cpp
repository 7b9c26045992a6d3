// The statements of the native text format one by one: what they do, what is told of a bad one, and
// that reading goes on behind it. That fields come back as they were written is in
// kvnRoundTripTest.cpp.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "definitions/cast.h"
#include "definitions/noisyMAX.h"
#include "definitions/truthTable.h"
#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/submodelHandler.h"
#include "tests/support/builders.h"
#include "tests/support/logWatch.h"
#include "tests/support/scratchFolder.h"

namespace {

using testing::ElementsAre;

/// A network read from these bytes, with what was told on the way.
struct Reading {
  explicit Reading(const std::string& bytes) {
    const LogWatch log;
    result = network.ReadFile(folder.Write("in", bytes).c_str(), KVN_FORMAT_KVN);
    for (const std::string& text : log.Texts()) messages += text + "\n";
  }

  template <typename Definition>
  Definition& DefinitionOf(const char* id) {
    return static_cast<Definition&>(*network.DefinitionOf(network.FindNode(id)));
  }
  KVN_node& NodeOf(const char* id) { return *network.GetNode(network.FindNode(id)); }

  ScratchFolder folder;
  KVN_network network;
  int result = 0;
  std::string messages;  // each with a line feed behind
};

/// The net N with these statements, all on line 1.
std::string NetOf(const std::string& body) { return "net N { " + body + " };\n"; }

struct FileCase {
  const char* bytes;
  int result;
  const char* id;  // of the network
};
// It is meant that an empty or foreign file is a network without nodes, here with the identifier
// that every emptied network has.
const FileCase kFileCases[] = {
    {"", 0, "Sub0"},
    {"roses are red", 0, "Sub0"},
    {"NET N { };", 0, "Sub0"},
    {"net N { };", 0, "N"},
    {"net N { }", 0, "N"},
    {"net N { }; net M { };", 0, "N"},
    {"// a\nnet /* b */ N{};", 0, "N"},
    {"net N {", 0, "N"},
    {"// a\r\nnet N\r\n{\r\n};\r", 0, "N"},
    {"\xEF\xBB\xBFnet N { };", 0, "Sub0"},
    {"net", KVN_SYNTAX_ERROR, "Sub0"},
    {"net { };", KVN_SYNTAX_ERROR, "Sub0"},
    {"net N = { };", KVN_SYNTAX_ERROR, "N"},
};

TEST(KvnReader, OnlyTheOutermostFrameFails) {
  for (const FileCase& c : kFileCases) {
    SCOPED_TRACE(c.bytes);
    Reading reading(c.bytes);
    EXPECT_EQ(reading.result, c.result);
    EXPECT_STREQ(reading.network.Header().GetId(), c.id);
    EXPECT_EQ(reading.network.GetNumberOfNodes(), 0);
  }
  KVN_network network;
  EXPECT_EQ(network.ReadFile("/nowhere/net.kvn"), KVN_FILE_IO);
}

/// Where a statement stands: what goes before and behind it.
const std::map<std::string, std::pair<const char*, const char*>> kPlaces = {
    {"net", {"", ""}},
    {"properties", {"USER_PROPERTIES = { ", " };"}},
    {"submodel", {"submodel S { ", " };"}},
    {"node", {"node A { TYPE = CPT; ", " };"}},
    {"typeless", {"node A { ", " };"}},
    {"cpt", {"node A { TYPE = CPT; DEFINITION = { ", " }; };"}},
    {"strengths",
     {"node P { TYPE = CPT; }; node A { TYPE = NOISY_MAX; PARENTS = (P); DEFINITION = { STRENGTHS "
      "= ",
      "; }; };"}},
    {"extra", {"node A { TYPE = CPT; EXTRA_DEFINITION = { ", " }; };"}},
    {"third",
     {"node A { TYPE = CPT; EXTRA_DEFINITION = { DOCUMENTATION = { }; DOCUMENTATION = { }; ",
      " }; };"}},
    {"costs", {"node A { TYPE = CPT; }; OBSERVATION_COST = { ", " };"}},
    {"cost node", {"node A { TYPE = CPT; }; OBSERVATION_COST = { node A { ", " }; };"}},
};

struct BadCase {
  const char* place;
  const char* statement;
  const char* message;  // without the line; "" for none
};
const BadCase kBadCases[] = {
    {"net", "FOO = 1;", "ERROR: 'FOO' : Unknown Net Statement"},
    // Keywords that a block dispatches on must be spelt exactly, those behind them need not.
    {"net", "header = { };", "ERROR: 'header' : Unknown Net Statement"},
    {"net", "HEADER = { id = M; Name = \"m\"; };", ""},
    {"net", "\"HEADER\" = 1;", "ERROR: 'HEADER' : Unknown Net Field"},
    {"net", "HEADER = { FOO = 1; };", "ERROR: 'FOO' : Unknown Header Statement"},
    {"net", "CREATION = { FOO = 1; };", "ERROR: 'FOO' : Unknown Creation Statement"},
    {"net", "SCREEN = { FOO = 1; };", "ERROR: 'FOO' : Unknown Screen Information Statement"},
    {"net", "WINDOWPOSITION = { FOO = 1; };", "ERROR: 'FOO' : Unknown Rectangle Statement"},
    {"properties", "a = \"1\"; a = \"2\";", "OUT OF RANGE"},
    {"submodel", "FOO = 1;", "ERROR: 'FOO' : Unknown Submodel Statement"},
    {"submodel", "\"PARENT\" = T;", "ERROR: 'PARENT' : Unknown Submodel Field"},
    {"submodel", "PARENT = T;", "ERROR: (\"T\") : Unknown Submodel"},
    {"submodel", "PARENT = S;", "ERROR: (\"S\") : Unknown Submodel"},
    {"submodel", "}; submodel S { FOO = 1;", "ERROR: Couldn't Create Submodel (\"S\")"},
    {"node", "FOO = 1;", "ERROR: 'FOO' : Unknown Node Statement"},
    {"node", "\"TYPE\" = CPT;", "ERROR: 'TYPE' : Unknown Node Field"},
    {"node", "TYPE = EQUATION;", "OUT OF RANGE"},
    {"node", "TARGET = true;", "ERROR: (\"true\") : Boolean Expected"},
    {"node", "PARENTS = (Q);", "ERROR: Couldn't add arc from node [Q] to node [A]"},
    {"node", "PARENTS = (A);", "ERROR: Couldn't add arc from node [A] to node [A]"},
    {"node", "}; node A { FOO = 1;", "ERROR: Couldn't Create Node (\"A\")"},
    {"typeless", "DEFINITION = { NAMESTATES = (a, b); };", "OUT OF RANGE"},
    {"cpt", "FOO = 1;", "ERROR: 'FOO' : Unknown Definition Statement"},
    {"cpt", "PROBABILITIES = (1);", "OUT OF RANGE"},
    {"cpt", "PROBABILITIES = (1, 0,);", "ERROR: ')' : Real Number expected"},
    {"cpt", "PWEIGHTS = (1);", "WRONG NODE TYPE"},
    {"cpt", "BASELINE = \"0.5\";", "WRONG NODE TYPE"},
    {"cpt", "BASELINE = 0.5;", "ERROR: '0.5' : String expected"},
    {"cpt", "STRENGTHS = (0, 1);", "WRONG NODE TYPE"},
    {"strengths", "(0)", "ERROR: NoisyMAX strengths are inconsistent for parent 0"},
    {"strengths", "(1, 1)", "ERROR: NoisyMAX strengths are inconsistent for parent 0"},
    {"strengths", "(0, 2)", "ERROR: NoisyMAX strengths are inconsistent for parent 0"},
    {"extra", "FOO = 1;", "ERROR: 'FOO' : Unknown Definition Statement"},
    {"extra", "FAULT_STATES = (1);", "OUT OF RANGE"},
    {"extra", "FAULT_NAMES = (\"a\");", "OUT OF RANGE"},
    {"extra", "DEFAULT_STATE = 2;", "OUT OF RANGE"},
    {"extra", "STATECOMMENTS = (\"a\");", "Wrong number of state comments"},
    {"extra", "STATEREPAIRINFO = (\"a\");", "Wrong number of repair comments"},
    {"third", "DOCUMENTATION = { \"a\" = \"b\"; };", "OUT OF RANGE"},
    {"costs", "FOO = 1;", "ERROR: 'FOO' : 'node' expected"},
    {"costs", "node Q { };", "ERROR: Couldn't Find Node (\"Q\")"},
    {"cost node", "FOO = 1;", "ERROR: 'FOO' : Unknown Cost Statement"},
    {"cost node", "COSTS = (1, 2);", "OUT OF RANGE"},
    {"cost node", "PARENTS = (Q);", "ERROR: Couldn't add cost arc from node [Q] to node [A]"},
};

TEST(KvnReader, ABadStatementIsToldAndCostsItselfAlone) {
  for (const BadCase& c : kBadCases) {
    SCOPED_TRACE(std::string(c.place) + ": " + c.statement);
    const auto [before, behind] = kPlaces.at(c.place);
    Reading reading(NetOf(std::string(before) + c.statement + behind + " node Z { TYPE = CPT; };"));
    EXPECT_EQ(reading.result, 0);
    const std::string message = c.message;
    EXPECT_EQ(reading.messages, message.empty() ? "" : "(line 1) : " + message + "\n");
    EXPECT_GE(reading.network.FindNode("Z"), 0);
  }
}

TEST(KvnReader, MessagesTellTheLine) {
  EXPECT_EQ(Reading("net N {\nFOO = 1;\n\nnode A {\nBAR = 1; TYPE = CPT; }; };").messages,
            "(line 2) : ERROR: 'FOO' : Unknown Net Statement\n"
            "(line 5) : ERROR: 'BAR' : Unknown Node Statement\n");
  // The submodels tell the log themselves, without a line.
  EXPECT_EQ(Reading(NetOf("node A { TYPE = CPT; SUBMODEL = T; };")).messages,
            "Unknown submodel\n(line 1) : Invalid submodel\n");
}

// It is meant that the "}" behind the three numbers makes the recovery run on: past the next
// block's first statement, whose end then becomes that of the net.
TEST(KvnReader, RecoveryFromATextBoxRunsOn) {
  Reading reading(
      NetOf("SCREENCOMMENT = { (1, 2, 3), \"x\"}; node A { TYPE = CPT; };"
            "node B { TYPE = CPT; };"));
  EXPECT_EQ(reading.messages, "(line 1) : ERROR: Wrong Number Of Screen Coordinates\n");
  EXPECT_EQ(reading.network.GetNumberOfNodes(), 0);
}

TEST(KvnReader, NodesWithoutAKnownTypeVanish) {
  Reading reading(
      NetOf("node A { }; node B { TYPE = CPT; TYPE = EQUATION; };"
            "node C { TYPE = CPT; }; node D { TYPE = cpt; };"));
  EXPECT_EQ(reading.network.GetNumberOfNodes(), 1);
  EXPECT_STREQ(reading.network.GetNode(reading.network.GetFirstNode())->GetId(), "C");
}

TEST(KvnReader, ParentsMustStandBeforeTheirChildren) {
  Reading reading(
      NetOf("node A { TYPE = CPT; PARENTS = (B); DEFINITION = {"
            "PROBABILITIES = (0.25, 0.75, 1, 0); }; }; node B { TYPE = CPT; };"));
  EXPECT_EQ(reading.messages,
            "(line 1) : ERROR: Couldn't add arc from node [B] to node [A]\n"
            "(line 1) : OUT OF RANGE\n");
  EXPECT_EQ(reading.network.GetNumberOfNodes(), 2);
}

// Those that are out of range are passed over without a word; FALSE takes no mark away.
TEST(KvnReader, ModesAndMarks) {
  Reading reading(
      NetOf("SHOWAS = 3; SHOWAS = 4;"
            "node A { TYPE = CPT; TARGET = TRUE; TARGET = FALSE; EXTRA_DEFINITION = {"
            "SHOWAS = 1; SHOWAS = 5; DIAGNOSIS_TYPE = OBSERVATION; }; };"
            "node B { TYPE = CPT; TARGET = FALSE; EXTRA_DEFINITION = {"
            "DIAGNOSIS_TYPE = TARGET; SHOWAS = 4; DIAGNOSIS_TYPE = cause; }; };"));
  EXPECT_EQ(reading.messages, "");
  EXPECT_EQ(reading.network.GetShowAs(), 3);
  EXPECT_EQ(reading.network.IsTarget(reading.network.FindNode("A")), 1);
  EXPECT_EQ(reading.network.IsTarget(reading.network.FindNode("B")), 0);
  const KVN_extraDefinition& a = *reading.NodeOf("A").ExtraDefinition();
  const KVN_extraDefinition& b = *reading.NodeOf("B").ExtraDefinition();
  EXPECT_EQ(a.GetShowAs(), 1);
  EXPECT_EQ(b.GetShowAs(), 4);
  EXPECT_EQ(a.GetDiagnosisType(), KVN_DIAGNOSIS_OBSERVATION);
  EXPECT_EQ(b.GetDiagnosisType(), KVN_DIAGNOSIS_AUXILIARY);
}

TEST(KvnReader, SubmodelsMayStandBeforeTheOnesTheyBelongTo) {
  Reading reading(
      NetOf("submodel Lower { }; submodel Upper { }; submodel Last { PARENT = Upper; };"
            "submodel Mid { PARENT = Last; };"
            "node A { TYPE = CPT; SUBMODEL = Mid; };"));
  EXPECT_EQ(reading.messages, "");
  KVN_submodelHandler& submodels = reading.network.Submodels();
  EXPECT_EQ(submodels.GetParent(submodels.Find("Mid")), submodels.Find("Last"));
  EXPECT_EQ(submodels.GetParent(submodels.Find("Last")), submodels.Find("Upper"));
  EXPECT_EQ(submodels.GetParent(submodels.Find("Lower")), KVN_ROOT_SUBMODEL);
  EXPECT_EQ(reading.NodeOf("A").GetSubmodel() | KVN_SUBMODEL_BIT, submodels.Find("Mid"));
}

/// The parameters of the gate G below a parent P with the outcomes (y, n).
const std::string kParent = "node P { TYPE = CPT; DEFINITION = { NAMESTATES = (y, n); }; };";
std::string GateOf(const std::string& type, const std::string& numbers) {
  return NetOf(kParent + "node G { TYPE = " + type + "; PARENTS = (P); DEFINITION = {" +
               "NAMESTATES = (on, off); PROBABILITIES = (" + numbers + "); }; };" +
               "node C { TYPE = CPT; DEFINITION = { PROBABILITIES = (0.25, 0.75); }; };");
}

struct GateCase {
  const char* type;
  const char* numbers;
  std::vector<double> parameters;
  std::vector<int> strengths;
  std::vector<std::string> outcomes;
};
// The old kinds tell the rows that may be chosen, with the leak in them: P(off | P = y) = 0.4 is
// the parent's 0.5 times the leak's 0.8. A noisy-AND has all orders reversed: off is its highest
// outcome and y the parent's distinguished one.
const GateCase kGateCases[] = {
    {"NOISY_MAX", "0.5, 0.5, 0, 1, 0.2, 0.8", {0.5, 0.5, 0, 1, 0.2, 0.8}, {0, 1}, {"on", "off"}},
    {"NOISY_OR", "0.6, 0.4, 0.2, 0.8", {0.5, 0.5, 0, 1, 0.2, 0.8}, {0, 1}, {"on", "off"}},
    {"NOISY_AND", "0.4, 0.6, 0.8, 0.2", {0.5, 0.5, 0, 1, 0.2, 0.8}, {1, 0}, {"off", "on"}},
    // TYPE forgets the kind before it, here and in the node behind.
    {"NOISY_OR; TYPE = NOISY_MAX",
     "0.5, 0.5, 0, 1, 0.2, 0.8",
     {0.5, 0.5, 0, 1, 0.2, 0.8},
     {0, 1},
     {"on", "off"}},
};

TEST(KvnReader, OldKindsOfGatesBecomeNoisyMax) {
  for (const GateCase& c : kGateCases) {
    SCOPED_TRACE(c.type);
    Reading reading(GateOf(c.type, c.numbers));
    EXPECT_EQ(reading.messages, "");
    KVN_noisyMAX& gate = reading.DefinitionOf<KVN_noisyMAX>("G");
    ASSERT_EQ(gate.GetType(), KVN_TYPE_NOISY_MAX);
    EXPECT_TRUE(CellsNear(gate.GetParameters(), c.parameters, 1e-15));
    EXPECT_EQ(ItemsOf(*gate.GetStrengths(0)), c.strengths);
    EXPECT_EQ(TextsOf(*gate.GetOutcomesNames()), c.outcomes);
    KVN_doubleArray* numbers = nullptr;
    ASSERT_EQ(reading.DefinitionOf<KVN_nodeDefinition>("C").GetDefinition(numbers), 0);
    EXPECT_THAT(ItemsOf(*numbers), ElementsAre(0.25, 0.75));
  }
}

TEST(KvnReader, ShortNoisyAndLeavesTheGateAlone) {
  Reading reading(GateOf("NOISY_AND", "0.4, 0.6, 0.8"));
  EXPECT_EQ(reading.messages, "(line 1) : OUT OF RANGE\n");
  EXPECT_THAT(TextsOf(*reading.DefinitionOf<KVN_noisyMAX>("G").GetOutcomesNames()),
              ElementsAre("on", "off"));
}

// The file gives the rank of each outcome: lo has 1, mid 2, hi 0. The gate keeps who has each rank.
TEST(KvnReader, StrengthsAreTurnedAround) {
  Reading reading(NetOf("node P { TYPE = CPT; DEFINITION = { NAMESTATES = (lo, mid, hi); }; };" +
                        std::string("node Q { TYPE = CPT; };") +
                        "node G { TYPE = NOISY_MAX; PARENTS = (P, Q); DEFINITION = {"
                        "STRENGTHS = (1, 2, 0, 1, 0, 7); }; };"));
  EXPECT_EQ(reading.messages, "");
  KVN_noisyMAX& gate = reading.DefinitionOf<KVN_noisyMAX>("G");
  EXPECT_THAT(ItemsOf(*gate.GetStrengths(0)), ElementsAre(2, 0, 1));
  EXPECT_THAT(ItemsOf(*gate.GetStrengths(1)), ElementsAre(1, 0));
}

TEST(KvnReader, TruthTablesAndCastsTakeTheirOwnStatements) {
  Reading reading(
      NetOf("node P { TYPE = CPT; DEFINITION = { NAMESTATES = (lo, mid, hi); }; };"
            "node T { TYPE = TRUTHTABLE; PARENTS = (P); DEFINITION = {"
            "NAMESTATES = (a, b); RESULTINGSTATES = (b, a, b); }; };"
            "node X { TYPE = CAST; DEFINITION = { BASELINE = \"0.25\"; }; };"));
  EXPECT_EQ(reading.messages, "");
  KVN_stringArray states;
  ASSERT_EQ(reading.DefinitionOf<KVN_truthTable>("T").GetResultingStates(states), 0);
  EXPECT_THAT(TextsOf(states), ElementsAre("b", "a", "b"));
  EXPECT_EQ(reading.DefinitionOf<KVN_cast>("X").GetBaseline(), 0.25);
}

// Shown arcs are the default; what is null or empty has no line, but for the costs' block.
TEST(KvnWriter, LeavesOutWhatNeedNotBeSaid) {
  Reading reading(NetOf("SCREEN = { SHOWINARCS = FALSE; };"));
  ASSERT_EQ(reading.network.WriteFile(reading.folder.Path("out.kvn").c_str()), 0);
  const std::string written = reading.folder.Read("out.kvn");
  EXPECT_NE(written.find("\n   SHOWINARCS = FALSE;\n"), std::string::npos) << written;
  EXPECT_EQ(written.find("SHOWOUTARCS"), std::string::npos);
  EXPECT_EQ(written.find("COMMENT"), std::string::npos);
  EXPECT_NE(written.find("OBSERVATION_COST = \n  {\n  };\n};\n"), std::string::npos) << written;
}

TEST(KvnWriter, KindsWithoutStatementsKeepTheirTypeAndAnEmptyDefinition) {
  Reading reading(NetOf("node D { TYPE = DEMORGAN; };"));
  ASSERT_EQ(reading.network.WriteFile(reading.folder.Path("out.kvn").c_str()), 0);
  const std::string written = reading.folder.Read("out.kvn");
  EXPECT_NE(written.find("  TYPE = DEMORGAN;\n"), std::string::npos) << written;
  EXPECT_NE(written.find("  DEFINITION = \n   {\n   };\n"), std::string::npos) << written;
}

}  // namespace
