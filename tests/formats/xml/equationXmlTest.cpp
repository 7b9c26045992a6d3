// Equation nodes in XML files: read, answered, written and read again.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "foundation/random.h"
#include "foundation/resultCodes.h"
#include "tests/formats/fileChecks.h"
#include "tests/formats/xml/loaded.h"
#include "tests/support/equationBuilder.h"

namespace {

/// A network of these nodes, which takes few samples.
struct Net : Loaded {
  explicit Net(const std::string& nodes)
      : Loaded(InRoot("<nodes>" + nodes + "</nodes>", " numsamples='200'")) {}
};

std::string EquationElement(const std::string& id, const std::string& text,
                            const std::string& more = "", const std::string& range = "") {
  return "<equation id='" + id + "'><definition" + range + ">" + text + "</definition>" + more +
         "</equation>";
}

const char* const kIntervals =
    "<discretization><interval id='low' upper='2'/><interval id='high' upper='7'/>"
    "</discretization>";

/// Text of all means, with all digits.
std::string AnswerOf(KVN_network& network) {
  ResetGenerators();
  EXPECT_EQ(network.UpdateBeliefs(), 0);
  std::string text;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    const KVN_valEqEvaluation& value = EquationValueOf(network, handle);
    EXPECT_TRUE(value.IsValueValid());
    char number[64];
    std::snprintf(number, sizeof number, "%.17g %.17g ", value.GetMean(), value.GetDeviation());
    text += number;
    for (double p : value.GetDiscretized()) text += std::to_string(p) + " ";
  }
  return text;
}

}  // namespace

TEST(EquationXml, ReadsRangeFormulaAndIntervals) {
  Net net(EquationElement("a", " a = 3\n") +
          EquationElement("y", "y = a &lt; 4", kIntervals, " lower='0' upper='5.5'"));
  ASSERT_EQ(net.result, 0);
  const int y = net.network.FindNode("y");
  const KVN_equation& node = EquationNode(net.network, y);
  EXPECT_EQ(TextOf(net.network, y), "y=a<4") << "the comparison binds tighter than the sign";
  EXPECT_EQ(net.network.GetNumberOfParents(y), 1) << "the formula makes the arcs";
  EXPECT_EQ(node.GetLowerBound(), 0.0);
  ASSERT_EQ(node.GetDiscIntervals().size(), 2u);
  EXPECT_EQ(node.GetDiscIntervals()[0].id, "low");
  EXPECT_EQ(node.GetDiscIntervals()[1].upper, 5.5);
  EXPECT_EQ(EquationNode(net.network, net.network.FindNode("a")).GetUpperBound(), 1.0);
}

TEST(EquationXml, RefusedContentEndsTheLoadWithTheReason) {
  // clang-format off
  const struct {
    std::string nodes;
    const char* message;
  } cases[] = {
      {EquationElement("y", "y = 1 +"), "SetEquation failed: 'Factor expected'"},
      {EquationElement("y", ""),        "SetEquation failed: 'Equation cannot be empty.'"},
      {EquationElement("y", "y"),       "SetEquation failed: 'Toplevel '=' sign missing in equation'"},
      {EquationElement("y", "y = z"),   "SetEquation failed: 'Unknown node identifier: z'"},
      {EquationElement("y", "y = 1", kIntervals), "SetDiscIntervals failed: ''"},
      {EquationElement("y", "y = 1", "", " lower='x'"),
       "Floating point value expected for attribute 'lower'"},
      {"<equation id='y'/>",            "SetEquation failed: 'Equation cannot be empty.'"},
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.nodes);
    const Net net(c.nodes);
    EXPECT_EQ(net.result, KVN_FILE_IO);
    EXPECT_NE(net.LastMessage().find(c.message), std::string::npos) << net.LastMessage();
  }
}

TEST(EquationXml, WrittenAndReadAgainItAnswersTheSame) {
  Net net(EquationElement("a", "a = Normal(1, 2)") +
          EquationElement("b", "b = Uniform(0, 4)", kIntervals, " lower='0' upper='4'") +
          EquationElement("y", "2*y - (a &lt;= b ? a : -b) = Max(a, 1e-9)^2"));
  ASSERT_EQ(net.result, 0);
  KVN_network again;
  EXPECT_THAT(ReadText(again, "xkvn", WrittenText(net.network, "xkvn")), testing::IsEmpty());
  for (int discretized : {0, 1}) {
    SCOPED_TRACE(discretized);
    if (discretized == 1) {
      for (KVN_network* network : {&net.network, &again}) {
        for (const char* id : {"a", "y"}) Discretise(*network, network->FindNode(id), -9, {0, 9});
        network->SetEquationDiscretized(1);
      }
    }
    EXPECT_EQ(AnswerOf(again), AnswerOf(net.network));
  }
  EXPECT_EQ(WrittenText(again, "xkvn"), WrittenText(net.network, "xkvn"));  // discretised by now
}

TEST(EquationXml, WritesOnlyWhatIsNotUsual) {
  Net net(EquationElement("a", "a = 0.1234567891") +
          EquationElement("y", "y = a", kIntervals, " lower='0' upper='5.25'"));
  ASSERT_EQ(net.result, 0);
  const std::string text = WrittenText(net.network, "xkvn");
  // A constant keeps six digits, a range all of them.
  EXPECT_NE(text.find("<definition>a=0.123457</definition>"), std::string::npos) << text;
  EXPECT_NE(text.find("<parents>a</parents>"), std::string::npos);
  EXPECT_NE(text.find("<definition lower=\"0\" upper=\"5.25\">y=a</definition>"),
            std::string::npos);
  EXPECT_NE(text.find("<interval id=\"high\" upper=\"5.25\" />"), std::string::npos) << text;
}
