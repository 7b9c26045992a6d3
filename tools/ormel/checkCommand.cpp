#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <ostream>

#include "network/network.h"
#include "ormel/command.h"
#include "ormel/commandTools.h"
#include "ormel/exitCodes.h"
#include "ormel/formatNames.h"
#include "ormel/lossReport.h"
#include "ormel/output.h"
#include "ormel/text.h"

namespace {

using Json = nlohmann::ordered_json;

std::string Counted(std::size_t count, const char* one, const char* many) {
  const std::string noun = count == 1 ? one : many;
  return (count == 0 ? "no" : std::to_string(count)) + " " + noun;
}

class CheckCommand : public Command {
 public:
  const char* Name() const override { return "check"; }
  const char* Purpose() const override { return "Tell every error of a network file"; }
  const char* Examples() const override {
    return "  ormel check network.kvn\n"
           "  ormel check --output json network.kvn\n"
           "  ormel check --to kvn network.kvn    also tells what a conversion would lose";
  }

  void Declare(CLI::App& app) override { app.add_option("FILE", file, "Network file")->required(); }

  int Run(const CommonOptions& options, Output& output) override {
    int format = 0;
    int target = 0;
    int code = ChooseFormat(file, options.from, "--from", format, output);
    if (code == kExitDone && !options.to.empty()) {
      code = ChooseFormat(file, options.to, "--to", target, output);
    }
    if (code != kExitDone) return code;
    NetworkFile read;
    code = OpenNetwork(file, format, Depth::kCheck, read, output);
    if (code != kExitDone) return code;
    const std::vector<Loss> losses =
        target == 0 ? std::vector<Loss>() : ListLossesOfFile(read, target);
    if (options.IsJson()) {
      output.Data() << AsJson(read, target, losses).dump(2) << '\n';
    } else {
      PrintTable(read, target, losses, output);
    }
    return ExitCodeOfFile(read);
  }

 private:
  void PrintTable(const NetworkFile& read, int target, const std::vector<Loss>& losses,
                  Output& output) const {
    std::ostream& data = output.Data();
    std::size_t errors = 0;
    for (const Diagnostic& diagnostic : read.diagnostics) {
      if (diagnostic.severity == Severity::kError) errors++;
      data << DescribeDiagnostic(file, diagnostic, output.colourData) << '\n';
    }
    const std::string name = ToPrintable(file.c_str());
    for (const std::string& line : DescribeLosses(losses)) {
      data << name << ": " << Output::Word(Severity::kLoss, output.colourData) << ": " << line
           << '\n';
    }
    data << name << ": " << Counted(errors, "error", "errors") << ", "
         << Counted(static_cast<std::size_t>(read.network->GetNumberOfNodes()), "node", "nodes");
    if (target != 0) {
      data << ", " << Counted(losses.size(), "loss", "losses") << " in " << NameOfFormat(target);
    }
    data << '\n';
  }

  Json AsJson(const NetworkFile& read, int target, const std::vector<Loss>& losses) const {
    Json diagnostics = Json::array();
    for (const Diagnostic& diagnostic : read.diagnostics) {
      diagnostics.push_back({
          {"severity", WordOf(diagnostic.severity)},
          {"line", diagnostic.line > 0 ? Json(diagnostic.line) : Json()},
          {"code", diagnostic.code},
          {"text", ToUtf8(diagnostic.text.c_str())},
      });
    }
    Json report = {{"file", ToUtf8(file.c_str())},
                   {"format", NameOfFormat(read.format)},
                   {"nodes", read.network->GetNumberOfNodes()},
                   {"diagnostics", diagnostics}};
    if (target != 0) report["losses"] = LossesAsJson(losses);
    return report;
  }

  std::string file;
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand() { return std::make_unique<CheckCommand>(); }
