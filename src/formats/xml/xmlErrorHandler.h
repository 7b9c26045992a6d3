#pragma once

#include <string>

#include "formats/xml/xmlInterfaces.h"

/// Tail of every message about a file that may be of a newer version: an advice and an address.
extern const char* const kXmlDownloadAdvice;

/// Reports to the error log of the process, each message with file, line and column: errors with
/// KVN_FILE_IO, warnings with -100.
class XmlErrorHandler : public IXmlErrorHandler {
 public:
  void OnError(const char* message, int line, int column) override;
  void OnUnknownElement(const char* name, const char* parent, int line, int column) override;
  void OnUnknownAttribute(const char* element, const char* attribute, int line,
                          int column) override;

  /// The closing remark of a load that has succeeded: nothing unless something was skipped.
  void ReportUnknownContent();

 protected:
  void SetFileName(const char* name) { fileName = name != nullptr ? name : "(null)"; }

 private:
  std::string fileName;
  bool unknownContent = false;
};
