#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "network/header.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/userProperties.h"
#include "tests/formats/text/foreignFiles.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pointwise;

std::vector<double> CellsOf(KVN_network& network, const char* id) {
  return ItemsOf(TableOfNode(network, network.FindNode(id)).GetItems());
}

std::vector<std::string> StatesOf(KVN_network& network, const char* id) {
  return TextsOf(*network.DefinitionOf(network.FindNode(id))->GetOutcomesNames());
}

std::vector<std::string> ParentsOf(KVN_network& network, const char* id) {
  std::vector<std::string> ids;
  for (int parent : network.GetParents(network.FindNode(id))) {
    ids.emplace_back(network.GetNode(parent)->GetId());
  }
  return ids;
}

KVN_nodeInfo& InfoOf(KVN_network& network, const char* id) {
  return network.GetNode(network.FindNode(id))->Info();
}

// Every kind of block. "50 %" is a comment, "100 %" a text; tabs, a line break before "=" and
// comments among the numbers mean nothing.
const char* const kDiagram = R"(% "written" by hand ) (
net
{
  node_size = (80 40); HR_Grid_X = "10"; % 50 % ;
}
discrete node Weather
{
  label = "The weather, \"today\"";
  position = (100 -20);
  states = ("no rain" "<5" "10-12" "100 %");
  subtype = number;
  HR_Desc = "one\ntwo";
}

decision Umbrella { label = ""; states = ("take" "leave"); position = (30.9 200) ; }
node Report { states = ("dry" "wet"); }
utility Mood { position = (0 0); }
potential (Weather | ) { data	
 =	(	0.5	0.25	0.125	0.125	)	; }
potential (Umbrella | Report) {}
potential (Report|Weather) {
  data = ((0.9 0.1) % Weather=no rain
          (1 0)(0 1)
          (2e-01 8.0E-1)); % the last
}
potential (Mood | Weather Umbrella)
{ data = ((-1 8)(2 3)(4 -1000)(1e2 7)); }
% the end)";

TEST(HuginSpeaker, ReadsAnInfluenceDiagram) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "net", kDiagram), IsEmpty());

  EXPECT_EQ(network.GetNumberOfNodes(), 4);
  EXPECT_THAT(StatesOf(network, "Weather"), ElementsAre("no_rain", "x_5", "x10_12", "x100__"));
  EXPECT_THAT(StatesOf(network, "Umbrella"), ElementsAre("take", "leave"));
  EXPECT_STREQ(InfoOf(network, "Weather").Header().GetName(), "The weather, \"today\"");
  EXPECT_STREQ(InfoOf(network, "Umbrella").Header().GetName(), "Umbrella");
  const KVN_userProperties& properties = InfoOf(network, "Weather").UserProperties();
  ASSERT_EQ(properties.GetCount(), 1);
  EXPECT_STREQ(properties.GetKey(0), "HR_Desc");
  EXPECT_STREQ(properties.GetValue(0), "one\ntwo");

  EXPECT_EQ(network.TypeOf(network.FindNode("Umbrella")), KVN_TYPE_LIST);
  EXPECT_EQ(network.TypeOf(network.FindNode("Mood")), KVN_TYPE_TABLE);
  EXPECT_THAT(ParentsOf(network, "Umbrella"), ElementsAre("Report"));
  EXPECT_THAT(ParentsOf(network, "Mood"), ElementsAre("Weather", "Umbrella"));
  EXPECT_THAT(CellsOf(network, "Weather"), ElementsAre(0.5, 0.25, 0.125, 0.125));
  EXPECT_THAT(CellsOf(network, "Report"), ElementsAre(0.9, 0.1, 1, 0, 0, 1, 0.2, 0.8));
  EXPECT_THAT(CellsOf(network, "Mood"), ElementsAre(-1, 8, 2, 3, 4, -1000, 100, 7));
}

