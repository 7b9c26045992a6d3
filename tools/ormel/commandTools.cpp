#include "ormel/commandTools.h"

#include <cstring>
#include <sstream>

#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "ormel/command.h"
#include "ormel/exitCodes.h"
#include "ormel/formatNames.h"
#include "ormel/output.h"
#include "ormel/text.h"

int ExitCodeOfResult(int result) {
  switch (result) {
    case 0:
      return kExitDone;
    case KVN_CONFLICTING_EVIDENCE:
    case KVN_NO_USEFUL_SAMPLES:  // none agreed with the evidence
      return kExitImpossible;
    case KVN_NO_MEMORY:
      return kExitLimit;
    default:
      return result < 0 ? kExitRefused : kExitDone;
  }
}

int ChooseFormat(const std::string& fileName, const std::string& formatName, const char* option,
                 int& format, Output& output) {
  format = FormatOfName(formatName);
  if (format == KVN_FORMAT_AUTO) format = DetectFileFormat(fileName.c_str());
  if (HasFormat(format)) return kExitDone;
  // The engine says its own words: they are what a host sees for the same file.
  const LogCapture log;
  KVN_network network;
  int code = format > 0 ? format : KVN_FORMAT_AUTO;
  const std::unique_ptr<KVN_fileSpeaker> none(CreateSpeaker(fileName.c_str(), code, network));
  const std::string words = log.Messages().empty() ? "" : log.Messages().front().text;
  const char* const name = NameOfFormat(format);
  const std::string hint =
      name != nullptr ? std::string(" Not yet ") + name + "."
                      : std::string(" The extension names none: choose one with ") + option + ".";
  output.Say(Severity::kError, ToPrintable(fileName.c_str()) + ": " + words + " (code " +
                                   std::to_string(KVN_REFUSED) + "). " + AvailableFormats() + hint);
  return kExitRefused;
}

int OpenNetwork(const std::string& fileName, int format, Depth depth, NetworkFile& file,
                Output& output) {
  ReadNetworkFile(fileName, format, depth, file);
  if (file.result == 0) return kExitDone;
  const std::string why = WhyUnreadable(fileName);
  if (!why.empty()) {
    output.Say(Severity::kError, ToPrintable(fileName.c_str()) + ": cannot be read: " + why +
                                     " (code " + std::to_string(file.result) + ")");
    return kExitBadFile;
  }
  SayDiagnostics(file, output);
  output.Say(Severity::kError, ToPrintable(fileName.c_str()) + ": the file was given up, code " +
                                   DescribeResult(file.result));
  return file.result == KVN_NO_MEMORY ? kExitLimit : kExitBadFile;
}

int OpenToRead(const std::string& fileName, const CommonOptions& options, NetworkFile& read,
               Output& output) {
  int format = 0;
  int code = ChooseFormat(fileName, options.from, "--from", format, output);
  if (code == kExitDone) code = OpenNetwork(fileName, format, Depth::kRead, read, output);
  if (code == kExitDone) SayDiagnostics(read, output);
  return code;
}

std::vector<Loss> ListLossesOfFile(const NetworkFile& file, int format) {
  std::vector<Loss> losses = ListLosses(*file.network, format);
  if (file.hasExtensions) losses.push_back({"", "extensions", "not kept"});
  return losses;
}

int ExitCodeOfFile(const NetworkFile& file) {
  for (const Diagnostic& diagnostic : file.diagnostics) {
    if (diagnostic.code == KVN_NO_MEMORY) return kExitLimit;
  }
  return file.HasErrors() ? kExitBadFile : kExitDone;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) {
    list += (list.empty() ? "" : ", ") + ToPrintable(word.c_str());
  }
  return list;
}

std::string DescribeDiagnostic(const std::string& fileName, const Diagnostic& diagnostic,
                               bool colour) {
  std::string text = diagnostic.text;
  // The engine's word for the severity is in the text already.
  for (const char* marker : {"ERROR: ", "Warning: "}) {
    if (text.rfind(marker, 0) == 0) text.erase(0, std::strlen(marker));
  }
  std::ostringstream line;
  line << ToPrintable(fileName.c_str());
  if (diagnostic.line > 0) line << ':' << diagnostic.line;
  line << ": " << Output::Word(diagnostic.severity, colour) << ": " << ToPrintable(text.c_str());
  // The text names the step that failed, and the same step fails for other reasons too.
  if (diagnostic.code == KVN_NO_MEMORY) line << " (too large for memory)";
  return line.str();
}

void SayDiagnostics(const NetworkFile& file, Output& output) {
  for (const Diagnostic& diagnostic : file.diagnostics) {
    output.SayLine(diagnostic.severity,
                   DescribeDiagnostic(file.name, diagnostic, output.colourMessages));
  }
}

int TellUpdateFailure(int result, const LogCapture& log, Output& output) {
  std::string text;
  for (const Diagnostic& message : log.Messages()) text += message.text + "; ";
  output.Say(Severity::kError,
             "the update failed: " + ToPrintable(text.c_str()) + "code " + DescribeResult(result));
  return ExitCodeOfResult(result);
}
