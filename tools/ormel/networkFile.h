#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ormel/output.h"

class KVN_network;

/// One message about a file.
struct Diagnostic {
  Severity severity = Severity::kError;
  int line = 0;  // 0 when the message belongs to no line
  int code = 0;  // of the engine; 0 for a message of the tool
  std::string text;

  /// The file holds something that the network lacks. A table that doesn't sum to 1 is an error
  /// too, but it has been read.
  bool IsLostContent() const;
};

/// Takes the place of the engine's log while it lives, so that the messages of one operation are
/// known from those of others. One at a time.
class LogCapture {
 public:
  LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture();

  const std::vector<Diagnostic>& Messages() const;

 private:
  class Target;
  std::unique_ptr<Target> target;
};

/// A network with what reading it brought up.
struct NetworkFile {
  NetworkFile();
  ~NetworkFile();

  std::string name;
  int format = 0;  // told by the extension, if it was 0
  int result = 0;  // the engine's
  std::unique_ptr<KVN_network> network;
  std::vector<Diagnostic> diagnostics;  // in the order of the file as far as there are lines

  bool HasErrors() const;
  bool HasLostContent() const;
  /// Elements or attributes that nobody knows were passed over.
  bool HasSkippedContent() const;

  /// It loaded as an empty network because it is no file of the format.
  bool isForeign = false;
  /// A native XML file has content in `extensions`, which no network keeps.
  bool hasExtensions = false;
};

/// How closely a file is looked at.
enum class Depth {
  kRead,   // the messages of the engine
  kCheck,  // and what the engine leaves out in silence, for which the file is read once more
};

/// Reads a file. Format 0 lets the extension decide.
void ReadNetworkFile(const std::string& name, int format, Depth depth, NetworkFile& file);

/// Why a file can't be read, or written to, in the words of the system; empty when the system sees
/// no reason.
std::string WhyUnreadable(const std::string& name);
std::string WhyUnwritable(const std::string& name);

/// "CODE TEXT" of a result of the engine.
std::string DescribeResult(int result);
