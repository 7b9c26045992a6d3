#pragma once

#include <string>
#include <vector>

/// The file formats by the names that the command line uses.

/// All names, in the order of the formats' codes; not every build has each of these formats.
std::vector<std::string> AllFormatNames();

/// Format code of a name, 0 for an empty one (the extension decides).
int FormatOfName(const std::string& name);
/// Null for a code that no format has.
const char* NameOfFormat(int format);
/// Whether this build reads and writes the format.
bool HasFormat(int format);

/// "This build has the formats a, b and c." followed by a hint for a name without extension.
std::string AvailableFormats();

/// What a text file of the format has to begin with. Empty when any file will do or when the
/// engine itself tells.
std::vector<std::string> FirstWordsOf(int format);
/// The first word of a text file, as the format's lexer sees it; false at the end of the file.
bool ReadFirstWord(const std::string& fileName, int format, std::string& word);
