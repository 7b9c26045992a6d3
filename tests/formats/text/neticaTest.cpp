#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "expressions/equation.h"
#include "formats/text/neticaExpressionParser.h"
#include "foundation/random.h"
#include "network/creation.h"
#include "network/header.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "network/userProperties.h"
#include "tests/formats/text/foreignFiles.h"
#include "tests/support/equationBuilder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What the programs of others put into such files: nested and flat lists, rows without their last
// number, a parent behind its child, impossible cells, strings over lines, bytes as hexadecimal
// digits, blocks and lists that mean nothing.
const char* const kDiagram = R"(// ~->[DNET-1]->~
bnet Trip {
autoupdate = TRUE; ElimOrder = (Rain, , Mood);
title = "A trip"; comment = "one \
	two\n"; author = "me"; whenchanged = 1055;
visual V1 {
	defdispform = BELIEFBARS; nodefont = font {shape= "Arial"; size= 9;};
	windowposn = (10, 20, 110, 220); backcolor = 0x00E1E1E1;
	NodeSet Node {BuiltIn = 1; Color = 0x00E1E1E1;};
	};
user U1 { k = "v"; };
PrinterSetting A {margins = (1, 2); landscape = FALSE;};
node Report {
	kind = NATURE;
	discrete = TRUE;
	measure = NOMINAL;
	chance = CHANCE;
	states = (dry, wet);
	inputs = (, x, );
	parents = ( Rain );
	probs =
		// dry   wet
		((0.5,   0.5),   // none
		 (@imposs, @imposs),
		 (0.25,  0.75)); // heavy ;
	title = "0\E2\80\9330";
	numcases = (1, 2.5); whenchanged = 12; belief = (0.1, 0.9);
	user U1 { rules = "\"Comp\""; colour = "red"; };
	visual V1 {
		center = (10, -20); height = 2; size = (30, 40);
		link 1 { path = ((1, 2), (3, 4)); };
		};
	};
node Rain { numstates = 3; levels = (1, 2, 3); statetitles = (, "x"); evidence = #0; probs = (0.5, 1e-1); };
node Take { kind = DECISION; discrete = TRUE; states = (yes, no); parents = (Report);
	functable = (yes, no); };
node Wet { chance = DETERMIN; states = (dry, wet); parents = (Take, Report);
	probs = ((1, 0), (1, 0), (1, 0), (0, 1)); functable = ((dry, dry), (dry, wet)); };
node Mood { kind = UTILITY; discrete = FALSE; measure = RATIO; chance = DETERMIN;
	parents = (Take, Wet); functable = (1, -2, 3, 4.5); equation = "Mood (Take, Wet) = \
	  0"; };
};
)";

TEST(NeticaSpeaker, ReadsAnInfluenceDiagram) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "dne", kDiagram), IsEmpty());

  EXPECT_STREQ(network.Header().GetId(), "Trip");
  EXPECT_STREQ(network.Header().GetName(), "A trip");
  EXPECT_STREQ(network.Header().GetComment(), "one two\n");
  EXPECT_STREQ(network.Creation().GetCreator(), "me");
  EXPECT_STREQ(network.Creation().GetModified(), "1055");
  const KVN_submodel& root = *network.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  EXPECT_EQ(root.GetWindowColor(), 0xE1E1E1);

  ASSERT_EQ(network.GetNumberOfNodes(), 5);
  EXPECT_THAT(StatesOf(network, "Rain"), ElementsAre("State0", "State1", "State2"));
  EXPECT_THAT(ParentsOf(network, "Report"), ElementsAre("Rain"));
  EXPECT_THAT(ParentsOf(network, "Mood"), ElementsAre("Take", "Wet"));
  EXPECT_EQ(network.TypeOf(network.FindNode("Take")), KVN_TYPE_LIST);
  EXPECT_EQ(network.TypeOf(network.FindNode("Wet")), KVN_TYPE_TRUTHTABLE);
  EXPECT_THAT(CellsOf(network, "Rain"), ElementsAre(0.5, 0.1, 0.4));
  EXPECT_THAT(CellsOf(network, "Report"), ElementsAre(0.5, 0.5, 0.5, 0.5, 0.25, 0.75));
  EXPECT_THAT(CellsOf(network, "Wet"), ElementsAre(1, 0, 1, 0, 1, 0, 0, 1));
  EXPECT_THAT(CellsOf(network, "Mood"), ElementsAre(1, -2, 3, 4.5));
}

