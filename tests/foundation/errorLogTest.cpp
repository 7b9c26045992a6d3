#include "foundation/errorLog.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "foundation/resultCodes.h"
#include "tests/support/failingAllocation.h"

namespace {

// Codes that are only told with a text of their own say "NO ERROR", and -26 has no entry.
TEST(ErrorLog, StandardTexts) {
  const std::pair<int, const char*> cases[] = {
      {0, "NO ERROR"},
      {-1, "NO ERROR"},
      {-2, "OUT OF RANGE"},
      {-26, "UNKNOWN ERROR CODE"},
      {-30, "ILLEGAL IDENTIFIER"},
      {-42, "OUT OF MEMORY"},
      {-51, "WRONG NODE TYPE"},
      {-52, "UNKNOWN ERROR CODE"},
      {-103, "FILE I/O FAILED"},
      {-126, "LEXICAL ERROR. CHARACTER UNKNOWN"},
      {-127, "NO ERROR"},
      {-567, "NO ERROR"},
  };
  for (const auto& [code, text] : cases) EXPECT_STREQ(GetErrorString(code), text) << code;
}

TEST(ErrorLog, StoresCodesWithTexts) {
  KVN_errorStringHandler log;
  EXPECT_STREQ(log.GetLastErrorMessage(), "NO ERRORS SO FAR");
  EXPECT_EQ(log.LogError(0, "x", nullptr), 0);
  EXPECT_EQ(log.GetNumItems(), 0);
  EXPECT_EQ(log.LogError(-42, nullptr, nullptr), -42);
  EXPECT_STREQ(log.GetLastErrorMessage(), "OUT OF MEMORY");
  EXPECT_EQ(log.LogError(-127, "ERROR: x", "(line 3) : "), -127);
  EXPECT_STREQ(log.GetMessage(1), "(line 3) : ERROR: x");
  EXPECT_EQ(log.GetCode(1), -127);
  EXPECT_EQ(log.GetMessage(2), nullptr);
  EXPECT_EQ(log.GetCode(-1), 0);
}

TEST(ErrorLog, OnlyTextsWithAPrefixAreCut) {
  KVN_errorStringHandler log;
  const std::string text(3000, 't');
  (void)log.LogError(-1, text.c_str(), nullptr);
  EXPECT_EQ(log.GetLastErrorMessage(), text);
  (void)log.LogError(-1, text.c_str(), "p");
  EXPECT_EQ(log.GetLastErrorMessage(), "p" + std::string(1998, 't'));
}

TEST(ErrorLog, TheLogOfTheProcessKeepsEarlierFailures) {
  const int before = KVN_errorLog().GetNumItems();
  EXPECT_EQ(LogError(KVN_REFUSED), KVN_REFUSED);
  EXPECT_EQ(LogError(KVN_SUCCESS, "done"), KVN_SUCCESS);
  EXPECT_STREQ(GetLastErrorMessage(), "OUT OF RANGE");
  EXPECT_EQ(KVN_errorLog().GetNumItems(), before + 1);
}

struct RecordingTarget : KVN_errorTarget {
  explicit RecordingTarget(std::vector<std::string>* to) : texts(to) {}
  ~RecordingTarget() override { texts->push_back("destroyed"); }
  void Log(int code, const char* text) override {
    texts->push_back(std::to_string(code) + " " + text);
  }
  std::vector<std::string>* texts;
};

TEST(ErrorLog, RedirectTakesTheMessages) {
  std::vector<std::string> seen;
  {
    KVN_errorStringHandler log;
    log.SetRedirect(new RecordingTarget(&seen), /*own=*/true);
    EXPECT_EQ(log.LogError(-2, nullptr, "p: "), -2);
    EXPECT_EQ(log.GetNumItems(), 0);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"-2 p: OUT OF RANGE", "destroyed"}));
}

TEST(ErrorLog, DroppedMessagesKeepCodesAndTextsTogether) {
  FailEachAllocation([](int n) {
    KVN_errorStringHandler log;
    FailingAllocation failing(n);
    for (int i = 1; i <= 20; i++) EXPECT_EQ(log.LogError(-i, "text", nullptr), -i);
    for (int i = 0; i < log.GetNumItems(); i++) EXPECT_NE(log.GetCode(i), 0);
    EXPECT_EQ(log.GetCode(log.GetNumItems()), 0);
    EXPECT_EQ(log.GetNumItems(), failing.HasFailed() ? 19 : 20);
    return failing.HasFailed();
  });
}

}  // namespace
