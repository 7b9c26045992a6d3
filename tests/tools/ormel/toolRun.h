#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "ormel/commandLine.h"
#include "ormel/output.h"

/// A run of the tool within the test.
struct ToolRun {
  int code = -1;
  std::string data;
  std::string messages;
};

inline ToolRun RunTool(std::vector<std::string> words, const std::vector<std::string>& more = {}) {
  words.insert(words.end(), more.begin(), more.end());
  std::ostringstream data, messages;
  Output output(data, messages);
  const int code = RunGuarded([&] { return RunCommandLine(words, output); }, output);
  return {code, data.str(), messages.str()};
}