TEST(NeticaSpeaker, ReadsWhatBelongsToANode) {
  KVN_network network;
  ReadText(network, "dne", kDiagram);
  KVN_nodeInfo& info = network.GetNode(network.FindNode("Report"))->Info();
  EXPECT_STREQ(info.Header().GetName(),
               "0\xE2\x80\x93"
               "30");
  const KVN_rectangle& place = info.Screen().position;
  EXPECT_EQ(place.center_X, 10);
  EXPECT_EQ(place.center_Y, -20);
  EXPECT_EQ(place.width, 30);
  EXPECT_EQ(place.height, 40);
  ASSERT_EQ(info.UserProperties().GetCount(), 2);
  EXPECT_STREQ(info.UserProperties().GetKey(0), "rules");
  EXPECT_STREQ(info.UserProperties().GetValue(0), "\"Comp\"");
}

// Comments end at a carriage return where there are no line feeds.
TEST(NeticaSpeaker, ReadsTheLineEndsOfAllMachines) {
  for (const char* end : {"\n", "\r\n", "\r"}) {
    std::string text;
    for (const char* c = kDiagram; *c != '\0'; c++) text += *c == '\n' ? end : std::string(1, *c);
    KVN_network network;
    EXPECT_THAT(ReadText(network, "dne", text), IsEmpty());
    EXPECT_EQ(network.GetNumberOfNodes(), 5);
  }
}

struct MessageCase {
  const char* name;
  std::string text;
  int nodes;
  std::vector<std::string> messages;
};

void ExpectAll(const std::vector<MessageCase>& cases) {
  for (const MessageCase& c : cases) {
    SCOPED_TRACE(c.name);
    ExpectMessages("dne", "bnet N {\n" + c.text, c.nodes, c.messages);
  }
}

TEST(NeticaSpeaker, TellsWhatIsWrongWithTheNetwork) {
  ExpectMessages("dne", "", 0, {"0 Unexpected End of File"});
  ExpectMessages("dne", "// ~->[NETA=1]->~\nbinary", 0, {"2 'binary' : 'bnet' expected"});
  ExpectMessages("dne", "bnet 5 { };", 0, {"1 '5' : Identifier expected"}, KVN_SYNTAX_ERROR);
  ExpectMessages("dne", "bnet N\nnode A", 0, {"2 'node' : '{' expected"}, KVN_SYNTAX_ERROR);
  // clang-format off
  ExpectAll({
      {"unknown statement", "foo = 1;\nnode A { };\n};", 1, {"2 'foo' : Unknown Net Statement"}},
      {"title", "title = A;\nnode A { };\n};", 1, {"2 'A' : String expected"}},
      {"window", "visual V1 { windowposn = (1, 2, 3); };\n};", 0, {"2 Wrong Window Position"}},
      {"visual statement", "visual V1 { foo = 1; };\n};", 0, {"2 'foo' : Unknown Visual Net Statement"}},
      {"param", "param X { kind = DISCONNECTED; foo = 1; };\nnode A { };\n};", 1,
       {"2 'foo' : Unknown Param Statement"}},
      {"no end", "node A { }", 1, {"2 NO MORE TOKENS", "2 End of File : Expecting '}'", "2 NO MORE TOKENS"}},
  });
  // clang-format on
}

