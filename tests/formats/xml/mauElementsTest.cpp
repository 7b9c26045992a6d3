// The elements `mau` and `maux`, both ways, and what the native text format keeps of them.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "expressions/expression.h"
#include "tests/formats/fileChecks.h"
#include "tests/formats/xml/loaded.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"

namespace {

const std::string kNodes =
    "<decision id='D'><state id='x'/><state id='y'/></decision>"
    "<utility id='U'><utilities>1</utilities></utility>"
    "<utility id='V'><utilities>2</utilities></utility>";

/// A network of these nodes beside the others.
struct Read : Loaded {
  explicit Read(const std::string& nodes) : Loaded(InNodes(kNodes + nodes)) {}
};

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
  EXPECT_EQ(read.LastMessage(), "");
  const std::string written = WrittenText(read.network, "xkvn");
  EXPECT_NE(written.find("<mau id=\"M\">\n\t\t\t<parents>V D U</parents>\n\t\t\t<weights>0.5 -2 3 "
                         "1e-09</weights>\n\t\t</mau>"),
            std::string::npos)
      << written;
}

TEST(MauElements, FormulasComeBack) {
  Read read(kMaux);
  EXPECT_EQ(read.LastMessage(), "");
  const std::vector<std::string> formulas = {"U<3 ? -(U-V) : 0.25", "U*V"};
  EXPECT_EQ(FormulasOf(read.As<KVN_mau>("M")), formulas);
  const std::string written = WrittenText(read.network, "xkvn");
  Loaded again(written);
  EXPECT_EQ(WrittenText(again.network, "xkvn"), written);
  EXPECT_EQ(FormulasOf(again.As<KVN_mau>("M")), formulas);
}

/// The text format has no statement for formulas: what it keeps are the weights beside them.
TEST(MauElements, TextFormatKeepsTheWeights) {
  Read read(kMaux);
  ASSERT_EQ(read.As<KVN_mau>("M").SetDefinition(DoublesOf({1, 2, 3, 4})), 0);
  KVN_network again;
  EXPECT_THAT(ReadText(again, "kvn", WrittenText(read.network, "kvn")), testing::IsEmpty());
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
    EXPECT_EQ(Read(c.nodes).LastMessage(), c.message);
  }
}

}  // namespace
