// Conversions between every two formats: what the report says is lost, and that the tables stay.

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "network/node.h"
#include "ormel/formatNames.h"
#include "tests/tools/ormel/lossTruth.h"

namespace {

/// Half of the eighth decimal for each number. A reader that normalises lets each number of a row
/// feel the rounding of all four.
constexpr double kRounding = 3e-8;

/// Kinds that neither format refuses.
std::vector<int> KindsTakenByBoth(int first, int second) {
  std::vector<int> kinds;
  for (int kind : KindsTakenBy(first)) {
    if (CapacityOf(second)->FateOf(kind) != Fate::kRefused) kinds.push_back(kind);
  }
  return kinds;
}

/// Through a file of the format. The result of reading it.
int PassThrough(KVN_network& network, int format, KVN_network& back) {
  const ScratchFolder folder;
  const LogCapture silence;
  const std::string file = folder.Path("network");
  if (int result = network.WriteFile(file.c_str(), format); result != 0) return result;
  return back.ReadFile(file.c_str(), format);
}

/// Whether the nodes still mean the same: parents, outcomes and the tables they stand for. Nodes of
/// several utilities, of which only the format's own kind comes back, are left out.
testing::AssertionResult MeansTheSame(KVN_network& network, KVN_network& back) {
  NetworkCompareOptions options;
  options.byTable = true;
  options.tolerance = kRounding;
  options.ignored = {"node.kind", "node.target", "node.submodel", "submodel", "text",
                     "layout",    "diagnosis",   "cost",          "setting"};
  for (const NetworkDifference& difference : CompareNetworks(network, back, options)) {
    const int handle = network.FindNode(difference.node.c_str());
    if (network.TypeOf(handle) != KVN_TYPE_MAU) return testing::AssertionFailure() << difference;
  }
  return testing::AssertionSuccess();
}

TEST(FormatPairs, LoseWhatTheReportSaysAndKeepTheTables) {
  for (const int first : kHeldFormats) {
    for (const int second : kHeldFormats) {
      for (std::uint64_t seed = 100; seed < 102; seed++) {
        SCOPED_TRACE(std::string(NameOfFormat(first)) + " to " + NameOfFormat(second) + ", seed " +
                     std::to_string(seed));
        RandomNetworkOptions options;
        options.nodes = 12;
        options.kinds = KindsTakenByBoth(first, second);
        KVN_network made, network, back;
        FillRandomNetwork(made, seed, options);
        ASSERT_EQ(PassThrough(made, first, network), 0);
        ExpectTruth(network, second, {"numbers", "outcomes", "drawing"});
        ASSERT_EQ(PassThrough(network, second, back), 0);
        // Between two formats that keep whole kinds the numbers of some may go.
        if (!AnyLoss(ListLosses(network, second), "numbers")) {
          EXPECT_TRUE(MeansTheSame(network, back));
        }
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

struct Step {
  int format;
  std::set<std::string> losses;  // by what is lost
};

std::set<std::string> KindsOfLoss(KVN_network& network, int format) {
  std::set<std::string> kinds;
  for (const Loss& loss : ListLosses(network, format)) kinds.insert(loss.what);
  return kinds;
}

/// Sends the network from format to format. The losses of each step are those listed, and from the
/// first file on the tables stay what they are.
void ExpectJourney(KVN_network& network, const std::vector<Step>& steps) {
  std::vector<std::unique_ptr<KVN_network>> stops;
  KVN_network* at = &network;
  for (const Step& step : steps) {
    SCOPED_TRACE(NameOfFormat(step.format));
    EXPECT_EQ(KindsOfLoss(*at, step.format), step.losses);
    stops.push_back(std::make_unique<KVN_network>());
    ASSERT_EQ(PassThrough(*at, step.format, *stops.back()), 0);
    at = stops.back().get();
  }
  EXPECT_TRUE(MeansTheSame(*stops.front(), *stops.back()));
}

/// A network with a node of each kind, and everything else that a file may hold.
void FillWithAllKinds(KVN_network& network, const std::vector<int>& kinds) {
  RandomNetworkOptions options;
  options.nodes = 4 * static_cast<int>(kinds.size());
  options.kinds = kinds;
  std::set<int> found;
  for (std::uint64_t seed = 1; seed < 50 && found.size() < kinds.size(); seed++) {
    network.CleanUp(/*deep=*/1);
    network.Initialize(50, 50);
    FillRandomNetwork(network, seed, options);
    found.clear();
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      found.insert(network.TypeOf(h));
    }
  }
  ASSERT_EQ(found, std::set<int>(kinds.begin(), kinds.end()));
}

using Losses = std::set<std::string>;

Losses With(Losses losses, const Losses& more) {
  losses.insert(more.begin(), more.end());
  return losses;
}

// The text cuts numbers to eight decimals, the XML format has no place for what people see, and the
// formats of others have none for what only this engine knows. A gate's table has digits that its
// parameters had not.
const Losses kLostAsText = {"cost digits", "digits"};
const Losses kLostAsXml = {
    "appearance",      "comment",   "costs",     "creation", "default outcome",
    "diagnosis texts", "documents", "layout",    "name",     "position",
    "properties",      "submodel",  "text boxes"};
const Losses kLostAsErgo = {
    "costs", "default outcome",   "diagnosis type", "faults",     "identifier",
    "kind",  "number of samples", "properties",     "target mark"};
const Losses kLostAsXmlbif = {"costs", "default outcome",   "diagnosis type", "faults",
                              "kind",  "number of samples", "properties",     "target mark"};

TEST(FormatPairs, EveryKindTravelsToXmlbifAndBack) {
  KVN_network network;
  ASSERT_NO_FATAL_FAILURE(FillWithAllKinds(network, RandomNetworkOptions().kinds));
  std::vector<Step> steps;
  steps.push_back(
      {KVN_FORMAT_KVN, With(kLostAsText, {"numbers", "outcomes", "diagnosis attributes"})});
  steps.push_back({KVN_FORMAT_XKVN, With(kLostAsXml, {"display mode", "faults"})});
  steps.push_back({KVN_FORMAT_XMLBIF, With(kLostAsXmlbif, {"digits", "parents"})});
  steps.push_back({KVN_FORMAT_XKVN, {}});
  ExpectJourney(network, steps);
}

TEST(FormatPairs, ChanceNodesTravelToErgoAndBack) {
  KVN_network network;
  ASSERT_NO_FATAL_FAILURE(FillWithAllKinds(network, {KVN_TYPE_CPT, KVN_TYPE_TRUTHTABLE}));
  std::vector<Step> steps;
  steps.push_back({KVN_FORMAT_KVN, kLostAsText});
  steps.push_back({KVN_FORMAT_XKVN, kLostAsXml});
  steps.push_back({KVN_FORMAT_ERGO, kLostAsErgo});
  steps.push_back({KVN_FORMAT_XKVN, {}});
  ExpectJourney(network, steps);
}

// Of each kind that Ergo has no place for the report says that the format refuses the network.
TEST(FormatPairs, ErgoRefusesTheOtherKinds) {
  KVN_network network, back;
  ASSERT_NO_FATAL_FAILURE(FillWithAllKinds(network, RandomNetworkOptions().kinds));
  const std::vector<Loss> losses = ListLosses(network, KVN_FORMAT_ERGO);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const int type = network.TypeOf(h);
    EXPECT_EQ(HasLoss(losses, network.GetNode(h)->GetId(), "node"),
              type != KVN_TYPE_CPT && type != KVN_TYPE_TRUTHTABLE);
  }
  EXPECT_NE(PassThrough(network, KVN_FORMAT_ERGO, back), 0);
}

}  // namespace
