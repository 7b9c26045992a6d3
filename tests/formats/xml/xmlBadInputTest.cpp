// Files that are damaged or meant to do harm: refused with a message or loaded, never a crash,
// never more memory or time than the file's own size explains.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/formats/fileChecks.h"
#include "tests/formats/xml/loaded.h"
#include "tests/support/randomNetwork.h"

namespace {

std::string SampleFile(int nodes) {
  KVN_network network;
  RandomNetworkOptions options;
  options.nodes = nodes;
  options.maxParents = 2;
  options.maxOutcomes = 3;
  options.descriptions = false;
  FillRandomNetwork(network, /*seed=*/5, options);
  return WrittenText(network, "xkvn");
}

/// Only a file that has lost no more than its last line feed loads.
TEST(XmlBadInput, TruncatedAnywhere) {
  const std::string whole = SampleFile(/*nodes=*/4);
  ASSERT_EQ(Loaded(whole).result, 0);
  for (std::size_t length = 0; length + 1 < whole.size(); length++) {
    ASSERT_EQ(Loaded(whole.substr(0, length)).result, -103) << length;
  }
}

/// Bytes flipped, pieces doubled, moved or lost: 0 or -103, and a message with a failure. What
/// loads can be written and read again.
TEST(XmlBadInput, DamagedAtRandom) {
  const std::string whole = SampleFile(/*nodes=*/8);
  RandomSource random(/*seed=*/7);
  const int size = static_cast<int>(whole.size());
  for (int round = 0; round < 600; round++) {
    std::string text = whole;
    for (int edits = random.Between(1, 3); edits > 0; edits--) {
      const std::size_t at = static_cast<std::size_t>(random.Below(size));
      const std::size_t length = static_cast<std::size_t>(random.Between(1, 60));
      switch (random.Below(4)) {
        case 0:
          text[at] = static_cast<char>(random.Below(256));
          break;
        case 1:
          text.insert(at, whole, static_cast<std::size_t>(random.Below(size)), length);
          break;
        case 2:
          text.erase(at, length);
          break;
        default:
          text[at] = "<>/\"'=&; 019-.eE"[random.Below(16)];
      }
      text.resize(std::max<std::size_t>(text.size(), whole.size()), ' ');
    }
    SCOPED_TRACE(round);
    Loaded loaded(text);
    if (loaded.result != 0) continue;
    const std::string written = WrittenText(loaded.network, "xkvn");
    ASSERT_EQ(Loaded(written).result, 0) << written;
  }
}

/// Entities that multiply, that form a chain, that name files; with what ends each load.
TEST(XmlBadInput, Entities) {
  const ScratchFolder folder;
  const std::string secret = folder.Write("secret", "0.5 0.5");
  const auto document = [](const std::string& declarations, const std::string& reference) {
    return "<!DOCTYPE ormel [" + declarations + "]><ormel version='1.0' id='N'><properties>" +
           "<property id='p'>" + reference + "</property></properties></ormel>";
  };
  std::string laughs = "<!ENTITY l0 'lollollol'>";
  std::string chain = "<!ENTITY c0 'x'>";
  for (int i = 1; i < 30; i++) {
    const std::string below = "&l" + std::to_string(i - 1) + ";";
    laughs += "<!ENTITY l" + std::to_string(i) + " '" + Repeated(below, 10) + "'>";
  }
  for (int i = 1; i < 20000; i++) {
    chain += "<!ENTITY c" + std::to_string(i) + " '&c" + std::to_string(i - 1) + ";'>";
  }
  const std::string fat = "<!ENTITY f '" + std::string(200000, 'x') + "'>";
  const std::string file = "<!ENTITY e SYSTEM '" + secret + "'>";
  const std::string parameter = "<!ENTITY % e SYSTEM '" + secret + "'> %e;";
  const struct {
    std::string document;
    const char* entity;
  } cases[] = {
      {document(laughs, "&l29;"), "l1"},
      {document(chain, "&c19999;"), "c1"},
      {document(file, "&e;"), "e"},
      {document(parameter, ""), "e"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.entity);
    const Loaded outcome(c.document);
    EXPECT_EQ(outcome.result, -103);
    EXPECT_EQ(outcome.LastMessage(),
              "Entity '" + std::string(c.entity) + "' must not refer to files or other entities");
  }
  // A default is repeated at every element that leaves the attribute out.
  EXPECT_EQ(Loaded(document("<!ATTLIST property new CDATA 'x'>", "")).LastMessage(),
            "Attribute 'new' of 'property' must not have a default");
  EXPECT_EQ(Loaded(document("<!ATTLIST property id CDATA #REQUIRED>", "")).result, 0);
  EXPECT_EQ(Loaded(document(fat, Repeated("&f;", 1000))).LastMessage(),
            "limit on input amplification factor (from DTD and entities) breached");
  EXPECT_EQ(Loaded(document("<!ENTITY e 'plain'>", "&e;")).result, 0);
}

TEST(XmlBadInput, Oversized) {
  const std::string large(1 << 20, 'x');
  EXPECT_EQ(Loaded(InNodes("<cpt id='A' diagtype='" + large + "'/>")).LastMessage(),
            "Unknown diagnosis node type: '" + large + "'");
  EXPECT_EQ(Loaded(InNodes("<cpt id='A'><probabilities>" + large + " ")).LastMessage(),
            "Can't read list of doubles, failed at element 1");
  std::string nested;
  for (int i = 0; i < 100000; i++) nested += "<x>";
  EXPECT_EQ(Loaded(InNodes(nested)).LastMessage(), "mismatched tag");
}

/// A few lines that ask for a table of gigabytes: refused from the counts, before anything of that
/// size is built. Where the table has no list at all, from the sizes alone.
TEST(XmlBadInput, TablesThatTheListDoesNotFill) {
  std::string nodes, parents, choices;
  for (int i = 0; i < 30; i++) {
    const std::string id = "N" + std::to_string(i);
    nodes += "<cpt id='" + id +
             "'><state id='a'/><state id='b'/><probabilities>1 0</probabilities></cpt>";
    parents += id + " ";
    nodes += "<decision id='C" + std::to_string(i) + "'><state id='x'/><state id='y'/></decision>";
    choices += " C" + std::to_string(i);
  }
  nodes += "<utility id='U'><utilities>1</utilities></utility>";
  const std::string below = " id='M'><parents>U" + choices + "</parents>";
  const std::string above = "<parents>" + parents + "</parents>";
  const std::string states = "<state id='a'/><state id='b'/>";
  const std::string chance =
      "<cpt id='T'>" + states + above + "<probabilities>1 0</probabilities></cpt>";
  const std::string utility = "<utility id='T'>" + above + "<utilities>1</utilities></utility>";
  const std::string truth = "<deterministic id='T'>" + states + above +
                            "<resultingstates>a</resultingstates></deterministic>";
  const std::string costs = "</nodes><observationcost><node id='N0'>" + above +
                            "<cost>1</cost></node></observationcost><nodes>";
  std::string many;
  for (int i = 0; i < 5000; i++) many += "<state id='s" + std::to_string(i) + "'/>";
  std::string half;
  for (int i = 0; i < 16; i++) half += "N" + std::to_string(i) + " ";
  const std::string wide = "<deterministic id='T'>" + many + "<parents>" + half +
                           "</parents><resultingstates>s0</resultingstates></deterministic>";
  const std::string pair = "<decision id='D'>" + many + "</decision>";
  const std::string inside = many + "<parents>D</parents>";
  const std::string gate = pair + "<noisymax id='T'>" + inside + "</noisymax>";
  const std::string unfilled =
      pair + "<noisymax id='T'>" + inside + "<parameters>1</parameters></noisymax>";
  const std::string adder =
      pair + "<noisyadder id='T'>" + inside + "<dstates>0 0</dstates></noisyadder>";
  const auto binary = [&](const std::string& kind, const std::string& lists, int count) {
    const std::string base =
        kind == "cast" ? "<baseline>0.5</baseline>" : "<priorbelief>0.5</priorbelief>";
    std::string made, ids;
    for (int i = 0; i < count; i++) {
      const std::string id = "G" + std::to_string(i);
      made += "<" + kind + " id='" + id + "'>" + base + "</" + kind + ">";
      ids += id + " ";
    }
    return made + "<" + kind + " id='T'><parents>" + ids + "</parents>" + base + lists + "</" +
           kind + ">";
  };
  const auto cast = [&](int count, int negative) {
    return binary("cast",
                  "<pweights>" + Repeated("0.5 ", count) + "</pweights><nweights>" +
                      Repeated("0 ", negative) + "</nweights>",
                  count);
  };
  EXPECT_EQ(Loaded(InNodes(cast(16, 16))).result, 0);
  const struct {
    std::string content;
    const char* message;
  } cases[] = {
      {"<mau" + below + "<weights>1</weights></mau>", "SetWeights failed"},
      {"<maux" + below + "<expression>U</expression></maux>",
       "Invalid number of expressions: 1, expected 1073741824"},
      {binary("demorgan", "", 26), "SetParentWeights failed"},
      {binary("cast", "", 26), "SetPositiveWeights failed"},
      {cast(26, 25), "SetNegativeWeights failed"},
      {cast(26, 26), "AddArc failed"},
      {chance, "SetProbabilities failed"},
      {utility, "SetUtilities failed"},
      {truth, "Invalid number of resulting states: 1, expected 1073741824"},
      {costs, "SetCosts failed"},
      {wide, "Invalid number of resulting states: 1, expected 65536"},
      {gate, "SetNumberOfOutcomes failed"},
      {adder, "SetNumberOfOutcomes failed"},
      {unfilled, "Invalid weights vector size 1, expected 25005000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    const Loaded outcome(InNodes(nodes + c.content));
    EXPECT_EQ(outcome.result, -103);
    EXPECT_EQ(outcome.LastMessage(), c.message);
  }
}

}  // namespace
