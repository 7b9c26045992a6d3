#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

/// Numbers as text, the same in every process: a host may have called setlocale, and a decimal
/// comma would ruin each file it touches, so nothing here follows the locale.

/// Three doubles, just above the smallest normal numbers, that stand for states that are no
/// numbers. They are compared with ==. Written "0.0E-2", "0.0E-3", "0.0E-4"; read from these texts
/// and from "UNDEF.", "ILLEGAL", "NA".
inline constexpr double KVN_UNDEFINED_VALUE =
    std::bit_cast<double>(std::uint64_t{0x0020000000000000});
inline constexpr double KVN_ILLEGAL_VALUE =
    std::bit_cast<double>(std::uint64_t{0x0028000000000000});
inline constexpr double KVN_NOT_AVAILABLE_VALUE =
    std::bit_cast<double>(std::uint64_t{0x0030000000000000});

/// Buffer for DoubleToText and IntToText: 1e308 alone takes 318 bytes.
constexpr int kNumberTextSize = 512;

/// The reserved texts, then what the C library's strtod reads from the start of the text (blanks,
/// sign, hexadecimal, inf and nan included), bit for bit. KVN_REFUSED, and the value 0.0, when
/// nothing could be converted or the text is null.
int TextToDouble(const char* text, double& value);

/// The same without the reserved texts: what strtod reads. Returns where it stopped, which is
/// `text` itself when nothing could be converted; the value is then 0.0. Not for null.
const char* ScanDouble(const char* text, double& value);

/// Reserved values give their text, others eight decimals ("%.8f"): that is all that any text
/// format keeps of a number, so 1e-9 becomes "0.00000000".
/// `buffer` has kNumberTextSize bytes.
void DoubleToText(double value, char* buffer);

/// As the C library's atoi: leading blanks and sign, then digits, 0 when there are none. What no
/// int holds becomes the nearest one.
/// KVN_REFUSED, and the value 0, for a null text only.
int TextToInt(const char* text, int& value);

/// Decimal digits. `buffer` has kNumberTextSize bytes.
void IntToText(int value, char* buffer);

/// snprintf of one double by a format with one conversion such as "%g" or "%.12e". Returns what
/// snprintf does; the text is cut to the buffer and ended by a NUL.
int FormatDouble(const char* format, double value, char* buffer, std::size_t size);
