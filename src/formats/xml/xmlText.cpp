#include "formats/xml/xmlText.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>

#include "foundation/numberText.h"

namespace {

/// Length of the sequence that a byte leads, by its upper six bits; 0 for a continuation byte.
int LengthOfSequence(unsigned char lead) {
  const int kind = lead >> 2;
  if (kind < 0x20) return 1;
  if (kind < 0x30) return 0;
  if (kind < 0x38) return 2;
  if (kind < 0x3C) return 3;
  if (kind < 0x3E) return 4;
  return kind == 0x3E ? 5 : 6;
}

const char* ScanInt(const char* text, int& value) {
  char* end = nullptr;
  const long number = strtol(text, &end, 10);
  value = static_cast<int>(
      std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
  return end;
}

}  // namespace

void TranscodeUtf8(std::string& text) {
  const auto isHigh = [](char c) { return static_cast<unsigned char>(c) > 127; };
  auto out = std::find_if(text.begin(), text.end(), isHigh);
  for (auto in = out; in != text.end();) {
    const unsigned char lead = static_cast<unsigned char>(*in++);
    const int length = LengthOfSequence(lead);
    if (length == 0) continue;
    if (length == 1) {
      *out++ = static_cast<char>(lead);
      continue;
    }
    unsigned code = lead & (0x7Fu >> length);
    int missing = length - 1;
    for (; missing > 0 && in != text.end() && (*in & 0xC0) == 0x80; --missing) {
      code = code << 6 | (static_cast<unsigned char>(*in++) & 0x3Fu);
    }
    if (missing == 0) *out++ = code <= 255 ? static_cast<char>(code) : '?';
  }
  text.erase(out, text.end());
}

std::string FormatText(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = FormatTextList(format, arguments);
  va_end(arguments);
  return text;
}

std::string FormatTextList(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

bool ReadWholeDouble(const char* text, double& value) {
  const char* end = ScanDouble(text, value);
  return end != text && *end == '\0';
}

bool ReadWholeInt(const char* text, int& value) {
  const char* end = ScanInt(text, value);
  return end != text && *end == '\0';
}

bool ReadLooseDouble(const char* text, double& value) {
  return *ScanDouble(text, value) == '\0' || value != 0.0;
}

bool ReadLooseInt(const char* text, int& value) {
  return *ScanInt(text, value) == '\0' || value != 0;
}
