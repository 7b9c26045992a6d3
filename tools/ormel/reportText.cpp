#include "ormel/reportText.h"

#include <cstdlib>
#include <iomanip>
#include <sstream>

std::string Fixed(double value, int digits) {
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