TEST(NeticaSpeaker, TellsWhatIsWrongWithANode) {
  const std::string end = "\n};";
  // clang-format off
  ExpectAll({
      {"names", "node A { };\nnode A { };\nnode 5 { };" + end, 1,
       {"3 Couldn't Create Node (\"A\")", "4 '5' : Identifier expected"}},
      {"unknown statement", "node A { foo = 1; states = (a, b); };" + end, 1,
       {"2 'foo' : Unknown Node Statement"}},
      {"kinds", "node A { kind = ASSUME; };\nnode B { kind = CONSTANT; value = 5; };\n"
                "node C { chance = RANDOM; };" + end, 2,
       {"2 nodes of type ASSUME not supported (yet)", "3 'CONSTANT' : Unknown Node Type",
        "3 Node not ready (valid). Node (\"B\") deleted", "4 'RANDOM' : Unknown Node Type"}},
      {"kinds that the engine lacks", "node B { kind = DECISION; discrete = FALSE; };" + end, 0,
       {"2 Type of node [B] unsupported", "2 Node not ready (valid). Node (\"B\") deleted"}},
      {"continuous nodes", "node A { discrete = FALSE; levels = (1, 2, INFINITY); probs = (1); };\n"
                           "node B { discrete = FALSE; levels = (2, 1, 0); equation = \"B\"; };\n"
                           "node C { discrete = FALSE; equation = \"C () = Foo(1)\"; };" + end, 3,
       {"2 'INFINITY' : Unexpected", "2 Node (\"A\") : No equation", "3 Node (\"B\") : Invalid intervals",
        "3 Can't find the '=' sign in equation", "4 Unknown function: Foo"}},
      {"intervals", "node A { discrete = FALSE; states = (a, b, c); levels = (0, 1, 2); equation = \"A = 1\"; };\n"
                    "node B { discrete = FALSE; levels = (0, 1, 2); states = (a, b, c); equation = \"B = 1\"; };\n"
                    "node C { discrete = FALSE; levels = (@imposs, 1, 2); equation = \"C = 1\"; };" + end, 3,
       {"2 Node (\"A\") : Invalid intervals", "3 Node (\"B\") : Invalid intervals", "4 '@' : Unexpected"}},
      {"kind behind what it loses", "node A { states = (a, b, c); discrete = FALSE; equation = \"A = 7\"; };\n"
                                    "node B { states = (a, b); kind = DECISION; discrete = FALSE; };" + end, 2,
       {"2 Node (\"A\") : Kind told behind a definition that it loses", "3 Type of node [B] unsupported"}},
      {"kind behind its states", "node A { states = (a, b, c); probs = (0.1, 0.2, 0.7); kind = UTILITY; };\n"
                                 "node B { states = (a, b, c); probs = (0.1, 0.2, 0.7); kind = DECISION; };" + end, 2,
       {"2 Node (\"A\") : Kind told behind a definition that it loses", "2 Node (\"A\") : 3 numbers found, 1 expected",
        "3 Node (\"B\") : 3 numbers found, 0 expected"}},
      {"boolean", "node A { discrete = MAYBE; };" + end, 1, {"2 (\"MAYBE\") : Boolean Expected"}},
      {"states", "node A { states = (a); };\nnode B { states = (a, 5); };\nnode C { numstates = 1; };\n"
                 "node D { numstates = 2000000000; };" + end, 4,
       {"2 Node (\"A\") : Two states needed, one added", "3 '5' : Identifier expected",
        "4 '1' : Invalid number of states", "5 '2000000000' : Invalid number of states"}},
      {"parents", "node A { parents = (A); };\nnode B { parents = (X, A); probs = (1, 0, 0, 1); };" + end, 2,
       {"2 Couldn't add arc from node [A] to node [A]", "3 Couldn't add arc from node [X] to node [B]",
        "3 Node (\"B\") : Table for a parent that is missing"}},
      {"lists with gaps", "node A { states = (a, b, c); probs = (0.5, , 0.3); };\n"
                          "node B { probs = (1, 0,); };\nnode C { chance = DETERMIN; functable = (, State0); };" + end, 3,
       {"2 ',' : Unexpected", "3 ')' : Unexpected", "4 ',' : Unexpected"}},
      {"faults told at the end of a block", "node A { states = (a, b);\nprobs = (1);\nprobs = (1, 2, 3);\n};\n"
       "node B { parents = (C);\nprobs = (1);\n};\n"
       "node C { discrete = FALSE; parents = (D);\nequation = \"C = Foo(1)\";\n};\nnode D { discrete = FALSE; equation = \"D = 1\"; };" + end, 4,
       {"4 Node (\"A\") : 3 numbers found, 2 expected", "Arc rejected by child node",
        "6 Couldn't add arc from node [C] to node [B]",
        "7 Node (\"B\") : Table for a parent that is missing", "10 Unknown function: Foo"}},
      {"texts that are too long", "node A { title = \"" + std::string(10212, 'x') + "\"; };\n"
                                  "node B { discrete = FALSE; equation = \"B = 1" + std::string(10212, ' ') + "2\"; };" + end, 2,
       {"2 Text of more than 10211 characters, cut", "3 Text of more than 10211 characters, cut", "3 Node (\"B\") : No equation"}},
      {"a brace too many", "node A { }; };\nnode B { }; };", 1, {"3 'node' : Unexpected"}},
      {"properties", "node A { user U1 { k = \"1\";\nk = \"2\"; }; };" + end, 1, {"3 'k' : Duplicated property"}},
      {"numbers", "node A { probs = (1, 0, 0); };\nnode B { probs = (1, nan); };\n"
                  "node C { probs = 1; };\nnode D { probs = ((1, 0)), (1); title = \"D\"; };" + end, 4,
       {"2 Node (\"A\") : 3 numbers found, 2 expected", "3 'nan' : Unexpected", "4 '1' : Unexpected",
        "5 ';' : Unknown Node Statement"}},
      {"results", "node A { chance = DETERMIN; states = (a, b); functable = (c); };\n"
                  "node B { chance = DETERMIN; states = (a, b); parents = (A); functable = (a, b, a); };\n"
                  "node C { functable = (State0); };" + end, 3,
       {"2 'c' : Unknown state", "3 Node (\"B\") : 3 states found, 2 expected",
        "4 WRONG NODE TYPE"}},
      {"utility", "node A { states = (a, b); };\nnode U { kind = UTILITY; parents = (A);\n"
                  "equation = \"U = 1\"; };" + end, 2, {"4 Node (\"U\") : Equation without a table"}},
      {"formulas", "node A { discrete = FALSE; equation = \"\"; };\n"
                   "node B { discrete = FALSE; equation = \"B = Zed\"; };" + end, 2,
       {"2 Can't find the '=' sign in equation", "3 Unknown node identifier: Zed"}},
      {"another list of parents", "node A { };\nnode C { };\n"
                                  "node B { parents = (A); parents = (C); };" + end, 3, {}},
      {"layout", "node A { visual V1 { center = (1); size = (1, 2, 3); foo = 1; link 1 { foo = 1; }; }; };" + end, 1,
       {"2 Wrong Center Coordinates", "2 Wrong Size Values", "2 'foo' : Unknown Visual Node Statement",
        "2 'foo' : Unknown Visual Link Statement"}},
  });
  // clang-format on
}

