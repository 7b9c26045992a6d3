#include "foundation/idArray.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "foundation/identifier.h"
#include "foundation/resultCodes.h"
#include "tests/support/builders.h"

namespace {

using Texts = std::vector<std::string>;

struct IdentifierCase {
  const char* text;
  bool inList, inHeader;                  // legal by each rule
  const char *mendedList, *mendedHeader;  // null: cannot be mended
};
const IdentifierCase kIdentifierCases[] = {
    {"a_1", true, true, "a_1", "a_1"}, {"a b", false, false, "a_b", "a_b"},
    {"1a", false, false, "x1a", "xa"},  // the rules differ on purpose
    {"_a", false, false, "x_a", "xa"}, {"-", false, false, "x_", "x"},
    {"@", false, true, "x_", "@"},     {"@a b", false, true, "x_a_b", "@a b"},
    {"\xe9", false, false, "x_", "x"},  // a byte above 127 in the "C" locale
    {"", false, false, nullptr, "x"},
};
TEST(IdArray, TwoRulesForIdentifiers) {
  for (const IdentifierCase& c : kIdentifierCases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(KVN_idArray().IsThisIdentifierValid(c.text), c.inList);
    EXPECT_EQ(IsLegalHeaderId(c.text), c.inHeader);
    std::string list = c.text, header = c.text;
    EXPECT_EQ(KVN_idArray::MakeValidId(list), c.mendedList == nullptr ? KVN_REFUSED : 0);
    EXPECT_EQ(list, c.mendedList == nullptr ? "" : c.mendedList);
    MakeLegalHeaderId(header);
    EXPECT_EQ(header, c.mendedHeader);
  }
  EXPECT_FALSE(IsLegalHeaderId(nullptr));
}

TEST(IdArray, EveryWayInRefusesBadIdentifiers) {
  KVN_idArray ids;
  ASSERT_EQ(ids.Add("a"), 0);
  ASSERT_EQ(ids.Add("b"), 0);
  for (const char* bad : {"a", "1", "", "a b", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(ids.Add(bad), KVN_REFUSED);
    EXPECT_EQ(ids.Insert(0, bad), KVN_REFUSED);
    EXPECT_EQ(ids.SetString(1, bad), KVN_REFUSED);
  }
  EXPECT_EQ(ids.SetString(1, "b"), 0) << "an item may replace itself";
  KVN_idArray labels(/*allowEmptyIds=*/true);
  EXPECT_EQ(labels.Add(""), 0);
  EXPECT_EQ(labels.Add(""), 0);
  EXPECT_EQ(labels.CheckConsistency(0), 0);
  ids = labels;
  EXPECT_FALSE(ids.GetAllowEmpty()) << "the rule does not travel with the items";
}

struct CreateCase {
  const char* base;
  int start;
  const char* expected;  // on a list of "a", "a0", "x2"
};
const CreateCase kCreateCases[] = {
    {"b", -1, "b"},  {"b", 2, "b2"},  // a number is wanted even if the base would do
    {"a", -1, "a1"},                  // -1 is never valid, 0 is taken
    {"a", 0, "a1"},  {"1 c", -1, "x1_c"}, {"", 2, "x3"}, {nullptr, 7, "x7"},
};
TEST(IdArray, CreatesNewIdentifiers) {
  const KVN_idArray ids = IdsOf({"a", "a0", "x2"});
  for (const CreateCase& c : kCreateCases) {
    SCOPED_TRACE(c.expected);
    std::string made;
    char buffer[KVN_idArray::kBufferSize];
    EXPECT_EQ(ids.CreateValidId(c.base, c.start, made), 0);
    EXPECT_EQ(made, c.expected);
    EXPECT_EQ(ids.CreateValidId(c.base, c.start, buffer), 0);
    EXPECT_STREQ(buffer, c.expected);
    KVN_idArray grown = ids;
    EXPECT_EQ(grown.CreateAndInsertValidId(c.base, c.start, 1), 0);
    EXPECT_STREQ(grown[1], c.expected);
  }
}

TEST(IdArray, BufferFormsCutLongTexts) {
  const std::string base(5000, 'a');
  char buffer[KVN_idArray::kBufferSize];
  ASSERT_EQ(KVN_idArray().CreateValidId(base.c_str(), 12, buffer), 0);
  EXPECT_EQ(std::string(buffer), std::string(1000, 'a') + "12");
  std::memset(buffer, '1', sizeof buffer);
  buffer[KVN_idArray::kBufferSize - 1] = '\0';  // full: no room for the 'x' in front
  ASSERT_EQ(KVN_idArray::MakeValidId(buffer), 0);
  EXPECT_EQ(std::strlen(buffer), std::size_t{KVN_idArray::kBufferSize} - 1);
  EXPECT_EQ(buffer[0], 'x');
}

TEST(IdArray, MakeUniqueMendsThenNumbers) {
  KVN_idArray ids = IdsOf({"a", "a", "1a", "x1a", nullptr, "a2", "b c"});
  EXPECT_EQ(ids.CheckConsistency(0), KVN_NOT_CONSISTENT);
  EXPECT_FALSE(ids.IsConsistent());
  ASSERT_EQ(ids.MakeUnique(), 0);
  // The second "a" is taken, so it becomes "a2", and the old "a2" has to give way to "a22".
  EXPECT_EQ(TextsOf(ids), (Texts{"a", "a2", "x1a", "x1a2", "x2", "a22", "b_c"}));
  EXPECT_EQ(ids.CheckConsistency(0), 0);
}

/// The rule as plainly as it can be put, with a search of the whole list for each try.
Texts MendedOneByOne(const KVN_idArray& ids) {
  KVN_idArray mended(ids.GetAllowEmpty());
  for (int i = 0; i < ids.GetNumItems(); i++) {
    if (mended.Add(ids[i]) == 0) continue;
    std::string id = ids[i] == nullptr ? "" : ids[i];
    (void)KVN_idArray::MakeValidId(id);
    if (mended.Add(id.c_str()) == 0) continue;
    EXPECT_EQ(mended.CreateAndAddValidId(id.c_str(), 2), 0);
  }
  return TextsOf(mended);
}

TEST(IdArray, LongListsAreMendedByTheSameRule) {
  const char* const texts[] = {"a", "a", "a2", "a3", "1a", "xa", "x", "x2", "", nullptr, "b c"};
  std::mt19937 random(7);
  for (int length : {3, 16, 17, 60}) {
    for (int round = 0; round < 40; round++) {
      KVN_idArray ids(/*allowEmptyIds=*/round % 2 == 0);
      for (int i = 0; i < length; i++) {
        const char* text = texts[random() % std::size(texts)];
        ASSERT_EQ(ids.KVN_stringArray::Insert(i, text), 0);
      }
      const Texts expected = MendedOneByOne(ids);
      const bool isFine = expected == TextsOf(ids);
      EXPECT_EQ(ids.CheckConsistency(0), isFine ? 0 : KVN_NOT_CONSISTENT);
      ASSERT_EQ(ids.MakeUnique(), 0);
      ASSERT_EQ(TextsOf(ids), expected);
      EXPECT_EQ(ids.CheckConsistency(0), 0);
    }
  }
}

TEST(IdArray, RepeatsByTheThousandTakeNoTime) {
  // A file of some kilobytes is enough for such a list.
  constexpr int kCount = 50000;
  KVN_idArray ids;
  for (int i = 0; i < kCount; i++) ASSERT_EQ(ids.KVN_stringArray::Insert(i, "a"), 0);
  ASSERT_EQ(ids.MakeUnique(), 0);
  EXPECT_STREQ(ids[kCount - 1], "a50000");
  EXPECT_EQ(ids.CheckConsistency(0), 0);
}

}  // namespace
