#pragma once

#include <functional>
#include <string>
#include <vector>

class Output;

/// Parses a command line (without the program's name), does what it says, and returns the exit
/// code. Throws what the standard library throws.
int RunCommandLine(const std::vector<std::string>& arguments, Output& output);

/// Runs `work`, which returns an exit code, and lets nothing that it throws get out: memory that
/// runs out is kExitLimit, anything else a message and kExitInternal. Data that couldn't be written
/// is kExitRefused.
int RunGuarded(const std::function<int()>& work, Output& output);
