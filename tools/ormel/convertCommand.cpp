#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "network/network.h"
#include "ormel/command.h"
#include "ormel/commandTools.h"
#include "ormel/exitCodes.h"
#include "ormel/lossReport.h"
#include "ormel/output.h"
#include "ormel/text.h"

namespace {

class ConvertCommand : public Command {
 public:
  const char* Name() const override { return "convert"; }
  const char* Purpose() const override {
    return "Write a network to another file, in the same or another format";
  }
  const char* Examples() const override {
    return "  ormel convert draft.kvn tidy.kvn\n"
           "  ormel convert --strict --to kvn network.kvn archive.txt\n"
           "  ormel convert --output json in.kvn out.kvn > losses.json";
  }

  void Declare(CLI::App& app) override {
    app.add_option("IN", in, "Network file to read")->required();
    app.add_option("OUT", out, "File to write; it is replaced only when all went well")->required();
    app.add_flag("--strict", strict, "Write nothing when anything would be lost");
    app.add_flag("--force", force,
                 "Write what could be read from a file with errors, and what nobody can read back");
  }

  int Run(const CommonOptions& options, Output& output) override {
    int from = 0;
    int to = 0;
    int code = ChooseFormat(in, options.from, "--from", from, output);
    if (code == kExitDone) code = ChooseFormat(out, options.to, "--to", to, output);
    if (code != kExitDone) return code;
    NetworkFile read;
    code = OpenNetwork(in, from, Depth::kCheck, read, output);
    if (code != kExitDone) return code;
    SayDiagnostics(read, output);
    const std::vector<Loss> losses = ListLossesOfFile(read, to);
    if (options.IsJson()) output.Data() << LossesAsJson(losses).dump(2) << '\n';
    for (const std::string& line : DescribeLosses(losses)) output.Say(Severity::kLoss, line);
    code = DecideToWrite(read, losses, output);
    return code == kExitDone ? Write(read, to, output) : code;
  }

 private:
  int DecideToWrite(const NetworkFile& read, const std::vector<Loss>& losses,
                    Output& output) const {
    const std::string untouched = "; " + ToPrintable(out.c_str()) + " is not written";
    if (read.HasLostContent() && (strict || !force)) {
      const char* const hint = strict ? "" : " (--force writes what could be read)";
      output.Say(Severity::kError, ToPrintable(in.c_str()) + " has errors" + untouched + hint);
      return kExitBadFile;
    }
    if (strict && (read.isForeign || read.HasSkippedContent())) {
      const char* const why =
          read.isForeign ? " is no file of its format" : " has content that nothing here keeps";
      output.Say(Severity::kError, ToPrintable(in.c_str()) + why + untouched);
      return kExitBadFile;
    }
    if (strict && !losses.empty()) {
      output.Say(Severity::kError, "the format cannot carry the network whole" + untouched);
      return kExitBadFile;
    }
    const bool isReadable = std::none_of(losses.begin(), losses.end(),
                                         [](const Loss& loss) { return loss.what == "file"; });
    if (!isReadable && !force) {
      output.Say(Severity::kError,
                 "nobody could read the file" + untouched + " (--force writes it)");
      return kExitBadFile;
    }
    return kExitDone;
  }

  int Write(NetworkFile& read, int to, Output& output) const {
    const LogCapture log;
    const int result = read.network->WriteFile(out.c_str(), to);
    if (result == 0) return kExitDone;
    std::string why = WhyUnwritable(out);
    for (const Diagnostic& message : log.Messages()) {
      if (why.empty()) why = message.text;
    }
    output.Say(Severity::kError, ToPrintable(out.c_str()) + ": cannot be written: " +
                                     (why.empty() ? "" : ToPrintable(why.c_str()) + ", ") +
                                     "code " + DescribeResult(result));
    return ExitCodeOfResult(result);
  }

  std::string in;
  std::string out;
  bool strict = false;
  bool force = false;
};

}  // namespace

std::unique_ptr<Command> MakeConvertCommand() { return std::make_unique<ConvertCommand>(); }
