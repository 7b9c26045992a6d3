#include "ormel/networkFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "definitions/nodeDefinition.h"
#include "formats/xml/networkLoader.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "ormel/formatNames.h"
#include "ormel/text.h"

namespace {

/// Takes the place out of a message: "(line 12) : TEXT" of the text formats, "ERROR: Line 12 :
/// TEXT" of their lexer, "Error at 12, 7 while loading NAME: TEXT" of XML. XML also warns of
/// content that it skips, "Warning: ... 'NAME' at 12, 7 while loading NAME", and closes with an
/// advice.
Diagnostic ParseMessage(int code, const char* message) {
  Diagnostic made;
  made.code = code;
  made.text = message == nullptr ? "" : message;
  int length = 0;
  if (code == KVN_OPEN_TO_READ) {
    const std::size_t place = made.text.find("' at ");
    const bool isPlaced = place != std::string::npos &&
                          std::sscanf(made.text.c_str() + place, "' at %d,", &made.line) == 1;
    made.severity = isPlaced ? Severity::kWarning : Severity::kNote;
  } else if (std::sscanf(made.text.c_str(), "(line %d) : %n", &made.line, &length) == 1 &&
             length > 0) {
    made.text.erase(0, static_cast<std::size_t>(length));
  } else if (std::sscanf(made.text.c_str(), "Error at %d, %*d while loading", &made.line) != 1) {
    (void)std::sscanf(made.text.c_str(), "ERROR: Line %d :", &made.line);  // 0 stays when it isn't
  }
  return made;
}

Diagnostic ToolMessage(Severity severity, const std::string& text, int code = 0) {
  Diagnostic made;
  made.severity = severity;
  made.code = code;
  made.text = text;
  return made;
}

const char* IdOf(const KVN_node& node) { return node.GetId() == nullptr ? "(null)" : node.GetId(); }

/// The text between `opening` and the next "]".
bool ReadBracket(const std::string& text, const char* opening, std::string& found) {
  const std::size_t start = text.find(opening);
  if (start == std::string::npos) return false;
  const std::size_t first = start + std::strlen(opening);
  const std::size_t end = text.find(']', first);
  if (end == std::string::npos) return false;
  found = text.substr(first, end - first);
  return true;
}

/// What the probe warns of and the first reading didn't is content of `extensions`: the probe takes
/// none.
bool HasExtensions(const NetworkFile& file, const std::vector<Diagnostic>& ofProbe) {
  return std::any_of(ofProbe.begin(), ofProbe.end(), [&file](const Diagnostic& warning) {
    return warning.severity == Severity::kWarning &&
           std::none_of(file.diagnostics.begin(), file.diagnostics.end(),
                        [&warning](const Diagnostic& d) { return d.text == warning.text; });
  });
}

bool ReadProbe(NetworkFile& file, KVN_network& probe) {
  const LogCapture log;
  if (file.format == KVN_FORMAT_XKVN) {
    const bool isRead = LoadXmlNetwork(file.name.c_str(), probe, KVN_XML_NO_EXTENSION);
    file.hasExtensions = HasExtensions(file, log.Messages());
    return isRead;
  }
  int format = file.format;
  const std::unique_ptr<KVN_fileSpeaker> speaker(CreateSpeaker(file.name.c_str(), format, probe));
  return speaker != nullptr && speaker->ReadFile(file.name.c_str()) >= 0;
}

/// The engine drops nodes that a file leaves half made and doesn't tell. The file is read once more
/// to see them, with the messages kept back: they are known from the first time.
void FindDroppedNodes(NetworkFile& file) {
  struct stat info;
  if (stat(file.name.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return;  // read only once
  KVN_network probe;
  probe.SetChangeMask(0);
  if (!ReadProbe(file, probe)) return;
  const LogCapture silence;
  for (int handle = probe.GetFirstNode(); handle >= 0; handle = probe.GetNextNode(handle)) {
    KVN_node& node = *probe.GetNode(handle);
    if (node.CheckReadiness(/*deep=*/1) == 0) continue;
    const char* const reason = node.Definition() == nullptr
                                   ? "the file gives it no type that the engine knows"
                                   : "its definition is incomplete";
    file.diagnostics.push_back(ToolMessage(
        Severity::kError, std::string("Node [") + IdOf(node) + "] is left out: " + reason,
        KVN_NOT_READY));
  }
}

/// The engine stops at the first node whose numbers contradict each other.
void FindInconsistentNodes(NetworkFile& file) {
  bool isFirst = true;
  KVN_network& network = *file.network;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    KVN_node& node = *network.GetNode(handle);
    if (node.CheckConsistency(/*deep=*/1) == 0) continue;
    if (!isFirst) {
      file.diagnostics.push_back(
          ToolMessage(Severity::kError,
                      std::string("ERROR: Node [") + IdOf(node) +
                          "] is not consistent. Inference may not be correct",
                      KVN_NOT_CONSISTENT));
    }
    isFirst = false;
  }
}

/// Numbers in the table of `child` if `parent` were added to its parents.
double SizeWithParent(KVN_network& network, int parent, int child) {
  const auto outcomes = [&network](int handle) {
    const KVN_nodeDefinition* definition = network.DefinitionOf(handle);
    const int count = definition == nullptr ? 0 : definition->GetNumberOfOutcomes();
    return count > 0 ? static_cast<double>(count) : 1.0;
  };
  double size = outcomes(child) * outcomes(parent);
  for (int other : network.GetParents(child)) size *= outcomes(other);
  return size;
}

/// The engine tells that an arc was refused, and not that the table would have become too large.
void ExplainRefusedArcs(NetworkFile& file) {
  constexpr double kLarge = 1e8;  // numbers; no other refusal is likely with such a table
  for (Diagnostic& diagnostic : file.diagnostics) {
    std::string parent;
    std::string child;
    if (!ReadBracket(diagnostic.text, "arc from node [", parent)) continue;
    if (!ReadBracket(diagnostic.text, "to node [", child)) continue;
    const int from = file.network->FindNode(parent.c_str());
    const int to = file.network->FindNode(child.c_str());
    const double size = from < 0 || to < 0 ? 0.0 : SizeWithParent(*file.network, from, to);
    if (size < kLarge) continue;
    char reason[64];
    std::snprintf(reason, sizeof reason, ": the table would have %.3g numbers", size);
    diagnostic.text += reason;
    diagnostic.code = KVN_NO_MEMORY;
  }
}

/// Two formats let a node be called by any text; the reader keeps it as the node's name.
void NoteMendedIdentifiers(NetworkFile& file) {
  if (file.format != KVN_FORMAT_XMLBIF && file.format != KVN_FORMAT_ERGO) return;
  int count = 0;
  KVN_network& network = *file.network;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    const KVN_header& header = network.GetNode(handle)->Info().Header();
    const char* const name = header.GetName();
    if (name != nullptr && *name != '\0' &&
        std::strcmp(name, IdOf(*network.GetNode(handle))) != 0) {
      count++;
    }
  }
  if (count == 0) return;
  file.diagnostics.push_back(ToolMessage(
      Severity::kNote, std::to_string(count) + (count == 1 ? " node has" : " nodes have") +
                           " another identifier than in the file, where it is none or is taken; " +
                           "the name keeps it"));
}

/// A file of another kind loads as an empty network without a word of the engine.
void NoteForeignFile(NetworkFile& file) {
  const std::vector<std::string> wanted = FirstWordsOf(file.format);
  if (file.network->GetNumberOfNodes() > 0 || !file.diagnostics.empty() || wanted.empty()) return;
  const LogCapture silence;
  std::string word;
  const bool isEmpty = !ReadFirstWord(file.name, file.format, word);
  if (!isEmpty && std::find(wanted.begin(), wanted.end(), word) != wanted.end()) return;
  const std::string found =
      isEmpty ? "it holds no word" : "its first word is '" + ToPrintable(word.c_str()) + "'";
  file.isForeign = true;
  file.diagnostics.push_back(ToolMessage(
      Severity::kNote, "loads as an empty network: " + found + ", and a " +
                           NameOfFormat(file.format) + " file begins with '" + wanted[0] + "'"));
}

}  // namespace

