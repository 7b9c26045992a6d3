// The file that a network is written as.

#include "formats/xml/networkSaver.h"

#include <gtest/gtest.h>

#include <string>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "definitions/truthTable.h"
#include "formats/xml/networkLoader.h"
#include "foundation/numberText.h"
#include "network/extraDefinition.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/userProperties.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"
#include "tests/support/scratchFolder.h"

namespace {

std::string Saved(KVN_network& network, std::intptr_t options = 0) {
  const ScratchFolder folder;
  EXPECT_EQ(network.WriteFile(folder.Path("f.qkvn").c_str(), KVN_FORMAT_AUTO, options), 0);
  std::string text = folder.Read("f.qkvn");
  const std::string declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";
  EXPECT_EQ(text.substr(0, declaration.size()), declaration);
  return text.substr(declaration.size());
}

/// The part of a file between two tags, both included.
std::string Between(const std::string& text, const std::string& first, const std::string& last) {
  const std::size_t start = text.find(first);
  const std::size_t end = text.find(last, start);
  if (start == std::string::npos || end == std::string::npos) return text;
  return text.substr(start, end + last.size() - start);
}

/// What is at its default isn't written.
TEST(NetworkSaver, WritesAnEmptyNetwork) {
  KVN_network network;
  ASSERT_EQ(network.Header().SetId("Net"), 0);
  EXPECT_EQ(Saved(network),
            "<ormel version=\"1.0\" id=\"Net\" numsamples=\"1000\" discsamples=\"10000\">\n"
            "\t<nodes>\n"
            "\t</nodes>\n"
            "</ormel>\n");
}

TEST(NetworkSaver, WritesSettings) {
  KVN_network network;
  ASSERT_EQ(network.Header().SetId("Net"), 0);
  network.SetNumberOfSamples(7);
  network.SetDiscSamples(8);
  network.SetDiscAvoidZero(0);
  ASSERT_EQ(network.UserProperties().AddProperty("k", "a\n<b>"), 0);
  ASSERT_EQ(network.UserProperties().AddProperty("unset", nullptr), 0);
  EpisParameters settings;
  settings.eps4 = 0.5;
  ASSERT_EQ(network.SetEpisParams(settings), 0);
  EXPECT_EQ(Saved(network),
            "<ormel version=\"1.0\" id=\"Net\" numsamples=\"7\" discsamples=\"8\" "
            "discavoidzero=\"false\">\n"
            "\t<properties>\n"
            "\t\t<property id=\"k\">a\\n&lt;b&gt;</property>\n"
            "\t\t<property id=\"unset\"></property>\n"
            "\t</properties>\n"
            "\t<algparams>\n"
            "\t\t<epis proplen=\"5\" numstates1=\"5\" numstates2=\"8\" numstates3=\"20\" "
            "eps1=\"0.006\" eps2=\"0.0001\" eps3=\"5e-05\" eps4=\"0.5\" />\n"
            "\t</algparams>\n"
            "\t<nodes>\n"
            "\t</nodes>\n"
            "</ormel>\n");
}

/// Every kind of node with its lists, parents before children whatever the handles are.
TEST(NetworkSaver, WritesEveryKind) {
  KVN_network network;
  const int utility = network.AddNode(KVN_TYPE_TABLE, "U");
  const int a = AddCpt(network, "A", 3, {}, {0.25, 0.25, 0.5});
  ASSERT_EQ(network.AddArc(a, utility, 0), 0);
  WriteCells(network, utility, {1, -2.5, KVN_UNDEFINED_VALUE});
  (void)AddNodeBelow(network, KVN_TYPE_LIST, "D", 2, {a});
  const int table = AddNodeBelow(network, KVN_TYPE_TRUTHTABLE, "T", 2, {a});
  ASSERT_EQ(static_cast<KVN_truthTable*>(network.DefinitionOf(table))
                ->SetResultingStates(IntsOf({1, 0, 1})),
            0);
  const int m = AddNodeBelow(network, KVN_TYPE_NOISY_MAX, "M", 2, {a});
  auto& max = *static_cast<KVN_noisyMAX*>(network.DefinitionOf(m));
  ASSERT_EQ(max.SetParentOutcomeStrengths(0, IntsOf({2, 0, 1})), 0);
  const int s = AddNodeBelow(network, KVN_TYPE_NOISY_ADDER, "S", 2, {a});
  auto& adder = *static_cast<KVN_noisyAdder*>(network.DefinitionOf(s));
  ASSERT_EQ(adder.SetFunction(KVN_ADDER_SINGLE_FAULT), 0);
  const int c = network.AddNode(KVN_TYPE_CAST, "C");
  const int c2 = AddNodeBelow(network, KVN_TYPE_CAST, "C2", 0, {c});
  auto& cast = *static_cast<KVN_cast*>(network.DefinitionOf(c2));
  ASSERT_EQ(cast.SetPositiveWeights(DoublesOf({0.1})), 0);
  const int p = network.AddNode(KVN_TYPE_DEMORGAN, "P");
  const int p2 = AddNodeBelow(network, KVN_TYPE_DEMORGAN, "P2", 0, {p});
  auto& gate = *static_cast<KVN_demorgan*>(network.DefinitionOf(p2));
  ASSERT_EQ(gate.SetParentTypes(IntsOf({KVN_DEMORGAN_REQUIREMENT})), 0);
  const std::string two =
      "\t\t\t<state id=\"State0\" />\n"
      "\t\t\t<state id=\"State1\" />\n";
  EXPECT_EQ(Between(Saved(network), "\t\t<cpt", "\t</nodes>\n"),
            "\t\t<cpt id=\"A\">\n" + two +
                "\t\t\t<state id=\"State2\" />\n"
                "\t\t\t<probabilities>0.25 0.25 0.5</probabilities>\n"
                "\t\t</cpt>\n"
                "\t\t<utility id=\"U\">\n"
                "\t\t\t<parents>A</parents>\n"
                "\t\t\t<utilities>1 -2.5 4.450147717014403e-308</utilities>\n"
                "\t\t</utility>\n"
                "\t\t<decision id=\"D\">\n"
                "\t\t\t<state id=\"Choice0\" />\n"
                "\t\t\t<state id=\"Choice1\" />\n"
                "\t\t\t<parents>A</parents>\n"
                "\t\t</decision>\n"
                "\t\t<deterministic id=\"T\">\n" +
                two +
                "\t\t\t<parents>A</parents>\n"
                "\t\t\t<resultingstates>State1 State0 State1</resultingstates>\n"
                "\t\t</deterministic>\n"
                "\t\t<noisymax id=\"M\">\n" +
                two +
                // By rank the states are 2, 0, 1, so the states have the ranks 1, 2, 0.
                "\t\t\t<parents>A</parents>\n"
                "\t\t\t<strengths>1 2 0</strengths>\n"
                "\t\t\t<parameters>0.5 0.5 0.5 0.5 0 1 0.5 0.5</parameters>\n"
                "\t\t</noisymax>\n"
                "\t\t<noisyadder id=\"S\" function=\"singlefault\">\n" +
                two +
                "\t\t\t<parents>A</parents>\n"
                "\t\t\t<dstates>1 2</dstates>\n"
                "\t\t\t<weights>1 1</weights>\n"
                "\t\t\t<parameters>0.5 0.5 0.5 0.5 0 1 0 1</parameters>\n"
                "\t\t</noisyadder>\n"
                "\t\t<cast id=\"C\">\n"
                "\t\t\t<baseline>0.5</baseline>\n"
                "\t\t</cast>\n"
                "\t\t<cast id=\"C2\">\n"
                "\t\t\t<parents>C</parents>\n"
                "\t\t\t<pweights>0.1</pweights>\n"
                "\t\t\t<nweights>0</nweights>\n"
                "\t\t\t<baseline>0.5</baseline>\n"
                "\t\t</cast>\n"
                "\t\t<demorgan id=\"P\">\n"
                "\t\t\t<priorbelief>0.5</priorbelief>\n"
                "\t\t</demorgan>\n"
                "\t\t<demorgan id=\"P2\">\n"
                "\t\t\t<parents>P</parents>\n"
                "\t\t\t<types>requirement</types>\n"
                "\t\t\t<weights>0</weights>\n"
                "\t\t\t<priorbelief>0.5</priorbelief>\n"
                "\t\t</demorgan>\n"
                "\t</nodes>\n");
}

TEST(NetworkSaver, WritesAttributesAndCosts) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {}, {0.5, 0.5});
  KVN_node& node = *network.GetNode(a);
  ASSERT_EQ(network.SetTarget(a), 0);
  ASSERT_EQ(network.SetTemporalType(a, 1), 0);
  ASSERT_EQ(node.UserProperties()->AddProperty("k", "v"), 0);
  KVN_extraDefinition& extra = *node.ExtraDefinition();
  extra.SetDiagnosisType(KVN_DIAGNOSIS_OBSERVATION);
  extra.SetRanked(1);
  extra.SetMandatory(1);
  ASSERT_EQ(extra.SetFaultLabel(0, "L"), 0);
  ASSERT_EQ(extra.SetFaultState(1, 1), 0);
  ASSERT_EQ(extra.SetDefaultOutcome(1), 0);
  extra.SetSetAsDefault(1);
  // A default outcome without the flag isn't written.
  ASSERT_EQ(network.GetNode(b)->ExtraDefinition()->SetDefaultOutcome(1), 0);
  ASSERT_EQ(network.AddArc(a, b, /*layer=*/1), 0);
  ASSERT_EQ(network.GetNode(b)->Cost()->SetCosts(DoublesOf({1.5, KVN_NOT_AVAILABLE_VALUE})), 0);
  EXPECT_EQ(Between(Saved(network), "\t<nodes>", "</observationcost>\n"),
            "\t<nodes>\n"
            "\t\t<cpt id=\"A\" target=\"true\" diagtype=\"observation\" dynamic=\"anchor\" "
            "ranked=\"true\" mandatory=\"true\">\n"
            "\t\t\t<state id=\"State0\" label=\"L\" />\n"
            "\t\t\t<state id=\"State1\" default=\"true\" fault=\"true\" />\n"
            "\t\t\t<probabilities>0.5 0.5</probabilities>\n"
            "\t\t\t<property id=\"k\">v</property>\n"
            "\t\t</cpt>\n"
            "\t\t<cpt id=\"B\">\n"
            "\t\t\t<state id=\"State0\" />\n"
            "\t\t\t<state id=\"State1\" />\n"
            "\t\t\t<probabilities>0.5 0.5</probabilities>\n"
            "\t\t</cpt>\n"
            "\t</nodes>\n"
            "\t<observationcost>\n"
            "\t\t<node id=\"B\">\n"
            "\t\t\t<parents>A</parents>\n"
            "\t\t\t<cost>1.5 n/a</cost>\n"
            "\t\t</node>\n"
            "\t</observationcost>\n");
}

