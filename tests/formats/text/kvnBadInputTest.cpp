// Damaged and hostile files: the reader ends, says something, leaves a network that can be used,
// and writes nothing by halves. The sanitizers watch.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "tests/formats/fileChecks.h"
#include "tests/support/randomNetwork.h"

namespace {

/// Counts the messages instead of keeping thousands of them.
class CountedLog : public KVN_errorTarget {
 public:
  CountedLog() { KVN_errorLog().SetRedirect(this, /*own=*/false); }
  CountedLog(const CountedLog&) = delete;
  CountedLog& operator=(const CountedLog&) = delete;
  ~CountedLog() override { KVN_errorLog().SetRedirect(nullptr, /*own=*/false); }

  void Log(int /*code*/, const char* text) override {
    count++;
    last = text;
  }

  int count = 0;
  std::string last;
};

/// Every block and nearly every statement on few bytes, so that it can be cut at each of them.
const char* const kSmallFile = R"(net N { HEADER = { ID = N; NAME = "n \"1\""; COMMENT = "a \
  b"; }; CREATION = { CREATOR = "c"; }; NUMSAMPLES = 7; BKCOLOR = 1; SHOWAS = 1;
SCREEN = { POSITION = { CENTER_X = 1; WIDTH = 2; }; COLOR = 3; SHOWINARCS = FALSE; };
SCREENCOMMENT = { (1, 2, 3, 4), "box" }; USER_PROPERTIES = { k = "v"; };
DOCUMENTATION = { "t" = "p"; };
submodel S { SCREEN = { FONT = 1; }; }; submodel T { PARENT = S; };
node A { TYPE = CPT; SUBMODEL = T; TARGET = TRUE; PARENTS = (); DEFINITION = {
 NAMESTATES = (a, b); PROBABILITIES = (.25, 75e-2); };
 EXTRA_DEFINITION = { DIAGNOSIS_TYPE = TARGET; FAULT_STATES = (0, 1); FAULT_LABELS = ("L", "");
 DEFAULT_STATE = 1; DOCUMENTATION = { "d" = "e"; }; STATECOMMENTS = ("x", "y"); }; };
node D { TYPE = LIST; PARENTS = (A); DEFINITION = { NAMECHOICES = (go, stay); }; }; // comment
node M { TYPE = NOISY_OR; PARENTS = (A, D); DEFINITION = { NAMESTATES = (y, n);
 STRENGTHS = (0, 1, 1, 0); PROBABILITIES = (0.8, 0.2, 0.5, 0.5, 0.1, 0.9); }; };
node T1 { TYPE = TRUTHTABLE; PARENTS = (M); DEFINITION = { RESULTINGSTATES = (State1, State0); }; };
node C { TYPE = CAST; DEFINITION = { BASELINE = "0.5"; }; }; /* comment */
node U { TYPE = TABLE; PARENTS = (D); DEFINITION = { UTILITIES = (1, -2); }; };
OBSERVATION_COST = { node M { PARENTS = (A); COSTS = (1, 2); }; }; };
)";

std::vector<std::string> Examples() {
  std::vector<std::string> texts;
  for (const auto& entry : std::filesystem::directory_iterator(KVN_EXAMPLES)) {
    if (entry.path().extension() != ".kvn") continue;
    std::ifstream stream(entry.path(), std::ios::binary);
    texts.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  EXPECT_GE(texts.size(), 3u);
  return texts;
}

class KvnBadInput : public testing::Test {
 protected:
  /// Reads the text into a network, which must then be whole. Syntax errors are no failure of the
  /// read except in the outermost frame.
  int Read(const std::string& text) {
    const std::string path = folder.Write("bad.kvn", text);
    KVN_network network;
    const int result = network.ReadFile(path.c_str());
    EXPECT_TRUE(result == 0 || result == KVN_SYNTAX_ERROR) << result;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      EXPECT_NE(network.DefinitionOf(h), nullptr);
    }
    // Once in a while, since it takes longer than to read.
    if (reads++ % 8 == 0) {
      EXPECT_EQ(network.WriteFile(folder.Path("again.kvn").c_str()), 0);
    }
    nodes = network.GetNumberOfNodes();
    return result;
  }

  void ExpectRead(const char* name, const std::string& text, int nodesLeft) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Read(text), 0);
    EXPECT_EQ(nodes, nodesLeft);
  }

  const ScratchFolder folder;
  CountedLog log;
  int nodes = 0;
  int reads = 0;
};

TEST_F(KvnBadInput, TheSmallFileIsSound) {
  EXPECT_EQ(Read(kSmallFile), 0);
  EXPECT_EQ(log.last, "");
  EXPECT_EQ(nodes, 6);
}

TEST_F(KvnBadInput, FilesCutAtEveryByte) {
  const std::string text = kSmallFile;
  for (std::size_t length = 0; length < text.size(); length++) {
    log.count = 0;
    (void)Read(text.substr(0, length));
    // Up to the word `net` it is a foreign file, and what follows the last "}" may be missing.
    const bool isWhole = text.find('}', length) == std::string::npos;
    EXPECT_TRUE(log.count > 0 || length <= 4 || isWhole) << "cut at " << length;
    if (testing::Test::HasFailure()) return;
  }
}

