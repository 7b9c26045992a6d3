// The statements of equation nodes in a Netica file.

#include <algorithm>
#include <string>
#include <vector>

#include "expressions/equation.h"
#include "formats/text/neticaExpressionParser.h"
#include "formats/text/neticaSpeaker.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

/// Null for a node of another kind.
KVN_equation* KVN_neticaSpeaker::EquationOf(int handle) const {
  const bool isEquation = network->TypeOf(handle) == KVN_TYPE_EQUATION;
  return isEquation ? static_cast<KVN_equation*>(network->DefinitionOf(handle)) : nullptr;
}

/// The names of the states become those of intervals: of those that `levels` gave, or of new ones
/// of one width.
int KVN_neticaSpeaker::NameIntervals(KVN_equation& equation, const KVN_stringArray& names) {
  const int count = names.GetNumItems();
  const double lower = equation.GetLowerBound();
  const double width = equation.GetUpperBound() - lower;
  std::vector<KVN_discInterval> intervals;
  if (inHand->hasLevels && !equation.GetDiscIntervals().empty()) {
    intervals = equation.GetDiscIntervals();
    if (static_cast<int>(intervals.size()) != count) return ReportIntervals(KVN_LENGTH_MISMATCH);
    for (int i = 0; i < count; ++i) intervals[i].id = names[i];
    return ReportIntervals(equation.SetDiscIntervals(intervals));
  }
  for (int i = 0; i < count; ++i) {
    intervals.push_back({names[i], lower + (i + 1) * width / count});
  }
  return ReportIntervals(equation.SetDiscIntervals(intervals));
}

int KVN_neticaSpeaker::ReportIntervals(int result) {
  if (result == 0) return 0;
  return ReportText(result, "ERROR: Node (\"%s\") : Invalid intervals", IdOf(inHand->handle));
}

/// The bounds of the intervals, one more than there are, which keep the names that they have. Two
/// numbers are the range of a node without intervals.
int KVN_neticaSpeaker::ReadLevels() {
  KVN_equation* const equation = EquationOf(inHand->handle);
  inHand->hasLevels = true;
  if (equation == nullptr) return SkipKnown();
  KVN_doubleArray levels;
  if (int result = ReadNumbers(levels); result < 0) return result;
  const int count = levels.GetNumItems() - 1;
  const std::vector<KVN_discInterval>& named = equation->GetDiscIntervals();
  if (!named.empty() && static_cast<int>(named.size()) != count) {
    return ReportIntervals(KVN_LENGTH_MISMATCH);
  }
  std::vector<KVN_discInterval> intervals;
  for (int i = 0; i < count; ++i) {
    const bool hasName = i < static_cast<int>(named.size());
    intervals.push_back({hasName ? named[i].id : "State" + std::to_string(i), levels[i + 1]});
  }
  const double lower = equation->GetLowerBound();
  const double upper = equation->GetUpperBound();
  const bool isRange = count == 1 && levels[0] < levels[1];
  if (count >= 1) equation->SetBounds(levels[0], levels[count]);
  if (isRange) return 0;
  const int result = count < 1 ? KVN_REFUSED : equation->SetDiscIntervals(intervals);
  if (result < 0) equation->SetBounds(lower, upper);
  return ReportIntervals(result);
}

int KVN_neticaSpeaker::ReadEquation() {
  if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result < 0) return result;
  if (isTokenCut) return KVN_REFUSED;  // which was told
  inHand->hasEquation = true;
  // An empty text stands below for one that is stored.
  if (*tokenText == '\0' && EquationOf(inHand->handle) != nullptr) {
    return ReportError(KVN_REFUSED, "Can't find the '=' sign in equation");
  }
  inHand->equation = tokenText;
  inHand->equationLine = Line();
  return 0;
}

void KVN_neticaSpeaker::StoreEquation(NodeInHand& hand) {
  KVN_equation* const equation = EquationOf(hand.handle);
  if (equation == nullptr || hand.equation.empty()) return;
  const AtLine line(*this, hand.equationLine);
  std::string error;
  const std::string text = TranslateNeticaEquation(hand.equation.c_str(), IdOf(hand.handle), error);
  // Validated first, since setting tells the log of a refusal by itself, without the line.
  if (text.empty() || !equation->ValidateEquation(text, nullptr, &error, nullptr)) {
    (void)ReportText(KVN_REFUSED, "%s", error.c_str());
  } else {
    (void)ReportError(std::min(equation->SetEquation(text), 0), nullptr);
  }
}
