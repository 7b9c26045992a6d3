#include "ormel/lossReport.h"

#include <nlohmann/json.hpp>

#include "ormel/text.h"

std::string DescribeLoss(const Loss& loss) {
  const std::string place = loss.node.empty() ? "network"
                                              : (loss.ofSubmodel ? "submodel " : "node ") +
                                                    ToPrintable(loss.node.c_str());
  return place + ": " + loss.what + ": " + ToPrintable(loss.why.c_str());
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
