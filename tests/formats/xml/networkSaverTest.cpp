// The file that a network is written as.

#include "formats/xml/networkSaver.h"

#include <gtest/gtest.h>

#include <string>

#include "formats/xml/networkLoader.h"
#include "network/extraDefinition.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/userProperties.h"
#include "tests/formats/fileChecks.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"

namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";

std::string Saved(KVN_network& network, std::intptr_t options = 0) {
  const ScratchFolder folder;
  EXPECT_EQ(network.WriteFile(folder.Path("f.qkvn").c_str(), KVN_FORMAT_AUTO, options), 0);
  std::string text = folder.Read("f.qkvn");
  EXPECT_EQ(text.substr(0, kDeclaration.size()), kDeclaration);
  return text.substr(kDeclaration.size());
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

/// Settings, every kind of node with its lists, attributes and costs.
TEST(NetworkSaver, WritesAFileAsItStands) {
  const std::string path = KVN_SOURCE_DIR "/tests/fuzz/corpus/xml/kinds.xkvn";
  KVN_network network;
  ASSERT_EQ(network.ReadFile(path.c_str()), 0);
  std::ifstream stream(path, std::ios::binary);
  EXPECT_EQ(kDeclaration + Saved(network), std::string(std::istreambuf_iterator<char>(stream), {}));
}

/// A node without a definition leaves neither an element nor its queued identifier, and a default
/// outcome without its flag no attribute; a truth table row that determines nothing names no
/// outcome, and an unset property is empty.
TEST(NetworkSaver, LeavesOutWhatHasNoElement) {
  KVN_network network;
  (void)network.AddNode(KVN_TYPE_NONE, "Gone");
  const int table = AddNodeBelow(network, KVN_TYPE_TRUTHTABLE, "T", 2, {});
  WriteCells(network, table, {0, 0});
  ASSERT_EQ(network.GetNode(table)->ExtraDefinition()->SetDefaultOutcome(1), 0);
  ASSERT_EQ(network.UserProperties().AddProperty("unset", nullptr), 0);
  const std::string text = Saved(network);
  EXPECT_EQ(text.find("Gone"), std::string::npos);
  EXPECT_EQ(text.find("default="), std::string::npos);
  EXPECT_NE(text.find("<property id=\"unset\"></property>"), std::string::npos);
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
  RandomNetworkOptions options;
  options.nodes = 40;
  ExpectWritesAllOrNothing(
      "xkvn", [&](KVN_network& network) { FillRandomNetwork(network, /*seed=*/3, options); });
}

}  // namespace
