// `ormel query` on networks of equations. Means, deviations and quantiles of the example's 10,000
// samples are held to five standard errors; the seed is fixed, so the outcome is always the same.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "ormel/equationReport.h"
#include "ormel/exitCodes.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/scratchFolder.h"
#include "tests/tools/ormel/toolRun.h"

namespace {

using Arguments = std::vector<std::string>;

ToolRun QueryFile(const std::string& file, const Arguments& arguments) {
  return RunTool({"query", file, "--seed", "1"}, arguments);
}

nlohmann::json Values(const ToolRun& run) { return nlohmann::json::parse(run.data)["values"]; }

ToolRun QueryTank(const Arguments& arguments) {
  return QueryFile(KVN_EXAMPLES "/cooling-tank.xkvn", arguments);
}

ToolRun QueryText(const std::string& nodes, const Arguments& arguments) {
  const ScratchFolder folder;
  const std::string file =
      folder.Write("n.xkvn", "<ormel version='1.0' id='N'><nodes>" + nodes + "</nodes></ormel>");
  return QueryFile(file, arguments);
}

std::string Node(const std::string& id, const std::string& equation) {
  return "<equation id='" + id + "'><definition>" + equation + "</definition></equation>";
}

}  // namespace

TEST(EquationQuery, AnswersWithTheMomentsOfTheExample) {
  const ToolRun run = QueryTank({"--output", "json"});
  ASSERT_EQ(run.code, kExitDone) << run.messages;
  const nlohmann::json values = Values(run);
  EXPECT_EQ(values.size(), 6u);
  const double rise = 10.0 / 3 * std::log(2.0) / 0.2 / 4.19;  // E(Load) * E(1/Flow) / 4.19
  const struct {
    const char* node;
    double mean, allowed;
  } cases[] = {{"Load", 10.0 / 3, 0.052},
               {"Inlet", 15, 0.15},
               {"Rise", rise, 0.05},
               {"Outlet", 15 + rise, 0.16}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.node);
    EXPECT_NEAR(values[c.node]["mean"].get<double>(), c.mean, c.allowed);
    EXPECT_TRUE(values[c.node]["intervals"].empty());
  }
  EXPECT_NEAR(values["Inlet"]["deviation"].get<double>(), 3.0, 0.11);
  EXPECT_NEAR(values["Inlet"]["quantiles"]["0.05"].get<double>(), 15 - 1.645 * 3, 0.32);
  EXPECT_NEAR(values["Inlet"]["quantiles"]["0.95"].get<double>(), 15 + 1.645 * 3, 0.32);
}

TEST(EquationQuery, TakesNumbersAsEvidence) {
  const ToolRun run = QueryTank(
      {"-e", "Load=4.19", "-e", "Flow=2.5e-1", "-t", "Rise", "-t", "Load", "--output", "json"});
  ASSERT_EQ(run.code, kExitDone) << run.messages;
  EXPECT_NEAR(Values(run)["Rise"]["mean"].get<double>(), 4.0, 1e-12);
  EXPECT_EQ(Values(run)["Load"]["mean"], 4.19);
  EXPECT_EQ(Values(run).size(), 2u);
  EXPECT_EQ(nlohmann::json::parse(run.data)["evidence"]["Flow"], 0.25);

  const ScratchFolder folder;
  for (const char* text :
       {"{\"Load\": 4.19, \"Flow\": 0.25, \"Inlet\": 15}", "Load = 4.19\nFlow = 0.25\n"}) {
    const std::string file = folder.Write("case", text);
    const ToolRun same = QueryTank({"--evidence-file", file, "-t", "Rise", "--output", "json"});
    ASSERT_EQ(same.code, kExitDone) << same.messages;
    EXPECT_EQ(Values(same)["Rise"], Values(run)["Rise"]);
  }
}