// Heights are 40 everywhere, so the top edges are -20 - 20, 200 - 20, 0 - 20 and again -20: the
// largest is 180, and each y becomes 180 - y.
TEST(HuginSpeaker, TurnsThePictureUpsideDown) {
  KVN_network network;
  ReadText(network, "net", kDiagram);
  struct {
    const char* id;
    int x, y;
  } const cases[] = {
      {"Weather",  100, 200},
      {"Umbrella", 30,  -20},
      {"Report",   0,   180},
      {"Mood",     0,   180},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.id);
    const KVN_rectangle& rectangle = InfoOf(network, c.id).Screen().position;
    EXPECT_EQ(rectangle.center_X, c.x);
    EXPECT_EQ(rectangle.center_Y, c.y);
    EXPECT_EQ(rectangle.width, 80);
    EXPECT_EQ(rectangle.height, 40);
  }
  // Twice upside down is the file's picture again, moved: the largest edge is now 180, so the file
  // written says -20, 200, 0, 0. That the move is none is chance.
  EXPECT_THAT(WrittenText(network, "net"), testing::HasSubstr("position = (100 -20);"));
}

TEST(HuginSpeaker, KeepsYInItsRange) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "net",
                       "net {} node A { states=(\"a\" \"b\"); position=(0 2147483647); }"
                       "node B { states=(\"a\" \"b\"); position=(0 -2147483648); }"),
              IsEmpty());
  EXPECT_EQ(InfoOf(network, "B").Screen().position.center_Y, 2147483647);
}

struct NumbersCase {
  const char* name;
  const char* data;
  std::vector<double> cells;  // of C, below A (2) and B (3), with 2 states
};
const NumbersCase kNumbersCases[] = {
    {"nested",         "(((1 0)(0 1)(1 0))((0 1)(1 0)(0 1)))", {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1}                                      },
    {"flat",           "(1 0 0 1 1 0 0 1 1 0 0 1)",            {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1}                                      },
    {"nested at will", "((1)(0 0 1 ((1 0 0) 1) 1 0) 0 () 1)",  {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1}                                      },
 // The row of zeros becomes uniform, counts and percents become shares.
    {"normalised",
     "((990 10)(0 0)(25 75)(1 3)(.5 .5)(1e-5 0.99999e0))",     {0.99, 0.01, 0.5, 0.5, 0.25, 0.75, 0.25, 0.75, 0.5, 0.5, 0.00001, 0.99999}},
};

std::string BelowTwoParents(const std::string& potential) {
  return "net {}\n"
         "node A { states = (\"a\" \"b\"); } node B { states = (\"a\" \"b\" \"c\"); }\n"
         "node C { states = (\"a\" \"b\"); }\n" +
         potential;
}

TEST(HuginSpeaker, ReadsNumbersHoweverTheyAreNested) {
  for (const NumbersCase& c : kNumbersCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const std::string potential = "potential (C | A B) { data = " + std::string(c.data) + "; }";
    EXPECT_THAT(ReadText(network, "net", BelowTwoParents(potential)), IsEmpty());
    EXPECT_THAT(CellsOf(network, "C"), Pointwise(DoubleNear(1e-15), c.cells));
  }
}

struct MessageCase {
  const char* name;
  std::string text;
  std::vector<std::string> messages;
  int nodes;
};
const char* const kNodeA = "net {}\nnode A { states = (\"a\" \"b\"); }\n";

