#include "foundation/stringArray.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "foundation/resultCodes.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"

namespace {

using Texts = std::vector<std::string>;

/// A list whose ready bit a test can clear.
struct UnreadyList : KVN_stringArray {
  void Spoil() { SetReady(false); }
};

TEST(StringArray, GrowsByItsStep) {
  KVN_stringArray list(3), standard(0);
  for (int i = 0; i < 4; i++) ASSERT_EQ(list.Add("a"), 0);
  EXPECT_EQ(list.GetSize(), 6);
  ASSERT_EQ(standard.Add("a"), 0);
  EXPECT_EQ(standard.GetSize(), 10);
  for (int i = 0; i < 1000; i++) ASSERT_EQ(list.Add(std::to_string(i).c_str()), 0);
  EXPECT_EQ(list.GetSize(), 1005);  // 1004 items in steps of 3
  EXPECT_STREQ(list[1003], "999");
  EXPECT_EQ(list.GetString(1004), nullptr);
}

TEST(StringArray, SetSizeOfThePresentSizeKeepsTheTextsForReading) {
  KVN_stringArray list;
  ASSERT_EQ(list.SetSize(3), 0);
  for (int i = 0; i < 3; i++) ASSERT_EQ(list.SetString(i, "old"), 0);
  list.UseAsList(-1);
  ASSERT_EQ(list.SetSize(3), 0);
  EXPECT_EQ(list.GetNumItems(), 0);
  EXPECT_STREQ(list[1], "old");
  ASSERT_EQ(list.Add("b"), 0);  // takes the place of an old text, which must not leak
  ASSERT_EQ(list.Insert(0, "a"), 0);
  EXPECT_EQ(TextsOf(list), (Texts{"a", "b"}));
}

TEST(StringArray, RefusesBadPositions) {
  KVN_stringArray list = StringsOf({"a", "b"});
  EXPECT_EQ(list.SetString(-1, "x"), KVN_REFUSED);
  EXPECT_EQ(list.SetString(10, "x"), KVN_REFUSED);
  EXPECT_EQ(list.Insert(3, "x"), KVN_REFUSED);
  EXPECT_EQ(list.Delete(10), KVN_REFUSED);
  EXPECT_EQ(list.SetSize(-1), KVN_REFUSED);
  EXPECT_EQ(list.GetString(-1), nullptr);
  EXPECT_EQ(TextsOf(list), (Texts{"a", "b"}));
}

TEST(StringArray, EditsAndFinds) {
  KVN_stringArray list = StringsOf({"a", nullptr, "c", "c"});
  EXPECT_EQ(list.FindPosition("c"), 2);
  EXPECT_EQ(list.FindPosition("C"), KVN_REFUSED);
  EXPECT_EQ(list.FindPosition(nullptr), KVN_REFUSED);
  ASSERT_EQ(list.Insert(1, list[0]), 0) << "a text of the list itself";
  ASSERT_EQ(list.SetString(0, nullptr), 0);
  EXPECT_EQ(TextsOf(list), (Texts{"(null)", "a", "(null)", "c", "c"}));
  ASSERT_EQ(list.Delete(0), 0);
  ASSERT_EQ(list.ChangeOrder(IntsOf({3, 0, 2, 1})), 0);
  EXPECT_EQ(TextsOf(list), (Texts{"c", "a", "c", "(null)"}));
  EXPECT_EQ(list.ChangeOrder(IntsOf({3, 0, 2, 2})), KVN_REFUSED);
  EXPECT_EQ(TextsOf(list), (Texts{"c", "a", "c", "(null)"}));
  list.Flush();
  EXPECT_EQ(list.GetNumItems(), 0);
  EXPECT_EQ(list.GetSize(), 10);
  EXPECT_EQ(list[0], nullptr);
}

TEST(StringArray, CopiesAreDeepAndKeepTheStep) {
  KVN_stringArray source(3);
  ASSERT_EQ(source.Add("a"), 0);
  KVN_stringArray copy = source;
  ASSERT_EQ(source.SetString(0, "changed"), 0);
  EXPECT_EQ(TextsOf(copy), (Texts{"a"}));
  EXPECT_EQ(copy.GetGrowBy(), 3);
  copy = StringsOf({"b", "c"});
  EXPECT_EQ(TextsOf(copy), (Texts{"b", "c"}));
  const KVN_stringArray& self = copy;
  copy = self;
  KVN_stringArray moved = std::move(copy);
  EXPECT_EQ(TextsOf(moved), (Texts{"b", "c"}));
}

TEST(StringArray, UnreadyListsAnswerWithACodeUntilCleanedUp) {
  UnreadyList list;
  ASSERT_EQ(list.Add("a"), 0);
  list.Spoil();
  EXPECT_EQ(list.Add("b"), KVN_NOT_READY);
  EXPECT_EQ(list.SetString(0, "b"), KVN_NOT_READY);
  EXPECT_EQ(list.Grow(), KVN_NOT_READY);
  EXPECT_EQ(list.Delete(0), KVN_REFUSED);
  EXPECT_FALSE(list.IsInList("a"));
  KVN_stringArray target = StringsOf({"kept"});
  EXPECT_EQ(target.Assign(list), KVN_NOT_READY);
  EXPECT_EQ(TextsOf(target), (Texts{"kept"}));
  ASSERT_EQ(list.SetSize(10), 0) << "cleans up first, so the present size is 0 by then";
  EXPECT_EQ(list.GetString(0), nullptr);
  EXPECT_TRUE(list.IsReady());
}

TEST(StringArray, FailedAllocationKeepsTheOldTexts) {
  const KVN_stringArray source = StringsOf({"x", "y", "z"});
  const KVN_intArray order = IntsOf({1, 0});
  using Operation = int (*)(KVN_stringArray&, const KVN_stringArray&, const KVN_intArray&);
  const Operation operations[] = {
      [](KVN_stringArray& a, const auto&, const auto&) { return a.Add("new"); },
      [](KVN_stringArray& a, const auto&, const auto&) { return a.SetString(1, "new"); },
      [](KVN_stringArray& a, const auto&, const auto&) { return a.SetSize(20); },
      [](KVN_stringArray& a, const auto& s, const auto&) { return a.Assign(s); },
      [](KVN_stringArray& a, const auto&, const auto& o) { return a.ChangeOrder(o); },
  };
  for (const Operation& operation : operations) {
    SCOPED_TRACE(&operation - operations);
    const int failures = FailEachAllocation([&](int n) {
      KVN_stringArray list(2);
      EXPECT_EQ(list.Add("a"), 0);
      EXPECT_EQ(list.Add("b"), 0);
      FailingAllocation failing(n);
      const int result = operation(list, source, order);
      EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : KVN_SUCCESS);
      if (failing.HasFailed()) {
        EXPECT_EQ(TextsOf(list), (Texts{"a", "b"}));
      }
      return failing.HasFailed();
    });
    EXPECT_GT(failures, 0);
  }
}

}  // namespace
