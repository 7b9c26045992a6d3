#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/errorLog.h"

/// What the fuzz targets of the file formats share: a scratch file, and the log of the process,
/// whose messages are counted and dropped, since it would grow with every input.

/// Redirects the log while it lives.
class MessageSink : public KVN_errorTarget {
 public:
  MessageSink();
  ~MessageSink() override;
  void Log(int code, const char* text) override;

  bool hasMemoryRunOut = false;  // where it ends depends on what else was allocated
  std::string last;
};

/// Name of a file of this process, in memory where the system has that: the disk would set the
/// pace. `suffix` tells it from others.
std::string ScratchName(const char* suffix);
void SaveBytes(const std::string& name, const std::uint8_t* data, std::size_t size);
std::string LoadBytes(const std::string& name);

/// Ends the process with two texts that should have been the same, unless memory has run out.
void Complain(const MessageSink& log, const char* what, const std::string& first,
              const std::string& second);

/// Reads the file `name` and writes what it holds to the same file, whose text is the result. The
/// caller tells of a reading that fails, with `before`, which it read; the result is then empty.
std::string Rewritten(MessageSink& log, const std::string& name, int format,
                      const std::string& before);
