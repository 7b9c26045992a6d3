#include "ormel/commandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <new>
#include <ostream>

#include "ormel/command.h"
#include "ormel/exitCodes.h"
#include "ormel/formatNames.h"
#include "ormel/output.h"

namespace {

constexpr const char* kExitCodeHelp =
    "Exit codes:\n"
    "  0   done\n"
    "  1   the engine or the system refused; the message has the engine's code\n"
    "  2   bad command line\n"
    "  3   a file with errors, or a loss under --strict\n"
    "  4   impossible or conflicting evidence\n"
    "  5   over a limit of memory or size\n"
    "  70  internal error";

/// For each command the same options, so that they may stand before or after it.
void DeclareCommonOptions(CLI::App& app, CommonOptions& options, bool& quiet) {
  const CLI::IsMember formats(AllFormatNames());
  app.add_option("--from", options.from, "Format of the input (default: by extension)")
      ->check(formats)
      ->type_name("FORMAT");
  app.add_option("--to", options.to, "Format of the output (default: by extension)")
      ->check(formats)
      ->type_name("FORMAT");
  app.add_option("--output", options.output, "How data is shown: table, json or csv")
      ->check(CLI::IsMember(std::vector<std::string>{"table", "json", "csv"}))
      ->type_name("FORM");
  app.add_flag("--quiet,-q", quiet, "No messages but errors");
}

std::string FormatHelp() {
  std::string help = "Formats:";
  for (const std::string& name : AllFormatNames()) help += " " + name;
  return help + "\n" + AvailableFormats();
}

std::string Footer(const std::string& examples) {
  return "Examples:\n" + examples + "\n\n" + FormatHelp() + "\n\n" + kExitCodeHelp;
}

int RunCommand(Command& command, const CommonOptions& options, Output& output) {
  const std::vector<std::string> forms = command.Forms();
  if (std::find(forms.begin(), forms.end(), options.output) == forms.end()) {
    output.Say(Severity::kError,
               std::string(command.Name()) + " has no output form " + options.output);
    return kExitBadUsage;
  }
  return command.Run(options, output);
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments, Output& output) {
  CLI::App app("ormel: show, check and convert files of Bayesian networks", "ormel");
  CommonOptions options;
  DeclareCommonOptions(app, options, output.quiet);
  app.set_version_flag("--version", "ormel " ORMEL_VERSION);
  // At least one is asked for below: the parser would say so before it names an unknown word.
  app.require_subcommand(0, 1);
  app.fallthrough();

  const std::vector<std::unique_ptr<Command>> commands = MakeCommands();
  std::string examples;
  for (const std::unique_ptr<Command>& command : commands) {
    CLI::App* const word = app.add_subcommand(command->Name(), command->Purpose());
    word->footer(Footer(command->Examples()) + "\n\nCommon options: see ormel --help");
    command->Declare(*word);
    examples += (examples.empty() ? "" : "\n") + std::string(command->Examples());
  }
  app.footer(Footer(examples));

  try {
    // The parser takes its list from the end.
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    const bool isWanted = error.get_exit_code() == 0;  // --help or --version
    std::ostream& stream = isWanted ? output.Data() : output.Messages();
    (void)app.exit(error, stream, stream);
    return isWanted ? kExitDone : kExitBadUsage;
  }
  for (const std::unique_ptr<Command>& command : commands) {
    if (app.got_subcommand(command->Name())) return RunCommand(*command, options, output);
  }
  output.Messages() << "A command is required\nRun with --help for more information.\n";
  return kExitBadUsage;
}

int RunGuarded(const std::function<int()>& work, Output& output) {
  try {
    const int code = work();
    output.Data().flush();
    if (output.Data().good()) return code;
    output.Say(Severity::kError, "standard output takes no more data");
    return code == kExitDone ? kExitRefused : code;
  } catch (const std::bad_alloc&) {
    output.Say(Severity::kError, "out of memory");
    return kExitLimit;
  } catch (const std::exception& error) {
    output.Say(Severity::kError, std::string("internal error: ") + error.what());
  } catch (...) {
    output.Say(Severity::kError, "internal error");
  }
  return kExitInternal;
}
