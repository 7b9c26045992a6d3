#include "formats/xml/xmlReader.h"

#include <expat.h>

#include <cstdarg>
#include <cstring>
#include <memory>
#include <new>

#include "formats/xml/xmlErrorHandler.h"
#include "formats/xml/xmlText.h"
#include "foundation/numberText.h"

namespace {

constexpr std::size_t kBlockSize = 4096;
/// Text of an element up to this size keeps its storage for the next one.
constexpr std::size_t kKeptText = 1 << 16;

struct ParserDeleter {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

XmlReader& ReaderOf(void* userData) { return *static_cast<XmlReader*>(userData); }

}  // namespace

XmlReader::~XmlReader() = default;

// --- The file.

bool XmlReader::Parse(const char* fileName, IXmlBinding& rootBinding,
                      IXmlErrorHandler* errorHandler) {
  errors = errorHandler;
  root = static_cast<const XmlBinding*>(&rootBinding);
  aborted = false;
  outOfMemory = false;
  const std::unique_ptr<std::FILE, FileCloser> file(fileName != nullptr ? std::fopen(fileName, "rb")
                                                                        : nullptr);
  if (file == nullptr) {
    ReportError(
        FormatText("Can't open file %s", fileName != nullptr ? fileName : "(null)").c_str());
    return false;
  }
  const bool parsed = ParseFile(fileName, file.get());
  while (depth > 0) Pop();
  ignoredDepth = 0;
  attributes = nullptr;
  return parsed;
}

bool XmlReader::ParseFile(const char* fileName, std::FILE* file) {
  const std::unique_ptr<XML_ParserStruct, ParserDeleter> made(XML_ParserCreate(nullptr));
  if (made == nullptr) {
    ReportError(XML_ErrorString(XML_ERROR_NO_MEMORY));
    return false;
  }
  parser = made.get();
  XML_SetUserData(parser, this);
  XML_SetElementHandler(parser, OnStartElement, OnEndElement);
  XML_SetCharacterDataHandler(parser, OnCharacters);
  XML_SetEntityDeclHandler(parser, OnEntity);
  XML_SetSkippedEntityHandler(parser, OnSkippedEntity);
  XML_SetAttlistDeclHandler(parser, OnAttributeDefault);
  const bool parsed = ParseBlocks(fileName, file);
  parser = nullptr;
  return parsed;
}

bool XmlReader::ParseBlocks(const char* fileName, std::FILE* file) {
  char block[kBlockSize];
  bool isLast = false;
  while (!isLast) {
    const std::size_t length = std::fread(block, 1, sizeof block, file);
    if (std::ferror(file) != 0) {  // a folder can be opened, but nothing can be read from it
      ReportError(FormatText("Can't read file %s", fileName).c_str());
      return false;
    }
    isLast = length < sizeof block;
    const XML_Status status = XML_Parse(parser, block, static_cast<int>(length), isLast);
    if (outOfMemory) ReportError(XML_ErrorString(XML_ERROR_NO_MEMORY));
    if (aborted) return false;  // the parser was stopped: what it has to say of that is no news
    if (status == XML_STATUS_ERROR) {
      ReportError(XML_ErrorString(XML_GetErrorCode(parser)));
      return false;
    }
  }
  return true;
}

void XmlReader::GetPosition(int& line, int& column) {
  line = parser != nullptr ? static_cast<int>(XML_GetCurrentLineNumber(parser)) : 0;
  column = parser != nullptr ? static_cast<int>(XML_GetCurrentColumnNumber(parser)) : 0;
}

void XmlReader::ReportError(const char* message) {
  if (errors == nullptr) return;
  int line = 0;
  int column = 0;
  GetPosition(line, column);
  errors->OnError(message, line, column);
}

void XmlReader::Abort(const char* message) {
  if (aborted) return;
  aborted = true;
  ReportError(message != nullptr ? message : "(null)");
  StopParser();
}

void XmlReader::StopParser() {
  if (parser == nullptr) return;
  XML_SetElementHandler(parser, nullptr, nullptr);
  XML_SetCharacterDataHandler(parser, nullptr);
  (void)XML_StopParser(parser, XML_FALSE);  // only refused where there is nothing to stop
}

void XmlReader::AbortWith(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Abort(FormatTextList(format, arguments).c_str());
  va_end(arguments);
}

// --- Events.

// Strings and vectors throw when memory is short, but an exception must not go through the parser:
// its frames are C, and it would be left in the middle of its work.
template <typename Event>
void XmlReader::Run(void* reader, Event event) {
  XmlReader& self = ReaderOf(reader);
  try {
    event(self);
  } catch (const std::bad_alloc&) {
    self.outOfMemory = self.aborted = true;
    self.StopParser();
  }
}

void XmlReader::OnStartElement(void* reader, const char* name, const char** attributes) {
  Run(reader, [&](XmlReader& self) { self.StartElement(name, attributes); });
}

void XmlReader::OnEndElement(void* reader, const char* /*name*/) {
  Run(reader, [](XmlReader& self) { self.EndElement(); });
}

void XmlReader::OnCharacters(void* reader, const char* data, int length) {
  Run(reader, [&](XmlReader& self) { self.AddText(data, length); });
}

// An entity whose text refers to others is how a small file becomes a huge one, and how the parser
// is made to recurse. No writer of this format has a use for either.
void XmlReader::OnEntity(void* reader, const char* name, int /*isParameter*/, const char* value,
                         int valueLength, const char* /*base*/, const char* /*systemId*/,
                         const char* /*publicId*/, const char* /*notation*/) {
  const bool isPlain =
      value != nullptr && std::memchr(value, '&', static_cast<std::size_t>(valueLength)) == nullptr;
  if (isPlain) return;
  Run(reader, [&](XmlReader& self) {
    self.AbortWith("Entity '%s' must not refer to files or other entities", name);
  });
}

// The parser repeats a default at every element that lacks the attribute, so a long one makes as
// much of a small file as an entity does.
void XmlReader::OnAttributeDefault(void* reader, const char* element, const char* attribute,
                                   const char* /*type*/, const char* value, int /*isRequired*/) {
  if (value == nullptr) return;
  Run(reader, [&](XmlReader& self) {
    self.AbortWith("Attribute '%s' of '%s' must not have a default", attribute, element);
  });
}

void XmlReader::OnSkippedEntity(void* reader, const char* name, int isParameter) {
  if (isParameter != 0) return;
  Run(reader, [&](XmlReader& self) { self.AbortWith("Undefined entity '%s'", name); });
}

void XmlReader::StartElement(const char* name, const char** newAttributes) {
  if (ignoredDepth > 0) {
    ++ignoredDepth;
    return;
  }
  const XmlBinding* binding = FindBinding(name);
  if (aborted) return;
  if (binding == nullptr) {
    ignoredDepth = 1;
    return;
  }
  int options = binding->options;
  if (options == KVN_XML_INHERIT) options = depth > 0 ? records[depth - 1].options : KVN_XML_STRICT;
  attributes = newAttributes;
  if (CheckAttributes(*binding, options) && binding->handler != nullptr) {
    binding->handler->OnStart(*this);
  }
  attributes = nullptr;
  if (!aborted) Push(*binding, options);
}

/// Null for an element that is to be skipped, or after an abort.
const XmlBinding* XmlReader::FindBinding(const char* name) {
  if (depth == 0) {
    if (root->name == name) return root;
    AbortWith("Unknown root element '%s', expected '%s'", name, root->name.c_str());
    return nullptr;
  }
  Record& parent = records[depth - 1];
  const char* parentName = parent.binding->name.c_str();
  const int position = parent.binding->FindChild(name);
  if (position >= 0) {
    const XmlBinding::Child& child = parent.binding->children[static_cast<std::size_t>(position)];
    const bool isRepeated = parent.seen[static_cast<std::size_t>(position)];
    parent.seen[static_cast<std::size_t>(position)] = true;
    if (!isRepeated || (child.occurrence & KVN_XML_MANY) != 0) return child.binding;
    // The spelling is meant to stay: hosts look for the texts of messages.
    AbortWith("Multiple occurences of '%s' not allowed in '%s'", name, parentName);
  } else if ((parent.options & KVN_XML_STRICT_CHILDREN) != 0) {
    AbortWith("Unknown element '%s' in '%s'", name, parentName);
  } else if (errors != nullptr) {
    int line = 0;
    int column = 0;
    GetPosition(line, column);
    errors->OnUnknownElement(name, parentName, line, column);
  }
  return nullptr;
}

bool XmlReader::CheckAttributes(const XmlBinding& binding, int options) {
  const char* element = binding.name.c_str();
  for (const XmlBinding::Attribute& attribute : binding.attributes) {
    if (!attribute.required || FindAttribute(attribute.name.c_str()) != nullptr) continue;
    AbortWith("Required attribute '%s' not found in element '%s'", attribute.name.c_str(), element);
    return false;
  }
  for (const char** pair = attributes; *pair != nullptr; pair += 2) {
    if (binding.HasAttribute(*pair)) continue;
    if ((options & KVN_XML_STRICT_ATTRIBUTES) != 0) {
      AbortWith("Unknown attribute '%s' in element '%s'", *pair, element);
      return false;
    }
    if (errors == nullptr) continue;
    int line = 0;
    int column = 0;
    GetPosition(line, column);
    errors->OnUnknownAttribute(element, *pair, line, column);
  }
  return true;
}

void XmlReader::Push(const XmlBinding& binding, int options) {
  if (depth == records.size()) records.emplace_back();
  Record& record = records[depth++];
  record.binding = &binding;
  record.options = options;
  record.wantsWords = binding.handler != nullptr && binding.handler->WantsWords();
  record.seen.assign(binding.children.size(), false);
}

void XmlReader::AddText(const char* data, int length) {
  if (ignoredDepth > 0 || depth == 0) return;
  Record& record = records[depth - 1];
  const char* const end = data + length;
  if (!record.wantsWords) {
    if (record.binding->handler != nullptr) record.text.append(data, end);
    return;
  }
  while (true) {
    if (record.text.empty()) {
      while (data < end && IsXmlBlank(*data)) ++data;
    }
    const char* const start = data;
    while (data < end && !IsXmlBlank(*data)) ++data;
    record.text.append(start, data);
    if (data == end) return;  // the word may go on in the next piece
    DeliverWord(record);
    if (aborted) return;
  }
}

void XmlReader::DeliverWord(Record& record) {
  TranscodeUtf8(record.text);
  record.binding->handler->OnText(*this);
  record.text.clear();
}

void XmlReader::EndElement() {
  if (ignoredDepth > 0) {
    --ignoredDepth;
    return;
  }
  Record& record = records[depth - 1];
  if (IXmlHandler* handler = record.binding->handler; handler != nullptr) {
    if (record.wantsWords && !record.text.empty()) DeliverWord(record);
    TranscodeUtf8(record.text);
    if (!aborted) handler->OnEnd(*this);
  }
  if (!aborted) CheckRequiredChildren(record);
  Pop();
}

void XmlReader::CheckRequiredChildren(const Record& record) {
  for (std::size_t i = 0; i < record.seen.size(); ++i) {
    const XmlBinding::Child& child = record.binding->children[i];
    if ((child.occurrence & KVN_XML_REQUIRED) == 0 || record.seen[i]) continue;
    AbortWith("Required element '%s' not present in element '%s'", child.binding->name.c_str(),
              record.binding->name.c_str());
    return;
  }
}

void XmlReader::Pop() {
  std::string& text = records[--depth].text;
  if (text.capacity() > kKeptText) {
    text = std::string();
  } else {
    text.clear();
  }
}

// --- What a handler may ask.

const char* XmlReader::GetText() { return depth > 0 ? records[depth - 1].text.c_str() : ""; }

void XmlReader::GetUnescapedText(std::string& text) {
  text.clear();
  for (const char* source = GetText(); *source != '\0'; ++source) {
    if (*source != '\\') {
      text += *source;
      continue;
    }
    if (*++source == '\0') return;  // a lone backslash at the end stands for nothing
    text += *source == 'n' ? '\n' : *source == 't' ? '\t' : *source;
  }
}

const char* XmlReader::FindAttribute(const char* name) const {
  if (attributes == nullptr || name == nullptr) return nullptr;
  for (const char** pair = attributes; *pair != nullptr; pair += 2) {
    if (std::strcmp(*pair, name) == 0) return pair[1];
  }
  return nullptr;
}

bool XmlReader::GetAttribute(const char* name, std::string& value) {
  const char* text = FindAttribute(name);
  value = text != nullptr ? text : "";
  TranscodeUtf8(value);
  return text != nullptr;
}

bool XmlReader::GetAttribute(const char* name, double& value, double defaultValue) {
  const char* text = FindAttribute(name);
  if (text != nullptr && ReadLooseDouble(text, value)) return true;
  value = defaultValue;
  if (text != nullptr) AbortWith("Floating point value expected for attribute '%s'", name);
  return text == nullptr;
}

bool XmlReader::GetAttribute(const char* name, int& value, int defaultValue) {
  const char* text = FindAttribute(name);
  if (text != nullptr && ReadLooseInt(text, value)) return true;
  value = defaultValue;
  if (text != nullptr) AbortWith("Integer value expected for attribute '%s'", name);
  return text == nullptr;
}

bool XmlReader::GetAttribute(const char* name, bool& value, bool defaultValue) {
  const char* text = FindAttribute(name);
  value = defaultValue;
  if (text == nullptr) return true;
  const bool isTrue = std::strcmp(text, "true") == 0;
  if (isTrue || std::strcmp(text, "false") == 0) {
    value = isTrue;
    return true;
  }
  AbortWith("'true' or 'false' expected as value of boolean attribute '%s'", name);
  return false;
}

IXmlBinding* XmlReader::CreateBinding(const char* name, int options, IXmlHandler* handler) {
  // Its strings throw when memory is short, so a null result would promise too much.
  return std::make_unique<XmlBinding>(name, options, handler).release();
}

bool XmlReader::CheckVersion(const std::string& fileVersion, const char* expected) {
  double present = 0.0;
  double known = 0.0;
  (void)ScanDouble(fileVersion.c_str(), present);  // 0 for what is no number, and 0 passes
  (void)ScanDouble(expected, known);
  if (!(present > known)) return true;
  AbortWith("Invalid version number '%s', expected %s\n%s", fileVersion.c_str(), expected,
            kXmlDownloadAdvice);
  return false;
}
