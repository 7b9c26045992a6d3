// The command-line tool. Everything is in RunCommandLine; here are the process's streams and the
// last net for what is thrown.

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "ormel/commandLine.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"

namespace {

/// Colours are for people: never in a pipe or a file, and not where the user has asked for none.
bool WantsColour(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  const char* const refused = std::getenv("NO_COLOR");
  const bool isDumb = terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
  return isatty(descriptor) != 0 && !isDumb && (refused == nullptr || *refused == '\0');
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Output output(std::cout, std::cerr);
    output.colourData = WantsColour(STDOUT_FILENO);
    output.colourMessages = WantsColour(STDERR_FILENO);
    // A reader that closes the pipe early must not end the process before it has cleaned up.
    (void)std::signal(SIGPIPE, SIG_IGN);
    const auto work = [&] {
      return RunCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc),
                            output);
    };
    return RunGuarded(work, output);
  } catch (...) {
    return kExitInternal;  // not even a message could be written
  }
}
