#include "ormel/lossReport.h"

#include <map>
#include <nlohmann/json.hpp>

#include "ormel/text.h"

namespace {

constexpr std::size_t kMostAlike = 10;  // losses of one kind that have lines of their own

std::string PlaceOf(const Loss& loss) {
  if (loss.node.empty()) return "network";
  return (loss.ofSubmodel ? "submodel " : "node ") + ToPrintable(loss.node.c_str());
}

}  // namespace

std::vector<std::string> DescribeLosses(const std::vector<Loss>& losses) {
  std::map<std::string, std::vector<std::string>> nodesOf;  // by kind and reason
  for (const Loss& loss : losses) {
    if (!loss.ofSubmodel) nodesOf[loss.what + ": " + loss.why].push_back(loss.node);
  }
  std::vector<std::string> lines;
  for (const Loss& loss : losses) {
    std::string place = PlaceOf(loss);
    const auto found = nodesOf.find(loss.what + ": " + loss.why);
    if (!loss.ofSubmodel && found->second.size() > kMostAlike) {
      if (loss.node != found->second.front()) continue;
      place += " and " + std::to_string(found->second.size() - 1) + " more";
    }
    lines.push_back(place + ": " + loss.what + ": " + ToPrintable(loss.why.c_str()));
  }
  return lines;
}

nlohmann::ordered_json LossesAsJson(const std::vector<Loss>& losses) {
  using Json = nlohmann::ordered_json;
  Json list = Json::array();
  for (const Loss& loss : losses) {
    list.push_back({
        {"node", loss.node.empty() ? Json() : Json(ToUtf8(loss.node.c_str()))},
        {"what", loss.what},
        {"why", ToUtf8(loss.why.c_str())},
    });
  }
  return list;
}
