#include "ormel/text.h"

#include <cstdio>
#include <cstring>

namespace {

using Byte = unsigned char;

/// Bytes of the UTF-8 sequence at the start of `text`, 0 for an invalid one. Overlong forms,
/// surrogates and numbers beyond U+10FFFF are invalid.
int SequenceLength(const char* text) {
  const Byte first = static_cast<Byte>(text[0]);
  if (first < 0x80) return 1;
  const int length = first >= 0xC2 && first <= 0xDF   ? 2
                     : first >= 0xE0 && first <= 0xEF ? 3
                     : first >= 0xF0 && first <= 0xF4 ? 4
                                                      : 0;
  for (int i = 1; i < length; i++) {
    if ((static_cast<Byte>(text[i]) & 0xC0) != 0x80) return 0;  // the end of the text is one too
  }
  if (length < 3) return length;
  const Byte second = static_cast<Byte>(text[1]);
  const bool isOverlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool isOutside = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
  return isOverlong || isOutside ? 0 : length;
}

bool IsUtf8(const char* text) {
  while (*text != '\0') {
    const int length = SequenceLength(text);
    if (length == 0) return false;
    text += length;
  }
  return true;
}

}  // namespace

std::string ToUtf8(const char* text) {
  if (text == nullptr) return {};
  if (IsUtf8(text)) return text;
  std::string converted;
  for (; *text != '\0'; text++) {
    const Byte byte = static_cast<Byte>(*text);
    if (byte < 0x80) {
      converted += *text;
    } else {
      converted += static_cast<char>(0xC0 | (byte >> 6));
      converted += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return converted;
}

std::string ToPrintable(const char* text) {
  const std::string utf8 = ToUtf8(text);
  std::string printable;
  for (std::size_t i = 0; i < utf8.size(); i++) {
    const Byte byte = static_cast<Byte>(utf8[i]);
    // U+0080 to U+009F are control characters too, and two bytes here.
    const bool isHighControl =
        byte == 0xC2 && i + 1 < utf8.size() && static_cast<Byte>(utf8[i + 1]) < 0xA0;
    const char* const known = byte == '\n' ? "\\n" : byte == '\t' ? "\\t" : nullptr;
    if (known != nullptr) {
      printable += known;
    } else if (byte < 0x20 || byte == 0x7F || isHighControl) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02X",
                    static_cast<unsigned>(isHighControl ? static_cast<Byte>(utf8[++i]) : byte));
      printable += escape;
    } else {
      printable += utf8[i];
    }
  }
  return printable;
}
