#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "network/fileSpeaker.h"
#include "network/network.h"
#include "ormel/featureChecks.h"
#include "ormel/formatCapacity.h"
#include "ormel/losses.h"
#include "ormel/networkFile.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"
#include "tests/support/scratchFolder.h"

/// Holding the report of losses against what writing and reading does.

/// The fields of the comparison that a kind of loss may touch.
inline const std::map<std::string, std::vector<std::string>> kFieldsOfLoss = {
    {"identifier", {"text.identifier"}},
    {"layout", {"layout.position", "layout.screen", "layout.window"}},
    {"name", {"text.name"}},
    {"comment", {"text.comment"}},
    {"creation", {"text.creation"}},
    {"properties", {"text.properties"}},
    {"documents", {"text.documents"}},
    {"text boxes", {"text.boxes"}},
    {"submodel", {"submodel.exists", "submodel.parent", "node.submodel"}},
    {"number of samples", {"setting.samples"}},
    {"display mode", {"setting.showAs"}},
    {"discretization settings", {"setting.discretization"}},
    {"choice of algorithms", {"setting.algorithms"}},
    {"settings of importance sampling", {"setting.epis"}},
    {"settings of the equation solver", {"setting.solver"}},
    {"update flags", {"setting.flags"}},
    {"noisy-MAX relevance flag", {"setting.noisyMaxRelevance"}},
    {"node", {"node.exists"}},
    {"parents", {"node.parents"}},
    {"kind", {"node.kind"}},
    {"target mark", {"node.target"}},
    {"position", {"layout.position"}},
    {"appearance", {"layout.screen"}},
    {"outcomes", {"definition.outcomes"}},
    {"numbers", {"definition.numbers", "definition.function", "definition.strengths"}},
    {"digits", {"definition.numbers"}},
    {"formulas", {"definition.formulas"}},
    {"choice values", {"definition.numbers"}},
    {"costs", {"cost.parents", "cost.numbers"}},
    {"cost digits", {"cost.numbers"}},
    {"evidence", {"evidence.outcome"}},
    {"soft evidence", {"evidence.virtual"}},
    {"diagnosis type", {"diagnosis.type", "diagnosis.flags"}},
    {"diagnosis texts",
     {"diagnosis.faults", "diagnosis.documents", "diagnosis.comments", "diagnosis.question",
      "diagnosis.showAs"}},
    {"faults", {"diagnosis.faults"}},
    {"default outcome", {"diagnosis.default", "diagnosis.flags"}},
    {"diagnosis attributes",
     {"diagnosis.faults", "diagnosis.default", "diagnosis.documents", "diagnosis.comments"}},
};

inline bool Explains(const Loss& loss, const NetworkDifference& difference) {
  // Where a drawing moves as a whole, every node of it does.
  if (loss.what == "drawing") return difference.field == "layout.position";
  if (loss.node != difference.node) return false;
  const auto found = kFieldsOfLoss.find(loss.what);
  if (found == kFieldsOfLoss.end()) return false;
  return std::count(found->second.begin(), found->second.end(), difference.field) > 0;
}

inline bool HasLoss(const std::vector<Loss>& losses, const std::string& node,
                    const std::string& what) {
  return std::any_of(losses.begin(), losses.end(),
                     [&](const Loss& loss) { return loss.node == node && loss.what == what; });
}

inline bool AnyLoss(const std::vector<Loss>& losses, const std::string& what) {
  return std::any_of(losses.begin(), losses.end(),
                     [&what](const Loss& loss) { return loss.what == what; });
}

/// Whether nobody has given the network what differs: places of nodes, or a name of its own.
inline bool IsOfNoContent(KVN_network& network, const NetworkDifference& difference) {
  if (difference.field == "layout.position") return !HasPlacedNodes(network);
  if (difference.field != "text.name" || !difference.node.empty()) return false;
  for (const NetworkCheck& check : NetworkChecks()) {
    if (check.feature == kNetworkName) return !check.isThere(network);
  }
  return false;
}

/// Writes and reads the network, and holds the differences against the losses, both ways. Losses of
/// the kinds in `mayBeNothing` needn't show: the network may have lost it on an earlier way.
inline void ExpectTruth(KVN_network& network, int format,
                        const std::vector<std::string>& mayBeNothing = {}) {
  const std::vector<Loss> losses = ListLosses(network, format);
  const ScratchFolder folder;
  const LogCapture silence;
  const std::string file = folder.Path("network");
  if (network.WriteFile(file.c_str(), format) != 0) {
    EXPECT_FALSE(losses.empty()) << "the format refuses the network, and nothing tells";
    return;
  }
  KVN_network back;
  if (back.ReadFile(file.c_str(), format) != 0) {
    EXPECT_TRUE(AnyLoss(losses, "file")) << "the file can't be read back, and nothing tells";
    return;
  }
  NetworkCompareOptions options;
  options.unsetIsEmpty = true;
  const std::vector<NetworkDifference> differences = CompareNetworks(network, back, options);
  for (const NetworkDifference& difference : differences) {
    // A node under another identifier than it had.
    const bool isNew =
        difference.field == "node.exists" && network.FindNode(difference.node.c_str()) < 0;
    bool isReported = IsOfNoContent(network, difference) || (isNew && AnyLoss(losses, "node"));
    for (const Loss& loss : losses) isReported = isReported || Explains(loss, difference);
    EXPECT_TRUE(isReported) << "not reported: " << difference;
  }
  for (const Loss& loss : losses) {
    // Where the kind changes, numbers and formulas aren't compared.
    const bool isOfKind =
        loss.what == "digits" || loss.what == "formulas" || loss.what == "numbers";
    bool isReal = isOfKind && HasLoss(losses, loss.node, "kind");
    for (const std::string& what : mayBeNothing) isReal = isReal || loss.what == what;
    for (const NetworkDifference& d : differences) isReal = isReal || Explains(loss, d);
    EXPECT_TRUE(isReal) << "no difference: " << loss.node << ": " << loss.what << ": " << loss.why;
  }
}

/// The formats that are described. Where one of them has learnt to carry more, this test fails with
/// "no difference", and the description (formatCapacity.cpp) gets the new feature.
inline constexpr int kHeldFormats[] = {KVN_FORMAT_KVN,   KVN_FORMAT_HUGIN,  KVN_FORMAT_MICROSOFT,
                                       KVN_FORMAT_XKVN,  KVN_FORMAT_XMLBIF, KVN_FORMAT_ERGO,
                                       KVN_FORMAT_NETICA};

/// Kinds of nodes that don't make the format refuse the whole network.
inline std::vector<int> KindsTakenBy(int format) {
  std::vector<int> kinds;
  for (int kind : RandomNetworkOptions().kinds) {
    if (CapacityOf(format)->FateOf(kind) != Fate::kRefused) kinds.push_back(kind);
  }
  return kinds;
}
