#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string_view>

#include "network/network.h"
#include "ormel/command.h"
#include "ormel/commandTools.h"
#include "ormel/exitCodes.h"
#include "ormel/formatNames.h"
#include "ormel/output.h"
#include "ormel/summary.h"
#include "ormel/text.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kIndent = "  ";  // of the pairs of an object

/// "largestTable" becomes "largest table".
std::string LabelOf(const std::string& key) {
  std::string label;
  for (char c : key) {
    if (c >= 'A' && c <= 'Z') label += ' ';
    label += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return label;
}

std::string TextOf(const Json& value) {
  if (value.is_null()) return "-";
  return value.is_string() ? ToPrintable(value.get_ref<const std::string&>().c_str())
                           : value.dump();
}

std::string Joined(const Json& list, const char* separator) {
  std::string text;
  for (const Json& item : list) text += (text.empty() ? "" : separator) + TextOf(item);
  return text.empty() ? "-" : text;
}

/// One line per field; the pairs of an object stand below it, indented.
void PrintTable(const Json& summary, std::ostream& stream) {
  std::size_t width = 0;
  for (const auto& [key, value] : summary.items()) {
    width = std::max(width, LabelOf(key).size());
    if (!value.is_object() || key == "largestTable") continue;
    for (const auto& [name, item] : value.items()) {
      width = std::max(width, kIndent.size() + ToPrintable(name.c_str()).size());
    }
  }
  const auto print = [&](const std::string& label, const std::string& text) {
    const int column = text.empty() ? 0 : static_cast<int>(width) + 2;
    stream << std::left << std::setw(column) << label << text << '\n';
  };
  for (const auto& [key, value] : summary.items()) {
    if (key == "largestTable" && value.is_object()) {
      print(LabelOf(key), TextOf(value["node"]) + ", " + TextOf(value["numbers"]) + " numbers (" +
                              Joined(value["shape"], " x ") + ")");
    } else if (value.is_object()) {
      print(LabelOf(key), value.empty() ? "-" : "");
      for (const auto& [name, item] : value.items()) {
        print(std::string(kIndent) + ToPrintable(name.c_str()), TextOf(item));
      }
    } else {
      print(LabelOf(key), value.is_array() ? Joined(value, ", ") : TextOf(value));
    }
  }
}

class InfoCommand : public Command {
 public:
  const char* Name() const override { return "info"; }
  const char* Purpose() const override { return "Tell what is in a network file"; }
  const char* Examples() const override {
    return "  ormel info examples/chest-clinic.kvn\n"
           "  ormel info --output json network.kvn | jq .nodesByKind\n"
           "  ormel info --from kvn network.txt";
  }

  void Declare(CLI::App& app) override { app.add_option("FILE", file, "Network file")->required(); }

  int Run(const CommonOptions& options, Output& output) override {
    if (!options.to.empty()) {
      output.Say(Severity::kError, "info writes no network: --to has no meaning here");
      return kExitBadUsage;
    }
    NetworkFile read;
    if (int code = OpenToRead(file, options, read, output); code != kExitDone) return code;
    Json summary = {{"file", ToUtf8(file.c_str())}, {"format", NameOfFormat(read.format)}};
    summary.update(Summarize(*read.network));
    if (options.IsJson()) {
      output.Data() << summary.dump(2) << '\n';
    } else {
      PrintTable(summary, output.Data());
    }
    return ExitCodeOfFile(read);
  }

 private:
  std::string file;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }
