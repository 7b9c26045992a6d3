#include "ormel/output.h"

#include <ostream>

namespace {

const char* ColourOf(Severity severity) {
  switch (severity) {
    case Severity::kError:
      return "\033[1;31m";
    case Severity::kWarning:
    case Severity::kLoss:
      return "\033[1;33m";
    case Severity::kNote:
      break;
  }
  return "\033[1;36m";
}

}  // namespace

const char* WordOf(Severity severity) {
  switch (severity) {
    case Severity::kError:
      return "error";
    case Severity::kWarning:
      return "warning";
    case Severity::kLoss:
      return "loss";
    case Severity::kNote:
      break;
  }
  return "note";
}

std::string Output::Word(Severity severity, bool colour) {
  const std::string word = WordOf(severity);
  return colour ? ColourOf(severity) + word + "\033[0m" : word;
}

void Output::Say(Severity severity, const std::string& text) {
  SayLine(severity, "ormel: " + Word(severity, colourMessages) + ": " + text);
}

void Output::SayLine(Severity severity, const std::string& line) {
  if (quiet && severity != Severity::kError) return;
  messages << line << '\n';
}
