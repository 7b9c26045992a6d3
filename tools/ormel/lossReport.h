#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "ormel/losses.h"

/// Lines "NODE: WHAT: WHY" in the order of the list; the network itself is called "network". More
/// than ten nodes that lose the same for the same reason share the line of the first.
std::vector<std::string> DescribeLosses(const std::vector<Loss>& losses);
/// Array of {node, what, why}, one for each loss; the node is null for the network itself.
nlohmann::ordered_json LossesAsJson(const std::vector<Loss>& losses);
