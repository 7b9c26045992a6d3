#include "ormel/evidenceInput.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <numeric>
#include <sstream>

#include "definitions/nodeDefinition.h"
#include "foundation/idArray.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "ormel/exitCodes.h"
#include "ormel/networkFile.h"
#include "ormel/output.h"
#include "ormel/text.h"
#include "values/nodeValue.h"

namespace {

constexpr std::size_t kMostNamesListed = 20;

std::string Trimmed(const std::string& text) {
  const char* const blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool SplitAtEquals(const std::string& text, std::string& node, std::string& value) {
  const std::size_t place = text.find('=');
  if (place == std::string::npos) return false;
  node = Trimmed(text.substr(0, place));
  value = Trimmed(text.substr(place + 1));
  return !node.empty() && !value.empty();
}

bool ParseNumber(const std::string& text, double& value) {
  const std::string trimmed = Trimmed(text);
  const char* const end = trimmed.data() + trimmed.size();
  const auto [rest, error] = std::from_chars(trimmed.data(), end, value);
  return error == std::errc() && rest == end && !trimmed.empty();
}

/// Number of single-letter edits between two words (Levenshtein 1966), letters without case.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); i++) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); j++) {
      const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

/// "a, b, c" of at most kMostNamesListed names, and how many more there are.
std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kMostNamesListed; i++) {
    text += (i == 0 ? "" : ", ") + ToPrintable(names[i].c_str());
  }
  if (names.size() > kMostNamesListed) {
    text += " and " + std::to_string(names.size() - kMostNamesListed) + " more";
  }
  return text.empty() ? "none" : text;
}

void TellUnknown(const std::string& what, const std::string& word,
                 const std::vector<std::string>& names, Output& output) {
  std::string text =
      "unknown " + what + " '" + ToPrintable(word.c_str()) + "'. There are: " + Listed(names) + ".";
  const std::string nearest = NearestOf(word, names);
  if (!nearest.empty()) text += " Did you mean '" + ToPrintable(nearest.c_str()) + "'?";
  output.Say(Severity::kError, text);
}

std::vector<std::string> StatesOf(const KVN_nodeDefinition& definition) {
  std::vector<std::string> names;
  const KVN_idArray* const outcomes = definition.GetOutcomesNames();
  for (int i = 0; outcomes != nullptr && i < outcomes->GetNumItems(); i++) {
    names.emplace_back((*outcomes)[i] == nullptr ? "" : (*outcomes)[i]);
  }
  return names;
}

/// Index of a state by identifier or "#index"; below 0 after telling.
int FindStateOrTell(const KVN_node& node, const std::string& state, Output& output) {
  const std::vector<std::string> names = StatesOf(*node.Definition());
  const auto found = std::find(names.begin(), names.end(), state);
  if (found != names.end()) return static_cast<int>(found - names.begin());
  if (state[0] == '#') {
    int index = -1;
    const char* const end = state.data() + state.size();
    const auto [rest, error] = std::from_chars(state.data() + 1, end, index);
    const int count = node.Definition()->GetNumberOfOutcomes();
    if (error == std::errc() && rest == end && index >= 0 && index < count) return index;
  }
  TellUnknown(std::string("state of node [") + ToPrintable(node.GetId()) + "]", state, names,
              output);
  return KVN_REFUSED;
}

/// The engine's words for evidence that it refused; its own sentence where it says nothing.
int TellRefusedEvidence(const KVN_node& node, int result, const LogCapture& log, Output& output) {
  std::string text;
  for (const Diagnostic& message : log.Messages())
    text += (text.empty() ? "" : "; ") + message.text;
  // A contradiction with what other evidence implies is refused by the value itself, in silence.
  const bool isContradiction = node.Value()->IsPropagatedEvidence() || !log.Messages().empty();
  if (text.empty()) {
    text = isContradiction ? "it contradicts what other evidence implies" : DescribeResult(result);
  }
  output.Say(Severity::kError, std::string("evidence on node [") + ToPrintable(node.GetId()) +
                                   "] is refused: " + ToPrintable(text.c_str()) + " (code " +
                                   std::to_string(result) + ")");
  return isContradiction ? kExitImpossible : ExitCodeOfResult(result);
}

