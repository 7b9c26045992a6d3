// The lists of the text formats: "(a, b, c)".

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "formats/text/fileFormat.h"
#include "foundation/dmatrix.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "foundation/stringArray.h"

namespace {

constexpr int kMode = KVN_textFile::kIndentLines;
constexpr int kRoomForQuote = 3;  // columns wanted for the next string of a list

template <typename Array>
int CountOf(const Array& list, bool whole) {
  return whole ? list.GetSize() : list.GetNumItems();
}

}  // namespace

/// Takes the next token into hand, which must be of the class. A misfit is reported.
int KVN_fileFormat::RequireElement(int type) {
  return PeekIsOfClass(type) == 1 ? 0 : ReportMisfit(type, nullptr);
}

/// `addElement` is called as `int ()` with an element in hand.
template <typename AddElement>
int KVN_fileFormat::ReadList(int type, AddElement addElement) {
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "("); result < 0) return result;
  if (PeekIsOfClass(type) == 1) {
    while (true) {
      if (int result = addElement(); result < 0) return result;
      ConsumeToken();
      if (PeekIsComma() != 1) break;
      ConsumeToken();
      if (int result = RequireElement(type); result < 0) return result;
    }
  }
  return RequireToken(KVN_TOKEN_PUNCTUATOR, ")");
}

int KVN_fileFormat::ReadIdentifierList(KVN_stringArray& list) {
  if (!list.IsReady()) return KVN_NOT_READY;
  return ReadList(KVN_TOKEN_IDENTIFIER,
                  [&] { return list.Add(tokenText) == KVN_NO_MEMORY ? KVN_NO_MEMORY : 0; });
}

int KVN_fileFormat::ReadStringList(KVN_stringArray& list) {
  if (!list.IsReady()) return KVN_NOT_READY;
  return ReadList(KVN_TOKEN_STRING,
                  [&] { return list.Add(tokenText) == KVN_NO_MEMORY ? KVN_NO_MEMORY : 0; });
}

int KVN_fileFormat::ReadDoubleList(KVN_doubleArray& list) {
  return ReadList(KVN_TOKEN_REAL, [&] {
    double value = 0.0;
    // A sign and a point alone are a real number to the lexer.
    if (TextToDouble(tokenText, value) < 0) return ReportMisfit(KVN_TOKEN_REAL, nullptr);
    return list.Add(value);
  });
}

int KVN_fileFormat::ReadIntList(KVN_intArray& list) {
  return ReadList(KVN_TOKEN_INTEGER, [&] {
    int value = 0;
    if (int result = TextToInt(tokenText, value); result < 0) return result;
    return list.Add(value);
  });
}

/// An element with its separator, on a fresh line if the present one has no room for both; the
/// blank of the separator may stand beyond the margin. An element is never broken.
int KVN_fileFormat::WriteElement(const char* text, const char* separator) {
  const int width = static_cast<int>(std::strlen(text)) + 1;
  const int column = outputFile.GetColumn();
  if (column > outputFile.GetIndentation() && column + width > outputFile.GetRightMargin()) {
    outputFile.PutLines("\n", kMode);
    outputFile.WriteIndent();
  }
  outputFile.PutLines(text, kMode);
  return outputFile.PutLines(separator, kMode);
}

/// `textOf` gives the text of one element by its position.
template <typename TextOf>
int KVN_fileFormat::WriteList(int count, TextOf textOf) {
  const int result = WriteText("(");
  if (count == 0) return outputFile.PutLines(")", kMode);
  if (result < 0) return result;
  for (int i = 0; i < count; ++i) {
    const char* text = textOf(i);
    const char* separator = i + 1 < count ? ", " : ")";
    if (int written = WriteElement(text != nullptr ? text : "", separator); written < 0) {
      return written;
    }
  }
  return 0;
}

int KVN_fileFormat::WriteIdentifierList(const KVN_stringArray& list, bool whole) {
  return WriteList(CountOf(list, whole), [&](int i) { return list.GetString(i); });
}

int KVN_fileFormat::WriteDoubleList(const KVN_doubleArray& list, bool whole) {
  char text[kNumberTextSize];
  return WriteList(CountOf(list, whole), [&](int i) -> const char* {
    DoubleToText(list[i], text);
    return text;
  });
}

