// What the reader of the native text format takes, and what it says to the rest.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/cast.h"
#include "definitions/noisyMAX.h"
#include "definitions/truthTable.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "tests/support/builders.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/scratchFolder.h"

namespace {

/// A network read from a text, with the messages that came up.
struct Read {
  explicit Read(const std::string& text) {
    const ScratchFolder folder;
    const LogWatch log;
    result = network.ReadFile(folder.Write("n.kvn", text).c_str());
    messages = log.Texts();
  }

  KVN_node* Node(const char* id) { return network.GetNode(network.FindNode(id)); }
  KVN_nodeDefinition* Definition(const char* id) {
    return network.DefinitionOf(network.FindNode(id));
  }
  std::vector<double> Table(const char* id) {
    const KVN_Dmatrix& table = TableOfNode(network, network.FindNode(id));
    return {&table[0], &table[0] + table.GetSize()};
  }

  KVN_network network;
  int result = 0;
  std::vector<std::string> messages;
};

std::string Net(const std::string& inside) { return "net N {\n" + inside + "\n};\n"; }

/// A chance node of two outcomes; `more` stands at the end of its block.
std::string Node(const std::string& id, const std::string& parents, const std::string& numbers,
                 const std::string& more = "") {
  return "node " + id + " { TYPE = CPT; PARENTS = (" + parents +
         "); DEFINITION = { NAMESTATES = (a, b); PROBABILITIES = (" + numbers + "); };" + more +
         "};\n";
}

const std::string kRoot = Node("A", "", "0.25, 0.75");

struct MessageCase {
  const char* name;
  std::string inside;                 // of the net block, which starts on line 2
  std::vector<std::string> messages;  // that it gives
};

MessageCase Told(const char* name, const std::string& inside, const std::string& message) {
  return {name, inside, {"(line 2) : " + message}};
}

/// The same behind a chance node A(2), so on line 3.
MessageCase ToldBelow(const char* name, const std::string& inside, const std::string& message) {
  return {name, kRoot + inside, {"(line 3) : " + message}};
}

std::string NodeWith(const std::string& more) { return Node("A", "", "0.25, 0.75", more); }

std::string NoisyMax(const std::string& definition) {
  return "node M { TYPE = NOISY_MAX; PARENTS = (A); DEFINITION = { " + definition + " }; };";
}

std::vector<MessageCase> MessageCases() {
  return {
      {"nothing wrong",       kRoot, {}                   },
      Told("unknown net statement", "FOO = 1;", "ERROR: 'FOO' : Unknown Net Statement"),
      Told("case counts at dispatch", "Node A { };", "ERROR: 'Node' : Unknown Net Statement"),
      Told("header", "HEADER = { FOO = 1; };", "ERROR: 'FOO' : Unknown Header Statement"),
      Told("header id", "HEADER = { ID = 7; };", "ERROR: '7' : Identifier expected"),
      Told("creation", "CREATION = { FOO = 1; };", "ERROR: 'FOO' : Unknown Creation Statement"),
      Told("rectangle", "WINDOWPOSITION = { LEFT = 1; };",
           "ERROR: 'LEFT' : Unknown Rectangle Statement"),
      Told("screen", "SCREEN = { FOO = 1; };",
           "ERROR: 'FOO' : Unknown Screen Information Statement"),
      Told("repeated property", "USER_PROPERTIES = { k = \"1\"; k = \"2\"; };", "OUT OF RANGE"),
      Told("boolean", NodeWith("TARGET = yes;"), "ERROR: (\"yes\") : Boolean Expected"),
      Told("submodel twice", "submodel S { }; submodel S { };",
           "ERROR: Couldn't Create Submodel (\"S\")"),
      Told("submodel statement", "submodel S { FOO = 1; };",
           "ERROR: 'FOO' : Unknown Submodel Statement"),
      Told("submodel below nothing", "submodel S { PARENT = T; };",
           "ERROR: (\"T\") : Unknown Submodel"),
      ToldBelow("node twice", kRoot, "ERROR: Couldn't Create Node (\"A\")"),
      Told("node statement", "node A { FOO = 1; };", "ERROR: 'FOO' : Unknown Node Statement"),
      {"node in no submodel",
       NodeWith("SUBMODEL = S;"),
       {"Unknown submodel", "(line 2) : Invalid submodel"}},
      Told("parent not there yet", Node("A", "B", "0.25, 0.75"),
           "ERROR: Couldn't add arc from node [B] to node [A]"),
      Told("numbers for no parent", Node("A", "", "0.25, 0.75, 0.5, 0.5"), "OUT OF RANGE"),
      Told("definition statement", "node A { TYPE = CPT; DEFINITION = { FOO = 1; }; };",
           "ERROR: 'FOO' : Unknown Definition Statement"),
      Told("extra statement", NodeWith("EXTRA_DEFINITION = { FOO = 1; };"),
           "ERROR: 'FOO' : Unknown Definition Statement"),
      Told("weights for a table", "node A { TYPE = CPT; DEFINITION = { PWEIGHTS = (1); }; };",
           "WRONG NODE TYPE"),
      Told("baseline as a number", "node A { TYPE = CAST; DEFINITION = { BASELINE = 0.5; }; };",
           "ERROR: '0.5' : String expected"),
      ToldBelow("too few strengths", NoisyMax("STRENGTHS = (0);"),
                "ERROR: NoisyMAX strengths are inconsistent for parent 0"),
      ToldBelow("repeated strengths", NoisyMax("STRENGTHS = (0, 0);"),
                "ERROR: NoisyMAX strengths are inconsistent for parent 0"),
      Told("one comment for two", NodeWith("EXTRA_DEFINITION = { STATECOMMENTS = (\"x\"); };"),
           "Wrong number of state comments"),
      Told("one repair for two", NodeWith("EXTRA_DEFINITION = { STATEREPAIRINFO = (\"x\"); };"),
           "Wrong number of repair comments"),
      Told("costs of nobody", "OBSERVATION_COST = { node A { COSTS = (1); }; };",
           "ERROR: Couldn't Find Node (\"A\")"),
      ToldBelow("cost parent of nowhere", "OBSERVATION_COST = { node A { PARENTS = (B); }; };",
                "ERROR: Couldn't add cost arc from node [B] to node [A]"),
      ToldBelow("cost statement", "OBSERVATION_COST = { node A { FOO = (1); }; };",
                "ERROR: 'FOO' : Unknown Cost Statement"),
      Told("trailing comma", "node A { TYPE = CPT; PARENTS = (B, ); };",
           "ERROR: ')' : Identifier expected"),
  };
}

/// Every fault costs its statement and no more: a node behind it is read.
TEST(KvnReader, TellsWhatItDoesNotTake) {
  for (const MessageCase& c : MessageCases()) {
    SCOPED_TRACE(c.name);
    Read read(Net(c.inside + "\n" + Node("Behind", "", "0.5, 0.5")));
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.messages, c.messages);
    EXPECT_GE(read.network.FindNode("Behind"), 0);
  }
}

struct FrameCase {
  const char* name;
  const char* text;
  int result;
  const char* id;  // of the network
};

TEST(KvnReader, OnlyTheOutermostFrameFails) {
  const FrameCase cases[] = {
      {"empty file",        "",                                   0,                "Sub0"},
      {"foreign file",      "hello net N { };",                   0,                "Sub0"},
      {"keyword by case",   "NET N { };",                         0,                "Sub0"},
      {"network alone",     "net N { };",                         0,                "N"   },
      {"no identifier",     "net { };",                           KVN_SYNTAX_ERROR, "Sub0"},
      {"no brace",          "net N ;",                            KVN_SYNTAX_ERROR, "N"   },
      {"no end",            "net N {",                            0,                "N"   },
      {"byte order mark",   "\xEF\xBB\xBFnet N { };",             0,                "Sub0"},
      {"id by its header",  "net N { HEADER = { ID = M; }; };",   0,                "M"   },
      {"comments and CRLF", "// c\r\nnet /* c */ N\r\n{\r\n};\r", 0,                "N"   },
  };
  for (const FrameCase& c : cases) {
    SCOPED_TRACE(c.name);
    Read read(c.text);
    EXPECT_EQ(read.result, c.result);
    EXPECT_STREQ(read.network.Header().GetId(), c.id);
    EXPECT_EQ(read.network.GetNumberOfNodes(), 0);
  }
}

