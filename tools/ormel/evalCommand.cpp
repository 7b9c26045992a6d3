#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>

#include "expressions/expression.h"
#include "expressions/expressionParser.h"
#include "expressions/variableVisitor.h"
#include "foundation/random.h"
#include "ormel/command.h"
#include "ormel/evidenceInput.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"
#include "ormel/text.h"

namespace {

using Json = nlohmann::ordered_json;
using Tree = std::unique_ptr<KVN_expression>;

/// What the table and JSON show; what there is none of is null.
struct Evaluation {
  std::string expression;
  std::string simplified;
  std::vector<std::string> variables;
  std::map<std::string, double> values;  // of the variables that have one
  bool random = false;
  bool hasValue = false;
  double value = 0.0;
  double simplifiedValue = 0.0;  // not for random expressions: a draw says nothing
};

/// JSON has no infinities and no NaN: they go as texts.
Json NumberToJson(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number > 0.0 ? "inf" : "-inf";
  return number;
}

/// The fewest digits that give the same number again.
std::string NumberToText(double number) {
  if (!std::isfinite(number)) return NumberToJson(number).get<std::string>();
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string PrintedTree(const KVN_expression& tree) {
  std::string text;
  PrintSigned(tree, text);
  return text;
}

bool Same(double a, double b) {
  return a == b || std::fabs(a - b) <= 1e-9 * std::fabs(a) || (std::isnan(a) && std::isnan(b));
}

/// Number of characters that a text takes on a terminal, as far as UTF-8 tells.
std::size_t WidthOf(const std::string& utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

/// Three lines: the message, the text, and a mark below the last character that was read.
void SayParseError(const std::string& text, const std::string& message, int position,
                   Output& output) {
  const std::string read = text.substr(0, position > 0 ? position - 1 : 0);
  output.Say(Severity::kError,
             ToPrintable(message.c_str()) + " (position " + std::to_string(position) + ")");
  output.SayLine(Severity::kError, "  " + ToPrintable(text.c_str()));
  output.SayLine(Severity::kError, std::string(WidthOf(ToPrintable(read.c_str())) + 2, ' ') + "^");
}

class EvalCommand : public Command {
 public:
  const char* Name() const override { return "eval"; }
  const char* Purpose() const override { return "Parse, simplify and evaluate an expression"; }
  const char* Examples() const override {
    return "  ormel eval '(x+1)*2 > y ? Sqrt(y) : 0' x=3 y=7\n"
           "  ormel eval 'Normal(10,2)' --seed 5\n"
           "  ormel eval -- '-x^2' x=3";
  }

  void Declare(CLI::App& app) override {
    app.add_option("EXPRESSION", text, "What to evaluate; after -- if it starts with a minus")
        ->required();
    app.add_option("VALUES", assignments, "Values of its variables")->type_name("NAME=NUMBER");
    app.add_option("--seed", seed, "Seed for the samples of distributions (default: 0)")
        ->type_name("N");
  }

  int Run(const CommonOptions& options, Output& output) override {
    if (!options.from.empty() || !options.to.empty()) {
      output.Say(Severity::kError, "eval reads no network: --from and --to have no meaning here");
      return kExitBadUsage;
    }
    std::string message;
    int position = 0;
    const Tree tree(ParseExpression(text.c_str(), &position, &message));
    if (tree == nullptr) {
      if (options.IsJson()) PrintErrorJson(message, position, output.Data());
      SayParseError(text, message, position, output);
      return kExitBadUsage;
    }
    Evaluation evaluation;
    GetVariables(*tree, evaluation.variables);
    if (int code = CollectValues(evaluation, output); code != kExitDone) return code;
    if (int code = Evaluate(*tree, evaluation, output); code != kExitDone) return code;
    if (options.IsJson()) {
      PrintJson(evaluation, output.Data());
    } else {
      PrintTable(evaluation, output.Data());
    }
    TellDifference(evaluation, output);
    return kExitDone;
  }

 private:
  int CollectValues(Evaluation& evaluation, Output& output) const {
    const std::vector<std::string>& names = evaluation.variables;
    for (const std::string& assignment : assignments) {
      const std::size_t place = assignment.find('=');
      const std::string name = assignment.substr(0, place);
      double value = 0.0;
      const char* const end = assignment.data() + assignment.size();
      const char* const start = place == std::string::npos ? end : assignment.data() + place + 1;
      const auto [rest, error] = std::from_chars(start, end, value);
      if (start == end || error != std::errc() || rest != end) {
        output.Say(Severity::kError,
                   "NAME=NUMBER expected, not '" + ToPrintable(assignment.c_str()) + "'");
        return kExitBadUsage;
      }
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        const std::string near = NearestOf(name, names);
        output.Say(Severity::kError, "the expression has no variable '" +
                                         ToPrintable(name.c_str()) + "'" +
                                         (near.empty() ? "" : "; did you mean '" + near + "'?"));
        return kExitBadUsage;
      }
      evaluation.values[name] = value;
    }
    return kExitDone;
  }

  int Evaluate(KVN_expression& tree, Evaluation& evaluation, Output& output) const {
    evaluation.expression = PrintedTree(tree);
    evaluation.random = !tree.IsDeterministic();
    evaluation.hasValue = evaluation.values.size() == evaluation.variables.size();
    KVN_expression* simplified = tree.Clone();
    if (simplified == nullptr) {
      output.Say(Severity::kError, "out of memory");
      return kExitLimit;
    }
    {
      const KVN_valueBlindScope blind;  // the result is to hold for all values
      SimplifyFully(simplified);
    }
    const Tree owned(simplified);
    evaluation.simplified = PrintedTree(*simplified);
    for (const auto& [name, value] : evaluation.values) {
      AssignVariable(tree, name, value);
      AssignVariable(*simplified, name, value);
    }
    KVN_functionRandom().Seed(seed);
    if (evaluation.hasValue) evaluation.value = SignedValue(tree);
    if (ShowsSimplifiedValue(evaluation)) evaluation.simplifiedValue = SignedValue(*simplified);
    return kExitDone;
  }

  static bool ShowsSimplifiedValue(const Evaluation& evaluation) {
    return evaluation.hasValue && !evaluation.random;
  }

  void PrintErrorJson(const std::string& message, int position, std::ostream& stream) const {
    const Json error = {{"message", ToUtf8(message.c_str())}, {"position", position}};
    const Json answer = {{"expression", ToUtf8(text.c_str())}, {"error", error}};
    stream << answer.dump(2) << '\n';
  }

  static void PrintJson(const Evaluation& evaluation, std::ostream& stream) {
    Json answer;
    answer["expression"] = evaluation.expression;
    answer["simplified"] = evaluation.simplified;
    answer["random"] = evaluation.random;
    answer["variables"] = Json::object();
    for (const std::string& name : evaluation.variables) {
      const auto found = evaluation.values.find(name);
      answer["variables"][name] =
          found != evaluation.values.end() ? NumberToJson(found->second) : Json();
    }
    answer["value"] = evaluation.hasValue ? NumberToJson(evaluation.value) : Json();
    answer["simplifiedValue"] =
        ShowsSimplifiedValue(evaluation) ? NumberToJson(evaluation.simplifiedValue) : Json();
    stream << answer.dump(2) << '\n';
  }

  static void PrintTable(const Evaluation& evaluation, std::ostream& stream) {
    stream << "expression  " << evaluation.expression << '\n';
    stream << "simplified  " << evaluation.simplified << '\n';
    for (const std::string& name : evaluation.variables) {
      const auto found = evaluation.values.find(name);
      stream << "  " << name << " = "
             << (found != evaluation.values.end() ? NumberToText(found->second) : "-") << '\n';
    }
    stream << (evaluation.random ? "sample      " : "value       ")
           << (evaluation.hasValue ? NumberToText(evaluation.value) : "-") << '\n';
  }

  /// Some rules of simplification change a value; nobody should have to find that out alone.
  static void TellDifference(const Evaluation& evaluation, Output& output) {
    if (!ShowsSimplifiedValue(evaluation) || Same(evaluation.value, evaluation.simplifiedValue)) {
      return;
    }
    output.Say(Severity::kWarning, "the simplified expression has another value: " +
                                       NumberToText(evaluation.simplifiedValue));
  }

  std::string text;
  std::vector<std::string> assignments;
  unsigned seed = 0;
};

}  // namespace

std::unique_ptr<Command> MakeEvalCommand() { return std::make_unique<EvalCommand>(); }
