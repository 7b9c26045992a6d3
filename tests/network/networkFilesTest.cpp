#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/submodelHandler.h"
#include "tests/network/networkTools.h"

// Linked with a table of its own, so that a test sees what a reader sees.

namespace {

/// What the next speaker does, and what it has seen.
struct Script {
  bool skipsIdentifiers = false;
  bool skipsCycles = false;
  int result = 0;
  std::vector<std::string> seen = {};
};
Script theScript;

class SpySpeaker : public KVN_fileSpeaker {
 public:
  explicit SpySpeaker(KVN_network& target) : network(target) {}
  ~SpySpeaker() override { theScript.seen.push_back("gone"); }

  /// Leaves a whole node, a node without a definition, and what repeats or cycles if it may.
  int ReadFile(const char* fileName) override {
    theScript.seen.push_back(std::string("read ") + fileName + " into " +
                             std::to_string(network.GetNumberOfNodes()) + " nodes, mask " +
                             std::to_string(network.GetChangeMask()) + ", flags " +
                             std::to_string(network.GetLoadFlags()));
    AddNodes(network, KVN_TYPE_CPT, {"a", "b"});
    AddNodes(network, 0, {"half"});
    EXPECT_EQ(network.GetNumberOfSamples(), 1000);
    network.SetNumberOfSamples(5);
    EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "a") >= 0, theScript.skipsIdentifiers);
    EXPECT_EQ(network.GetNode(2)->SetId("b") == 0, theScript.skipsIdentifiers);
    AddArcs(network, {{"a", "b"}});
    return theScript.result;
  }
  int WriteFile(const char* fileName) override {
    theScript.seen.push_back(std::string("write ") + fileName);
    return theScript.result;
  }
  bool SkipsIdentifierCheck() override { return theScript.skipsIdentifiers; }
  bool SkipsCycleCheck() override { return theScript.skipsCycles; }
  void SetOptions(std::intptr_t options) override {
    theScript.seen.push_back("options " + std::to_string(options));
  }

 private:
  KVN_network& network;
};

KVN_fileSpeaker* MakeSpy(KVN_network& network) { return new SpySpeaker(network); }

}  // namespace

const KVN_formatRow theFileFormats[] = {
    {KVN_FORMAT_KVN, MakeSpy},
    {KVN_FORMAT_KI, MakeSpy},
    {-1, nullptr},
};

namespace {

const struct {
  const char* fileName;
  int format;
} kFileNames[] = {
    {"a.xkvn", KVN_FORMAT_XKVN}, {"a.QKVN", KVN_FORMAT_XKVN},  {"/x.y/a.b.Kvn", KVN_FORMAT_KVN},
    {"a.erg", KVN_FORMAT_ERGO},  {"a.dne", KVN_FORMAT_NETICA}, {"a.dsc", KVN_FORMAT_MICROSOFT},
    {".net", KVN_FORMAT_HUGIN},  {"a.dxp", KVN_FORMAT_KI},     {"a.xml03", KVN_FORMAT_XMLBIF},
    {"a.xml", KVN_REFUSED},      {"a.kvnx", KVN_REFUSED},      {"a.kv", KVN_REFUSED},
    {"a.", KVN_REFUSED},         {"kvn", KVN_REFUSED},         {"/home.kvn/net", KVN_REFUSED},
    {nullptr, KVN_REFUSED},
};

TEST(NetworkFiles, TheExtensionTellsTheFormat) {
  for (const auto& c : kFileNames) {
    EXPECT_EQ(DetectFileFormat(c.fileName), c.format) << (c.fileName ? c.fileName : "(null)");
  }
}

TEST(NetworkFiles, UnknownFormatsAreRefusedAndLeaveTheNetwork) {
  KVN_network network;
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "a"), 0);
  for (int format : {0, 9, -1, -2, 4711}) {
    EXPECT_EQ(network.ReadFile("file.unknown", format), KVN_REFUSED);
    EXPECT_STREQ(GetLastErrorMessage(), "Unknown File Format");
    EXPECT_EQ(network.WriteFile("file.unknown", format), KVN_REFUSED);
  }
  EXPECT_EQ(network.GetNumberOfNodes(), 1);
}

TEST(NetworkFiles, AReadEmptiesTheNetworkAndDropsWhatIsHalfMade) {
  const struct {
    bool skipsIdentifiers, skipsCycles;
    int flags, nodesLeft;
  } cases[] = {
      {false, false, 1, 2},
      {true, false, 5, 3},
      {false, true, 3, 2},
      {true, true, 7, 3},
  };
  for (const auto& c : cases) {
    KVN_network network;
    AddNodes(network, KVN_TYPE_CPT, {"old"});
    EXPECT_EQ(network.Creation().SetCreator("me"), 0);
    EXPECT_GT(network.Submodels().Create(KVN_ROOT_SUBMODEL, "group"), 0);
    network.SetChangeMask(5);
    theScript = {c.skipsIdentifiers, c.skipsCycles};
    // Wider than an int: an option may be a pointer.
    const std::intptr_t options = std::intptr_t{1} << 40;
    EXPECT_EQ(network.ReadFile("x.kvn", KVN_FORMAT_AUTO, options), 0);
    const std::string read = "read x.kvn into 0 nodes, mask 0, flags " + std::to_string(c.flags);
    EXPECT_EQ(theScript.seen, (std::vector<std::string>{"options 1099511627776", read, "gone"}));
    EXPECT_EQ(network.GetNumberOfNodes(), c.nodesLeft);
    EXPECT_EQ(network.FindNode("half"), KVN_REFUSED);
    EXPECT_EQ(network.FindNode("old"), KVN_REFUSED);
    EXPECT_STREQ(network.Header().GetId(), "Sub0");
    EXPECT_EQ(network.Submodels().Exists("group"), 0);
    EXPECT_STREQ(network.Creation().GetCreator(), "me");
    EXPECT_EQ(network.GetChangeMask(), 5);
    EXPECT_EQ(network.GetLoadFlags(), 0);
  }
}

TEST(NetworkFiles, AFailedReadLeavesWhatWasRead) {
  KVN_network network;
  theScript = {false, false, KVN_SYNTAX_ERROR};
  EXPECT_EQ(network.ReadFile("x.kvn"), KVN_SYNTAX_ERROR);
  EXPECT_EQ(network.GetNumberOfNodes(), 3);
  EXPECT_EQ(network.GetNumberOfSamples(), 5);
  EXPECT_EQ(network.GetChangeMask(), 463);
  EXPECT_EQ(network.GetLoadFlags(), 0);
  // The next read begins from the defaults again.
  theScript = {};
  EXPECT_EQ(network.ReadFile("any name", KVN_FORMAT_KVN), 0);
  EXPECT_EQ(network.GetNumberOfNodes(), 2);
}

TEST(NetworkFiles, OnlyTheArgumentKeepsFromWritingKi) {
  KVN_network network;
  theScript = {};
  EXPECT_EQ(network.WriteFile("x.kvn", KVN_FORMAT_KI), KVN_REFUSED);
  EXPECT_STREQ(GetLastErrorMessage(), "Writing to KI file format not supported.");
  EXPECT_TRUE(theScript.seen.empty());
  theScript.result = KVN_FILE_IO;
  EXPECT_EQ(network.WriteFile("x.dxp"), KVN_FILE_IO);
  EXPECT_EQ(theScript.seen, (std::vector<std::string>{"write x.dxp", "gone"}));
}

}  // namespace