const MessageCase kMessageCases[] = {
    {"empty file",                  "",                                                              {"(line 0) : ERROR: Unexpected End of File"},                                              0},
    {"another program's file",
     "(network 'alarm :probability)",                                                                {"(line 1) : ERROR: '(' : 'net' expected"},
     0                                                                                                                                                                                           },
    {"no net block",                "node A {}",                                                     {"(line 1) : ERROR: 'node' : 'net' expected"},                                             0},
    {"object-oriented",
     "class N { inputs = (); }",                                                                     {"(line 1) : ERROR: 'class' : 'net' expected"},
     0                                                                                                                                                                                           },
    {"net statements",
     "net {\n name = Mildew;\n node_size = (1);\n HR_Grid_X = {;};\n}\n",                            {"(line 2) : ERROR: 'name' : Unknown Net Statement", "(line 3) : ERROR: Wrong node size"},
     0                                                                                                                                                                                           },
    {"kinds of nodes",
     "net {}\ncontinuous node A { states = (\"a\" \"b\"); }\ncontinuous node X { label = \"x\"; }\n"
     "discrete Y { { } }\nnode 16 { states = (\"a\" \"b\"); }\nnode A {}\n"
     "decision B { states = (\"a\" \"b\"); }",                                                       {"(line 2) : ERROR: : Continuous nodes not supported (yet)",
      "(line 3) : ERROR: : Continuous nodes not supported (yet)",
      "(line 3) : ERROR: Node not ready (valid). Node (\"X\") deleted",
      "(line 4) : ERROR: 'Y' : Unknown Node Type", "(line 5) : ERROR: '16' : Identifier expected",
      "(line 6) : ERROR: Couldn't Create Node (\"A\")"},
     2                                                                                                                                                                                           },
    {"dotted identifier",
     "net {}\nnode T5.DEBT\n{ states = (\"a\" \"b\"); }\nnode B { states = (\"a\" \"b\"); }",        {"(line 2) : ERROR: '.' : '{' expected",
      "(line 2) : ERROR: Node not ready (valid). Node (\"T5\") deleted"},
     1                                                                                                                                                                                           },
    {"states without quotes",
     "net {}\nnode A { states = (yes no); position = (1); label = x; }",                             {"(line 2) : ERROR: 'yes' : ')' expected", "(line 2) : ERROR: Wrong position coordinates",
      "(line 2) : ERROR: 'x' : String expected",
      "(line 2) : ERROR: Node not ready (valid). Node (\"A\") deleted"},
     0                                                                                                                                                                                           },
    {"no states at all",
     "net {}\nnode A { states = (); }\ndecision D {}\nutility U {}",                                 {"(line 2) : OUT OF RANGE", "(line 2) : ERROR: Node not ready (valid). Node (\"A\") deleted",
      "(line 3) : ERROR: Node not ready (valid). Node (\"D\") deleted"},
     1                                                                                                                                                                                           },
    {"one state",
     "net {}\nnode A { states = (\"a\"); }\n",                                                       {"(line 2) : ERROR: Node (\"A\") : Two states needed, one added"},
     1                                                                                                                                                                                           },
    {"a brace too early",
     "net {}\nnode A { states = (\"a\" \"b\"); foo }\nnode B { states = (\"c\" \"d\"); }",           {"(line 2) : ERROR: '}' : ';' expected"},
     1                                                                                                                                                                                           },
    {"heads of potentials",
     std::string(kNodeA) + "potential (X) {}\npotential (A A) {}\npotential (A | Y A) {}\n"
                           "potential (A | 16) {}\npotential A {}\npotential (A) { data = (1 0); }", {"(line 3) : ERROR: Node (\"X\") not found",
      "(line 4) : ERROR: Undirected arcs not (yet) supported",
      "(line 5) : ERROR: Couldn't add arc from parent node (\"Y\")",
      "(line 5) : ERROR: Couldn't add arc from parent node (\"A\")",
      "(line 6) : ERROR: '16' : ')' expected", "(line 7) : ERROR: 'A' : '(' expected"},
     1                                                                                                                                                                                           },
    {"statements of potentials",
     std::string(kNodeA) + "potential (A) {\n experience = (1 2);\n data = normal(0, 1);\n"
                           " data = (1 0 3.);\n data = 1 0;\n data = (- .);\n data = (0 1);\n}",     {"(line 4) : ERROR: 'experience' : Unknown potential statement",
      "(line 5) : ERROR: 'normal' : Unexpected", "(line 6) : ERROR: '3.' : Unexpected",
      "(line 7) : ERROR: '1' : Unexpected", "(line 8) : ERROR: '-' : Unexpected"},
     1                                                                                                                                                                                           },
    {"numbers too few or too many",
     std::string(kNodeA) + "potential (A) { data = (1); data = (1 2 3); data = (); }",
     {"(line 3) : ERROR: Node (\"A\") : 1 numbers found, 2 expected",
      "(line 3) : ERROR: Node (\"A\") : 3 numbers found, 2 expected",
      "(line 3) : ERROR: Node (\"A\") : 0 numbers found, 2 expected"},
     1                                                                                                                                                                                           },
    {"numbers of a decision",
     "net {}\ndecision D { states = (\"a\" \"b\"); }\npotential (D) { data = (1 0); }",              {"(line 3) : WRONG NODE TYPE"},
     1                                                                                                                                                                                           },
    {"nodes among potentials",
     std::string(kNodeA) + "potential (A) {}\nnode B { states = (\"a\" \"b\"); }",
     {"(line 4) : ERROR: 'node' : 'potential' expected"},
     1                                                                                                                                                                                           },
    {"cut in a list",
     std::string(kNodeA) + "potential (A) { data = (1",
     {"(line 3) : ERROR: Unexpected End of File", "(line 3) : NO MORE TOKENS",
      "(line 3) : ERROR: End of File : Expecting '}'"},
     1                                                                                                                                                                                           },
};