TEST(EquationQuery, RefusesWhatItCannotAnswerAndSaysWhatWouldHelp) {
  const struct {
    Arguments arguments;
    int code;
    const char* message;
  } cases[] = {
      {{"-e", "Load=High"}, kExitBadUsage, "node [Load] takes a number, not 'High'"},
      {{"-e", "Load=nan"}, kExitBadUsage, "node [Load] takes a number, not 'nan'"},
      {{"-e", "Outlet=20"}, kExitRefused, "Conversion to HBN failed for node"},
      {{"-e", "Outlet=20"}, kExitRefused, "needs intervals and --discretize"},
      {{"--discretize", "-t", "Alarm"}, kExitRefused, "no answer for: Alarm; a node needs"},
      {{"--discretize", "-t", "Load", "-e", "Outlet=1", "-e", "Inlet=28"},
       kExitImpossible,
       "no answer for: Load; the evidence is impossible as a whole"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    const ToolRun run = QueryTank(c.arguments);
    EXPECT_EQ(run.code, c.code);
    EXPECT_NE(run.messages.find(c.message), std::string::npos) << run.messages;
  }
  const ToolRun discrete = QueryFile(KVN_EXAMPLES "/chest-clinic.kvn", {"--discretize"});
  EXPECT_EQ(discrete.code, kExitBadUsage);
}

TEST(EquationQuery, GivesProbabilitiesOfIntervals) {
  const ToolRun free = QueryTank({"--discretize", "--output", "json"});
  ASSERT_EQ(free.code, kExitDone) << free.messages;
  EXPECT_EQ(Values(free).size(), 5u) << "the alarm has no intervals";
  const ToolRun hot = QueryTank({"--discretize", "-e", "Outlet=22", "--output", "json"});
  ASSERT_EQ(hot.code, kExitDone) << hot.messages;
  const auto high = [](const ToolRun& run) {
    const nlohmann::json interval = Values(run)["Load"]["intervals"][2];
    EXPECT_EQ(interval["id"], "High");
    EXPECT_EQ(interval["lower"], 4.0);
    EXPECT_EQ(interval["upper"], 6.0);
    return interval["probability"].get<double>();
  };
  // P(Load > 4) = (6-4)^2 / ((6-1) * (6-3)); a hot outlet makes it likelier.
  EXPECT_NEAR(high(free), 4.0 / 15, 0.025);
  // Over ten seeds the difference is 0.144 with a deviation of 0.0035: 0.05 is 27 of them away.
  EXPECT_GT(high(hot), high(free) + 0.05);
  EXPECT_TRUE(Values(hot)["Load"]["mean"].is_null());
}

// Twenty samples in any order: the 1st and the 19th are the quantiles, and a sample between two
// bars of width 2 counts in the upper one.
TEST(EquationReport, QuantilesAndBarsOfKnownSamples) {
  KVN_network network;
  const int node = AddEquation(network, "X");
  KVN_valEqEvaluation& value = EquationValueOf(network, node);
  value.ResetSamples();
  for (double sample : {20.0, 0.5,  17.0, 3.0, 6.0, 0.0,  8.0, 2.0,  14.0, 6.5,
                        0.6,  12.0, 3.0,  7.0, 1.0, 15.0, 4.0, 10.0, 6.0,  5.0}) {
    value.AddSample(sample);
  }
  value.FinishSamples();
  EquationReport report;
  CollectValues(network, {node}, report);
  ASSERT_EQ(report.nodes.size(), 1u);
  EXPECT_EQ(report.nodes[0].low, 0.0);
  EXPECT_EQ(report.nodes[0].high, 17.0);
  const double counts[] = {4, 3, 2, 4, 1, 1, 1, 2, 1, 1};
  ASSERT_EQ(report.nodes[0].histogram.size(), std::size(counts));
  for (std::size_t i = 0; i < std::size(counts); i++) {
    SCOPED_TRACE(i);
    EXPECT_EQ(report.nodes[0].histogram[i].lower, 2.0 * static_cast<double>(i));
    EXPECT_EQ(report.nodes[0].histogram[i].upper, 2.0 * static_cast<double>(i) + 2.0);
    EXPECT_EQ(report.nodes[0].histogram[i].probability, counts[i] / 20);
  }
}

TEST(EquationQuery, ShowsIntervalsAsTableAndCsv) {
  const ScratchFolder folder;
  const std::string file =
      folder.Write("n.xkvn",
                   "<ormel version='1.0' id='N' discavoidzero='false'><nodes><equation id='a'>"
                   "<definition lower='0' upper='10'>a = 2.5</definition><discretization>"
                   "<interval id='Low' upper='2'/><interval id='Mid' upper='3'/>"
                   "<interval id='High' upper='10'/></discretization></equation></nodes></ormel>");
  EXPECT_EQ(QueryFile(file, {"--discretize"}).data,
            "a\n  Low  0 to 2    0.0000\n  Mid  2 to 3    1.0000  " + std::string(40, '#') +
                "\n  High  3 to 10  0.0000\n");
  EXPECT_EQ(QueryFile(file, {"--discretize", "--output", "csv"}).data,
            "node,quantity,value\na,interval Low,0.0\na,interval Mid,1.0\na,interval High,0.0\n");
  const ToolRun many = QueryFile(file, {"--samples", "20000001"});
  EXPECT_NE(many.messages.find("too many samples to keep: no quantiles"), std::string::npos);
}

// The table of a node with samples is that of the README, which is run too.
TEST(EquationQuery, ShowsNumbersAsTableAndCsv) {
  const ToolRun fixed =
      QueryText(Node("a", "a = 2.5") + Node("b", "b = a/0") + Node("c", "c = Ln(-a)"), {});
  EXPECT_EQ(fixed.data,
            "a\n  mean 2.5  deviation 0  5 % 2.5  95 % 2.5\n"
            "b\n  mean inf  deviation 0  5 % inf  95 % inf\n"
            "c\n  mean nan  deviation 0  5 % nan  95 % nan\n");
  const ToolRun csv =
      QueryText(Node("a", "a = 2.5") + Node("b", "b = Ln(-a)"), {"--output", "csv"});
  EXPECT_EQ(csv.data,
            "node,quantity,value\na,mean,2.5\na,deviation,0.0\na,quantile 0.05,2.5\n"
            "a,quantile 0.95,2.5\nb,mean,null\nb,deviation,0.0\nb,quantile 0.05,null\n"
            "b,quantile 0.95,null\n");
}

TEST(EquationQuery, SamplesThatAreNoNumbersAreCounted) {
  const ToolRun run = QueryText(
      Node("a", "a = Uniform(-1, 1)") + Node("b", "b = Ln(a)") + Node("c", "c = Normal(0,1)/0"),
      {});
  ASSERT_EQ(run.code, kExitDone) << run.messages;
  EXPECT_NE(run.data.find("samples are no numbers; the quantiles are of the others"),
            std::string::npos)
      << run.data;
}
