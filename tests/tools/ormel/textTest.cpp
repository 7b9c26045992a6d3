#include "ormel/text.h"

#include <gtest/gtest.h>

namespace {

struct TextCase {
  const char* name;
  const char* text;
  const char* utf8;
  const char* printable;
};

const TextCase kTextCases[] = {
    {"null", nullptr, "", ""},
    {"plain", "a b", "a b", "a b"},
    {"valid UTF-8 stays", "\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC"},
    {"Latin-1", "caf\xE9", "caf\xC3\xA9", "caf\xC3\xA9"},
    {"cut sequence", "\xE2\x82", "\xC3\xA2\xC2\x82", "\xC3\xA2\\x82"},
    {"overlong", "\xC0\xAF", "\xC3\x80\xC2\xAF", "\xC3\x80\xC2\xAF"},
    {"surrogate", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80", "\xC3\xAD\xC2\xA0\\x80"},
    {"controls", "a\n\t\x1B[31m\x7F", "a\n\t\x1B[31m\x7F", "a\\n\\t\\x1B[31m\\x7F"},
};

TEST(Text, BecomesUtf8AndPrintable) {
  for (const TextCase& c : kTextCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(ToUtf8(c.text), c.utf8);
    EXPECT_EQ(ToPrintable(c.text), c.printable);
  }
}

}  // namespace
