#include "bridge/hostText.h"

#include <gtest/gtest.h>

namespace {

TEST(HostText, PassesModifiedUtf8AndReadsTheRestAsLatin1) {
  const struct {
    const char* name;
    const char* text;
    const char* lent;  // null: as it stands
  } cases[] = {
      {"ascii", "a b~\x7F", nullptr},
      {"two bytes", "\xC2\x80 \xDF\xBF", nullptr},
      {"three bytes", "\xE0\xA0\x80\xEF\xBF\xBF", nullptr},
      {"half of a surrogate pair", "\xED\xA0\x80", nullptr},
      {"the JVM's way of writing NUL", "\xC0\x80", nullptr},
      {"Latin-1", "\xE9t\xE9", "\xC3\xA9t\xC3\xA9"},
      {"Latin-1 at the end", "caf\xE9", "caf\xC3\xA9"},
      {"overlong slash", "\xC0\xAF", "\xC3\x80\xC2\xAF"},
      {"overlong in three", "\xE0\x9F\xBF", "\xC3\xA0\xC2\x9F\xC2\xBF"},
      {"continuation alone", "\x80", "\xC2\x80"},
      {"cut after two of three", "\xE2\x82", "\xC3\xA2\xC2\x82"},
      {"four bytes, which JNI has not", "\xF0\x9F\x98\x80", "\xC3\xB0\xC2\x9F\xC2\x98\xC2\x80"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_STREQ(HostText(c.text).Get(), c.lent != nullptr ? c.lent : c.text);
  }
  EXPECT_EQ(HostText(nullptr).Get(), nullptr);
}

}  // namespace
