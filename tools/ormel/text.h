#pragma once

#include <string>

/// Text of a network as UTF-8. The engine stores bytes as they came; those that are no valid UTF-8
/// are taken as Latin-1. Null gives the empty text.
std::string ToUtf8(const char* text);

/// The same for a terminal: line breaks, tabs and other control characters as backslash escapes, so
/// that a file can't move the cursor or break a line of the output.
std::string ToPrintable(const char* text);
