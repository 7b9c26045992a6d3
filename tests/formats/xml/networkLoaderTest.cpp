// What a native XML file makes of a network, and the messages of files that are refused.

#include "formats/xml/networkLoader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "definitions/truthTable.h"
#include "formats/xml/xmlText.h"
#include "foundation/numberText.h"
#include "network/extraDefinition.h"
#include "network/header.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/userProperties.h"
#include "tests/formats/fileChecks.h"
#include "tests/formats/xml/loaded.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"

namespace {

using Strings = std::vector<std::string>;
using Doubles = std::vector<double>;
using Ints = std::vector<int>;

/// States of node `id`, with two states `y` and `n`.
const char kTwo[] = "<state id=\"y\"/><state id=\"n\"/>";

std::string Cpt(const std::string& id, const std::string& inside = kTwo,
                const std::string& numbers = "0.5 0.5") {
  return "<cpt id=\"" + id + "\">" + inside + "<probabilities>" + numbers +
         "</probabilities></cpt>";
}
TEST(NetworkLoader, ReadsTheNetworkItself) {
  Loaded loaded(
      InRoot("<algparams><epis proplen='2' numstates1='3' numstates2='4' numstates3='5' "
             "eps1='0.5' eps2='0.25' eps3='0.125' eps4='9'/></algparams>"
             "<properties><property id='a'>x\\ny</property><property id='b'/>"
             "</properties>",
             " numsamples='12' discsamples='34' discavoidzero='false'"));
  EXPECT_EQ(loaded.result, 0);
  EXPECT_EQ(loaded.messages, Strings());
  KVN_network& network = loaded.network;
  EXPECT_STREQ(network.Header().GetId(), "N");
  EXPECT_EQ(network.GetNumberOfSamples(), 12);
  EXPECT_EQ(network.GetDiscSamples(), 34);
  EXPECT_EQ(network.GetDiscAvoidZero(), 0);
  EXPECT_EQ(network.GetEpisParams(), (EpisParameters{2, 3, 4, 5, 0.5, 0.25, 0.125, 9.0}));
  ASSERT_EQ(network.UserProperties().GetCount(), 2);
  EXPECT_STREQ(network.UserProperties().GetValue(0), "x\ny");
  EXPECT_STREQ(network.UserProperties().GetValue(1), "");
  EXPECT_EQ(network.GetNumberOfNodes(), 0) << "the nodes are optional";
}

/// Children in an order of their own, a later sibling's numbers before its parents.
TEST(NetworkLoader, ReadsTables) {
  Loaded loaded(InNodes(
      "<cpt id='A' target='true' diagtype='target' ranked='true' mandatory='true'>"
      "<state id='a0' label='L0' fault='true'/><state id='a1' default='true'/><state id='a2'/>"
      "<probabilities>0.25 0.25\n\t0.5</probabilities><property id='k'>v</property></cpt>"
      "<cpt id='B' diagtype='auxiliary'><probabilities>.1 .9 .2 .8 .3 .7</probabilities>"
      "<parents>A</parents><state id='y'/><state id='n'/></cpt>"
      "<deterministic id='D'><state id='x'/><state id='y'/><parents>B A</parents>"
      "<resultingstates>y x y y x x</resultingstates></deterministic>"
      "<decision id='E' diagtype='observation'><state id='go'/><state id='stay'/>"
      "<parents>B</parents></decision>"
      "<utility id='U'><parents>E A</parents><utilities>1 -2 3 4.5 5 6e3</utilities></utility>"));
  EXPECT_EQ(loaded.result, 0);
  EXPECT_EQ(loaded.messages, Strings());
  KVN_network& network = loaded.network;
  EXPECT_EQ(CellsIn(TableOfNode(network, network.FindNode("B"))),
            Doubles({.1, .9, .2, .8, .3, .7}));
  EXPECT_EQ(TextsOf(*loaded.As<KVN_nodeDefinition>("A").GetOutcomesNames()),
            Strings({"a0", "a1", "a2"}));
  EXPECT_EQ(network.IsTarget(network.FindNode("A")), 1);
  EXPECT_EQ(network.IsTarget(network.FindNode("B")), 0);
  const KVN_extraDefinition& extra = *loaded.Node("A").ExtraDefinition();
  EXPECT_EQ(extra.GetDiagnosisType(), KVN_DIAGNOSIS_TARGET);
  EXPECT_EQ(extra.GetRanked() + extra.GetMandatory(), 2);
  EXPECT_EQ(ItemsOf(extra.GetFaultStates()), Ints({1, 0, 0}));
  EXPECT_STREQ(extra.GetFaultLabels()[0], "L0");
  EXPECT_EQ(extra.GetSetAsDefault(), 1);
  EXPECT_EQ(extra.GetDefaultOutcome(), 1);
  EXPECT_EQ(loaded.Node("B").ExtraDefinition()->GetSetAsDefault(), 0);
  EXPECT_EQ(loaded.Node("E").ExtraDefinition()->GetDiagnosisType(), KVN_DIAGNOSIS_OBSERVATION);
  EXPECT_STREQ(loaded.Node("A").UserProperties()->GetValue(0), "v");
  KVN_stringArray states;
  EXPECT_EQ(loaded.As<KVN_truthTable>("D").GetResultingStates(states), 0);
  EXPECT_EQ(TextsOf(states), Strings({"y", "x", "y", "y", "x", "x"}));
  EXPECT_EQ(CellsIn(TableOfNode(network, network.FindNode("U"))), Doubles({1, -2, 3, 4.5, 5, 6e3}));
  EXPECT_EQ(network.GetParents(network.FindNode("U"))[0], network.FindNode("E"));
}

TEST(NetworkLoader, ReadsGates) {
  Loaded loaded(InNodes(
      Cpt("A", "<state id='a'/><state id='b'/><state id='c'/>", "0.2 0.3 0.5") +
      "<noisymax id='M'><state id='y'/><state id='n'/><parents>A</parents>"
      "<strengths>1 2 0</strengths><parameters>.1 .9 .2 .8 0 1 .3 .7</parameters></noisymax>"
      "<noisyadder id='S' function='singlefault'><state id='y'/><state id='n'/>"
      "<parents>A</parents><dstates>0 1</dstates><weights>2 3</weights>"
      "<parameters>.1 .9 1 0 .2 .8 .4 .6</parameters></noisyadder>"
      "<cast id='C'><baseline>0.25</baseline></cast>"
      "<cast id='D'><baseline>0.5</baseline><parents>C</parents><pweights>0.1</pweights>"
      "<nweights>-0.2</nweights></cast>"
      "<demorgan id='P'><priorbelief>0.75</priorbelief></demorgan>"
      "<demorgan id='Q'><parents>P</parents><types>barrier</types><weights>0.3</weights>"
      "<priorbelief>0.125</priorbelief></demorgan>"));
  EXPECT_EQ(loaded.result, 0);
  EXPECT_EQ(loaded.messages, Strings());
  KVN_noisyMAX& max = loaded.As<KVN_noisyMAX>("M");
  // The states 0, 1, 2 have the ranks 1, 2, 0, so by rank they are 2, 0, 1.
  EXPECT_EQ(ItemsOf(*max.GetStrengths(0)), Ints({2, 0, 1}));
  EXPECT_EQ(CellsIn(max.GetParameters()), Doubles({.1, .9, .2, .8, 0, 1, .3, .7}));
  KVN_noisyAdder& adder = loaded.As<KVN_noisyAdder>("S");
  EXPECT_EQ(adder.GetFunction(), KVN_ADDER_SINGLE_FAULT);
  EXPECT_EQ(adder.GetDistinguishedState(), 0);
  EXPECT_EQ(ItemsOf(adder.GetParentDistinguishedStates()), Ints({1}));
  EXPECT_EQ(ItemsOf(adder.GetWeights()), Doubles({2, 3}));
  EXPECT_EQ(CellsIn(adder.GetParameters()), Doubles({.1, .9, 1, 0, .2, .8, .4, .6}));
  KVN_cast& cast = loaded.As<KVN_cast>("D");
  EXPECT_EQ(loaded.As<KVN_cast>("C").GetBaseline(), 0.25);
  EXPECT_EQ(ItemsOf(cast.GetPositiveWeights()), Doubles({0.1}));
  EXPECT_EQ(ItemsOf(cast.GetNegativeWeights()), Doubles({-0.2}));
  KVN_demorgan& demorgan = loaded.As<KVN_demorgan>("Q");
  EXPECT_EQ(demorgan.GetPriorBelief(), 0.125);
  EXPECT_EQ(ItemsOf(demorgan.GetParentTypes()), Ints({KVN_DEMORGAN_BARRIER}));
  EXPECT_EQ(ItemsOf(demorgan.GetParentWeights()), Doubles({0.3}));
}

TEST(NetworkLoader, ReadsCosts) {
  Loaded loaded(
      InRoot("<observationcost><node id='A'><cost>1 n/a</cost><parents>B</parents></node>"
             "<node id='B'><cost>7</cost></node></observationcost>"
             "<nodes/>"));
  EXPECT_EQ(loaded.messages, Strings({"Error at 1, 45 while loading F: "
                                      "Invalid node identifier: 'A'"}))
      << "the costs come behind the nodes";
  Loaded ordered(InRoot("<nodes>" + Cpt("A") + Cpt("B") +
                        "</nodes><observationcost><node id='A'><cost>1 n/a</cost>"
                        "<parents>B</parents></node><node id='B'><cost>7</cost></node>"
                        "</observationcost>"));
  EXPECT_EQ(ordered.messages, Strings());
  EXPECT_EQ(CellsIn(ordered.Node("A").Cost()->GetCosts()), Doubles({1, KVN_NOT_AVAILABLE_VALUE}));
  EXPECT_EQ(CellsIn(ordered.Node("B").Cost()->GetCosts()), Doubles({7}));
}

/// Everything that the loader or the model refuses, with the words that end the load.
TEST(NetworkLoader, RefusesWithAMessage) {
  const std::string three = "<state id='a'/><state id='b'/><state id='c'/>";
  const std::string a = Cpt("A", three, "0.2 0.3 0.5");
  const auto max = [&](const char* inside) {
    return InNodes(a + "<noisymax id='M'>" + kTwo + "<parents>A</parents>" + inside +
                   "</noisymax>");
  };
  const auto adder = [&](const char* inside) {
    return InNodes(a + "<noisyadder id='S'>" + kTwo + "<parents>A</parents>" + inside +
                   "</noisyadder>");
  };
  const auto gate = [](const char* inside) {
    return InNodes(
        "<cast id='C'><baseline>0.5</baseline></cast><demorgan id='P'><priorbelief>0.5"
        "</priorbelief></demorgan>" +
        std::string(inside));
  };
  const auto table = [&](const char* resulting) {
    return InNodes(a + "<deterministic id='D'>" + kTwo + "<parents>A</parents><resultingstates>" +
                   resulting + "</resultingstates></deterministic>");
  };
  const auto plate = [&](const char* dynamic) {
    return InRoot("<nodes>" + a + "<cpt id='T' dynamic='plate'>" + kTwo +
                  "<probabilities>1 0</probabilities></cpt></nodes>" + dynamic);
  };
  const auto refuse = [](const std::string& document, const char* message) {
    SCOPED_TRACE(document);
    Loaded loaded(document);
    EXPECT_EQ(loaded.result, -103);
    EXPECT_EQ(loaded.messages.empty() ? "" : loaded.messages.back().substr(0, 12), "Error at 1, ");
    EXPECT_EQ(loaded.LastMessage(), message);
  };
  refuse("<net/>", "Unknown root element 'net', expected 'ormel'");
  refuse("<ormel id='N'/>", "Required attribute 'version' not found in element 'ormel'");
  refuse(InRoot("<algparams/><algparams/>"),
         "Multiple occurences of 'algparams' not allowed in 'ormel'");
  refuse(InRoot("", " numsamples='many'"), "Integer value expected for attribute 'numsamples'");
  refuse(InRoot("", " discavoidzero='yes'"),
         "'true' or 'false' expected as value of boolean attribute 'discavoidzero'");
  refuse(InRoot("<algparams><epis proplen='0' numstates1='3' numstates2='4' numstates3='5' "
                "eps1='0.5' eps2='0.25' eps3='0.125' eps4='9'/></algparams>"),
         "Invalid EPIS parameters");
  refuse(InRoot("<properties><property id='1 a'>x</property></properties>"),
         "Can't add networkproperty: '1 a'");
  refuse(InNodes("<cpt id='A'><property id=''>x</property></cpt>"), "Can't add node property: ''");
  refuse(InNodes("<cpt id='A' target='1'/>"),
         "'true' or 'false' expected as value of boolean attribute 'target'");
  refuse(InNodes("<cpt id='A' diagtype='fault'/>"), "Unknown diagnosis node type: 'fault'");
  refuse(InNodes("<cpt id='A' dynamic='slice'/>"), "Unknown dynamic node type: 'slice'");
  refuse(InNodes(a + a), "Duplicated node identifier: 'A'");
  refuse(InNodes("<mau id='A'><weights>1</weights></mau>"), "SetWeights failed");
  refuse(InNodes(a + "<mau id='B'><parents>A</parents><weights>1</weights></mau>"),
         "AddArc failed");
  refuse(InNodes(Cpt("B", std::string(kTwo) + "<parents>A</parents>") + a),
         "Node parent not found: 'A'");
  refuse(InNodes(a + Cpt("B", std::string(kTwo) + "<parents>A A</parents>")),
         "Duplicate parent: 'A'");
  refuse(InNodes(Cpt("B", std::string(kTwo) + "<parents>B</parents>")), "AddArc failed");
  refuse(InNodes(Cpt("A", "<state id='y'/><state id='y'/>")), "Duplicate state identifier: 'y'");
  refuse(InNodes(Cpt("A", "<state id='y' default='true'/><state id='n' default='true'/>")),
         "Duplicate default state attribute at state: 'n'");
  refuse(InNodes(Cpt("A", "")), "Required element 'state' not present in element 'cpt'");
  refuse(max("<state id='1'/>"), "SetNumberOfOutcomes failed");  // a gate doesn't mend names
  refuse(InNodes(Cpt("A", kTwo, "0.5 0.5x")), "Can't read list of doubles, failed at element 2");
  refuse(InNodes(Cpt("A", kTwo, "0.5 UNDEF.")), "Can't read list of doubles, failed at element 2");
  refuse(InNodes(Cpt("A", kTwo, "0.5")), "SetProbabilities failed");
  refuse(InNodes(Cpt("A", kTwo, "")), "SetProbabilities failed");
  refuse(InNodes("<cpt id='A'>" + three + "</cpt>"), "SetProbabilities failed");
  refuse(InNodes("<decision id='A'/>"),
         "Required element 'state' not present in element 'decision'");
  refuse(InNodes("<utility id='A'><utilities>1 2</utilities></utility>"), "SetUtilities failed");
  refuse(table("y n"), "Invalid number of resulting states: 2, expected 3");
  refuse(table("y n maybe"), "Invalid resulting state: maybe");
  refuse(gate("<cast id='D'><baseline>0.5 </baseline></cast>"), "Can't read baseline");
  refuse(gate("<cast id='D'><baseline></baseline></cast>"), "Can't read baseline");
  refuse(gate("<cast id='D'><baseline>1.5</baseline></cast>"), "SetBaseline failed");
  refuse(gate("<cast id='D'/>"), "SetBaseline failed");
  refuse(gate("<cast id='D'><baseline>1</baseline><parents>C</parents></cast>"),
         "SetPositiveWeights failed");
  refuse(gate("<cast id='D'><baseline>1</baseline><parents>C</parents><pweights>1</pweights>"
              "<nweights>1 2</nweights></cast>"),
         "SetNegativeWeights failed");
  refuse(gate("<demorgan id='Q'><priorbelief>x</priorbelief></demorgan>"),
         "Can't read prior belief");
  refuse(gate("<demorgan id='Q'><priorbelief>-1</priorbelief></demorgan>"),
         "SetPriorBelief failed");
  refuse(gate("<demorgan id='Q'><priorbelief>1</priorbelief><parents>P</parents></demorgan>"),
         "SetParentWeights failed");
  refuse(
      gate("<demorgan id='Q'><priorbelief>1</priorbelief><parents>P</parents><weights>1</weights>"
           "</demorgan>"),
      "SetParentTypes failed");
  refuse(
      gate("<demorgan id='Q'><priorbelief>1</priorbelief><types>cause effect</types></demorgan>"),
      "Invalid parent type 'effect' at element 2");
  refuse(max("<strengths>0 1 2x</strengths>"), "Can't read list of integers, failed at element 3");
  refuse(max("<strengths>0 1</strengths>"), "SetParentOutcomeStrengths failed");
  refuse(max("<strengths>0 1 3</strengths>"), "SetParentOutcomeStrengths failed");
  refuse(max("<strengths>0 1 1</strengths>"), "SetParentOutcomeStrengths failed");
  refuse(max("<parameters>0 1 1</parameters>"), "Invalid weights vector size 3, expected 8");
  refuse(InNodes("<noisyadder id='S' function='sum'/>"), "Invalid noisy adder function: 'sum'");
  refuse(adder(""), "Size of distinguished state vector is invalid: 0, expected2");
  refuse(adder("<dstates>2 0</dstates>"), "SetDistinguishedState call fails");
  refuse(adder("<dstates>0 3</dstates>"), "SetParentDistinguishedState call fails");
  refuse(InRoot("<nodes>" + a +
                "</nodes><observationcost><node id='A'><cost>1 2</cost></node>"
                "</observationcost>"),
         "SetCosts failed");
  refuse(InRoot("<nodes>" + a +
                "</nodes><observationcost><node id='A'><cost>n/b</cost></node>"
                "</observationcost>"),
         "Can't read list of doubles, failed at element 1");
  refuse(InRoot("<dynamic numslices='-1'/>"),
         "Invalid slice count: -1, non-negative integer expected");
  refuse(plate("<dynamic numslices='2'><cpt id='X' order='1'/></dynamic>"),
         "Invalid node identifier: 'X'");
  refuse(plate("<dynamic numslices='2'><cpt id='A' order='1'/></dynamic>"),
         "Node is not part of temporal plate: 'A'");
  refuse(plate("<dynamic numslices='2'><cpt id='T' order='0'/></dynamic>"),
         "Invalid temporal order: 0, positive value expected");
  refuse(plate("<dynamic numslices='2'><noisyadder id='T' order='1' function='sum'/></dynamic>"),
         "Invalid noisy adder function: 'sum'");
  refuse(plate("<dynamic numslices='2'><cpt id='T' order='1'/></dynamic>"),
         "No temporal parents specified");
  refuse(plate("<dynamic numslices='2'><cpt id='T' order='1'><parents>T</parents></cpt></dynamic>"),
         "AddTemporalArc failed");
  refuse(InRoot("<cases><case name='c'/></cases>"), "Duplicate case name: 'c'");
  refuse(InRoot("<extensions/>"), "Required element 'vusta' not present in element 'extensions'");
  refuse(InRoot("<extensions><vusta version='1.0' name='x'><node id='A'/></vusta></extensions>"),
         "Required element 'name' not present in element 'node'");
}

/// Without arcs or states of its own a gate keeps its defaults where the file leaves lists out.
TEST(NetworkLoader, AbsentListsLeaveDefaults) {
  Loaded loaded(InNodes(Cpt("A") + "<noisymax id='M'>" + kTwo + "<parents>A</parents></noisymax>" +
                        "<noisyadder id='S'>" + kTwo + "<dstates>1</dstates></noisyadder>"));
  EXPECT_EQ(loaded.result, 0);
  EXPECT_EQ(ItemsOf(*loaded.As<KVN_noisyMAX>("M").GetStrengths(0)), Ints({0, 1}));
  EXPECT_EQ(ItemsOf(loaded.As<KVN_noisyAdder>("S").GetWeights()), Doubles({1}));
}

/// A list that was long in one node and is empty in the next mustn't pass for a full one.
TEST(NetworkLoader, EmptyListsDoNotInheritNumbers) {
  std::string states;
  for (int i = 0; i < 16; i++) states += FormatText("<state id='s%d'/>", i);
  Loaded loaded(
      InNodes(Cpt("A", states, "1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0") + Cpt("B", states, "")));
  EXPECT_EQ(loaded.LastMessage(), "SetProbabilities failed");
}

/// It is meant that an illegal identifier of the network is passed over, and that a node with one
/// gets another, by which the file can't name it any more.
TEST(NetworkLoader, IllegalIdentifiers) {
  Loaded network("<ormel version='1.0' id='my net'/>");
  EXPECT_EQ(network.result, 0);
  EXPECT_EQ(network.messages, Strings({"Illegal identifier"}));
  Loaded node(InNodes(Cpt("my node") + Cpt("Node7")));
  EXPECT_EQ(node.result, 0);
  EXPECT_GE(node.network.FindNode("Node0"), 0);
  Loaded child(InNodes(Cpt("1a") + Cpt("B", std::string(kTwo) + "<parents>1a</parents>")));
  EXPECT_EQ(child.LastMessage(), "Node parent not found: '1a'");
}

TEST(NetworkLoader, ToleratesWhatItDoesNotKnow) {
  Loaded loaded(
      InRoot("\n<nodes>" + Cpt("A", std::string(kTwo) + "<color r='1'><b/></color>") +
             "</nodes>\n<extensions><vusta version='1.0' name='x' new='1'/></extensions>"));
  EXPECT_EQ(loaded.result, 0);
  ASSERT_EQ(loaded.messages.size(), 3u);
  EXPECT_EQ(loaded.messages[0],
            "Warning: Ignored unknown element 'color' at 2, 49 while loading F");
  EXPECT_EQ(loaded.messages[1],
            "Warning: Ignored unknown attribute 'new' in 'vusta' at 3, 12 while loading F");
  EXPECT_EQ(loaded.messages[2].rfind("File contains unknown elements and/or attributes. ", 0), 0u);
}

/// A file with each element and attribute of the graphical form.
TEST(NetworkLoader, KnowsTheWholeGraphicalForm) {
  const LogWatch log;
  KVN_network network;
  EXPECT_EQ(network.ReadFile(KVN_SOURCE_DIR "/tests/fuzz/corpus/xml/vusta.xkvn"), 0);
  EXPECT_EQ(log.Texts(), Strings());
}

/// The content of `extensions` is the caller's to choose.
TEST(NetworkLoader, ExtensionOptions) {
  const std::string document = InRoot("<extensions><mine a='1'/></extensions>");
  Loaded refused(document);
  EXPECT_EQ(refused.LastMessage(), "Required element 'vusta' not present in element 'extensions'");
  Loaded unknown(document, KVN_XML_NO_EXTENSION);
  EXPECT_EQ(unknown.result, 0);
  EXPECT_EQ(unknown.messages[0],
            "Warning: Ignored unknown element 'mine' at 1, 40 while loading F");
  XmlBinding mine("mine", KVN_XML_STRICT);
  Loaded wrong(document, reinterpret_cast<std::intptr_t>(static_cast<IXmlBinding*>(&mine)));
  EXPECT_EQ(wrong.LastMessage(), "Unknown attribute 'a' in element 'mine'");
  mine.AddAttribute("a", true);
  Loaded right(document, reinterpret_cast<std::intptr_t>(static_cast<IXmlBinding*>(&mine)));
  EXPECT_EQ(right.result, 0);
  EXPECT_EQ(right.messages, Strings());
}

/// A failure keeps what was built.
TEST(NetworkLoader, KeepsThePartialNetwork) {
  Loaded loaded(InNodes(Cpt("A") + Cpt("B", kTwo, "x")));
  EXPECT_EQ(loaded.result, -103);
  EXPECT_EQ(loaded.network.GetNumberOfNodes(), 2);
  EXPECT_STREQ(loaded.network.Header().GetId(), "N");
}

/// A load that says it has succeeded has read everything.
TEST(NetworkLoader, WithoutMemoryTellsOfAFailure) {
  KVN_network made;
  RandomNetworkOptions options;
  options.nodes = 8;
  FillRandomNetwork(made, /*seed=*/4, options);
  const std::string text = WrittenText(made, "xkvn");
  ExpectReadsAllOrTells("xkvn", text, /*mayTellInTheLog=*/false,
                        [&](KVN_network& /*whole*/, KVN_network& network) {
                          return WrittenText(network, "xkvn") == text;
                        });
}

}  // namespace