/// A node without a definition leaves neither an element nor its queued identifier; a truth table
/// row that determines nothing names no outcome.
TEST(NetworkSaver, LeavesOutWhatHasNoElement) {
  KVN_network network;
  (void)network.AddNode(KVN_TYPE_NONE, "Gone");
  const int table = AddNodeBelow(network, KVN_TYPE_TRUTHTABLE, "T", 2, {});
  WriteCells(network, table, {0, 0});
  const std::string text = Saved(network);
  EXPECT_EQ(text.find("Gone"), std::string::npos);
  EXPECT_NE(text.find("<resultingstates>(null)</resultingstates>"), std::string::npos);
}

/// Nodes that were made while memory was short lack a part or another.
TEST(NetworkSaver, WritesNodesThatLackAPart) {
  const ScratchFolder folder;
  const int failures = FailEachAllocation([&](int succeeding) {
    KVN_network network;
    bool hasFailed = false;
    {
      const FailingAllocation failing(succeeding);
      (void)network.AddNode(KVN_TYPE_CPT, "A");
      hasFailed = failing.HasFailed();
    }
    EXPECT_EQ(network.WriteFile(folder.Path("f.xkvn").c_str()), 0);
    return hasFailed;
  });
  EXPECT_GT(failures, 3);
}

class Extension : public IXmlWriterExtension {
 public:
  void Write(IXmlWriter& writer) override { writer.WriteElement("mine", nullptr, false); }
  void Release() override { ADD_FAILURE() << "it is the caller's"; }
};

