#include "formats/text/cellBudget.h"

#include "tests/formats/text/foreignFiles.h"

namespace {

struct BudgetCase {
  const char* extension;
  const char* start;
  const char* node;   // "%" is its number, as below
  const char* child;  // up to its parents
  const char* parent;
  const char* end;
};

// A child of two states below thirty parents of two, and two numbers for it.
const BudgetCase kBudgetCases[] = {
    {"kvn", "net N {",
     "node P% { TYPE = CPT; DEFINITION = { NAMESTATES = (a, b); PROBABILITIES = (0, 1); }; };",
     "node C { TYPE = CPT; PARENTS = (P0", ", P%",
     "); DEFINITION = { NAMESTATES = (a, b); PROBABILITIES = (0, 1); }; }; };"},
    {"dsc", "belief network \"N\"",
     "node P% { type : discrete[2] = { \"a\", \"b\" }; } probability (P%) { 0, 1; }",
     "node C { type : discrete[2] = { \"a\", \"b\" }; } probability (C | P0", ", P%",
     ") { 0, 1; }"},
    {"xml03", "<BIF VERSION=\"0.3\"><NETWORK>",
     "<VARIABLE><NAME>P%</NAME><OUTCOME>a</OUTCOME><OUTCOME>b</OUTCOME></VARIABLE>",
     "<VARIABLE><NAME>C</NAME></VARIABLE><DEFINITION><FOR>C</FOR><GIVEN>P0</GIVEN>",
     "<GIVEN>P%</GIVEN>", "<TABLE>0 1</TABLE></DEFINITION></NETWORK></BIF>"},
    {"dne", "bnet N {", "node P% { states = (a, b); probs = (0, 1); };",
     "node C { states = (a, b); parents = (P0", ", P%", "); probs = (0, 1); }; };"},
};

std::string Repeated(const char* text, int first, int last) {
  std::string all;
  for (int i = first; i < last; i++) {
    for (const char* c = text; *c != '\0'; c++)
      all += *c == '%' ? std::to_string(i) : std::string(1, *c);
    all += '\n';
  }
  return all;
}

TEST(CellBudget, FewWordsMakeNoGigabytes) {
  for (const BudgetCase& c : kBudgetCases) {
    SCOPED_TRACE(c.extension);
    KVN_network network;
    const std::vector<std::string> messages =
        ReadText(network, c.extension,
                 std::string(c.start) + '\n' + Repeated(c.node, 0, 30) + c.child +
                     Repeated(c.parent, 1, 30) + c.end);
    ASSERT_FALSE(messages.empty());
    EXPECT_NE(messages[0].find("Couldn't add arc from"), std::string::npos) << messages[0];
    EXPECT_EQ(network.GetNumberOfNodes(), 31);
    const int child = network.FindNode("C");
    EXPECT_EQ(network.GetNumberOfParents(child), 23);
    EXPECT_EQ(network.DefinitionOf(child)->GetSize(), 1 << 24);
  }
}

// The table of twenty parents may have a thousand states only where the file has room for numbers.
TEST(CellBudget, StatesCountAsParentsDo) {
  std::string states = "s0";
  for (int i = 1; i < 1000; i++) states += ", s" + std::to_string(i);
  const BudgetCase& c = kBudgetCases[0];
  KVN_network network;
  const std::vector<std::string> messages = ReadText(
      network, "kvn",
      std::string(c.start) + '\n' + Repeated(c.node, 0, 20) + c.child + Repeated(c.parent, 1, 20) +
          "); DEFINITION = { NAMESTATES = (" + states + "); }; }; };");
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(StatesOf(network, "C").size(), 2u);
  EXPECT_EQ(network.GetNumberOfParents(network.FindNode("C")), 20);
}

}  // namespace