TEST(NeticaSpeaker, NumberOfStatesGivesWayToTheirNames) {
  for (const char* where : {"numstates = 2; states = (a, b, c); probs = (0.2, 0.3, 0.5);",
                            "states = (a, b, c); probs = (0.2, 0.3, 0.5); numstates = 2;",
                            "states = (a, b, c); numstates = 2; probs = (0.2, 0.3, 0.5);"}) {
    SCOPED_TRACE(where);
    KVN_network network;
    EXPECT_THAT(ReadText(network, "dne", std::string("bnet N { node A { ") + where + " }; };"),
                IsEmpty());
    EXPECT_EQ(network.DefinitionOf(network.FindNode("A"))->GetNumberOfOutcomes(), 3);
  }
}

struct KindCase {
  const char* statements;
  int type;
  std::vector<double> cells;  // of a discrete node
};

// Several words tell the kind, anywhere in the block. What one of them would mean without the
// others costs nothing.
TEST(NeticaSpeaker, TakesTheKindFromAllItsWords) {
  const KindCase cases[] = {
      {"states = (a, b); discrete = TRUE; chance = DETERMIN; functable = (b);",
       KVN_TYPE_TRUTHTABLE,
       {0, 1}},
      {"states = (a, b); chance = DETERMIN; chance = CHANCE; probs = (0.25, 0.75);",
       KVN_TYPE_CPT,
       {0.25, 0.75}},
      {"probs = (0.25, 0.75); discrete = FALSE; discrete = TRUE;", KVN_TYPE_CPT, {0.25, 0.75}},
      {"parents = (); discrete = FALSE; kind = UTILITY; functable = (7);", KVN_TYPE_TABLE, {7}},
      {"discrete = FALSE; levels = (0, 1, 2); equation = \"A = 7\"; chance = CHANCE;",
       KVN_TYPE_EQUATION,
       {}},
      {"discrete = FALSE; levels = (0, 1, 2); equation = \"A = 7\"; chance = DETERMIN;",
       KVN_TYPE_EQUATION,
       {}},
      {"chance = DETERMIN; parents = (); discrete = FALSE; equation = \"A = 7\";",
       KVN_TYPE_EQUATION,
       {}},
      {"equation = \"A = 7\"; discrete = FALSE;", KVN_TYPE_EQUATION, {}},
      {"probs = (0.2, 0.8); states = (a, b);", KVN_TYPE_CPT, {0.2, 0.8}},
      {"functable = (b); states = (a, b); chance = DETERMIN; ", KVN_TYPE_TRUTHTABLE, {0, 1}},
  };
  for (const KindCase& c : cases) {
    SCOPED_TRACE(c.statements);
    KVN_network network;
    EXPECT_THAT(
        ReadText(network, "dne", std::string("bnet N { node A { ") + c.statements + " }; };"),
        IsEmpty());
    const int node = network.FindNode("A");
    ASSERT_EQ(network.TypeOf(node), c.type);
    if (c.type == KVN_TYPE_EQUATION) {
      std::string equation;
      dynamic_cast<KVN_equation&>(*network.DefinitionOf(node)).GetEquation().Print(equation);
      EXPECT_EQ(equation, "A=7");
    } else {
      EXPECT_EQ(CellsOf(network, "A"), c.cells);
    }
  }
}

