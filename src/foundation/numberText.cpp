#include "foundation/numberText.h"

#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>

#include "foundation/resultCodes.h"

namespace {

constexpr char kUndefinedText[] = "0.0E-2";
constexpr char kIllegalText[] = "0.0E-3";
constexpr char kNotAvailableText[] = "0.0E-4";

struct ReservedText {
  const char* text;
  double value;
};

constexpr ReservedText kReservedTexts[] = {
    {kUndefinedText, KVN_UNDEFINED_VALUE},
    {"UNDEF.", KVN_UNDEFINED_VALUE},
    {kIllegalText, KVN_ILLEGAL_VALUE},
    {"ILLEGAL", KVN_ILLEGAL_VALUE},
    {kNotAvailableText, KVN_NOT_AVAILABLE_VALUE},
    {"NA", KVN_NOT_AVAILABLE_VALUE},
};

/// The "C" locale, which exists without allocation and is never freed.
locale_t NumericLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// True for the six reserved texts. Only texts with their first characters are compared.
bool ReadReserved(const char* text, double& value) {
  const bool mayBe = *text == '0' ? std::strncmp(text, "0.0E-", 5) == 0
                                  : *text == 'U' || *text == 'I' || *text == 'N';
  if (!mayBe) return false;
  for (const ReservedText& reserved : kReservedTexts) {
    if (std::strcmp(text, reserved.text) == 0) {
      value = reserved.value;
      return true;
    }
  }
  return false;
}

const char* ScanByLibrary(const char* text, double& value) {
  char* end = nullptr;
  value = strtod_l(text, &end, NumericLocale());
  return end;
}

const char* SkipDigits(const char* text) {
  while (IsDigit(*text)) text++;
  return text;
}

/// Length of the plain decimal number that a text begins with. It looks no further than the number:
/// a formula of a million terms would otherwise be read a million times.
std::size_t DecimalLength(const char* text) {
  const char* end = SkipDigits(text);
  if (*end == '.') end = SkipDigits(end + 1);
  if (*end == 'e' || *end == 'E') {
    const char* exponent = end + 1;
    if (*exponent == '+' || *exponent == '-') exponent++;
    if (IsDigit(*exponent)) end = SkipDigits(exponent);
  }
  return static_cast<std::size_t>(end - text);
}

}  // namespace

int TextToDouble(const char* text, double& value) {
  value = 0.0;
  if (text == nullptr) return KVN_REFUSED;
  if (ReadReserved(text, value)) return KVN_SUCCESS;
  return ScanDouble(text, value) == text ? KVN_REFUSED : KVN_SUCCESS;
}

// Plain decimal numbers take the library's fast exact conversion, which is correctly rounded as
// strtod is. What it reads in another way (hexadecimal, inf, nan, numbers out of range) is left to
// strtod itself.
const char* ScanDouble(const char* text, double& value) {
  value = 0.0;
  const char* digits = text;
  while (IsBlank(*digits)) digits++;
  const bool negative = *digits == '-';
  if (*digits == '-' || *digits == '+') digits++;
  const bool hexadecimal = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
  if ((!IsDigit(*digits) && *digits != '.') || hexadecimal) return ScanByLibrary(text, value);
  double magnitude = 0.0;
  const std::from_chars_result read =
      std::from_chars(digits, digits + DecimalLength(digits), magnitude);
  if (read.ec != std::errc()) return ScanByLibrary(text, value);
  value = negative ? -magnitude : magnitude;
  return read.ptr;
}

// Text of eight decimals read back and written again is the same text: where doubles are closer
// together than the decimals, the double read is near enough to give the same decimals, and where
// they are not, it is the same double. So one conversion is enough.
void DoubleToText(double value, char* buffer) {
  const char* reserved = value == KVN_UNDEFINED_VALUE       ? kUndefinedText
                         : value == KVN_ILLEGAL_VALUE       ? kIllegalText
                         : value == KVN_NOT_AVAILABLE_VALUE ? kNotAvailableText
                                                            : nullptr;
  if (reserved != nullptr) {
    std::strcpy(buffer, reserved);
    return;
  }
  const std::to_chars_result written =
      std::to_chars(buffer, buffer + kNumberTextSize - 1, value, std::chars_format::fixed, 8);
  *written.ptr = '\0';
}

int TextToInt(const char* text, int& value) {
  value = 0;
  if (text == nullptr) return KVN_REFUSED;
  const long number = strtol(text, nullptr, 10);
  value = static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
  return KVN_SUCCESS;
}

void IntToText(int value, char* buffer) {
  *std::to_chars(buffer, buffer + kNumberTextSize - 1, value).ptr = '\0';
}

int FormatDouble(const char* format, double value, char* buffer, std::size_t size) {
  const locale_t previous = uselocale(NumericLocale());
  const int length = std::snprintf(buffer, size, format, value);
  uselocale(previous);
  return length;
}
