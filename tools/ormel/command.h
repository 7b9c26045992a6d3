#pragma once

#include <memory>
#include <string>
#include <vector>

class Output;
struct NetworkFile;
namespace CLI {
class App;
}

/// The options that all commands share.
struct CommonOptions {
  std::string from;              // format of the input; empty: by extension
  std::string to;                // format of the output; likewise
  std::string output = "table";  // one of the command's Forms

  bool IsJson() const { return output == "json"; }
};

/// One word of the command line, such as `info`. A new command is a class in a file of its own and
/// a line in commandTable.cpp.
class Command {
 public:
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  virtual const char* Name() const = 0;
  /// One line for the list of commands.
  virtual const char* Purpose() const = 0;
  /// What `--help` shows below the options.
  virtual const char* Examples() const = 0;
  /// The forms of --output that the command has.
  virtual std::vector<std::string> Forms() const { return {"table", "json"}; }
  /// Adds arguments and options of its own; the values live in this object.
  virtual void Declare(CLI::App& app) = 0;
  /// Does the work; one of the exit codes.
  virtual int Run(const CommonOptions& options, Output& output) = 0;
};

std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeCheckCommand();
std::unique_ptr<Command> MakeConvertCommand();
std::unique_ptr<Command> MakeQueryCommand();
std::unique_ptr<Command> MakeEvalCommand();
std::unique_ptr<Command> MakeSolveCommand();

/// All commands, in the order of the help.
std::vector<std::unique_ptr<Command>> MakeCommands();