TEST(NetworkSaver, ExtensionOptions) {
  KVN_network network;
  Extension extension;
  const auto options =
      reinterpret_cast<std::intptr_t>(static_cast<IXmlWriterExtension*>(&extension));
  EXPECT_EQ(Between(Saved(network, options), "\t<ext", "</ormel>"),
            "\t<extensions>\n\t\t<mine />\n\t</extensions>\n</ormel>");
  EXPECT_EQ(Saved(network, KVN_XML_NO_EXTENSION).find("extensions"), std::string::npos);
}

TEST(NetworkSaver, TellsOfAFileThatCannotBeWritten) {
  KVN_network network;
  EXPECT_EQ(network.WriteFile("/no/such/folder/f.xkvn", KVN_FORMAT_AUTO), -103);
  EXPECT_EQ(network.WriteFile(nullptr, KVN_FORMAT_XKVN), -103);
  EXPECT_EQ(network.ReadFile(nullptr, KVN_FORMAT_XKVN), -103);
  EXPECT_EQ(network.WriteFile("/dev/full", KVN_FORMAT_XKVN), -103);
}

/// Without memory the list of nodes, of parents or of states comes out short: better no new file
/// than one with holes in the place of a good one.
TEST(NetworkSaver, WithoutMemoryTheOldFileStays) {
  KVN_network network;
  RandomNetworkOptions options;
  options.nodes = 40;
  FillRandomNetwork(network, /*seed=*/3, options);
  const ScratchFolder folder;
  const std::string path = folder.Path("f.xkvn");
  ASSERT_EQ(network.WriteFile(path.c_str()), 0);
  const std::string whole = folder.Read("f.xkvn");
  const int failures = FailEachAllocation([&](int succeeding) {
    (void)folder.Write("f.xkvn", "old");
    const FailingAllocation failing(succeeding);
    const int result = network.WriteFile(path.c_str());
    EXPECT_EQ(folder.Read("f.xkvn"), result == 0 ? whole : "old") << succeeding;
    EXPECT_TRUE(failing.HasFailed() || result == 0);
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 3);
}

}  // namespace
