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

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;

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
      {"Weather", 100, 200},
      {"Umbrella", 30, -20},
      {"Report", 0, 180},
      {"Mood", 0, 180},
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

/// Cells of C, which has 2 states, below A (2) and B (3).
std::vector<double> CellsFrom(const std::string& data) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "net",
                       "net {} node A { states = (\"a\" \"b\"); }"
                       "node B { states = (\"a\" \"b\" \"c\"); } node C { states = (\"a\" \"b\"); }"
                       "potential (C | A B) { data = " +
                           data + "; }"),
              IsEmpty());
  return CellsOf(network, "C");
}

TEST(HuginSpeaker, ReadsNumbersHoweverTheyAreNested) {
  const std::vector<double> cells = {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1};
  for (const char* data : {"(((1 0)(0 1)(1 0))((0 1)(1 0)(0 1)))", "(1 0 0 1 1 0 0 1 1 0 0 1)",
                           "((1)(0 0 1 ((1 0 0) 1) 1 0) 0 () 1)"}) {
    EXPECT_EQ(CellsFrom(data), cells) << data;
  }
}

// Counts and percents become shares, a row of zeros becomes uniform.
TEST(HuginSpeaker, NormalisesProbabilities) {
  EXPECT_THAT(CellsFrom("((990 10)(0 0)(25 75)(1 3)(.5 .5)(1e-5 0.99999e0))"),
              Pointwise(DoubleNear(1e-15), {0.99, 0.01, 0.5, 0.5, 0.25, 0.75, 0.25, 0.75, 0.5, 0.5,
                                            0.00001, 0.99999}));
}

const std::string kNodeA = "net {}\nnode A { states = (\"a\" \"b\"); }\n";

TEST(HuginSpeaker, LeavesForeignFilesAlone) {
  ExpectMessages("net", "", 0, {"0 Unexpected End of File"});
  ExpectMessages("net", "(network 'alarm)", 0, {"1 '(' : 'net' expected"});
  ExpectMessages("net", "node A {}", 0, {"1 'node' : 'net' expected"});
  ExpectMessages("net", "class N { inputs = (); }", 0, {"1 'class' : 'net' expected"});
}

TEST(HuginSpeaker, TellsWhatIsWrongWithANode) {
  ExpectMessages("net", "net {\n name = Mildew;\n node_size = (1);\n HR_Grid_X = {;};\n}\n", 0,
                 {"2 'name' : Unknown Net Statement", "3 Wrong node size"});
  ExpectMessages(
      "net",
      "net {}\ncontinuous node A { states = (\"a\" \"b\"); }\n"
      "continuous node X { label = \"x\"; }\ndiscrete Y { { } }\n"
      "node 16 { states = (\"a\" \"b\"); }\nnode A {}\n"
      "decision B { states = (\"a\" \"b\"); }",
      2,
      {"2 : Continuous nodes not supported (yet)", "3 : Continuous nodes not supported (yet)",
       "3 Node not ready (valid). Node (\"X\") deleted", "4 'Y' : Unknown Node Type",
       "5 '16' : Identifier expected", "6 Couldn't Create Node (\"A\")"});
  ExpectMessages("net", "net {}\nnode T5.DEBT\n{ states = (\"a\" \"b\"); }\nutility U {}", 1,
                 {"2 '.' : '{' expected", "2 Node not ready (valid). Node (\"T5\") deleted"});
  ExpectMessages("net", "net {}\nnode A { states = (yes no); position = (1);\n label = x; }", 0,
                 {"2 'yes' : ')' expected", "2 Wrong position coordinates",
                  "3 'x' : String expected", "3 Node not ready (valid). Node (\"A\") deleted"});
  ExpectMessages("net", "net {}\nnode A { states = (); }\ndecision D {}\n", 0,
                 {"2 OUT OF RANGE", "2 Node not ready (valid). Node (\"A\") deleted",
                  "3 Node not ready (valid). Node (\"D\") deleted"});
  ExpectMessages("net", "net {}\nnode A { states = (\"a\"); }\n", 1,
                 {"2 Node (\"A\") : Two states needed, one added"});
  ExpectMessages("net", kNodeA + "node B { states = (\"a\" \"b\"); foo }\nnode C { a = \"c\"; }", 2,
                 {"3 '}' : ';' expected"});
}