TEST(HuginSpeaker, TellsWhatItCannotRead) {
  for (const MessageCase& c : kMessageCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    EXPECT_THAT(ReadText(network, "net", c.text), ElementsAreArray(c.messages));
    EXPECT_EQ(network.GetNumberOfNodes(), c.nodes);
  }
}

TEST(HuginSpeaker, StopsAtAnUnknownCharacter) {
  KVN_network network;
  const std::vector<std::string> messages =
      ReadText(network, "net", std::string(kNodeA) + "% \xf8 is well here\npotential (\xf8) {}");
  EXPECT_THAT(messages, testing::Contains("ERROR: Line 4 : UNKNOWN CHARACTER"));
  EXPECT_EQ(network.GetNumberOfNodes(), 1);
}

TEST(HuginSpeaker, GoesOnBehindAFault) {
  KVN_network network;
  ReadText(network, "net",
           std::string(kNodeA) +
               "potential (X | A) { data = (1 { ; } ); }\n"
               "potential (A) { fading = 1; data = (0.25 0.75) }");
  EXPECT_THAT(CellsOf(network, "A"), ElementsAre(0.25, 0.75));
  EXPECT_EQ(network.ReadFile("/nowhere/file.net"), KVN_FILE_IO);
}

TEST(HuginSpeaker, MakesStatesDifferent) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "net", "net {} node A { states = (\"a\" \"a\" \"\" \"a b\"); }"),
              IsEmpty());
  EXPECT_THAT(StatesOf(network, "A"), ElementsAre("a", "a2", "x2", "a_b"));
}

// New nodes are 76 by 36, so the top edges are 7 - 18 and three times 0 - 18. The largest is -11,
// and y is -11 - 7 and -11 - 0. The utility's innermost lists run through its last parent.
TEST(HuginSpeaker, WritesNestedLists) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 3, {a});
  const int c = AddCpt(network, "C", 2, {a, d}, {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0.5, 0.5});
  WriteCells(network, AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {a, c}), {1, -2, 3e3, 1e-9});
  network.GetNode(a)->SetName("say \"a\"\n");
  InfoOf(network, "A").Screen().position.center_Y = 7;
  EXPECT_EQ(InfoOf(network, "A").UserProperties().AddProperty("key", "100 %"), 0);
  EXPECT_EQ(WrittenText(network, "net"), R"(net 
{
    node_size = (76 36);
}

node A
{
    label = "say \"a\"\n";
    position = (0 -18);
    states = ("State0" "State1");
    key = "100 %";
}

decision D
{
    label = "D";
    position = (0 -11);
    states = ("Choice0" "Choice1" "Choice2");
}

node C
{
    label = "C";
    position = (0 -11);
    states = ("State0" "State1");
}

utility U
{
    label = "U";
    position = (0 -11);
}

potential (A |)
{
    data = (0.25000000 0.75000000);
}

potential (D | A)
{
}

potential (C | A D)
{
    data = (((1.00000000 0.00000000)
             (0.00000000 1.00000000)
             (1.00000000 0.00000000))
            ((0.00000000 1.00000000)
             (1.00000000 0.00000000)
             (0.50000000 0.50000000)));
}

potential (U | A C)
{
    data = ((1.00000000 -2.00000000)
            (3000.00000000 0.00000000));
}
)");
}

