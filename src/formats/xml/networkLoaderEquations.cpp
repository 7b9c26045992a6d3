// Equation nodes: range and formula, intervals.

#include "expressions/equation.h"
#include "formats/xml/networkLoader.h"

namespace {

constexpr double kDefaultLower = -1.0;
constexpr double kDefaultUpper = 1.0;

}  // namespace

void XmlNetLoader::StartFormula() {
  double lower = kDefaultLower;
  double upper = kDefaultUpper;
  if (!GetAttribute("lower", lower, kDefaultLower) ||
      !GetAttribute("upper", upper, kDefaultUpper)) {
    return;
  }
  static_cast<KVN_equation*>(definition)->SetBounds(lower, upper);
}

void XmlNetLoader::EndFormula() { formula = GetText(); }

void XmlNetLoader::StartInterval() {
  KVN_discInterval interval;
  GetAttribute("id", interval.id);
  if (!GetAttribute("upper", interval.upper, 0.0)) return;
  intervals.push_back(interval);
}

void XmlNetLoader::FinishEquation() {
  auto& equation = *static_cast<KVN_equation*>(definition);
  std::string error;
  if (equation.SetEquation(formula, nullptr, &error) != 0) {
    AbortWith("SetEquation failed: '%s'", error.c_str());
    return;
  }
  if (intervals.empty()) return;
  if (equation.SetDiscIntervals(intervals) != 0) {
    AbortWith("SetDiscIntervals failed: '%s'", error.c_str());
  }
}
