// The elements `mau` and `maux`, both ways, and what the native text format keeps of them.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "expressions/expression.h"
#include "network/network.h"
#include "tests/support/builders.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/scratchFolder.h"

namespace {

const std::string kNodes =
    "<decision id='D'><state id='x'/><state id='y'/></decision>"
    "<utility id='U'><utilities>1</utilities></utility>"
    "<utility id='V'><utilities>2</utilities></utility>";

/// A network from the elements of its nodes, and the last message without its place.
struct Read {
  explicit Read(const std::string& nodes) {
    const ScratchFolder folder;
    const std::string text =
        "<ormel version='1.0' id='N'><nodes>" + kNodes + nodes + "</nodes></ormel>";
    const LogWatch log;
    (void)network.ReadFile(folder.Write("f.xkvn", text).c_str());
    if (log.Texts().empty()) return;
    message = log.Texts().back();
    message = message.substr(message.find("f.xkvn: ") + 8);
  }
  KVN_mau& Mau(const char* id) {
    return static_cast<KVN_mau&>(*network.DefinitionOf(network.FindNode(id)));
  }

  KVN_network network;
  std::string message;
};

std::string Written(KVN_network& network, const char* name) {
  const ScratchFolder folder;
  EXPECT_EQ(network.WriteFile(folder.Path(name).c_str()), 0);
  return folder.Read(name);
}

std::vector<std::string> FormulasOf(const KVN_mau& mau) {
  std::vector<std::string> texts;
  for (int i = 0; mau.GetExpression(i) != nullptr; i++) {
    PrintSigned(*mau.GetExpression(i), texts.emplace_back());
  }
  return texts;
}

const std::string kMaux =
    "<maux id='M'><parents>V D U</parents><expression> U &lt; 3 ? -(U - V) : 0.25 "
    "</expression><expression>U*V</expression></maux>";

TEST(MauElements, WeightsComeBack) {
  Read read(
      "<mau id='M'><weights>0.5 -2 3 1e-9</weights><parents>V D U</parents></mau>"
      "<mau id='Top'><parents>M</parents><weights>7</weights></mau>");
  EXPECT_EQ(read.message, "");
  const std::string written = Written(read.network, "a.xkvn");
  EXPECT_NE(written.find("<mau id=\"M\">\n\t\t\t<parents>V D U</parents>\n\t\t\t<weights>0.5 -2 3 "
                         "1e-09</weights>\n\t\t</mau>"),
            std::string::npos)
      << written;
}

TEST(MauElements, FormulasComeBack) {
  Read read(kMaux);
  EXPECT_EQ(read.message, "");
  const std::vector<std::string> formulas = {"U<3 ? -(U-V) : 0.25", "U*V"};
  EXPECT_EQ(FormulasOf(read.Mau("M")), formulas);
  const std::string written = Written(read.network, "a.xkvn");
  const ScratchFolder folder;
  KVN_network again;
  ASSERT_EQ(again.ReadFile(folder.Write("b.xkvn", written).c_str()), 0);
  EXPECT_EQ(Written(again, "c.xkvn"), written);
  EXPECT_EQ(FormulasOf(static_cast<KVN_mau&>(*again.DefinitionOf(again.FindNode("M")))), formulas);
}

/// The text format has no statement for formulas: what it keeps are the weights beside them.
TEST(MauElements, TextFormatKeepsTheWeights) {
  Read read(kMaux);
  ASSERT_EQ(read.Mau("M").SetDefinition(DoublesOf({1, 2, 3, 4})), 0);
  const ScratchFolder folder;
  KVN_network again;
  ASSERT_EQ(again.ReadFile(folder.Write("a.kvn", Written(read.network, "a.kvn")).c_str()), 0);
  const int m = again.FindNode("M");
  EXPECT_EQ(again.TypeOf(m), KVN_TYPE_MAU);
  EXPECT_TRUE(CellsNear(TableOfNode(again, m), {1, 2, 3, 4}, 0.0));
}

TEST(MauElements, AreRefusedWithAMessage) {
  const auto maux = [](const std::string& parents, const std::string& expressions) {
    return "<maux id='M'><parents>" + parents + "</parents>" + expressions + "</maux>";
  };
  struct Case {
    std::string nodes, message;
  };
  // clang-format off
  const Case cases[] = {
      {"<mau id='M'><parents>D U</parents><weights>1</weights></mau>", "SetWeights failed"},
      {"<mau id='M'><parents>U</parents><weights>1 2</weights></mau>", "SetWeights failed"},
      {"<mau id='M'><parents>U</parents><weights>x</weights></mau>",
       "Can't read list of doubles, failed at element 1"},
      {"<mau id='M'/>", "Required element 'weights' not present in element 'mau'"},
      {"<maux id='M'/>", "Invalid number of expressions: 0, expected 1"},
      {maux("U", "<expression>U+</expression>"), "Invalid expression: U+"},
      {"<cpt id='C'><state id='x'/><state id='y'/><probabilities>1 0</probabilities></cpt>" +
           maux("C", "<expression>C</expression>"),
       "AddArc failed"},
      {maux("D U", "<expression>U</expression>"),
       "Invalid number of expressions: 1, expected 2"},
      {maux("U", "<expression>U</expression><expression>U</expression>"),
       "Invalid number of expressions: 2, expected 1"},
      {maux("U", "<expression>U+W</expression>"),
       "SetExpressions failed: 'Invalid expression at index 0: unknown identifier'"},
      {maux("U", "<expression>D</expression>"),
       "SetExpressions failed: 'Invalid expression at index 0: only non-descendant "
       "utility/ALU/MAU nodes are allowed'"},
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.nodes);
    EXPECT_EQ(Read(c.nodes).message, c.message);
  }
}

}  // namespace
