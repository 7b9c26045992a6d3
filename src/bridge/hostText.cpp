#include "bridge/hostText.h"

namespace {

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

/// Length of the sequence at `at`, 0 if it isn't one. The terminating NUL is no continuation, so
/// nothing behind it is looked at.
int SequenceLength(const unsigned char* at) {
  const unsigned char lead = at[0];
  if (lead < 0x80) return 1;
  if ((lead & 0xE0) == 0xC0) {
    if (!IsContinuation(at[1])) return 0;
    // Below C2 only the NUL: the others are longer forms of one byte characters.
    return lead >= 0xC2 || (lead == 0xC0 && at[1] == 0x80) ? 2 : 0;
  }
  if ((lead & 0xF0) == 0xE0) {
    if (!IsContinuation(at[1]) || !IsContinuation(at[2])) return 0;
    return lead > 0xE0 || at[1] >= 0xA0 ? 3 : 0;
  }
  return 0;
}

}  // namespace

bool IsModifiedUtf8(const char* text) {
  const unsigned char* at = reinterpret_cast<const unsigned char*>(text);
  while (*at != 0) {
    const int length = SequenceLength(at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

std::string Latin1ToUtf8(const char* text) {
  std::string result;
  for (; *text != '\0'; text++) {
    const unsigned char byte = static_cast<unsigned char>(*text);
    if (byte < 0x80) {
      result += *text;
    } else {
      result += static_cast<char>(0xC0 | (byte >> 6));
      result += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return result;
}

HostText::HostText(const char* text) : lent(text) {
  if (text == nullptr || IsModifiedUtf8(text)) return;
  converted = Latin1ToUtf8(text);
  lent = converted.c_str();
}