class LogCapture::Target : public KVN_errorTarget {
 public:
  void Log(int code, const char* text) override { messages.push_back(ParseMessage(code, text)); }

  std::vector<Diagnostic> messages;
};

LogCapture::LogCapture() : target(new Target) {
  KVN_errorLog().SetRedirect(target.get(), /*own=*/false);
}

LogCapture::~LogCapture() { KVN_errorLog().SetRedirect(nullptr, /*own=*/false); }

const std::vector<Diagnostic>& LogCapture::Messages() const { return target->messages; }

bool Diagnostic::IsLostContent() const {
  return severity == Severity::kError && code != KVN_NOT_CONSISTENT;
}

NetworkFile::NetworkFile() : network(new KVN_network) {}
NetworkFile::~NetworkFile() = default;

bool NetworkFile::HasErrors() const {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [](const Diagnostic& d) { return d.severity == Severity::kError; });
}

bool NetworkFile::HasLostContent() const {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [](const Diagnostic& d) { return d.IsLostContent(); });
}

bool NetworkFile::HasSkippedContent() const {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [](const Diagnostic& d) { return d.severity == Severity::kWarning; });
}

void ReadNetworkFile(const std::string& name, int format, Depth depth, NetworkFile& file) {
  file.name = name;
  file.format = format == KVN_FORMAT_AUTO ? DetectFileFormat(name.c_str()) : format;
  {
    const LogCapture log;
    file.result = file.network->ReadFile(name.c_str(), format);
    file.diagnostics = log.Messages();
  }
  if (file.result < 0 && file.diagnostics.empty()) {
    file.diagnostics.push_back(
        ToolMessage(Severity::kError, GetErrorString(file.result), file.result));
  }
  if (file.result < 0) return;
  if (depth == Depth::kCheck) {
    FindDroppedNodes(file);
    FindInconsistentNodes(file);
    NoteMendedIdentifiers(file);
    if (file.hasExtensions) {
      file.diagnostics.push_back(
          ToolMessage(Severity::kNote,
                      "the content of its 'extensions' (layout, names, submodels) "
                      "is not kept"));
    }
  }
  ExplainRefusedArcs(file);
  NoteForeignFile(file);
}

std::string WhyUnreadable(const std::string& name) {
  const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::strerror(errno);
  struct stat info;
  const bool isFolder = fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode);
  close(descriptor);
  return isFolder ? std::strerror(EISDIR) : "";
}

std::string WhyUnwritable(const std::string& name) {
  struct stat info;
  if (stat(name.c_str(), &info) == 0) {
    if (S_ISDIR(info.st_mode)) return std::strerror(EISDIR);
    if (access(name.c_str(), W_OK) != 0) return std::strerror(errno);
    return S_ISREG(info.st_mode) ? "" : "the device takes no more data";
  }
  if (errno != ENOENT) return std::strerror(errno);
  const std::size_t slash = name.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1);
  return access(folder.c_str(), W_OK | X_OK) != 0 ? std::strerror(errno) : "";
}

std::string DescribeResult(int result) {
  // Several codes share a text that would say the opposite of what is meant here.
  const std::string text = GetErrorString(result);
  return std::to_string(result) + (text == "NO ERROR" ? "" : " (" + text + ")");
}