/// An index of a JSON file comes as "#3": for a number it is one like any other.
int SetNumber(const KVN_node& node, const std::string& text, Output& output) {
  double number = 0.0;
  if (!ParseNumber(text[0] == '#' ? text.substr(1) : text, number) || !std::isfinite(number)) {
    output.Say(Severity::kError, std::string("node [") + ToPrintable(node.GetId()) +
                                     "] takes a number, not '" + ToPrintable(text.c_str()) + "'");
    return kExitBadUsage;
  }
  const LogCapture log;
  const int result = node.Value()->SetEvidence(number);
  return result == 0 ? kExitDone : TellRefusedEvidence(node, result, log, output);
}

int SetFinding(KVN_network& network, const std::string& id, const std::string& state,
               Output& output) {
  const int handle = FindNodeOrTell(network, id, output);
  if (handle < 0) return kExitBadUsage;
  const KVN_node& node = *network.GetNode(handle);
  if (node.Value() != nullptr && node.Value()->GetType() == KVN_VALUE_EQUATION) {
    return SetNumber(node, state, output);
  }
  if (node.Definition()->GetNumberOfOutcomes() < 1) {
    output.Say(Severity::kError, "node [" + id + "] has no states to observe");
    return kExitBadUsage;
  }
  const int outcome = FindStateOrTell(node, state, output);
  if (outcome < 0) return kExitBadUsage;
  const LogCapture log;
  const int result = node.Value()->SetEvidence(outcome);
  return result == 0 ? kExitDone : TellRefusedEvidence(node, result, log, output);
}

int SetLikelihood(KVN_network& network, const std::string& id, const std::vector<double>& values,
                  Output& output) {
  const int handle = FindNodeOrTell(network, id, output);
  if (handle < 0) return kExitBadUsage;
  const KVN_node& node = *network.GetNode(handle);
  const int count = node.Definition()->GetNumberOfOutcomes();
  if (static_cast<int>(values.size()) != count) {
    output.Say(Severity::kError, "node [" + id + "] has " + std::to_string(std::max(count, 0)) +
                                     " states, --soft gives " + std::to_string(values.size()) +
                                     " numbers");
    return kExitBadUsage;
  }
  const double sum = std::accumulate(values.begin(), values.end(), 0.0);
  const bool anyBad =
      std::any_of(values.begin(), values.end(), [](double v) { return !(v >= 0.0); });
  if (anyBad || !(sum > 0.0) || sum > 1e300) {
    output.Say(Severity::kError,
               "soft evidence on node [" + id + "] must be numbers of 0 or more, not all 0");
    return kExitBadUsage;
  }
  const LogCapture log;
  const int result = node.Value()->SetVirtualEvidence(values);
  return result == 0 ? kExitDone : TellRefusedEvidence(node, result, log, output);
}

int TellBadLine(const std::string& fileName, int line, const std::string& what, Output& output) {
  output.SayLine(Severity::kError, ToPrintable(fileName.c_str()) + ":" + std::to_string(line) +
                                       ": " + Output::Word(Severity::kError, false) + ": " + what);
  return kExitBadFile;
}

int ReadEvidenceLines(const std::string& fileName, const std::string& text, EvidenceInput& input,
                      Output& output) {
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); number++) {
    const std::string content = Trimmed(line);
    if (content.empty() || content[0] == '#') continue;
    std::string node;
    std::string state;
    if (!SplitAtEquals(content, node, state)) {
      return TellBadLine(fileName, number, "NODE=STATE expected", output);
    }
    input.findings.emplace_back(node, state);
  }
  return kExitDone;
}

/// Line of a place in the text, from 1.
int LineAt(const std::string& text, std::size_t place) {
  const auto end = text.begin() + static_cast<long>(std::min(place, text.size()));
  return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
}

