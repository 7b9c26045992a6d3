// What is written reads back equal: generated networks field by field, files byte for byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "network/fileSpeaker.h"
#include "network/network.h"
#include "tests/formats/fileChecks.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"
#include "tests/support/sanitized.h"
#include "tests/support/scratchFolder.h"

namespace {

constexpr int kSeeds = FewerIfSanitized(200);
// Half of the eighth decimal, and what the subtraction of the comparison may add to it.
constexpr double kEightDecimals = 0.5e-8 + 1e-12;

/// The kinds whose numbers the format has statements for.
const std::vector<int> kCarriedKinds = {KVN_TYPE_CPT,      KVN_TYPE_MAU,   KVN_TYPE_TRUTHTABLE,
                                        KVN_TYPE_LIST,     KVN_TYPE_TABLE, KVN_TYPE_CAST,
                                        KVN_TYPE_NOISY_MAX};

std::string WriteTo(const ScratchFolder& folder, const char* name, KVN_network& network) {
  EXPECT_EQ(network.WriteFile(folder.Path(name).c_str(), KVN_FORMAT_KVN), 0);
  return folder.Read(name);
}

void ReadFrom(const ScratchFolder& folder, const char* name, KVN_network& network) {
  const LogWatch log;
  EXPECT_EQ(network.ReadFile(folder.Path(name).c_str(), KVN_FORMAT_KVN), 0);
  EXPECT_EQ(log.Texts(), std::vector<std::string>());
}

TEST(KvnRoundTrip, GeneratedNetworksComeBackEqual) {
  const ScratchFolder folder;
  for (int seed = 0; seed < kSeeds && !testing::Test::HasFailure(); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNetworkOptions options;
    options.kinds = kCarriedKinds;
    options.nodes = 1 + seed % 15;
    KVN_network made;
    FillRandomNetwork(made, static_cast<std::uint64_t>(seed), options);
    const std::string first = WriteTo(folder, "first.kvn", made);
    KVN_network read;
    ReadFrom(folder, "first.kvn", read);
    NetworkCompareOptions compare;
    compare.tolerance = kEightDecimals;
    EXPECT_TRUE(NetworksEqual(made, read, compare));
    EXPECT_EQ(WriteTo(folder, "second.kvn", read), first);
  }
}

TEST(KvnRoundTrip, GatesWithoutStatementsKeepAllButTheirNumbers) {
  const ScratchFolder folder;
  for (int seed = 0; seed < 20 && !testing::Test::HasFailure(); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNetworkOptions options;
    options.kinds = {KVN_TYPE_DEMORGAN};
    KVN_network made;
    FillRandomNetwork(made, static_cast<std::uint64_t>(seed), options);
    (void)WriteTo(folder, "first.kvn", made);
    KVN_network read;
    ReadFrom(folder, "first.kvn", read);
    NetworkCompareOptions compare;
    compare.tolerance = kEightDecimals;
    compare.ignored = {"definition"};
    EXPECT_TRUE(NetworksEqual(made, read, compare));
  }
}

/// The examples stand in the writer's own layout, so that a user who converts one sees no change.
TEST(KvnRoundTrip, WritesAllOrNothing) {
  RandomNetworkOptions options;
  options.nodes = 10;
  options.kinds = kCarriedKinds;
  ExpectWritesAllOrNothing(
      "kvn", [&](KVN_network& network) { FillRandomNetwork(network, /*seed=*/3, options); });
}

TEST(KvnRoundTrip, ExamplesAreWrittenAsTheyStand) {
  const ScratchFolder folder;
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
    EXPECT_EQ(WriteTo(folder, "written.kvn", network), original);
  }
  EXPECT_GE(files, 3);
}

}  // namespace