int KVN_fileFormat::WriteIntList(const KVN_intArray& list, bool whole) {
  char text[kNumberTextSize];
  return WriteList(CountOf(list, whole), [&](int i) -> const char* {
    IntToText(list[i], text);
    return text;
  });
}

int KVN_fileFormat::WriteStringList(const KVN_stringArray& list, bool whole) {
  WriteText("(");
  const int count = CountOf(list, whole);
  for (int i = 0; i < count; ++i) {
    if (i > 0) {
      outputFile.PutLines(",", kMode);
      const bool isFull = outputFile.GetRightMargin() - outputFile.GetColumn() < kRoomForQuote;
      outputFile.PutLines(isFull ? "\n" : " ", kMode);
      if (isFull) outputFile.WriteIndent();
    }
    outputFile.PutLines("\"", kMode);
    WriteText(list.GetString(i), /*escaped=*/true);
    if (int result = outputFile.PutLines("\"", kMode); result < 0) return result;
  }
  return outputFile.PutLines(")", kMode);
}

template <typename WriteElements>
int KVN_fileFormat::WriteListStatement(const char* name, WriteElements writeElements) {
  if (name == nullptr) return 0;
  WriteLine(name);
  outputFile.PutLines(" = ", kMode);
  if (int result = writeElements(); result < 0) return result;
  return outputFile.PutLines(";\n", kMode);
}

int KVN_fileFormat::WriteIdentifierListStatement(const char* name, const KVN_stringArray& list,
                                                 bool whole) {
  return WriteListStatement(name, [&] { return WriteIdentifierList(list, whole); });
}

int KVN_fileFormat::WriteStringListStatement(const char* name, const KVN_stringArray& list,
                                             bool whole) {
  return WriteListStatement(name, [&] { return WriteStringList(list, whole); });
}

int KVN_fileFormat::WriteDoubleListStatement(const char* name, const KVN_doubleArray& list,
                                             bool whole) {
  return WriteListStatement(name, [&] { return WriteDoubleList(list, whole); });
}

int KVN_fileFormat::WriteIntListStatement(const char* name, const KVN_intArray& list, bool whole) {
  return WriteListStatement(name, [&] { return WriteIntList(list, whole); });
}

/// One bracket per dimension but the last `innerDimensions`, whose cells make a row. A list of
/// level d begins where all later outer dimensions are at their first index, so at every row number
/// that is a multiple of the rows in it.
int KVN_fileFormat::WriteNestedList(const KVN_Dmatrix& table, int innerDimensions, int column,
                                    const char* separator) {
  const int levels = std::max(table.GetNumberOfDimensions() - innerDimensions, 0);
  const int rowSize = levels == 0 ? table.GetSize() : table.GetMultipliers()[levels - 1];
  const int rows = rowSize == 0 ? 0 : table.GetSize() / rowSize;
  KVN_intArray rowsOfList;  // by level
  for (int level = 0; level < levels; ++level) {
    const int cells = level == 0 ? table.GetSize() : table.GetMultipliers()[level - 1];
    if (int result = rowsOfList.Add(cells / rowSize); result < 0) return result;
  }
  KVN_doubleArray row;
  if (int result = row.SetSize(rowSize); result < 0) return result;
  row.UseAsList(rowSize);
  for (int i = 0; i < rows; ++i) {
    const auto lists = [&](int at) {
      return std::count_if(rowsOfList.begin(), rowsOfList.end(),
                           [at](int size) { return at % size == 0; });
    };
    const int opened = static_cast<int>(lists(i));
    if (i > 0) {
      PutText(separator);
      PutText("\n");
      outputFile.WriteIndent();
      const int blanks = column + levels - opened;
      for (int k = 0; k < blanks; ++k) PutText(" ");
    }
    for (int k = 0; k < opened; ++k) PutText("(");
    std::copy_n(table.GetData() + i * rowSize, rowSize, row.begin());
    (void)WriteDoubleList(row, /*whole=*/false);
    for (int k = static_cast<int>(lists(i + 1)); k > 0; --k) PutText(")");
  }
  return 0;
}