int ReadEvidenceJson(const std::string& fileName, const std::string& text, EvidenceInput& input,
                     Output& output) {
  nlohmann::ordered_json object;
  try {
    object = nlohmann::ordered_json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    return TellBadLine(fileName, LineAt(text, error.byte), error.what(), output);
  } catch (const nlohmann::json::exception& error) {
    // A number too large for a double: the message holds the number, and not where it stands.
    const std::string message = error.what();
    const std::size_t start = message.find('\'');
    const std::size_t end = message.rfind('\'');
    const std::size_t place =
        start < end ? text.find(message.substr(start + 1, end - start - 1)) : std::string::npos;
    return TellBadLine(fileName, place == std::string::npos ? 1 : LineAt(text, place), message,
                       output);
  }
  for (const auto& [node, state] : object.items()) {
    if (state.is_string()) {
      input.findings.emplace_back(node, state.get<std::string>());
    } else if (state.is_number_integer()) {
      input.findings.emplace_back(node, "#" + state.dump());
    } else if (state.is_number()) {
      input.findings.emplace_back(node, state.dump());
    } else {
      return TellBadLine(fileName, 1, "the state of '" + node + "' must be a text or a number",
                         output);
    }
  }
  return kExitDone;
}

}  // namespace

std::string NearestOf(const std::string& word, const std::vector<std::string>& names) {
  const std::size_t bound = std::max<std::size_t>(1, word.size() / 2);
  std::string nearest;
  std::size_t best = bound + 1;
  for (const std::string& name : names) {
    const std::size_t distance = EditDistance(word, name);
    if (distance >= best) continue;
    best = distance;
    nearest = name;
  }
  return nearest;
}

int ParseFinding(const std::string& text, EvidenceInput& input, Output& output) {
  std::string node;
  std::string state;
  if (!SplitAtEquals(text, node, state)) {
    output.Say(Severity::kError, "--evidence wants NODE=STATE, not '" + text + "'");
    return kExitBadUsage;
  }
  input.findings.emplace_back(node, state);
  return kExitDone;
}

int ParseLikelihood(const std::string& text, EvidenceInput& input, Output& output) {
  std::string node;
  std::string list;
  std::vector<double> values;
  bool good = SplitAtEquals(text, node, list);
  std::istringstream items(list);
  for (std::string item; good && std::getline(items, item, ',');) {
    good = ParseNumber(item, values.emplace_back());
  }
  if (!good || values.empty()) {
    output.Say(Severity::kError, "--soft wants NODE=p1,p2,..., not '" + text + "'");
    return kExitBadUsage;
  }
  input.likelihoods.emplace_back(node, values);
  return kExitDone;
}

int ReadEvidenceFile(const std::string& fileName, EvidenceInput& input, Output& output) {
  std::ifstream file(fileName, std::ios::binary);
  std::ostringstream content;
  if (file) content << file.rdbuf();
  if (!file || !WhyUnreadable(fileName).empty()) {
    output.Say(Severity::kError,
               ToPrintable(fileName.c_str()) + ": cannot be read: " + WhyUnreadable(fileName));
    return kExitBadFile;
  }
  const std::string text = content.str();
  const std::string start = Trimmed(text);
  if (!start.empty() && start[0] == '{') return ReadEvidenceJson(fileName, text, input, output);
  return ReadEvidenceLines(fileName, text, input, output);
}

int FindNodeOrTell(KVN_network& network, const std::string& id, Output& output) {
  const int handle = network.FindNode(id.c_str());
  if (handle >= 0) return handle;
  std::vector<std::string> names;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    names.emplace_back(network.GetNode(h)->GetId());
  }
  TellUnknown("node", id, names, output);
  return KVN_REFUSED;
}

int SetEvidence(KVN_network& network, const EvidenceInput& input, Output& output) {
  for (const auto& [node, state] : input.findings) {
    if (int code = SetFinding(network, node, state, output); code != kExitDone) return code;
  }
  for (const auto& [node, values] : input.likelihoods) {
    if (int code = SetLikelihood(network, node, values, output); code != kExitDone) return code;
  }
  return kExitDone;
}
