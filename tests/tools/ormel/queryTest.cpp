// `ormel query`: evidence in, posteriors out, and what it says when it can't.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "ormel/evidenceInput.h"
#include "ormel/exitCodes.h"
#include "tests/support/scratchFolder.h"
#include "tests/tools/ormel/toolRun.h"

namespace {

ToolRun Query(const std::vector<std::string>& arguments,
              const std::string& file = KVN_EXAMPLES "/chest-clinic.kvn") {
  return RunTool({"query", file}, arguments);
}

struct AnswerCase {
  const char* name;
  std::vector<std::string> arguments;
  double lungCancer;  // P(yes | evidence)
};
// Published with the network: 0.055 without evidence, 0.0995 for a visitor to Asia with dyspnoea
// (to four decimals, enumeration gives the rest). Soft evidence that says nothing changes nothing;
// one of 1 and 0 is an observation.
const AnswerCase kAnswerCases[] = {
    {"no evidence", {}, 0.055},
    {"by name and index", {"-e", "Dyspnea=yes", "-e", "VisitToAsia=#0"}, 0.099525},
    {"flat soft evidence", {"--soft", "Dyspnea=1,1"}, 0.055},
    {"certain soft evidence", {"--soft", "Dyspnea=1,0", "--soft", "VisitToAsia=1,0"}, 0.099525},
    {"another algorithm",
     {"-e", "Dyspnea=yes", "-e", "VisitToAsia=yes", "--algorithm", "sepset-join-tree"},
     0.099525},
    {"documented order",
     {"-e", "Dyspnea=yes", "-e", "VisitToAsia=yes", "--documented-order"},
     0.099525},
};

TEST(QueryCommand, AnswersWithThePublishedNumbers) {
  for (AnswerCase c : kAnswerCases) {
    SCOPED_TRACE(c.name);
    c.arguments.insert(c.arguments.end(), {"-t", "LungCancer", "--output", "json"});
    const ToolRun run = Query(c.arguments);
    ASSERT_EQ(run.code, kExitDone) << run.messages;
    const nlohmann::json answer = nlohmann::json::parse(run.data);
    EXPECT_NEAR(answer["posteriors"]["LungCancer"]["yes"].get<double>(), c.lungCancer, 1e-6);
    EXPECT_EQ(answer["posteriors"].size(), 1u);
    EXPECT_EQ(answer["network"], "ChestClinic");
    EXPECT_TRUE(answer["invalid"].empty());
  }
}

TEST(QueryCommand, ShowsTheSameInEachForm) {
  const std::vector<std::string> query = {"-t", "Smoking", "-t", "VisitToAsia", "--digits", "2"};
  auto with = [&](std::vector<std::string> more) {
    more.insert(more.end(), query.begin(), query.end());
    return Query(more).data;
  };
  // Handle order, not that of the options.
  EXPECT_EQ(with({"--output", "csv"}),
            "node,state,probability\nVisitToAsia,yes,0.01\nVisitToAsia,no,0.99\n"
            "Smoking,yes,0.5\nSmoking,no,0.5\n");
  const std::string half(20, '#');  // of a bar of 40
  EXPECT_NE(with({}).find("Smoking\n  yes  0.50  " + half + "\n  no   0.50  " + half + "\n"),
            std::string::npos);
}

struct SamplerCase {
  const char* name;
  bool isUnbiased;
};
const SamplerCase kSamplerCases[] = {
    {"logic-sampling", true},
    {"likelihood-weighting", true},
    {"self-importance", false},
    {"backward-sampling", true},
    {"ais", true},
    {"epis", true},
};

// The error is estimated from 20 batches: 7.07 of them are exceeded once in a million times.
TEST(QueryCommand, SamplesFromASeedAndTellsTheError) {
  for (const SamplerCase& c : kSamplerCases) {
    SCOPED_TRACE(c.name);
    std::vector<std::string> arguments = {
        "--algorithm", c.name, "--samples", "20000", "--output",    "json",   "-t",
        "LungCancer",  "-t",   "Dyspnea",   "-e",    "Dyspnea=yes", "--seed", "0"};
    const ToolRun run = Query(arguments);
    ASSERT_EQ(run.code, kExitDone) << run.messages;
    const nlohmann::json answer = nlohmann::json::parse(run.data);
    EXPECT_EQ(answer["samples"], 20000);
    EXPECT_EQ(answer["seed"], 0);
    const double error = answer["standardErrors"]["LungCancer"]["yes"].get<double>();
    EXPECT_GT(error, 0.0);
    EXPECT_EQ(answer["standardErrors"]["Dyspnea"]["yes"], 0.0) << "an observed node has none";
    const double share = answer["effectiveShares"]["LungCancer"].get<double>();
    EXPECT_TRUE(share > 0.05 && share <= 1.0) << share;
    // P(LungCancer | Dyspnea) by enumeration.
    const double posterior = answer["posteriors"]["LungCancer"]["yes"].get<double>();
    if (c.isUnbiased) {
      EXPECT_NEAR(posterior, 0.10275922, 7.07 * error);
    }
    // What counts of simple sampling are independent draws. The estimate over the truth is the root
    // of chi-squared(19)/19: one seed in a million is outside.
    if (std::string(c.name) == "logic-sampling") {
      const double truth = std::sqrt(0.10275922 * (1 - 0.10275922) / (20000 * share));
      EXPECT_TRUE(error > 0.3 * truth && error < 1.9 * truth) << error / truth;
    }

    EXPECT_EQ(Query(arguments).data, run.data) << "the same seed, the same answer";
    arguments.back() = "1";
    EXPECT_NE(Query(arguments).data, run.data);
    arguments.resize(arguments.size() - 2);
    EXPECT_TRUE(nlohmann::json::parse(Query(arguments).data).contains("seed")) << "one it chose";
  }
}

TEST(QueryCommand, ShowsTheErrorsInEachForm) {
  const std::vector<std::string> query = {
      "--algorithm", "logic-sampling", "--samples", "400", "--seed", "1", "-t", "Smoking"};
  auto with = [&](std::vector<std::string> more) {
    more.insert(more.end(), query.begin(), query.end());
    return Query(more).data;
  };
  EXPECT_EQ(with({"--output", "csv"}).find("node,state,probability,standard_error,effective_share"),
            0u);
  EXPECT_NE(with({}).find(" +/- 0.0"), std::string::npos);
  EXPECT_NE(with({}).find("100.0 % of the samples counted"), std::string::npos);
}

TEST(QueryCommand, PrintsLoopyBeliefsAsApproximate) {
  const ToolRun run = Query({"--algorithm", "loopy", "-t", "Smoking", "--output", "json"});
  EXPECT_EQ(run.code, kExitDone);
  EXPECT_NE(run.messages.find("approximate"), std::string::npos);
  const nlohmann::json answer = nlohmann::json::parse(run.data);
  EXPECT_EQ(answer["approximate"], true);
  EXPECT_TRUE(answer["invalid"].empty());
  EXPECT_FALSE(answer.contains("samples"));
  EXPECT_NEAR(answer["posteriors"]["Smoking"]["yes"].get<double>(), 0.5, 1e-12);
  EXPECT_NE(Query({"--algorithm", "loopy", "-t", "Smoking"}).data.find("(approximate)"),
            std::string::npos);
}

TEST(QueryCommand, ReadsEvidenceFiles) {
  const ScratchFolder folder;
  const struct {
    const char* name;
    const char* content;
    int code;
    const char* message;
  } cases[] = {
      {"lines.txt", "# a case\n\n Dyspnea = yes \nVisitToAsia=yes\n", kExitDone, ""},
      {"object.json", "{\"Dyspnea\": \"yes\", \"VisitToAsia\": 0}", kExitDone, ""},
      {"bad.txt", "Dyspnea=yes\nVisitToAsia\n", kExitBadFile, "bad.txt:2:"},
      {"bad.json", "{\"Dyspnea\":\n yes}", kExitBadFile, "bad.json:2:"},
      {"real.json", "{\"Dyspnea\": 0.5}", kExitBadUsage, "'0.5'"},
      {"null.json", "{\"Dyspnea\": null}", kExitBadFile, "a number"},
      {"large.json", "{\"Dyspnea\":\n 1e999}", kExitBadFile, "large.json:2:"},
      {"list.json", "[1]", kExitBadFile, "NODE=STATE"},
      {"node.txt", "Dispnea=yes\n", kExitBadUsage, "'Dyspnea'?"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string file = folder.Write(c.name, c.content);
    const ToolRun run = Query({"--evidence-file", file, "-t", "LungCancer", "--output", "csv"});
    EXPECT_EQ(run.code, c.code) << run.messages;
    EXPECT_NE(run.messages.find(c.message), std::string::npos) << run.messages;
    EXPECT_EQ(run.data.find("LungCancer,yes,0.0995") != std::string::npos, c.code == kExitDone);
  }
  EXPECT_EQ(Query({"--evidence-file", folder.Path("none.txt")}).code, kExitBadFile);
}

struct RefusalCase {
  const char* name;
  std::vector<std::string> arguments;
  int code;
  const char* message;
};
const RefusalCase kRefusalCases[] = {
    {"unknown node", {"-e", "Smokng=yes"}, kExitBadUsage, "'Smoking'?"},
    {"unknown state", {"-e", "Smoking=maybe"}, kExitBadUsage, "yes, no"},
    {"bad index", {"-e", "Smoking=#2"}, kExitBadUsage, "yes, no"},
    {"unknown target", {"-t", "X"}, kExitBadUsage, "unknown node 'X'"},
    {"no state", {"-e", "Smoking"}, kExitBadUsage, "NODE=STATE"},
    {"bad likelihood", {"--soft", "Smoking=0.5,x"}, kExitBadUsage, "--soft"},
    {"too few", {"--soft", "Smoking=0.5"}, kExitBadUsage, "2 states"},
    {"nothing possible", {"--soft", "Smoking=0,0"}, kExitBadUsage, "not all 0"},
    {"negative", {"--soft", "Smoking=-1,2"}, kExitBadUsage, "0 or more"},
    {"no seed", {"--seed", "-1"}, kExitBadUsage, "--seed"},
    {"no samples", {"--samples", "0"}, kExitBadUsage, "--samples"},
    {"no algorithm", {"--algorithm", "guess"}, kExitBadUsage, "guess"},
    {"conflict",
     {"-e", "Tuberculosis=yes", "-e", "TuberculosisOrCancer=no"},
     kExitImpossible,
     "contradicts"},
    {"loops", {"--algorithm", "polytree"}, kExitRefused, "PolyTree algorithm can not be applied"},
    {"a target format", {"--to", "kvn"}, kExitBadUsage, "--to"},
};

TEST(QueryCommand, SaysWhyNot) {
  for (const RefusalCase& c : kRefusalCases) {
    SCOPED_TRACE(c.name);
    const ToolRun run = Query(c.arguments);
    EXPECT_EQ(run.code, c.code);
    EXPECT_NE(run.messages.find(c.message), std::string::npos) << run.messages;
    EXPECT_EQ(run.data, "");
  }
}

TEST(QueryCommand, ImpossibleAsAWholeLeavesNodesWithoutPosterior) {
  // The children say that their parents differ and that they are equal: no single table can tell.
  std::string text = "net N {\n";
  for (const char* root : {"A", "B"}) {
    text += std::string("node ") + root + " { TYPE = CPT; PARENTS = (); DEFINITION = " +
            "{ NAMESTATES = (x, y); PROBABILITIES = (0.5, 0.5); }; };\n";
  }
  for (const char* child : {"Differ", "Equal"}) {
    text += std::string("node ") + child + " { TYPE = CPT; PARENTS = (A, B); DEFINITION = " +
            "{ NAMESTATES = (x, y); PROBABILITIES = " +
            (child[0] == 'D' ? "(0, 1, 1, 0, 1, 0, 0, 1)" : "(1, 0, 0, 1, 0, 1, 1, 0)") +
            "; }; };\n";
  }
  const ScratchFolder folder;
  const std::string file = folder.Write("parity.kvn", text + "};\n");
  // Where likelihoods settle the parents, no table sums to 0.
  for (const char* algorithm : {"clustering", "sepset-join-tree", "relevance-decomposition",
                                "relevance-decomposition-2", "likelihood-weighting"}) {
    SCOPED_TRACE(algorithm);
    const ToolRun run = Query(
        {"-e", "Differ=x", "--soft", "A=1,0", "--soft", "B=2,0", "--algorithm", algorithm}, file);
    EXPECT_EQ(run.code, kExitImpossible);
    EXPECT_NE(run.messages.find("impossible as a whole: node Differ"), std::string::npos)
        << run.messages;
    EXPECT_EQ(Query({"-e", "Differ=y", "--soft", "A=1,0", "--soft", "B=2,0"}, file).code,
              kExitDone);
  }
  for (const char* algorithm : {"clustering", "sepset-join-tree", "relevance-decomposition",
                                "relevance-decomposition-2", "epis", "logic-sampling"}) {
    SCOPED_TRACE(algorithm);
    const ToolRun run = Query(
        {"-e", "Differ=x", "-e", "Equal=x", "--output", "csv", "--algorithm", algorithm}, file);
    EXPECT_EQ(run.code, kExitImpossible);
    const bool isExact =
        run.messages.find("o posterior for: A, B; the evidence is impossible") != std::string::npos;
    EXPECT_TRUE(isExact || run.messages.find("No useful samples") != std::string::npos)
        << run.messages;
    EXPECT_EQ(run.data.find("A,x"), std::string::npos);
  }
}

TEST(NearestOf, PicksTheFewestEdits) {
  EXPECT_EQ(NearestOf("smokin", {"Smoking", "Asia"}), "Smoking");
  EXPECT_EQ(NearestOf("zzzz", {"Smoking", "Asia"}), "");
}

}  // namespace