// The rows of states of the parents that can't meet are even, whole or without their last number,
// also where the parent stands behind.
TEST(NeticaSpeaker, EvensOutImpossibleRows) {
  const struct {
    const char* numbers;
    std::vector<double> cells;
  } cases[] = {
      {"((0.5, 0.5, 0), (@imposs, @imposs, @imposs))", {0.5, 0.5, 0, 1.0 / 3, 1.0 / 3, 1.0 / 3}},
      {"((0.5, 0.5), (@imposs, @imposs))", {0.5, 0.5, 0, 1.0 / 3, 1.0 / 3, 1.0 / 3}},
      {"((0.5, @imposs), (@imposs, 1))", {0.5, 0, 0.5, 0, 1, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.numbers);
    for (const bool isParentFirst : {true, false}) {
      const std::string parent = "node P { states = (p, q); };\n";
      const std::string child =
          std::string("node A { states = (a, b, c); parents = (P); probs = ") + c.numbers +
          "; };\n";
      KVN_network network;
      const std::string nodes = isParentFirst ? parent + child : child + parent;
      EXPECT_THAT(ReadText(network, "dne", "bnet N {\n" + nodes + "};"), IsEmpty());
      EXPECT_EQ(CellsOf(network, "A"), c.cells);
    }
  }
}

struct TranslationCase {
  const char* text;
  const char* equation;  // empty for a failure
  const char* error;
};

const TranslationCase kTranslations[] = {
    {"x () = NormalDist(x, 0, 1)", "x=Normal(0,1)", ""},
    {"p (x | y) = UniformDist(x, y, y + 2)", "x=Uniform(y,y+2)", ""},
    {"x = TriangularEnd3Dist(x, 1, 2, 3) * 2", "x=Triangular(1,2,3)*2", ""},
    {"x = BernoulliDist(x, 0.5)", "x=Bernoulli(0.5)", ""},
    {"x (y) = clip(y, 0, 1)", "x=Trim(1,y,0)", ""},
    {"x (y) = plus(y, clip(y, 2, 3), 1)", "x=Sum(y,Trim(3,y,2),1)", ""},
    {"x (y) = plus(y)", "x=Sum(y,0)", ""},
    {"x (y) = (y = 3)", "x=(y=3)", ""},
    {"x (y) = y > 3 ? 1 : 2", "x=(y>3 ? 1 : 2)", ""},
    {"x (y) = y <> 3", "x=(y<>3)", ""},
    {"x = BetaDist(x, 2, 3) + BinomialDist(x, 4, 0.5)", "x=Beta(2,3)+Binomial(4,0.5)", ""},
    {"x = ExponentialDist(x, 2) + LognormalDist(x, 0, 1)", "x=Exponential(2)+Lognormal(0,1)", ""},
    {"x = WeibullDist(x, 2, 3)", "x=Weibull(2,3)", ""},
    {"x (y) = -binomial(4, y)", "x=-Combin(4,y)", ""},
    {"x (y) = max(y, 3)", "x=Max(y,3)", ""},
    {"x (y) == 3", "", "Factor expected"},
    {"x (y)", "", "Can't find the '=' sign in equation"},
    {"x (y) = NormalDist(y, 1)", "", "Too few parameters in function call"},
    {"x (y) = Foo(y)", "", "Unknown function: Foo"},
};

TEST(NeticaSpeaker, TranslatesFormulas) {
  for (const TranslationCase& c : kTranslations) {
    SCOPED_TRACE(c.text);
    std::string error;
    EXPECT_EQ(TranslateNeticaEquation(c.text, "x", error), c.equation);
    EXPECT_EQ(error, c.error);
  }
}

// The second node stands before its parent; the third has its names and no bounds of its own, the
// last bounds and no intervals.
TEST(NeticaSpeaker, ReadsEquationNodes) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "dne", R"x(bnet N {
node y { kind = NATURE; discrete = FALSE; chance = DETERMIN; states = (low, mid, high);
  levels = (0, 1, 2.5, 10); parents = (x); equation = "y (x) = x * 2"; };
node x { discrete = FALSE; levels = (-3, 0, 3); probs = (0.5, 0.5);
  equation = "p (x) = NormalDist(x, 0, 1)";
};
node z {
  discrete = FALSE;
  states = (a, b, c, d);
  equation = "z () = 1";
};
node w { discrete = FALSE; levels = (-5, 20); equation = "w = 3"; };
};)x"),
              IsEmpty());
  const auto equationOf = [&network](const char* id) -> KVN_equation& {
    return dynamic_cast<KVN_equation&>(*network.DefinitionOf(network.FindNode(id)));
  };
  EXPECT_THAT(ParentsOf(network, "y"), ElementsAre("x"));
  const std::vector<KVN_discInterval>& intervals = equationOf("y").GetDiscIntervals();
  ASSERT_EQ(intervals.size(), 3u);
  EXPECT_EQ(intervals[1].id, "mid");
  EXPECT_EQ(intervals[1].upper, 2.5);
  EXPECT_EQ(equationOf("y").GetLowerBound(), 0.0);
  EXPECT_EQ(equationOf("y").GetUpperBound(), 10.0);
  ASSERT_EQ(equationOf("x").GetDiscIntervals().size(), 2u);
  EXPECT_EQ(equationOf("x").GetDiscIntervals()[1].id, "State1");
  // The range is -1 to 1.
  ASSERT_EQ(equationOf("z").GetDiscIntervals().size(), 4u);
  EXPECT_EQ(equationOf("z").GetDiscIntervals()[0].upper, -0.5);
  EXPECT_EQ(equationOf("w").GetLowerBound(), -5.0);
  EXPECT_EQ(equationOf("w").GetUpperBound(), 20.0);
  EXPECT_THAT(equationOf("w").GetDiscIntervals(), IsEmpty());
}

