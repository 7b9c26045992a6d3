#include "ormel/summary.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "network/network.h"
#include "network/submodelHandler.h"
#include "tests/support/networkBuilder.h"

namespace {

using Json = nlohmann::ordered_json;

/// A(2) and B(3) above a noisy-MAX M(2), above it all a utility U of M and A.
TEST(Summary, CountsWhatIsThere) {
  KVN_network network;
  const int a = AddNodeBelow(network, KVN_TYPE_CPT, "A", 2, {});
  const int b = AddNodeBelow(network, KVN_TYPE_CPT, "B", 3, {a});
  const int m = AddNodeBelow(network, KVN_TYPE_NOISY_MAX, "M", 2, {a, b});
  AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {m, a});
  AddNodeBelow(network, KVN_TYPE_LIST, "D", 4, {});
  ASSERT_EQ(network.AddArc(a, b, /*layer=*/1), 0);
  ASSERT_GE(network.Submodels().Create(KVN_ROOT_SUBMODEL, "Group"), 0);
  ASSERT_GE(network.UserProperties().AddProperty("key", nullptr), 0);
  const Json summary = Summarize(network);
  EXPECT_EQ(summary["identifier"], "Unnamed");
  EXPECT_EQ(summary["nodes"], 5);
  EXPECT_EQ(summary["nodesByKind"],
            Json({{"CPT", 2}, {"NOISY_MAX", 1}, {"TABLE", 1}, {"LIST", 1}}));
  EXPECT_EQ(summary["arcs"], 5);
  EXPECT_EQ(summary["costArcs"], 1);
  // M keeps 2 + 3 + 1 rows of 2, and stands for a table of 2 x 3 x 2 = 12 cells.
  EXPECT_EQ(summary["largestTable"], Json({{"node", "M"}, {"numbers", 12}, {"shape", {2, 3, 2}}}));
  // A 2, B 6, M 12, U 2 x 2.
  EXPECT_EQ(summary["numbers"], 2 + 6 + 12 + 4);
  EXPECT_EQ(summary["submodels"], Json({"Group"}));
  EXPECT_EQ(summary["properties"], Json({{"key", nullptr}}));
}

/// The table of such a gate can't be built, so it must not be asked for: 2^61 cells.
TEST(Summary, DoesNotBuildTheTableOfAGate) {
  KVN_network network;
  const int gate = network.AddNode(KVN_TYPE_NOISY_MAX, "Gate");
  for (int i = 0; i < 60; i++) {
    const int cause = network.AddNode(KVN_TYPE_CPT, nullptr);
    ASSERT_EQ(network.AddArc(cause, gate, /*layer=*/0), 0);
  }
  EXPECT_EQ(Summarize(network)["largestTable"]["numbers"], 0x1p61);
}

}  // namespace
