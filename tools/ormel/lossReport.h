#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "ormel/losses.h"

/// One line "NODE: WHAT: WHY"; the network itself is called "network".
std::string DescribeLoss(const Loss& loss);
/// Array of {node, what, why}; the node is null for the network itself.
nlohmann::ordered_json LossesAsJson(const std::vector<Loss>& losses);
