#pragma once

#include <string>
#include <utility>
#include <vector>

#include "formats/text/textFile.h"

class KVN_doubleArray;
class KVN_stringArray;

/// Writes XML element by element. Attributes are queued and go out with the next start tag, so a
/// caller first adds the attributes and then names the element. An element or attribute without a
/// name is left out. Operations keep their order.
///
/// Text is in 8 bits and goes out byte for byte under a declaration that says so.
class IXmlWriter {
 public:
  /// False when the file can't be made.
  virtual bool Open(const char* fileName) = 0;
  /// False when anything since Open couldn't be written; the file is then as it was before.
  virtual bool Close() = 0;
  virtual void OpenElement(const char* name) = 0;
  virtual void CloseElement(const char* name) = 0;
  /// An element with text, or an empty one for null. `escaped` writes tab, line feed and backslash
  /// as backslash pairs and drops carriage returns; IXmlReader::GetUnescapedText is the reverse.
  virtual void WriteElement(const char* name, const char* text, bool escaped) = 0;
  virtual void AddAttribute(const char* name, double value) = 0;
  virtual void AddAttribute(const char* name, bool value) = 0;
  virtual void AddAttribute(const char* name, int value) = 0;
  /// Null adds nothing.
  virtual void AddAttribute(const char* name, const char* value) = 0;
  /// Destroys the writer.
  virtual void Release() = 0;
  virtual ~IXmlWriter() = default;
};

/// Somebody who has content of his own for the `extensions` of a network file.
class IXmlWriterExtension {
 public:
  virtual void Write(IXmlWriter& writer) = 0;
  /// Destroys the extension.
  virtual void Release() = 0;
  virtual ~IXmlWriterExtension() = default;
};

/// The one implementation. Elements stand on lines of their own, indented by a tab per level;
/// numbers have 16 significant digits. The file is complete or it isn't there: see KVN_textFile.
class XmlWriter : public IXmlWriter {
 public:
  XmlWriter() = default;
  XmlWriter(const XmlWriter&) = delete;
  XmlWriter& operator=(const XmlWriter&) = delete;
  /// Without a Close the file is as it was before Open.
  ~XmlWriter() override;

  bool Open(const char* fileName) override;
  bool Close() override;
  void OpenElement(const char* name) override;
  void CloseElement(const char* name) override;
  void WriteElement(const char* name, const char* text, bool escaped) override;
  void AddAttribute(const char* name, double value) override;
  void AddAttribute(const char* name, bool value) override;
  void AddAttribute(const char* name, int value) override;
  void AddAttribute(const char* name, const char* value) override;
  void Release() override { delete this; }
  /// In the place of Close: the file is as it was before Open.
  void Discard() { file.Discard(); }

  /// One element whose text is a list separated by blanks. With a `naText` that is what goes out
  /// for values equal to `naValue`.
  void WriteDoubleList(const char* name, const double* values, int count,
                       const char* naText = nullptr, double naValue = 0.0);
  /// Null strings go out as "(null)".
  void WriteStringList(const char* name, const KVN_stringArray& strings);
  void WriteIntList(const char* name, const int* values, int count);

 private:
  bool StartTag(const char* name);
  void EndTag(const char* name);
  void Indent();
  void Put(const char* text);
  void PutEscaped(const char* text, bool escaped);
  void PutDouble(double value);
  void FlushWhenFull();
  void Flush();

  KVN_textFile file;
  std::string buffer;  // text on its way to the file
  std::vector<std::pair<std::string, std::string>> pendingAttributes;
  int depth = 0;  // open elements
};
