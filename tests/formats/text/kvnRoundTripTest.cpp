// What is written reads back equal: generated networks field by field, files byte for byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "network/network.h"
#include "tests/formats/fileChecks.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"
#include "tests/support/sanitized.h"

namespace {

constexpr int kSeeds = FewerIfSanitized(200);
// Half of the eighth decimal, and what the subtraction of the comparison may add to it.
constexpr double kEightDecimals = 0.5e-8 + 1e-12;

/// The kinds whose numbers the format has statements for.
const std::vector<int> kCarriedKinds = {KVN_TYPE_CPT,      KVN_TYPE_MAU,   KVN_TYPE_TRUTHTABLE,
                                        KVN_TYPE_LIST,     KVN_TYPE_TABLE, KVN_TYPE_CAST,
                                        KVN_TYPE_NOISY_MAX};

TEST(KvnRoundTrip, GeneratedNetworksComeBackEqual) {
  for (int seed = 0; seed < kSeeds && !testing::Test::HasFailure(); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNetworkOptions options;
    options.kinds = kCarriedKinds;
    options.nodes = 1 + seed % 15;
    KVN_network made;
    FillRandomNetwork(made, static_cast<std::uint64_t>(seed), options);
    NetworkCompareOptions compare;
    compare.tolerance = kEightDecimals;
    ExpectComesBack(made, "kvn", compare);
  }
}

TEST(KvnRoundTrip, GatesWithoutStatementsKeepAllButTheirNumbers) {
  for (int seed = 0; seed < 20 && !testing::Test::HasFailure(); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNetworkOptions options;
    options.kinds = {KVN_TYPE_DEMORGAN};
    KVN_network made;
    FillRandomNetwork(made, static_cast<std::uint64_t>(seed), options);
    NetworkCompareOptions compare;
    compare.tolerance = kEightDecimals;
    compare.ignored = {"definition"};
    ExpectComesBack(made, "kvn", compare);
  }
}

TEST(KvnRoundTrip, WritesAllOrNothing) {
  RandomNetworkOptions options;
  options.nodes = 10;
  options.kinds = kCarriedKinds;
  ExpectWritesAllOrNothing(
      "kvn", [&](KVN_network& network) { FillRandomNetwork(network, /*seed=*/3, options); });
}

/// The examples stand in the writer's own layout, so that a user who converts one sees no change.
TEST(KvnRoundTrip, ExamplesAreWrittenAsTheyStand) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KVN_EXAMPLES)) {
    if (entry.path().extension() != ".kvn") continue;
    SCOPED_TRACE(entry.path());
    files++;
    const LogWatch log;
    KVN_network network;
    ASSERT_EQ(network.ReadFile(entry.path().c_str()), 0);
    EXPECT_EQ(log.Texts(), std::vector<std::string>());
    std::ifstream stream(entry.path(), std::ios::binary);
    const std::string original(std::istreambuf_iterator<char>(stream), {});
    EXPECT_EQ(WrittenText(network, "kvn"), original);
  }
  EXPECT_GE(files, 3);
}

}  // namespace
