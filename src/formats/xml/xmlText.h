#pragma once

#include <cstdarg>
#include <string>

/// Small conversions of the text in XML files.

/// White space of XML.
constexpr bool IsXmlBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

/// Turns UTF-8 into the 8-bit text that the engine keeps: code points up to 255 become one byte
/// each, higher ones "?" (intended). A sequence that breaks off gives nothing, and reading goes on
/// at the byte that broke it; so does a continuation byte without a lead.
void TranscodeUtf8(std::string& text);

/// snprintf into a string of the length that it takes.
std::string FormatText(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string FormatTextList(const char* format, va_list arguments)
    __attribute__((format(printf, 1, 0)));

/// Numbers that make up a whole text; false for anything else, an empty text included. Integers
/// beyond the range of int become the nearest one.
bool ReadWholeDouble(const char* text, double& value);
bool ReadWholeInt(const char* text, int& value);

/// The rule of attributes: whatever the number starts with passes, unless that is zero and not the
/// whole text. The empty text is zero.
bool ReadLooseDouble(const char* text, double& value);
bool ReadLooseInt(const char* text, int& value);
