#include "formats/xml/xmlErrorHandler.h"

#include "formats/xml/xmlText.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"

const char* const kXmlDownloadAdvice =
    "Please download most recent version of ORMEL/VUSTA from:\nhttps://ormel.example/download";

namespace {

/// Shares its number with the mode of an open file.
constexpr int kWarning = KVN_OPEN_TO_READ;

void Log(int code, const std::string& text) { (void)LogError(code, text.c_str()); }

}  // namespace

void XmlErrorHandler::OnError(const char* message, int line, int column) {
  Log(KVN_FILE_IO,
      FormatText("Error at %d, %d while loading %s: %s", line, column, fileName.c_str(), message));
}

void XmlErrorHandler::OnUnknownElement(const char* name, const char* /*parent*/, int line,
                                       int column) {
  unknownContent = true;
  Log(kWarning, FormatText("Warning: Ignored unknown element '%s' at %d, %d while loading %s", name,
                           line, column, fileName.c_str()));
}

void XmlErrorHandler::OnUnknownAttribute(const char* element, const char* attribute, int line,
                                         int column) {
  unknownContent = true;
  Log(kWarning,
      FormatText("Warning: Ignored unknown attribute '%s' in '%s' at %d, %d while loading %s",
                 attribute, element, line, column, fileName.c_str()));
}

void XmlErrorHandler::ReportUnknownContent() {
  if (!unknownContent) return;
  Log(kWarning,
      std::string("File contains unknown elements and/or attributes. ") + kXmlDownloadAdvice);
}
