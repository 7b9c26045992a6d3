#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "formats/xml/xmlBinding.h"

struct XML_ParserStruct;

/// Reads a file block by block with Expat and holds every element against its binding: the root,
/// attributes that are required or unknown, children that are required, repeated or unknown. The
/// handlers of a loader see only what has passed. Unknown content is skipped with one warning for
/// the outermost element, where the binding tolerates it.
///
/// A loader derives from this class, wires its bindings and calls Parse, once.
///
/// Memory. Text of an element that wants words is handed out word by word and never collected; that
/// of elements without a handler is dropped. Skipped content costs a counter. Nothing here recurses
/// over the nesting of the file.
///
/// Entities. Declarations that name a file, or whose text refers to other entities, end the load,
/// and so does a reference to an entity that no declaration in the file explains. Nothing outside
/// the file is ever opened. Nor may the file declare a default for an attribute.
class XmlReader : public IXmlReader {
 public:
  XmlReader() = default;
  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;
  ~XmlReader() override;

  bool Parse(const char* fileName, IXmlBinding& rootBinding,
             IXmlErrorHandler* errorHandler) override;
  void Abort(const char* message) override;
  void GetPosition(int& line, int& column) override;
  const char* GetText() override;
  void GetUnescapedText(std::string& text) override;
  bool GetAttribute(const char* name, double& value, double defaultValue) override;
  bool GetAttribute(const char* name, int& value, int defaultValue) override;
  bool GetAttribute(const char* name, bool& value, bool defaultValue) override;
  bool GetAttribute(const char* name, std::string& value) override;
  IXmlBinding* CreateBinding(const char* name, int options, IXmlHandler* handler) override;
  void Release() override { delete this; }

  /// Aborts and gives false for a file whose version, read as a number, is above the expected one.
  /// What is no number counts as 0.
  bool CheckVersion(const std::string& fileVersion, const char* expected);

 protected:
  void AbortWith(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  /// An open element.
  struct Record {
    const XmlBinding* binding;
    int options;  // inheritance resolved
    bool wantsWords;
    std::vector<bool> seen;  // by position among the binding's children
    std::string text;
  };

  /// Runs an event of the parser. Memory that runs out in it ends the load with a message.
  template <typename Event>
  static void Run(void* reader, Event event);
  static void OnStartElement(void* reader, const char* name, const char** attributes);
  static void OnEndElement(void* reader, const char* name);
  static void OnCharacters(void* reader, const char* data, int length);
  static void OnEntity(void* reader, const char* name, int isParameter, const char* value,
                       int valueLength, const char* base, const char* systemId,
                       const char* publicId, const char* notation);
  static void OnAttributeDefault(void* reader, const char* element, const char* attribute,
                                 const char* type, const char* value, int isRequired);
  static void OnSkippedEntity(void* reader, const char* name, int isParameter);

  bool ParseFile(const char* fileName, std::FILE* file);
  bool ParseBlocks(const char* fileName, std::FILE* file);
  void ReportError(const char* message);
  void StopParser();

  void StartElement(const char* name, const char** newAttributes);
  const XmlBinding* FindBinding(const char* name);
  bool CheckAttributes(const XmlBinding& binding, int options);
  void Push(const XmlBinding& binding, int options);
  void AddText(const char* data, int length);
  void DeliverWord(Record& record);
  void EndElement();
  void CheckRequiredChildren(const Record& record);
  void Pop();
  /// Null when absent.
  const char* FindAttribute(const char* name) const;

  std::vector<Record> records;  // the first `depth` are open; the others keep their storage
  std::size_t depth = 0;
  std::size_t ignoredDepth = 0;  // open elements that are being skipped
  const XmlBinding* root = nullptr;
  const char** attributes = nullptr;   // pairs, ended by null; of the element being started
  XML_ParserStruct* parser = nullptr;  // during Parse
  bool aborted = false;
  bool outOfMemory = false;
  IXmlErrorHandler* errors = nullptr;  // not owned
};