/// Every byte would take minutes; the stride is prime, so that it falls on all columns.
TEST_F(KvnBadInput, ExamplesCutHereAndThere) {
  for (const std::string& text : Examples()) {
    for (std::size_t length = 5; length < text.size() - 4; length += 307) {
      log.count = 0;
      (void)Read(text.substr(0, length));
      EXPECT_GT(log.count, 0) << "cut at " << length;
    }
  }
}

TEST_F(KvnBadInput, FlippedBytesRepeatedAndMissingPieces) {
  std::vector<std::string> texts = Examples();
  texts.emplace_back(kSmallFile);
  RandomSource random(11);
  for (int round = 0; round < 400; round++) {
    std::string text = texts[random.Below(static_cast<int>(texts.size()))];
    const int size = static_cast<int>(text.size());
    for (int edits = random.Between(1, 4); edits > 0; edits--) {
      const int place = random.Below(size / 2);
      const int length = random.Between(1, random.Chance(0.5) ? 12 : size / 3);
      switch (random.Below(4)) {
        case 0:
          text[place] = static_cast<char>(random.Below(256));
          break;
        case 1:
          text.insert(place, text.substr(place, length));
          break;
        case 2:
          text.insert(random.Below(size / 2), text.substr(place, length));
          break;
        default:
          if (static_cast<int>(text.size()) > size) text.erase(place, length);
          break;
      }
    }
    SCOPED_TRACE("round " + std::to_string(round));
    (void)Read(text);
    if (testing::Test::HasFailure()) return;
  }
}

std::string Table(const std::string& numbers, const std::string& name = "") {
  return "net N { node A { TYPE = CPT; HEADER = { NAME = \"" + name +
         "\"; }; DEFINITION = { NAMESTATES = (a, b); PROBABILITIES = " + numbers +
         "; }; };\nnode B { TYPE = CPT; }; };";
}

/// Three parents of 2,000 choices: 2 * 2000^3 cells are more than 32 bits can count.
std::string HugeTable() {
  std::string names;
  for (int i = 0; i < 2000; i++) names += (i == 0 ? "s" : ", s") + std::to_string(i);
  std::string text = "net N {\n";
  for (const char* id : {"P", "Q", "R"}) {
    text += std::string("node ") + id + " { TYPE = LIST; DEFINITION = { NAMECHOICES = (" + names +
            "); }; };\n";
  }
  return text + "node B { TYPE = CPT; PARENTS = (P, Q, R); }; };";
}

TEST_F(KvnBadInput, HostileFiles) {
  constexpr int kMany = 100000;
  constexpr int kTenMegabytes = 10000000;
  const std::string x(kTenMegabytes, 'x');
  const std::string nines(kTenMegabytes, '9');
  ExpectRead("nested parentheses", Table(Repeated("(", kMany)), 2);
  ExpectRead("nested braces", "net N { HEADER = " + Repeated("{", kMany), 0);
  ExpectRead("closing braces", "net N { HEADER = " + Repeated("}", kMany), 0);
  ExpectRead("nested comments", "net N { " + Repeated("/# ", kMany), 0);
  ExpectRead("nodes without end", "net N { " + Repeated("node A { ", kMany), 0);
  ExpectRead("a string on one line", Table("(1, 0)", x), 1);
  ExpectRead("a string on many", Table("(1, 0)", Repeated("xxxxxxxxx\n", kTenMegabytes / 10)), 2);
  ExpectRead("an identifier", "net " + x + " { };", 0);
  ExpectRead("a number", Table("(" + nines + ", 0)"), 2);
  ExpectRead("numbers without end", Table("(" + Repeated("0.5, ", kMany) + "1)"), 2);
  ExpectRead("zero bytes", "net N { " + std::string(kMany, '\0'), 0);
  ExpectRead("no text at all", std::string("\x01\xFF\xFE\x00\x80", 5), 0);
  ExpectRead("a huge table", HugeTable(), 4);
  ExpectRead("a net inside", "net N { net M { }; };", 0);
}

TEST_F(KvnBadInput, PlacesThatCannotBeReadOrWritten) {
  KVN_network network;
  ASSERT_GE(network.AddNode(KVN_TYPE_CPT, "A"), 0);
  std::filesystem::create_directory(folder.Path("folder.kvn"));
  for (const char* name : {"none/x.kvn", "folder.kvn"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(KVN_network().ReadFile(folder.Path(name).c_str()), KVN_FILE_IO);
    EXPECT_EQ(log.last, "OPEN FILE FAILED");
    EXPECT_EQ(network.WriteFile(folder.Path(name).c_str()), KVN_FILE_IO);
  }
  EXPECT_EQ(network.WriteFile("/dev/full", /*format=*/4), KVN_FILE_IO);
  EXPECT_EQ(folder.CountEntries(), 1);
}

}  // namespace