// Both ways y is subtracted from a number of the whole network, so a picture only moves: layout is
// compared on its own above. The rest is what the format has no words for.
TEST(HuginSpeaker, ReadsBackWhatItWrites) {
  RandomNetworkOptions options;
  options.nodes = 14;
  options.kinds = {KVN_TYPE_CPT,   KVN_TYPE_TRUTHTABLE, KVN_TYPE_LIST,
                   KVN_TYPE_TABLE, KVN_TYPE_NOISY_MAX,  KVN_TYPE_NOISY_ADDER};
  options.diagnosis = options.costs = false;
  NetworkCompareOptions compare;
  compare.byTable = true;
  compare.tolerance = 2e-8;  // half of the eighth decimal, and the scaling of rows afterwards
  compare.ignored = {"node.kind",     "node.target",     "node.submodel",  "submodel",
                     "text.comment",  "text.identifier", "text.documents", "text.boxes",
                     "text.creation", "layout",          "setting",        "diagnosis"};
  for (std::uint64_t seed = 1; seed <= 40; seed++) {
    SCOPED_TRACE(seed);
    KVN_network network;
    FillRandomNetwork(network, seed, options);
    KVN_network copy;
    EXPECT_THAT(ReadText(copy, "net", WrittenText(network, "net")), IsEmpty());
    network.UserProperties().CleanUp(/*deep=*/1);
    network.Header().SetName(copy.Header().GetName());
    for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
      const char* name = network.GetNode(node)->Info().Header().GetName();
      // A reader puts the identifier in place of an empty label.
      if (name == nullptr || *name == '\0') {
        network.GetNode(node)->SetName(network.GetNode(node)->GetId());
      }
    }
    EXPECT_TRUE(NetworksEqual(network, copy, compare));
  }
}

TEST(HuginSpeaker, KeepsLongAndReservedTexts) {
  KVN_network network;
  const int a = network.AddNode(KVN_TYPE_CPT, "A");
  KVN_stringArray names;  // a line with all of them would be longer than a reader's buffer
  for (int i = 0; i < 80; i++) {
    EXPECT_EQ(names.Add((std::string(500, 's') + std::to_string(i)).c_str()), 0);
  }
  EXPECT_EQ(network.DefinitionOf(a)->SetNumberOfOutcomes(names), 0);
  network.GetNode(a)->SetName(std::string(12000, '"').c_str());
  EXPECT_EQ(InfoOf(network, "A").UserProperties().AddProperty("States", "x"), 0);
  const LogWatch log;
  const std::string text = WrittenText(network, "net");
  EXPECT_THAT(log.Texts(), ElementsAre("ERROR: 'States' : Property not supported by Hugin"));
  KVN_network copy;
  EXPECT_THAT(ReadText(copy, "net", text), IsEmpty());
  EXPECT_EQ(StatesOf(copy, "A"), StatesOf(network, "A"));
  EXPECT_EQ(InfoOf(copy, "A").Header().GetName(), std::string(10210, '"'));
}

TEST(HuginSpeaker, RefusesToWriteWhatItCannotCarry) {
  ExpectRefusedToWrite("net", KVN_TYPE_CAST, "ERROR: 'CAST' : Node type not supported by Hugin");
  ExpectRefusedToWrite("net", KVN_TYPE_MAU, "ERROR: This Network cannot be saved in Hugin format");
}

TEST(HuginSpeaker, SurvivesDamage) { ExpectSurvivesDamage("net", kDiagram); }

TEST(HuginSpeaker, ReadsTheSharedNetworks) {
  SKIP_WITHOUT_SHARED_NETWORKS();
  ExpectSharedNetworksLoad("net");
}

// Half of the arcs are given before those above them. A reader that looked through all nodes for
// each would take minutes.
TEST(HuginSpeaker, ReadsTwentyThousandNodes) {
  constexpr int kNodes = 20000;
  std::string text = "net {}\n", potentials;
  for (int i = 0; i < kNodes; i++) {
    const std::string id = "N" + std::to_string(i);
    text += "node " + id + " { states = (\"a\" \"b\"); }\n";
    const int child = i % 2 == 0 ? i : kNodes - i;
    if (child == 0) continue;
    potentials += "potential (N" + std::to_string(child) + " | N" + std::to_string(child - 1) +
                  ") { data = ((0.1 0.9)(0.2 0.8)); }\n";
  }
  KVN_network network;
  EXPECT_THAT(ReadText(network, "net", text + potentials), IsEmpty());
  EXPECT_EQ(SizeOf("", network).arcs, kNodes - 1);
}

}  // namespace
