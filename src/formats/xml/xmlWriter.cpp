#include "formats/xml/xmlWriter.h"

#include <charconv>

#include "foundation/resultCodes.h"
#include "foundation/stringArray.h"

namespace {

constexpr std::size_t kBufferSize = 1 << 16;
constexpr int kNumberSize = 32;  // "-2.225073858507201e-308" is the longest with 16 digits
constexpr int kDigits = 16;

/// As printf does with "%.16g", whatever the locale.
std::size_t PrintDouble(double value, char* text) {
  return static_cast<std::size_t>(
      std::to_chars(text, text + kNumberSize, value, std::chars_format::general, kDigits).ptr -
      text);
}

std::size_t PrintInt(int value, char* text) {
  return static_cast<std::size_t>(std::to_chars(text, text + kNumberSize, value).ptr - text);
}

const char* EntityOf(char c) {
  switch (c) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '"':
      return "&quot;";
    case '\'':
      return "&apos;";
    default:
      return nullptr;
  }
}

/// What stands for a character in escaped text; null for itself.
const char* EscapeOf(char c) {
  switch (c) {
    case '\t':
      return "\\t";
    case '\n':
      return "\\n";
    case '\\':
      return "\\\\";
    case '\r':
      return "";  // line ends are line feeds here: on purpose it isn't kept
    default:
      return nullptr;
  }
}

}  // namespace

XmlWriter::~XmlWriter() { file.Discard(); }

bool XmlWriter::Open(const char* fileName) {
  file.Discard();
  buffer.clear();
  pendingAttributes.clear();
  depth = 0;
  if (file.Open(fileName, KVN_OPEN_TO_WRITE) != 0) return false;
  Put("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n");
  return true;
}

bool XmlWriter::Close() {
  Flush();
  return file.Close() == 0;
}

void XmlWriter::OpenElement(const char* name) {
  if (!StartTag(name)) return;
  Put(">\n");
  ++depth;
}

void XmlWriter::CloseElement(const char* name) {
  if (name == nullptr) return;
  --depth;
  Indent();
  EndTag(name);
}

void XmlWriter::WriteElement(const char* name, const char* text, bool escaped) {
  if (!StartTag(name)) return;
  if (text == nullptr) return Put(" />\n");
  Put(">");
  PutEscaped(text, escaped);
  EndTag(name);
}

void XmlWriter::AddAttribute(const char* name, double value) {
  char text[kNumberSize + 1];
  text[PrintDouble(value, text)] = '\0';
  AddAttribute(name, text);
}

void XmlWriter::AddAttribute(const char* name, bool value) {
  AddAttribute(name, value ? "true" : "false");
}

void XmlWriter::AddAttribute(const char* name, int value) {
  char text[kNumberSize + 1];
  text[PrintInt(value, text)] = '\0';
  AddAttribute(name, text);
}

void XmlWriter::AddAttribute(const char* name, const char* value) {
  if (name != nullptr && value != nullptr) pendingAttributes.emplace_back(name, value);
}

void XmlWriter::WriteDoubleList(const char* name, const double* values, int count,
                                const char* naText, double naValue) {
  if (!StartTag(name)) return;
  Put(">");
  for (int i = 0; i < count; ++i) {
    if (i > 0) Put(" ");
    if (naText != nullptr && values[i] == naValue) {
      PutEscaped(naText, /*escaped=*/false);
    } else {
      PutDouble(values[i]);
    }
    FlushWhenFull();
  }
  EndTag(name);
}

void XmlWriter::WriteStringList(const char* name, const KVN_stringArray& strings) {
  if (!StartTag(name)) return;
  Put(">");
  for (int i = 0; i < strings.GetNumItems(); ++i) {
    if (i > 0) Put(" ");
    PutEscaped(strings[i] != nullptr ? strings[i] : "(null)", /*escaped=*/false);
    FlushWhenFull();
  }
  EndTag(name);
}

void XmlWriter::WriteIntList(const char* name, const int* values, int count) {
  if (!StartTag(name)) return;
  Put(">");
  for (int i = 0; i < count; ++i) {
    if (i > 0) Put(" ");
    char text[kNumberSize];
    buffer.append(text, PrintInt(values[i], text));
    FlushWhenFull();
  }
  EndTag(name);
}

/// All of a start tag but its end, which depends on what follows. False without a name: then the
/// element is left out with all that was queued for it.
bool XmlWriter::StartTag(const char* name) {
  if (name == nullptr) {
    pendingAttributes.clear();
    return false;
  }
  Indent();
  Put("<");
  Put(name);
  for (const auto& [attribute, value] : pendingAttributes) {
    Put(" ");
    Put(attribute.c_str());
    Put("=\"");
    PutEscaped(value.c_str(), /*escaped=*/false);
    Put("\"");
  }
  pendingAttributes.clear();
  return true;
}

void XmlWriter::EndTag(const char* name) {
  Put("</");
  Put(name);
  Put(">\n");
  FlushWhenFull();
}

void XmlWriter::Indent() { buffer.append(static_cast<std::size_t>(depth > 0 ? depth : 0), '\t'); }

void XmlWriter::Put(const char* text) { buffer += text; }

void XmlWriter::PutEscaped(const char* text, bool escaped) {
  for (; *text != '\0'; ++text) {
    const char* substitute = EntityOf(*text);
    if (substitute == nullptr && escaped) substitute = EscapeOf(*text);
    if (substitute != nullptr) {
      buffer += substitute;
    } else {
      buffer += *text;
    }
  }
}

void XmlWriter::PutDouble(double value) {
  char text[kNumberSize];
  buffer.append(text, PrintDouble(value, text));
}

void XmlWriter::FlushWhenFull() {
  if (buffer.size() >= kBufferSize) Flush();
}

void XmlWriter::Flush() {
  // A failure is remembered by the file and told by Close.
  (void)file.WriteBytes(buffer.data(), static_cast<int>(buffer.size()));
  buffer.clear();
}
