#include <gtest/gtest.h>

#include "definitions/list.h"
#include "definitions/table.h"
#include "foundation/resultCodes.h"
#include "tests/support/definitionBuilder.h"

namespace {

using Texts = std::vector<std::string>;

struct ChangeCase {
  const char* name;
  int oldCount;
  std::vector<const char*> names;
  std::vector<int> mapping;
  int result;
  Texts outcomes;             // afterwards
  std::vector<double> cells;  // of a row that was 0.1, 0.2, 0.3, ...
};
const Texts kOld = {"State0", "State1"};
const ChangeCase kChangeCases[] = {
    {"swap", 2, {"b", "a"}, {1, 0}, 0, {"b", "a"}, {0.2, 0.1}},
    {"drop the middle", 3, {"a", "c"}, {0, 2}, 0, {"a", "c"}, {0.1, 0.3}},
    {"new in front", 2, {"n", "a", "b"}, {-1, 0, 1}, 0, {"n", "a", "b"}, {0, 0.1, 0.2}},
    {"all", 4, {"d", "n", "a", "m"}, {3, -1, 0, -1}, 0, {"d", "n", "a", "m"}, {0.4, 0, 0.1, 0}},
    {"one continues", 3, {"n", "b"}, {-1, 1}, 0, {"n", "b"}, {0, 0.2}},
    {"all new, swapped", 2, {"State1", "State0"}, {-1, -1}, 0, {"State1", "State0"}, {0, 0}},
    {"bad names", 2, {"1", "1"}, {0, 1}, 0, {"x1", "x10"}, {0.1, 0.2}},
    {"counts differ", 2, {"a", "b"}, {0}, KVN_REFUSED, kOld, {0.1, 0.2}},
    {"old one twice", 2, {"a", "b", "c"}, {0, 1, 1}, KVN_REFUSED, kOld, {0.1, 0.2}},
    {"old one unknown", 3, {"a", "b", "c"}, {0, 1, 5}, KVN_REFUSED, kOld, {0.1, 0.2}},
};

TEST(ChangeOutcomes, KeepsWhatContinuesAndZeroesWhatIsNew) {
  for (const ChangeCase& c : kChangeCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x", c.oldCount);
    const int parent = AddNodeOf(network, KVN_TYPE_CPT, "parent", 3);
    const int child = AddNodeOf(network, KVN_TYPE_CPT, "child", 2);
    std::vector<double> row(c.oldCount);
    for (int i = 0; i < c.oldCount; i++) row[i] = 0.1 * (i + 1);
    AddArcs(network, {parent}, x);
    AddArcs(network, {x}, child);
    std::vector<double> cells;
    for (int i = 0; i < 3; i++) cells.insert(cells.end(), row.begin(), row.end());
    WriteCells(network, x, cells);

    KVN_intArray mapping = IntsOf(c.mapping);
    EXPECT_EQ(network.DefinitionOf(x)->ChangeOutcomes(StringsOf(c.names), mapping), c.result);
    EXPECT_EQ(OutcomesAt(network, x), c.outcomes);
    std::vector<double> expected;
    for (int i = 0; i < 3; i++) expected.insert(expected.end(), c.cells.begin(), c.cells.end());
    EXPECT_TRUE(CellsNear(TableOfNode(network, x), expected, 1e-15));
    EXPECT_EQ(TableOfNode(network, child).GetSizeOfDimension(0), static_cast<int>(c.cells.size()));
  }
}

TEST(ChangeOutcomes, IsNotForKindsWithoutOutcomes) {
  KVN_network network;
  const int utility = AddNodeOf(network, KVN_TYPE_TABLE, "utility");
  KVN_intArray mapping = IntsOf({0, 1});
  EXPECT_EQ(network.DefinitionOf(utility)->ChangeOutcomes(StringsOf({"a", "b"}), mapping),
            KVN_NOT_APPLICABLE);
  const int gate = AddNodeOf(network, KVN_TYPE_DEMORGAN, "gate");
  mapping = IntsOf({-1, 1});
  EXPECT_EQ(network.DefinitionOf(gate)->ChangeOutcomes(StringsOf({"a", "b"}), mapping),
            KVN_NOT_APPLICABLE);
}

/// Writes down the edits that it is asked for.
class RecordingList : public KVN_list {
 public:
  RecordingList() : KVN_list(nullptr, -1) { EXPECT_EQ(Init(), 0); }
  int AddOutcome(const char* name) override {
    edits.push_back(std::string("+") + name);
    return KVN_list::AddOutcome(name);
  }
  int RemoveOutcome(int position) override {
    edits.push_back("-" + std::to_string(position));
    return KVN_list::RemoveOutcome(position);
  }
  Texts edits;
};

// A definition never has fewer than two outcomes, so others stand in while all of them go.
TEST(ChangeOutcomes, TemporariesKeepTheCountAtTwo) {
  RecordingList list;
  KVN_intArray mapping = IntsOf({-1, -1, -1});
  EXPECT_EQ(list.ChangeOutcomes(StringsOf({"p", "q", "r"}), mapping), 0);
  EXPECT_EQ(list.edits,
            (Texts{"+tmpStateUI0", "+tmpStateUI00", "-1", "-0", "+p", "+q", "+r", "-0", "-0"}));
  EXPECT_EQ(TextsOf(*list.GetOutcomesNames()), (Texts{"p", "q", "r"}));
}

}  // namespace