/// A "}" too many makes the skipping run on, so a fault right before a block's end takes what
/// follows the block with it: intended.
TEST(KvnReader, AFaultAtABlocksEndReachesBeyondIt) {
  Read box(Net("SCREENCOMMENT = { (1, 2, 3), \"x\" }; NUMSAMPLES = 5;"));
  EXPECT_EQ(box.messages.front(), "(line 2) : ERROR: Wrong Number Of Screen Coordinates");
  EXPECT_EQ(box.network.GetNumberOfSamples(), 1000);
  Read read(Net("HEADER = { NAME = }; NUMSAMPLES = 5;\n" + kRoot));
  EXPECT_EQ(read.network.GetNumberOfSamples(), 1000);
}

TEST(KvnReader, NodesWithoutAKnownTypeGo) {
  Read read(Net(kRoot + "node B { PARENTS = (A); };\nnode C { TYPE = EQUATION; };\n" +
                Node("D", "A", "1, 0, 0, 1")));
  EXPECT_EQ(read.result, 0);
  EXPECT_EQ(read.network.GetNumberOfNodes(), 2);
  EXPECT_EQ(read.Table("D"), (std::vector<double>{1, 0, 0, 1}));
}

/// Inclusive numbers, the row of the distinguished outcome b left out, the leak last.
TEST(KvnReader, NoisyOrTakesTheRowsThatAreFree) {
  Read read(Net(kRoot +
                "node M { TYPE = NOISY_OR; PARENTS = (A); DEFINITION = { NAMESTATES = (y, n); "
                "PROBABILITIES = (0.8, 0.2, 0.1, 0.9); }; };"));
  EXPECT_EQ(read.messages, std::vector<std::string>());
  // A = a: as stated, the leak included; A = b: the leak alone.
  EXPECT_TRUE(CellsNear(TableOfNode(read.network, read.network.FindNode("M")), {0.8, 0.2, 0.1, 0.9},
                        1e-15));
}

/// The same with every order reversed: outcome a of the parent doesn't act, and the node's outcomes
/// stand the other way round.
TEST(KvnReader, NoisyAndReversesEveryOrder) {
  Read read(Net(kRoot +
                "node M { TYPE = NOISY_AND; PARENTS = (A); DEFINITION = { NAMESTATES = (y, n); "
                "PROBABILITIES = (0.1, 0.9, 0.7, 0.3); }; };"));
  EXPECT_EQ(read.messages, std::vector<std::string>());
  EXPECT_EQ(TextsOf(*read.Definition("M")->GetOutcomesNames()),
            (std::vector<std::string>{"n", "y"}));
  // A = a: the leak (n 0.3, y 0.7); A = b: the first row (n 0.9, y 0.1).
  EXPECT_TRUE(CellsNear(TableOfNode(read.network, read.network.FindNode("M")), {0.3, 0.7, 0.9, 0.1},
                        1e-15));
}

/// The file lists states by rank, the gate keeps the rank of each state: (1, 2, 0) says that state
/// 1 comes first, so state 0 has rank 2, state 1 rank 0 and state 2 rank 1.
TEST(KvnReader, StrengthsAreInverted) {
  Read read(Net("node A { TYPE = CPT; DEFINITION = { NAMESTATES = (a, b, c); }; };\n" +
                Node("B", "", "0.5, 0.5") +
                "node M { TYPE = NOISY_MAX; PARENTS = (B, A); DEFINITION = { NAMESTATES = (y, n); "
                "STRENGTHS = (1, 0, 1, 2, 0); }; };"));
  const auto& gate = static_cast<const KVN_noisyMAX&>(*read.Definition("M"));
  EXPECT_EQ(ItemsOf(*gate.GetStrengths(0)), (std::vector<int>{1, 0}));
  EXPECT_EQ(ItemsOf(*gate.GetStrengths(1)), (std::vector<int>{2, 0, 1}));
}

