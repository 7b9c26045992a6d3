// What is written reads back equal: generated networks field by field, files byte for byte, and
// both ways between the two native formats.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/numberText.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/userProperties.h"
#include "tests/formats/fileChecks.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"

namespace {

constexpr int kSeeds = 100;
// Half a unit of the 16th digit of 1000, the largest number that the generator makes.
constexpr double kSixteenDigits = 0.5e-12;

void DropReturns(KVN_userProperties& properties) {
  for (int i = 0; i < properties.GetCount(); i++) {
    std::string text = properties.GetValue(i);
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    ASSERT_EQ(properties.SetPropertyValue(i, text.c_str()), 0);
  }
}

/// Takes away what the format doesn't carry and the comparer can't leave out: carriage returns in
/// properties, names of faults (a part of the graphical form), the cost of a node without cost
/// parents, and a default outcome without its flag.
void Normalise(KVN_network& network) {
  DropReturns(network.UserProperties());
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_node& node = *network.GetNode(h);
    DropReturns(*node.UserProperties());
    if (network.GetNumberOfParents(h, /*layer=*/1) == 0) {
      ASSERT_EQ(node.Cost()->SetCosts(DoublesOf({0.0})), 0);
    }
    KVN_extraDefinition& extra = *node.ExtraDefinition();
    // The gates over binary nodes have no `state` elements to carry anything of their outcomes.
    const int type = network.TypeOf(h);
    const bool isBinary = type == KVN_TYPE_CAST || type == KVN_TYPE_DEMORGAN;
    if (isBinary || extra.GetOutcomeCount() == 0) extra.SetSetAsDefault(0);
    if (extra.GetSetAsDefault() == 0 && extra.GetOutcomeCount() > 0) {
      ASSERT_EQ(extra.SetDefaultOutcome(0), 0);
    }
    for (int i = 0; i < extra.GetOutcomeCount(); i++) {
      ASSERT_EQ(extra.SetFaultName(i, ""), 0);
      if (!isBinary) continue;
      ASSERT_EQ(extra.SetFaultState(i, 0) | extra.SetFaultLabel(i, ""), 0);
    }
  }
}

/// What stands in the part of the file that holds the graphical form, which isn't written yet.
const std::vector<std::string> kNotCarried = {"node.submodel",      "submodel",
                                              "text.name",          "text.comment",
                                              "text.documents",     "text.boxes",
                                              "text.creation",      "layout",
                                              "diagnosis.showAs",   "diagnosis.documents",
                                              "diagnosis.comments", "diagnosis.question",
                                              "setting.showAs"};

TEST(XmlRoundTrip, GeneratedNetworksComeBackEqual) {
  for (int seed = 0; seed < kSeeds && !testing::Test::HasFailure(); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNetworkOptions options;
    options.nodes = 1 + seed % 15;
    KVN_network made;
    FillRandomNetwork(made, static_cast<std::uint64_t>(seed), options);
    Normalise(made);
    NetworkCompareOptions compare;
    compare.tolerance = kSixteenDigits;
    compare.ignored = kNotCarried;
    ExpectComesBack(made, "xkvn", compare);
  }
}

/// The kinds of nodes that both native formats carry keep their numbers up to the eight decimals of
/// the text format, whichever way they travel.
TEST(XmlRoundTrip, TheNativeFormatsAgree) {
  NetworkCompareOptions compare;
  compare.tolerance = 0.5e-8 + 1e-12;
  compare.ignored = kNotCarried;
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KVN_EXAMPLES)) {
    if (entry.path().extension() != ".kvn") continue;
    SCOPED_TRACE(entry.path());
    files++;
    KVN_network original, xml, text;
    ASSERT_EQ(original.ReadFile(entry.path().c_str()), 0);
    Normalise(original);
    EXPECT_THAT(ReadText(xml, "xkvn", WrittenText(original, "xkvn")), testing::IsEmpty());
    EXPECT_TRUE(NetworksEqual(original, xml, compare));
    EXPECT_THAT(ReadText(text, "kvn", WrittenText(xml, "kvn")), testing::IsEmpty());
    EXPECT_TRUE(NetworksEqual(original, text, compare));
  }
  EXPECT_GE(files, 3);
}

/// Every number comes back as the one that its 16 digits stand for, whatever it is.
TEST(XmlRoundTrip, NumbersKeepSixteenDigits) {
  std::vector<double> numbers = {0.0,
                                 -0.0,
                                 1.0 / 3.0,
                                 0.1 + 0.2,
                                 5e-324,
                                 2.2250738585072014e-308,
                                 1e300,
                                 1e-300,
                                 9007199254740993.0,
                                 123456789012345678.0,
                                 KVN_UNDEFINED_VALUE,
                                 KVN_ILLEGAL_VALUE,
                                 KVN_NOT_AVAILABLE_VALUE,
                                 INFINITY,
                                 -INFINITY,
                                 NAN};
  RandomSource random(/*seed=*/11);
  while (numbers.size() < 2000) {
    const double number = std::bit_cast<double>(random.Bits());
    if (std::isfinite(number)) numbers.push_back(number);
  }
  const int count = static_cast<int>(numbers.size());
  KVN_network made, read;
  const int choice = AddNodeBelow(made, KVN_TYPE_LIST, "D", count, {});
  const int utility = AddNodeBelow(made, KVN_TYPE_TABLE, "U", 0, {choice});
  WriteCells(made, utility, numbers);
  const std::string first = WrittenText(made, "xkvn");
  EXPECT_THAT(ReadText(read, "xkvn", first), testing::IsEmpty());
  const KVN_Dmatrix& table = TableOfNode(read, read.FindNode("U"));
  ASSERT_EQ(table.GetSize(), count);
  for (int i = 0; i < count; i++) {
    char text[64];
    std::snprintf(text, sizeof text, "%.16g", numbers[i]);
    const double kept = std::strtod(text, nullptr);
    const bool isSame = std::isnan(kept) ? std::isnan(table[i])
                                         : std::bit_cast<std::uint64_t>(kept) ==
                                               std::bit_cast<std::uint64_t>(table[i]);
    EXPECT_TRUE(isSame) << text;
  }
  for (int i : {10, 11, 12}) EXPECT_EQ(table[i], numbers[i]) << "a reserved number";
  EXPECT_EQ(WrittenText(read, "xkvn"), first);
}

TEST(XmlRoundTrip, AddersBelowAdders) {
  KVN_network made;
  const int a = AddNodeBelow(made, KVN_TYPE_NOISY_ADDER, "A", 3, {});
  const int b = AddNodeBelow(made, KVN_TYPE_NOISY_ADDER, "B", 2, {a});
  (void)AddNodeBelow(made, KVN_TYPE_NOISY_ADDER, "C", 4, {b, a});
  NetworkCompareOptions compare;
  compare.tolerance = kSixteenDigits;
  compare.ignored = kNotCarried;
  ExpectComesBack(made, "xkvn", compare);
}

}  // namespace