TEST(HuginSpeaker, TellsWhatIsWrongWithAPotential) {
  ExpectMessages(
      "net",
      kNodeA +
          "potential (X) {}\npotential (A A) {}\npotential (A | Y A) {}\n"
          "potential (A | 16) {}\npotential A {}\npotential (A) { data = (1 0); }",
      1,
      {"3 Node (\"X\") not found", "4 Undirected arcs not (yet) supported",
       "5 Couldn't add arc from parent node (\"Y\")", "5 Couldn't add arc from parent node (\"A\")",
       "6 '16' : ')' expected", "7 'A' : '(' expected"});
  ExpectMessages(
      "net",
      kNodeA +
          "potential (A) {\n experience = (1 2);\n data = normal(0, 1);\n"
          " data = (1 0 3.);\n data = 1 0;\n data = (- .);\n data = (0 1);\n"
          " data = (0 1 -.);\n}",
      1,
      {"4 'experience' : Unknown potential statement", "5 'normal' : Unexpected",
       "6 '3.' : Unexpected", "7 '1' : Unexpected", "8 '-' : Unexpected", "10 OUT OF RANGE"});
  ExpectMessages("net", kNodeA + "potential (A) { data = (1); data = (1 2 3); data = (); }", 1,
                 {"3 Node (\"A\") : 1 numbers found, 2 expected",
                  "3 Node (\"A\") : 3 numbers found, 2 expected",
                  "3 Node (\"A\") : 0 numbers found, 2 expected"});
  ExpectMessages("net",
                 "net {}\ndecision D { states = (\"a\" \"b\"); }\npotential (D) { data = (1 0); }",
                 1, {"3 WRONG NODE TYPE"});
  ExpectMessages("net", kNodeA + "potential (A) {}\nnode B { states = (\"a\" \"b\"); }", 1,
                 {"4 'node' : 'potential' expected"});
  ExpectMessages("net", kNodeA + "potential (A) { data = (1", 1,
                 {"3 Unexpected End of File", "3 NO MORE TOKENS", "3 End of File : Expecting '}'"});
}

TEST(HuginSpeaker, StopsAtAnUnknownCharacter) {
  KVN_network network;
  const std::vector<std::string> messages =
      ReadText(network, "net", kNodeA + "% \xf8 is well here\npotential (\xf8) {}");
  EXPECT_THAT(messages, testing::Contains("ERROR: Line 4 : UNKNOWN CHARACTER"));
  EXPECT_EQ(network.GetNumberOfNodes(), 1);
}

TEST(HuginSpeaker, GoesOnBehindAFault) {
  KVN_network network;
  ReadText(network, "net",
           kNodeA +
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
// compared on its own above.
TEST(HuginSpeaker, ReadsBackWhatItWrites) {
  NetworkCompareOptions compare;
  compare.byTable = true;
  compare.tolerance = 2e-8;  // half of the eighth decimal, and the scaling of rows afterwards
  compare.ignored = {"node.kind", "text.comment", "text.identifier"};
  ExpectReadsBack("net", kKindsWithTables, compare, [](KVN_network& network, KVN_network& copy) {
    network.UserProperties().CleanUp(/*deep=*/1);
    network.Header().SetName(copy.Header().GetName());
    for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
      const char* name = network.GetNode(node)->Info().Header().GetName();
      // A reader puts the identifier in place of an empty label.
      if (name == nullptr || *name == '\0') {
        network.GetNode(node)->SetName(network.GetNode(node)->GetId());
      }
    }
  });
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

TEST(HuginSpeaker, WritesAllOrNothing) { ExpectWritesAllOrNothing("net", AddWideTable); }

TEST(HuginSpeaker, ReadsAllOrTells) { ExpectReadsAllOrTells("net", kDiagram); }

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