TEST(KvnReader, ReadsEachKindsNumbers) {
  Read read(
      Net(kRoot +
          "node T { TYPE = TRUTHTABLE; PARENTS = (A); DEFINITION = { NAMESTATES = (x, y, z); "
          "RESULTINGSTATES = (z, x); }; };\n"
          "node D { TYPE = LIST; PARENTS = (A); DEFINITION = { NAMECHOICES = (go, stay); }; };\n"
          "node U { TYPE = TABLE; PARENTS = (D, T); DEFINITION = { "
          "UTILITIES = (1, 2, 3, -4, 0.0E-2, 6e1); }; };\n"
          "node C { TYPE = CAST; DEFINITION = { BASELINE = \"0.125\"; }; };\n"
          "node E { TYPE = CAST; PARENTS = (C); DEFINITION = { PWEIGHTS = (0.5); "
          "NWEIGHTS = (-0.25); }; };\n"));
  EXPECT_EQ(read.messages, std::vector<std::string>());
  EXPECT_EQ(read.Table("T"), (std::vector<double>{0, 0, 1, 1, 0, 0}));
  EXPECT_EQ(TextsOf(*read.Definition("D")->GetOutcomesNames()),
            (std::vector<std::string>{"go", "stay"}));
  EXPECT_EQ(read.Table("U"), (std::vector<double>{1, 2, 3, -4, KVN_UNDEFINED_VALUE, 60}));
  EXPECT_EQ(static_cast<const KVN_cast&>(*read.Definition("C")).GetBaseline(), 0.125);
  const auto& gate = static_cast<const KVN_cast&>(*read.Definition("E"));
  EXPECT_EQ(ItemsOf(gate.GetPositiveWeights()), std::vector<double>{0.5});
  EXPECT_EQ(ItemsOf(gate.GetNegativeWeights()), std::vector<double>{-0.25});
}

TEST(KvnReader, ReadsDescriptions) {
  Read read(Net(
      "SHOWAS = 2; SHOWAS = 4; SCREEN = { COLOR = 7; SHOWINARCS = FALSE; };\n"
      "SCREENCOMMENT = { (1, 2, 3, 4), \"box \\\"1\\\"\" };\n"
      // The parent may come later, as long as it is known when PARENT is read.
      "submodel Inner { }; submodel Outer { SCREENCOMMENT = { (5, 6, 7, 8), \"in\" }; };\n"
      "submodel Last { PARENT = Outer; };\n" +
      Node("A", "", "0.25, 0.75",
           "TARGET = TRUE; TARGET = FALSE; SUBMODEL = Last; HEADER = { NAME = \"x\"; };"
           "EXTRA_DEFINITION = { DIAGNOSIS_TYPE = NONSENSE; RANKED = TRUE; SHOWAS = 1; SHOWAS = 9;"
           "DOCUMENTATION = { \"first\" = \"1\"; }; DOCUMENTATION = { \"second\" = \"2\"; };"
           "FAULT_STATES = (0, 1); DEFAULT_STATE = 1; };") +
      Node("B", "A", "1, 0, 0, 1") +
      "OBSERVATION_COST = { node B { PARENTS = (A); COSTS = (3, 4.5); }; };"));
  EXPECT_EQ(read.messages, std::vector<std::string>());
  KVN_network& network = read.network;
  EXPECT_EQ(network.GetShowAs(), 2);  // 4 is for nodes only, and ignored without a word
  KVN_submodel& root = *network.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  EXPECT_EQ(root.Screen().color, 7);
  EXPECT_EQ(root.Screen().screenFlags, KVN_screenInfo::kShowOutArcs);
  EXPECT_STREQ(root.TextBoxes().GetText(0), "box \"1\"");
  const int last = network.Submodels().Find("Last");
  EXPECT_EQ(network.Submodels().GetParent(last), network.Submodels().Find("Outer"));
  EXPECT_EQ(network.IsTarget(network.FindNode("A")), 1);  // FALSE takes no mark away
  KVN_extraDefinition& extra = *read.Node("A")->ExtraDefinition();
  EXPECT_EQ(extra.GetDiagnosisType(), KVN_DIAGNOSIS_AUXILIARY);
  EXPECT_EQ(extra.GetShowAs(), 1);
  EXPECT_EQ(extra.GetDefaultOutcome(), 1);
  EXPECT_STREQ(extra.GetStateDocumentation(1)->GetTitle(0), "second");
  EXPECT_EQ(read.Node("A")->GetSubmodel(), last);
  EXPECT_STREQ(read.Node("B")->Info().Header().GetName(), "B");
  const KVN_Dmatrix& costs = read.Node("B")->Cost()->GetCosts();
  EXPECT_TRUE(CellsNear(costs, {3, 4.5}, 0.0));
}

}  // namespace
