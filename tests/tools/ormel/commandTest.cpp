#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <stdexcept>

#include "foundation/resultCodes.h"
#include "ormel/commandLine.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"

namespace {

TEST(ExitCodes, FollowFromTheEnginesCodes) {
  EXPECT_EQ(ExitCodeOfResult(0), kExitDone);
  EXPECT_EQ(ExitCodeOfResult(KVN_REFUSED), kExitRefused);
  EXPECT_EQ(ExitCodeOfResult(KVN_CONFLICTING_EVIDENCE), kExitImpossible);
  EXPECT_EQ(ExitCodeOfResult(KVN_NO_USEFUL_SAMPLES), kExitImpossible);
  EXPECT_EQ(ExitCodeOfResult(KVN_NO_MEMORY), kExitLimit);
}

struct GuardCase {
  const char* name;
  std::function<int()> work;
  int code;
  const char* message;
};

TEST(RunGuarded, TurnsWhatIsThrownIntoAnExitCode) {
  const GuardCase cases[] = {
      {"nothing", [] { return 3; }, 3, ""},
      {"memory", []() -> int { throw std::bad_alloc(); }, kExitLimit, "memory"},
      {"standard", []() -> int { throw std::runtime_error("a b"); }, kExitInternal, "error: a b"},
      {"other", []() -> int { throw 7; }, kExitInternal, "internal"},
  };
  for (const GuardCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::ostringstream data;
    std::ostringstream messages;
    Output output(data, messages);
    output.quiet = true;  // errors are told all the same
    EXPECT_EQ(RunGuarded(c.work, output), c.code);
    EXPECT_NE(messages.str().find(c.message), std::string::npos) << messages.str();
  }
}

}  // namespace
