#include "formats/xml/networkLoader.h"

#include <sys/stat.h>

#include "expressions/expression.h"
#include "foundation/episParameters.h"
#include "foundation/resultCodes.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/userProperties.h"

namespace {

constexpr const char* kVersion = "1.0";
constexpr const char* kNoMemory = "out of memory";  // as the parser says it
constexpr int kDefaultSamples = 1000;
constexpr int kDefaultDiscSamples = 10000;
constexpr int kPlate = 3;  // temporal type
/// Where the size of the file isn't known.
constexpr std::int64_t kUnknownList = 4096;

/// Every word of a list takes two bytes at least, with what separates it from the next.
std::int64_t LongestListOf(const char* fileName) {
  struct stat info;
  if (fileName == nullptr || stat(fileName, &info) != 0 || !S_ISREG(info.st_mode)) {
    return kUnknownList;
  }
  return info.st_size / 2 + 1;
}

}  // namespace

bool LoadXmlNetwork(const char* fileName, KVN_network& network, std::intptr_t loadOptions) {
  return XmlNetLoader(network).Load(fileName, loadOptions);
}

// Here, where the classes of what is owned are known.
XmlNetLoader::XmlNetLoader(KVN_network& target) : network(target) {}
XmlNetLoader::~XmlNetLoader() = default;

bool XmlNetLoader::Load(const char* fileName, std::intptr_t loadOptions) {
  network.SetNumberOfSamples(kDefaultSamples);
  XmlBinding& root = MakeRoot(loadOptions);
  SetFileName(fileName);
  if (loadOptions == KVN_XML_USUAL_EXTENSION && vusta == nullptr) {
    OnError(kNoMemory, 0, 0);
    return false;
  }
  longestList = LongestListOf(fileName);
  if (!Parse(fileName, root, this)) return false;
  ReportUnknownContent();
  return true;
}

bool XmlNetLoader::HadMemory(int result) {
  if (result == KVN_NO_MEMORY) Abort(kNoMemory);
  return result != KVN_NO_MEMORY;
}

// --- The network.

void XmlNetLoader::StartNetwork() {
  std::string text;
  GetAttribute("id", text);
  // On purpose a text that is no identifier doesn't matter: the network keeps the one it has.
  if (!HadMemory(network.Header().SetId(text.c_str()))) return;
  GetAttribute("version", text);
  if (!CheckVersion(text, kVersion)) return;
  int number = 0;
  if (!GetAttribute("numsamples", number, kDefaultSamples)) return;
  network.SetNumberOfSamples(number);
  if (!GetAttribute("discsamples", number, kDefaultDiscSamples)) return;
  network.SetDiscSamples(number);
  bool flag = true;
  if (!GetAttribute("discavoidzero", flag, true)) return;
  network.SetDiscAvoidZero(flag ? 1 : 0);
}

void XmlNetLoader::StartEpis() {
  EpisParameters settings;
  const struct {
    const char* name;
    int& value;
  } counts[] = {
      {"proplen", settings.proplen},
      {"numstates1", settings.numstates1},
      {"numstates2", settings.numstates2},
      {"numstates3", settings.numstates3},
  };
  for (const auto& row : counts) {
    if (!GetAttribute(row.name, row.value, row.value)) return;
  }
  const struct {
    const char* name;
    double& value;
  } cutoffs[] = {
      {"eps1", settings.eps1},
      {"eps2", settings.eps2},
      {"eps3", settings.eps3},
      {"eps4", settings.eps4},
  };
  for (const auto& row : cutoffs) {
    if (!GetAttribute(row.name, row.value, row.value)) return;
  }
  if (network.SetEpisParams(settings) != 0) Abort("Invalid EPIS parameters");
}

void XmlNetLoader::StartProperty() { GetAttribute("id", propertyId); }

void XmlNetLoader::EndNetworkProperty() {
  std::string text;
  GetUnescapedText(text);
  if (network.UserProperties().AddProperty(propertyId.c_str(), text.c_str()) != 0) {
    AbortWith("Can't add networkproperty: '%s'", propertyId.c_str());
  }
}

void XmlNetLoader::EndNodeProperty() {
  std::string text;
  GetUnescapedText(text);
  KVN_userProperties* properties = network.GetNode(nodeHandle)->UserProperties();
  if (properties == nullptr || properties->AddProperty(propertyId.c_str(), text.c_str()) != 0) {
    AbortWith("Can't add node property: '%s'", propertyId.c_str());
  }
}

// --- Observation costs.

void XmlNetLoader::StartCostNode() {
  std::string id;
  GetAttribute("id", id);
  const auto found = nodeHandles.find(id);
  if (found == nodeHandles.end()) {
    AbortWith("Invalid node identifier: '%s'", id.c_str());
    return;
  }
  ResetWork();
  nodeHandle = found->second;
}

void XmlNetLoader::EndCostNode() {
  KVN_nodeCost* cost = network.GetNode(nodeHandle)->Cost();
  if (!MayFill(CountCells(1), numbers.GetNumItems())) return Abort("SetCosts failed");
  if (!AddArcs(/*layer=*/1)) return;
  const KVN_doubleArray none;
  const KVN_doubleArray& costs = numbers.GetNumItems() > 0 ? numbers : none;
  if (cost == nullptr || cost->SetCosts(costs) != 0) Abort("SetCosts failed");
}

// --- Temporal definitions and cases. The model has no operations for them yet: what a file says is
// held against the rules as far as they don't need any, and then refused.

void XmlNetLoader::StartDynamic() {
  int slices = 0;
  if (!GetAttribute("numslices", slices, 0)) return;
  if (slices < 0) AbortWith("Invalid slice count: %d, non-negative integer expected", slices);
}

void XmlNetLoader::StartTemporal(const Kind& kind) {
  std::string id;
  GetAttribute("id", id);
  const auto found = nodeHandles.find(id);
  if (found == nodeHandles.end()) {
    AbortWith("Invalid node identifier: '%s'", id.c_str());
    return;
  }
  if (network.GetTemporalType(found->second) != kPlate) {
    AbortWith("Node is not part of temporal plate: '%s'", id.c_str());
    return;
  }
  if (!GetAttribute("order", order, 0)) return;
  if (order < 1) {
    AbortWith("Invalid temporal order: %d, positive value expected", order);
    return;
  }
  ResetWork();
  nodeHandle = found->second;
  (void)ReadAdderFunction(kind);  // the load is over when it fails
}

void XmlNetLoader::EndTemporal() {
  Abort(parents.GetNumItems() == 0 ? "No temporal parents specified" : "AddTemporalArc failed");
}

void XmlNetLoader::StartCase() {
  std::string name;
  GetAttribute("name", name);
  AbortWith("Duplicate case name: '%s'", name.c_str());
}
