#include "foundation/numberText.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "foundation/resultCodes.h"

namespace {

std::string Written(double value) {
  char buffer[kNumberTextSize];
  DoubleToText(value, buffer);
  return buffer;
}

/// What the C library makes of it; the tests run in the "C" locale.
std::string WrittenByLibrary(double value) {
  char buffer[kNumberTextSize];
  std::snprintf(buffer, sizeof buffer, "%.8f", value);
  std::snprintf(buffer, sizeof buffer, "%.8f", std::strtod(buffer, nullptr));
  return buffer;
}

std::uint64_t BitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }

void ExpectReadLikeStrtod(const char* text) {
  char* end = nullptr;
  const double expected = std::strtod(text, &end);
  double value = 99.0;
  EXPECT_EQ(TextToDouble(text, value), end == text ? KVN_REFUSED : 0) << text;
  EXPECT_EQ(BitsOf(value), BitsOf(expected)) << text;
  EXPECT_EQ(ScanDouble(text, value), end) << text;
  EXPECT_EQ(BitsOf(value), BitsOf(expected)) << text;
}

TEST(NumberText, ReservedValues) {
  EXPECT_EQ(KVN_UNDEFINED_VALUE, 4.450147717014403e-308);
  EXPECT_EQ(KVN_ILLEGAL_VALUE, 6.675221575521604e-308);
  EXPECT_EQ(KVN_NOT_AVAILABLE_VALUE, 8.900295434028806e-308);
  const struct {
    const char *written, *word;
    double value;
  } cases[] = {
      {"0.0E-2", "UNDEF.", KVN_UNDEFINED_VALUE},
      {"0.0E-3", "ILLEGAL", KVN_ILLEGAL_VALUE},
      {"0.0E-4", "NA", KVN_NOT_AVAILABLE_VALUE},
  };
  for (const auto& c : cases) {
    double value = 0.0;
    EXPECT_EQ(Written(c.value), c.written);
    for (const char* text : {c.written, c.word}) {
      EXPECT_EQ(TextToDouble(text, value), 0);
      EXPECT_EQ(value, c.value);
    }
  }
  for (const char* near : {"0.0e-2", "0.0E-5", " 0.0E-2", "0.0E-20", "NAN", "ILLEGALx", "UNDEF"}) {
    ExpectReadLikeStrtod(near);
  }
}

TEST(NumberText, ReadsWhatStrtodReads) {
  std::istringstream texts(
      "0|-0|+1.5| \t\n1|1.|.5|.|+-1|-||1e5|1E+5|1e|1e+|12e|1.5.2|0x1p-3|0X|0xg|-0x10|inf|"
      "-INFINITY|nan|-nan|nan(1)|1e400|-1e400|1e-400|4.9e-324|2e-324|5e-310|abc|1,5|1 2|"
      "00012|1-2|1e5e5|0.1e1x|9007199254740993|2.2250738585072011e-308|"
      "179769313486231580793728971405301e276|1_000|+ 1|");
  for (std::string text; std::getline(texts, text, '|');) ExpectReadLikeStrtod(text.c_str());
  double value = 1.0;
  EXPECT_EQ(TextToDouble(nullptr, value), KVN_REFUSED);
  EXPECT_EQ(value, 0.0);
  ExpectReadLikeStrtod(std::string(5000, '9').c_str());
}

TEST(NumberText, WritesEightDecimals) {
  EXPECT_EQ(Written(0.25), "0.25000000");
  EXPECT_EQ(Written(1e-9), "0.00000000");
  EXPECT_EQ(Written(-1e-9), "-0.00000000");
  EXPECT_EQ(Written(0.000000005), "0.00000001");  // the double is a little above the tie
  EXPECT_EQ(Written(1.0 / 512), "0.00195312");    // 0.001953125 is a tie: to the even digit
  EXPECT_EQ(Written(1e308).size(), 318u);         // 309 digits, the point and 8 decimals
  EXPECT_EQ(Written(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(Written(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(NumberText, AgreesWithTheLibraryOnRandomNumbers) {
  std::mt19937_64 generator(20240607);
  std::uniform_real_distribution<double> probability(0.0, 1.0), exponent(-12.0, 18.0);
  for (int i = 0; i < 20000; i++) {
    const double values[] = {std::bit_cast<double>(generator()), probability(generator),
                             std::pow(10.0, exponent(generator))};
    for (double value : values) {
      if (std::isnan(value)) continue;
      ASSERT_EQ(Written(value), WrittenByLibrary(value));
      char text[kNumberTextSize];
      std::snprintf(text, sizeof text, "%.*e", static_cast<int>(generator() % 25), value);
      ExpectReadLikeStrtod(text);
      ExpectReadLikeStrtod(WrittenByLibrary(value).c_str());
    }
  }
}

TEST(NumberText, Integers) {
  const struct {
    const char* text;
    int result, value;
  } cases[] = {
      {"12", 0, 12},
      {" -7x", 0, -7},
      {"+3", 0, 3},
      {"12e5", 0, 12},
      {"x", 0, 0},
      {"", 0, 0},
      {nullptr, KVN_REFUSED, 0},
      {"4294967297", 0, std::numeric_limits<int>::max()},
      {"-99999999999999999999", 0, std::numeric_limits<int>::min()},
  };
  for (const auto& c : cases) {
    int value = 99;
    EXPECT_EQ(TextToInt(c.text, value), c.result);
    EXPECT_EQ(value, c.value);
  }
  char buffer[kNumberTextSize];
  IntToText(std::numeric_limits<int>::min(), buffer);
  EXPECT_STREQ(buffer, "-2147483648");
}

TEST(NumberText, IgnoresTheLocaleOfTheProcess) {
  // Any of these has a decimal comma; where none is installed, the "C" locale is tested once more.
  for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "pl_PL.UTF-8"}) {
    if (std::setlocale(LC_ALL, name) != nullptr) break;
  }
  double value = 0.0;
  char buffer[kNumberTextSize];
  for (const char* text : {"0.5", "0x1p-1", " +0.5"}) {
    EXPECT_EQ(TextToDouble(text, value), 0);
    EXPECT_EQ(value, 0.5);
  }
  EXPECT_EQ(Written(0.5), "0.50000000");
  EXPECT_EQ(FormatDouble("%.3g;", 0.5, buffer, sizeof buffer), 4);
  EXPECT_STREQ(buffer, "0.5;");
  EXPECT_EQ(FormatDouble("%.3f", 0.5, buffer, 4), 5);
  EXPECT_STREQ(buffer, "0.5") << "cut to the buffer";
  std::setlocale(LC_ALL, "C");
}

}  // namespace