// Formulas whose top binds as loosely as the "=" of the equation, and a random one.
TEST(NeticaSpeaker, EquationsAnswerAsTheyReadAndWhenSavedAsXml) {
  const char* const text = R"x(bnet N {
node x { discrete = FALSE; levels = (0, 10); equation = "x = 4"; };
node a { discrete = FALSE; parents = (x); equation = "a (x) = (x = 4)"; };
node b { discrete = FALSE; parents = (x); equation = "b (x) = x > 3 ? 5 : 6"; };
node c { discrete = FALSE; parents = (x); equation = "c (x) = x <> 4"; };
node d { discrete = FALSE; parents = (x); equation = "p (d | x) = x + UniformDist(d, 0, 1)"; };
};)x";
  const auto meansOf = [](KVN_network& network) {
    ResetGenerators();
    EXPECT_EQ(network.UpdateBeliefs(), 0);
    std::vector<double> means;
    for (const char* id : {"x", "a", "b", "c", "d"}) {
      means.push_back(EquationValueOf(network, network.FindNode(id)).GetMean());
    }
    return means;
  };
  KVN_network network;
  EXPECT_THAT(ReadText(network, "dne", text), IsEmpty());
  const std::vector<double> means = meansOf(network);
  EXPECT_THAT(means, ElementsAre(4, 1, 5, 0, testing::DoubleNear(4.5, 0.5)));
  KVN_network saved;
  EXPECT_THAT(ReadText(saved, "xkvn", WrittenText(network, "xkvn")), IsEmpty());
  EXPECT_EQ(meansOf(saved), means);
}

