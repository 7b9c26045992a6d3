#include "ormel/formatNames.h"

#include "formats/text/lexicalAnalizer.h"
#include "network/fileSpeaker.h"

namespace {

struct FormatName {
  const char* name;
  int format;
  int lexerTable;  // 0 for a format that isn't cut into words
  std::vector<std::string> firstWords;
};

const std::vector<FormatName>& Table() {
  static const std::vector<FormatName> table = {
      {"kvn", KVN_FORMAT_KVN, KVN_LEXICAL_DEFAULT, {"net"}},
      {"xkvn", KVN_FORMAT_XKVN, 0, {}},
      {"hugin", KVN_FORMAT_HUGIN, KVN_LEXICAL_HUGIN, {"net"}},
      {"netica", KVN_FORMAT_NETICA, KVN_LEXICAL_DEFAULT, {"bnet"}},
      {"xmlbif", KVN_FORMAT_XMLBIF, 0, {}},
      {"ergo", KVN_FORMAT_ERGO, 0, {}},
      {"microsoft",
       KVN_FORMAT_MICROSOFT,
       KVN_LEXICAL_MICROSOFT,
       {"belief", "diagnostic", "trouble"}},
      {"ki", KVN_FORMAT_KI, KVN_LEXICAL_DEFAULT, {"diagnostic"}},
  };
  return table;
}

const FormatName* FindFormat(int format) {
  for (const FormatName& row : Table()) {
    if (row.format == format) return &row;
  }
  return nullptr;
}

}  // namespace

std::vector<std::string> AllFormatNames() {
  std::vector<std::string> names;
  for (const FormatName& row : Table()) names.emplace_back(row.name);
  return names;
}

int FormatOfName(const std::string& name) {
  for (const FormatName& row : Table()) {
    if (name == row.name) return row.format;
  }
  return KVN_FORMAT_AUTO;
}

const char* NameOfFormat(int format) {
  const FormatName* row = FindFormat(format);
  return row == nullptr ? nullptr : row->name;
}

bool HasFormat(int format) {
  for (const KVN_formatRow* row = theFileFormats; row->code >= 0; row++) {
    if (row->code == format) return true;
  }
  return false;
}

std::string AvailableFormats() {
  std::vector<std::string> present;
  for (const FormatName& row : Table()) {
    if (HasFormat(row.format)) present.emplace_back(row.name);
  }
  std::string list;
  for (std::size_t i = 0; i < present.size(); i++) {
    if (i > 0) list += i + 1 < present.size() ? ", " : " and ";
    list += present[i];
  }
  const char* const noun = present.size() == 1 ? "format" : "formats";
  return std::string("This build has the ") + noun + " " + list + ".";
}

std::vector<std::string> FirstWordsOf(int format) {
  const FormatName* row = FindFormat(format);
  return row == nullptr ? std::vector<std::string>() : row->firstWords;
}

bool ReadFirstWord(const std::string& fileName, int format, std::string& word) {
  const FormatName* row = FindFormat(format);
  if (row == nullptr || row->lexerTable == 0) return false;
  KVN_lexicalAnalizer lexer(row->lexerTable);
  KVN_token token;
  if (lexer.OpenFile(fileName.c_str()) < 0 || lexer.GetToken(token) < 0) return false;
  word.assign(token.text, static_cast<std::size_t>(token.length));
  return true;
}
