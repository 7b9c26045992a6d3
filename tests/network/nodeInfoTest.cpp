#include "network/nodeInfo.h"

#include "foundation/resultCodes.h"
#include "tests/network/networkTools.h"
#include "tests/support/failingAllocation.h"

namespace {

std::string PairsOf(const KVN_userProperties& properties) {
  std::string text;
  for (int i = 0; i < properties.GetCount(); i++) {
    const char* value = properties.GetValue(i);
    text += std::string(properties.GetKey(i)) + "=" + (value == nullptr ? "(null)" : value) + ";";
  }
  return text;
}

struct InsertCase {
  const char* name;
  int position;
  const char* key;
  int result;
  const char* after;
};
// Before each: a=0;b=1;c=2;d=3;
const InsertCase kInsertCases[] = {
    {"new in the middle", 1, "x", 0, "a=0;x=9;b=1;c=2;d=3;"},
    {"new at the end", 4, "x", 0, "a=0;b=1;c=2;d=3;x=9;"},
    {"same place: value only", 2, "c", 0, "a=0;b=1;c=9;d=3;"},
    {"earlier pair moves up", 3, "a", 0, "b=1;c=2;a=9;d=3;"},
    {"to the end", 4, "a", 0, "b=1;c=2;d=3;a=9;"},
    {"later pair: one too early", 2, "d", 0, "a=0;d=9;b=1;c=2;"},
    {"never below the first", 0, "d", 0, "d=9;a=0;b=1;c=2;"},
    {"position too high", 5, "x", KVN_REFUSED, "a=0;b=1;c=2;d=3;"},
    {"position below 0", -1, "a", KVN_REFUSED, "a=0;b=1;c=2;d=3;"},
    {"no identifier", 0, "1 x", KVN_REFUSED, "a=0;b=1;c=2;d=3;"},
    {"null key", 0, nullptr, KVN_REFUSED, "a=0;b=1;c=2;d=3;"},
};

TEST(UserProperties, InsertMovesAnExistingKey) {
  for (const InsertCase& c : kInsertCases) {
    SCOPED_TRACE(c.name);
    KVN_userProperties properties;
    for (const char* pair : {"a0", "b1", "c2", "d3"}) {
      EXPECT_EQ(properties.AddProperty(std::string(pair, 1).c_str(), pair + 1), 0);
    }
    EXPECT_EQ(properties.InsertProperty(c.position, c.key, "9"), c.result);
    EXPECT_EQ(PairsOf(properties), c.after);
    EXPECT_EQ(properties.CheckConsistency(/*deep=*/1), 0);
  }
}

TEST(UserProperties, TakesItsOwnTextsAndEditsByPosition) {
  KVN_userProperties properties;
  EXPECT_EQ(properties.AddProperty("a", "first"), 0);
  EXPECT_EQ(properties.AddProperty("b", nullptr), 0);
  // The pair that is moved is freed on the way.
  EXPECT_EQ(properties.AddProperty(properties.GetKey(0), properties.GetValue(0)), 0);
  EXPECT_EQ(PairsOf(properties), "b=(null);a=first;");
  EXPECT_EQ(properties.SetPropertyValue(0, "x"), 0);
  EXPECT_EQ(properties.SetPropertyValue(2, "x"), KVN_REFUSED);  // inside the storage
  EXPECT_EQ(properties.DeleteProperty(2), KVN_REFUSED);
  EXPECT_EQ(properties.FindProperty("A"), KVN_REFUSED);
  EXPECT_EQ(properties.DeleteProperty(properties.FindProperty("a")), 0);
  EXPECT_EQ(PairsOf(properties), "b=x;");
}

TEST(UserProperties, KeepsBothListsInStepWithoutMemory) {
  FailEachAllocation([](int n) {
    KVN_userProperties properties;
    EXPECT_EQ(properties.AddProperty("a", "1"), 0);
    bool failed;
    {
      FailingAllocation failing(n);
      (void)properties.AddProperty("b", "2");
      (void)properties.AddProperty("a", "3");
      failed = failing.HasFailed();
    }
    EXPECT_EQ(properties.CheckConsistency(/*deep=*/1), 0) << n;
    return failed;
  });
}

TEST(Documentation, ListsStayInStep) {
  KVN_documentation documentation;
  EXPECT_EQ(documentation.AddDocument("t0", "l0"), 0);
  EXPECT_EQ(documentation.AddDocument("t1", nullptr), 0);
  EXPECT_EQ(documentation.SetLocation(1, "l1"), 0);
  EXPECT_EQ(documentation.SetLocation(2, "x"), KVN_REFUSED);
  EXPECT_EQ(documentation.Delete(0), 0);
  EXPECT_EQ(documentation.Delete(1), KVN_REFUSED);
  KVN_documentation copy;
  EXPECT_EQ(copy.Assign(documentation), 0);
  documentation.Flush();
  EXPECT_EQ(documentation.GetCount(), 0);
  ASSERT_EQ(copy.GetCount(), 1);
  EXPECT_STREQ(copy.GetTitle(0), "t1");
  EXPECT_STREQ(copy.GetLocation(0), "l1");
  EXPECT_EQ(copy.CheckConsistency(/*deep=*/1), 0);
}

TEST(ScreenInfo, FillsOnlyWhatIsUnset) {
  KVN_screenInfo defaults;
  defaults.position = KVN_rectangle(9, 9, 76, 36);
  defaults.color = 1;
  defaults.borderColor = 2;
  defaults.screenFlags = 0;
  KVN_screenInfo screen;
  screen.position.width = 10;
  screen.borderColor = 0;  // black, which is not "unset"
  EXPECT_EQ(screen.FillUnset(defaults), 0);
  EXPECT_EQ(screen.position.width, 10);
  EXPECT_EQ(screen.position.height, 36);
  EXPECT_EQ(screen.position.center_X, 0);  // places and flags are nobody's default
  EXPECT_EQ(screen.screenFlags, 3);
  EXPECT_EQ(screen.color, 1);
  EXPECT_EQ(screen.borderColor, 0);
  EXPECT_EQ(screen.font, KVN_UNSET_SCREEN_VALUE);
}

TEST(Header, StoresLegalIdentifiersAndAnyTexts) {
  KVN_header header;
  EXPECT_NE(header.CheckConsistency(/*deep=*/1), 0);
  EXPECT_EQ(header.SetId("@ any thing"), 0);
  EXPECT_EQ(header.CheckConsistency(/*deep=*/1), 0);
  const int before = MessageCount();
  for (const char* bad : {"1a", "a b", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(header.SetId(bad), KVN_ILLEGAL_ID);
    EXPECT_STREQ(GetLastErrorMessage(), "Illegal identifier");
  }
  EXPECT_EQ(MessageCount(), before + 4);
  EXPECT_STREQ(header.GetId(), "@ any thing");
  EXPECT_EQ(header.SetName("a name"), 0);
  EXPECT_EQ(header.SetName(header.GetName()), 0);
  KVN_header copy(header);
  EXPECT_EQ(header.SetName(nullptr), 0);
  EXPECT_EQ(header.GetName(), nullptr);
  EXPECT_STREQ(copy.GetName(), "a name");
  EXPECT_STREQ(copy.GetId(), "@ any thing");
}

}  // namespace
