#include "ormel/reportText.h"

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "ormel/text.h"

namespace {

constexpr int kBarWidth = 40;
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

}  // namespace

std::string Fixed(double value, int digits) {
  if (std::isnan(value)) return "nan";  // without the sign that some operations leave
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

double Rounded(double value, int digits) {
  return digits < 0 ? value : std::strtod(Fixed(value, digits).c_str(), nullptr);
}

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string BarOf(double probability) {
  const bool isShown = probability > 0.0 && probability <= 1.0;
  const long filled = isShown ? std::lround(probability * kBarWidth) : 0;
  return std::string(static_cast<std::size_t>(filled), '#');
}

void PrintNodeName(const std::string& id, bool colour, std::ostream& stream) {
  stream << (colour ? kBold : "") << ToPrintable(id.c_str()) << (colour ? kPlain : "");
}
