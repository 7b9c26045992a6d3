#include "inference/sampling/importanceRows.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Row = std::vector<double>;

constexpr double kRounding = 1e-15;

void ExpectRow(const Row& made, const Row& expected) {
  ASSERT_EQ(made.size(), expected.size());
  for (std::size_t k = 0; k < made.size(); k++) EXPECT_NEAR(made[k], expected[k], kRounding);
}

/// `head` followed by equal cells.
Row Fill(Row head, std::size_t count, double rest) {
  head.resize(count, rest);
  return head;
}

struct RowCase {
  const char* name;
  Row before, after;
};

// clang-format off
const RowCase kRaiseCases[] = {
    {"raised to 0.1, zeros stay",       {0.02, 0.0, 0.98},                {0.1, 0.0, 0.9}                 },
    {"the largest pays",          {0.45, 0.09, 0.46, 0.0},          {0.45, 0.1, 0.45, 0.0}          },
    {"of equals the first",             {0.05, 0.475, 0.475},             {0.1, 0.425, 0.475}             },
    {"at the threshold is not below",   {0.1, 0.9},                       {0.1, 0.9}                      },
    {"6 outcomes: 0.04",                Fill({0.05, 0.03}, 6, 0.23),      {0.05, 0.04, 0.22, 0.23, 0.23, 0.23}},
    {"9 outcomes: 0.0025",              Fill({0.0025, 0.0015}, 9, 0.142), Fill({0.0025, 0.0025, 0.141}, 9, 0.142)},
    {"20 outcomes still",               Fill({0.001}, 20, 0.05),          Fill({0.0025, 0.0485}, 20, 0.05)},
    {"21 outcomes: equal parts",        Fill({0.9, 0.0}, 21, 0.005),      Fill({0.05, 0.0}, 21, 0.05)     },
};
// clang-format on

TEST(ImportanceRows, RaiseSmallByTheNumberOfOutcomes) {
  for (const RowCase& c : kRaiseCases) {
    SCOPED_TRACE(c.name);
    Row made(c.before.size());
    RaiseSmall(c.before.data(), made.data(), static_cast<int>(made.size()));
    ExpectRow(made, c.after);
  }
}

TEST(ImportanceRows, SpreadEvenlyOverwrites) {
  const Row row = {0.7, 0.0, 0.1, 0.2};
  Row made = {9, 9, 9, 9};
  SpreadEvenly(row.data(), made.data(), 4);
  ExpectRow(made, {1.0 / 3, 0.0, 1.0 / 3, 1.0 / 3});
}

// 0.75 of (0.2, 0.8) and 0.25 of the scores (3, 1) scaled to (0.75, 0.25).
TEST(ImportanceRows, LearnMovesARowTowardsItsScores) {
  Row importance = {0.2, 0.8};
  const Row scores = {3, 1};
  LearnFromScores(scores.data(), importance.data(), 2, 0.25);
  ExpectRow(importance, {0.3375, 0.6625});
  const Row none = {0, 0};
  LearnFromScores(none.data(), importance.data(), 2, 0.25);
  ExpectRow(importance, {0.3375, 0.6625});
}

// The cutoff is 0.125, so that all these numbers are exact.
const RowCase kCutCases[] = {
    {"the others share the cost", {0.0625, 0.5, 0.4375}, {0.125, 0.46875, 0.40625}},
    {"at the cutoff: shares, not pays", {0.0625, 0.125, 0.8125}, {0.125, 0.125, 0.78125}},
    {"zeros neither gain nor pay", {0.0, 0.0625, 0.9375}, {0.0, 0.125, 0.875}},
    {"all small: nobody pays", {0.0625, 0.0625}, {0.125, 0.125}},
    {"nothing small", {0.5, 0.25, 0.25}, {0.5, 0.25, 0.25}},
};

TEST(ImportanceRows, CutOffRaisesAndShares) {
  for (const RowCase& c : kCutCases) {
    SCOPED_TRACE(c.name);
    Row made = c.before;
    CutOff(made.data(), static_cast<int>(made.size()), 0.125);
    ExpectRow(made, c.after);
  }
}

}  // namespace