TEST(NeticaSpeaker, WritesItsDocument) {
  KVN_network network;
  ASSERT_EQ(network.Header().SetId("Net"), 0);
  network.Header().SetName("say \"a\"");
  const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 2, {a});
  AddCpt(network, "C", 2, {a, d}, {1, 0, 0, 1, 1, 0, 0.5, 0.5});
  WriteCells(network, AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {a, d}), {1, -2, 3, 4});
  network.GetNode(a)->Info().UserProperties().AddProperty("k", "v");
  network.GetNode(a)->Info().Screen().position.center_Y = -7;
  const std::string text = WrittenText(network, "dne");
  const std::string start = R"(// ~->[DNET-1]->~

bnet Net {
    title = "say \"a\"";
    visual V1 {
    };
    node A {
        kind = NATURE;
        discrete = TRUE;
        chance = CHANCE;
        title = "A";
        parents = ();
        states = (State0, State1);
        probs = (0.25000000, 0.75000000);
        user U1 {
            k = "v";
        };
        visual V1 {
            center = (0, -7);
        };
    };
)";
  EXPECT_EQ(text.substr(0, start.size()), start);
  EXPECT_NE(text.find(R"(
        parents = (A, D);
        states = (State0, State1);
        probs = (((1.00000000, 0.00000000),
                  (0.00000000, 1.00000000)),
                 ((1.00000000, 0.00000000),
                  (0.50000000, 0.50000000)));
)"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find(R"(
        kind = UTILITY;
        discrete = FALSE;
        chance = DETERMIN;
        title = "U";
        parents = (A, D);
        functable = ((1.00000000, -2.00000000),
                     (3.00000000, 4.00000000));
)"),
            std::string::npos)
      << text;
}

TEST(NeticaSpeaker, ReadsBackWhatItWrites) {
  ExpectReadsBack(
      "dne", {KVN_TYPE_CPT, KVN_TYPE_LIST, KVN_TYPE_TABLE},
      {.tolerance = kHalfOfTheEighthDecimal, .unsetIsEmpty = true, .ignored = {"text.properties"}});
}

// Intended: two kinds go out under words that no reader of this format knows.
TEST(NeticaSpeaker, LosesTheNumbersOfDeterministicNodesAndGates) {
  KVN_network network;
  const int a = AddNodeBelow(network, KVN_TYPE_TRUTHTABLE, "A", 3, {});
  WriteCells(network, a, {0, 0, 1});
  AddNodeBelow(network, KVN_TYPE_NOISY_MAX, "G", 3, {a});
  KVN_network copy;
  EXPECT_EQ(ReadText(copy, "dne", WrittenText(network, "dne")).size(), 3u);
  EXPECT_EQ(copy.TypeOf(copy.FindNode("A")), KVN_TYPE_TRUTHTABLE);
  EXPECT_EQ(StatesOf(copy, "A"), StatesOf(network, "A"));
  EXPECT_EQ(copy.TypeOf(copy.FindNode("G")), KVN_TYPE_CPT);
  EXPECT_EQ(StatesOf(copy, "G").size(), 2u);
}

TEST(NeticaSpeaker, RefusesToWriteWhatItCannotCarry) {
  ExpectRefusedToWrite("dne", KVN_TYPE_NOISY_ADDER, "ERROR: Unsupported node type");
  ExpectRefusedToWrite("dne", KVN_TYPE_DEMORGAN, "ERROR: Unsupported node type");
  ExpectRefusedToWrite("dne", KVN_TYPE_EQUATION, "ERROR: Unsupported node type");
  ExpectRefusedToWrite("dne", KVN_TYPE_MAU, "ERROR: This Network cannot be saved in Netica format");
}

TEST(NeticaSpeaker, ReadsAllOrTells) { ExpectReadsAllOrTells("dne", kDiagram); }

TEST(NeticaSpeaker, SurvivesDamage) {
  ExpectSurvivesDamage("dne", kDiagram, {0, KVN_SYNTAX_ERROR});
}

}  // namespace
