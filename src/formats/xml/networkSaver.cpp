#include "formats/xml/networkSaver.h"

#include <memory>
#include <string>

#include "definitions/cast.h"
#include "definitions/cpt.h"
#include "definitions/demorgan.h"
#include "definitions/list.h"
#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "definitions/table.h"
#include "definitions/truthTable.h"
#include "expressions/equation.h"
#include "expressions/expression.h"
#include "formats/xml/networkLoader.h"
#include "foundation/episParameters.h"
#include "foundation/errorLog.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "foundation/stringArray.h"
#include "network/extraDefinition.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/userProperties.h"

namespace {

constexpr const char* kVersion = "1.0";

/// Range of an equation node that the file leaves out.
constexpr double kLowerBound = -1.0;
constexpr double kUpperBound = 1.0;

/// By diagnosis type, temporal type and type of a parent; what is the default isn't written.
const char* const kDiagnosisWords[] = {"target", "observation", nullptr};
const char* const kTemporalWords[] = {nullptr, "anchor", "terminal", "plate"};
const char* const kParentTypeWords[] = {"inhibitor", "requirement", "cause", "barrier"};

template <int count>
const char* WordOf(const char* const (&words)[count], int code) {
  return code >= 0 && code < count ? words[code] : nullptr;
}

const char* TextOr(const char* text, const char* substitute) {
  return text != nullptr ? text : substitute;
}

}  // namespace

bool SaveXmlNetwork(const char* fileName, KVN_network& network, std::intptr_t saveOptions) {
  std::unique_ptr<IXmlWriterExtension, XmlReleaser> usual;
  IXmlWriterExtension* extension = nullptr;
  if (saveOptions == KVN_XML_USUAL_EXTENSION) {
    usual.reset(NewVustaSaver(network));
    extension = usual.get();
  } else if (saveOptions != KVN_XML_NO_EXTENSION) {
    extension = reinterpret_cast<IXmlWriterExtension*>(saveOptions);
  }
  return XmlNetworkSaver(network, extension).Save(fileName);
}

IXmlWriterExtension* NewVustaSaver(KVN_network& /*network*/) { return nullptr; }

bool XmlNetworkSaver::Save(const char* fileName) {
  if (!Open(fileName)) return false;
  SaveNetwork();
  if (isWhole) return Close();
  // A file with holes in the place of a good one would be worse than none.
  Discard();
  (void)LogError(KVN_NO_MEMORY);
  return false;
}

const KVN_intArray& XmlNetworkSaver::SortedNodes() {
  const KVN_intArray& order = network.GetOrderOfNodes();
  isWhole = isWhole && order.GetNumItems() == network.GetNumberOfNodes();
  return order;
}

void XmlNetworkSaver::SaveNetwork() {
  AddAttribute("version", kVersion);
  AddAttribute("id", TextOr(network.Header().GetId(), ""));
  AddAttribute("numsamples", network.GetNumberOfSamples());
  AddAttribute("discsamples", network.GetDiscSamples());
  if (network.GetDiscAvoidZero() == 0) AddAttribute("discavoidzero", false);
  OpenElement("ormel");
  if (network.UserProperties().GetCount() > 0) {
    OpenElement("properties");
    SaveProperties(network.UserProperties());
    CloseElement("properties");
  }
  if (network.GetEpisParams() != EpisParameters()) SaveAlgorithms();
  SaveNodes();
  SaveCosts();
  SaveExtensions();
  CloseElement("ormel");
}

void XmlNetworkSaver::SaveProperties(const KVN_userProperties& properties) {
  for (int i = 0; i < properties.GetCount(); ++i) {
    AddAttribute("id", properties.GetKey(i));
    // An unset value comes back as an empty one, so it is written as that at once.
    WriteElement("property", TextOr(properties.GetValue(i), ""), /*escaped=*/true);
  }
}

void XmlNetworkSaver::SaveAlgorithms() {
  const EpisParameters& settings = network.GetEpisParams();
  OpenElement("algparams");
  AddAttribute("proplen", settings.proplen);
  AddAttribute("numstates1", settings.numstates1);
  AddAttribute("numstates2", settings.numstates2);
  AddAttribute("numstates3", settings.numstates3);
  AddAttribute("eps1", settings.eps1);
  AddAttribute("eps2", settings.eps2);
  AddAttribute("eps3", settings.eps3);
  AddAttribute("eps4", settings.eps4);
  WriteElement("epis", nullptr, /*escaped=*/false);
  CloseElement("algparams");
}

void XmlNetworkSaver::SaveNodes() {
  OpenElement("nodes");
  for (int handle : SortedNodes()) {
    KVN_node& node = *network.GetNode(handle);
    // Tested before anything is queued: the attribute would go out with the next element.
    if (node.Definition() == nullptr || !IsVisited(node.GetType())) continue;
    AddAttribute("id", TextOr(node.GetId(), ""));
    VisitDefinition(*node.Definition());
    if (node.UserProperties() != nullptr) SaveProperties(*node.UserProperties());
    CloseElement(elementName);
  }
  CloseElement("nodes");
}

void XmlNetworkSaver::SaveCosts() {
  bool isOpen = false;
  for (int handle : SortedNodes()) {
    const KVN_nodeCost* cost = network.GetNode(handle)->Cost();
    if (cost == nullptr || network.GetNumberOfParents(handle, /*layer=*/1) < 1) continue;
    if (!isOpen) OpenElement("observationcost");
    isOpen = true;
    AddAttribute("id", TextOr(network.GetNode(handle)->GetId(), ""));
    OpenElement("node");
    SaveParents(handle, /*layer=*/1);
    const KVN_Dmatrix& costs = cost->GetCosts();
    WriteDoubleList("cost", costs.GetData(), costs.GetSize(), "n/a", KVN_NOT_AVAILABLE_VALUE);
    CloseElement("node");
  }
  if (isOpen) CloseElement("observationcost");
}

void XmlNetworkSaver::SaveExtensions() {
  if (extension == nullptr) return;
  OpenElement("extensions");
  extension->Write(*this);
  CloseElement("extensions");
}

// --- One node.

void XmlNetworkSaver::OpenNode(const char* name, KVN_nodeDefinition& definition, bool hasStates) {
  const int handle = definition.GetHandle();
  elementName = name;
  if (network.IsTarget(handle) == 1) AddAttribute("target", true);
  if (const KVN_extraDefinition* extra = network.GetNode(handle)->ExtraDefinition()) {
    AddAttribute("diagtype", WordOf(kDiagnosisWords, extra->GetDiagnosisType()));
    AddAttribute("dynamic", WordOf(kTemporalWords, network.GetTemporalType(handle)));
    if (extra->GetRanked() != 0) AddAttribute("ranked", true);
    if (extra->GetMandatory() != 0) AddAttribute("mandatory", true);
  }
  OpenElement(name);
  if (hasStates) SaveStates(definition);
  if (network.GetNumberOfParents(handle) > 0) SaveParents(handle, /*layer=*/0);
}

void XmlNetworkSaver::SaveStates(KVN_nodeDefinition& definition) {
  const KVN_extraDefinition* extra = network.GetNode(definition.GetHandle())->ExtraDefinition();
  const KVN_idArray& names = *definition.GetOutcomesNames();
  for (int i = 0; i < names.GetNumItems(); ++i) {
    AddAttribute("id", names[i]);
    if (extra != nullptr) AddStateMarks(*extra, i);
    WriteElement("state", nullptr, /*escaped=*/false);
  }
}

void XmlNetworkSaver::AddStateMarks(const KVN_extraDefinition& extra, int state) {
  const char* label = extra.GetFaultLabels().GetString(state);
  if (label != nullptr && *label != '\0') AddAttribute("label", label);
  if (extra.GetSetAsDefault() != 0 && extra.GetDefaultOutcome() == state) {
    AddAttribute("default", true);
  }
  const KVN_intArray& faults = extra.GetFaultStates();
  if (state < faults.GetNumItems() && faults[state] != 0) AddAttribute("fault", true);
}

void XmlNetworkSaver::SaveParents(int handle, int layer) {
  KVN_stringArray ids;
  for (int parent : network.GetParents(handle, layer)) {
    Note(ids.Add(network.GetNode(parent)->GetId()));
  }
  WriteStringList("parents", ids);
}

void XmlNetworkSaver::SaveMatrix(const char* name, const KVN_Dmatrix& matrix) {
  WriteDoubleList(name, matrix.GetData(), matrix.GetSize());
}

void XmlNetworkSaver::SaveList(const char* name, const KVN_doubleArray& list) {
  WriteDoubleList(name, list.GetItems(), list.GetNumItems());
}

void XmlNetworkSaver::SaveNumber(const char* name, double number) {
  WriteDoubleList(name, &number, 1);
}

void XmlNetworkSaver::VisitCpt(KVN_cpt& definition) {
  OpenNode("cpt", definition, /*hasStates=*/true);
  KVN_Dmatrix* table = nullptr;
  if (definition.GetDefinition(table) == 0) SaveMatrix("probabilities", *table);
}

void XmlNetworkSaver::VisitTable(KVN_table& definition) {
  OpenNode("utility", definition, /*hasStates=*/false);
  KVN_Dmatrix* table = nullptr;
  if (definition.GetDefinition(table) == 0) SaveMatrix("utilities", *table);
}

void XmlNetworkSaver::VisitMau(KVN_mau& definition) {
  if (definition.GetExpressions() != nullptr) return SaveFormulas(definition);
  OpenNode("mau", definition, /*hasStates=*/false);
  KVN_Dmatrix* weights = nullptr;
  if (definition.GetDefinition(weights) == 0) SaveMatrix("weights", *weights);
}

void XmlNetworkSaver::SaveFormulas(KVN_mau& definition) {
  OpenNode("maux", definition, /*hasStates=*/false);
  for (int i = 0; i < definition.GetExpressions()->GetSize(); ++i) {
    std::string text;
    PrintSigned(*definition.GetExpression(i), text);
    WriteElement("expression", text.c_str(), /*escaped=*/false);
  }
}

void XmlNetworkSaver::VisitList(KVN_list& definition) {
  OpenNode("decision", definition, /*hasStates=*/true);
}

/// A row without a 1.0 gives the outcome just beyond the last, which has no name: the file then
/// tells of it when it is loaded (intended).
void XmlNetworkSaver::VisitTruthTable(KVN_truthTable& definition) {
  OpenNode("deterministic", definition, /*hasStates=*/true);
  KVN_Dmatrix* table = nullptr;
  if (definition.GetDefinition(table) != 0 || table->GetNumberOfDimensions() == 0) return;
  const int outcomes = table->GetSizeOfDimension(table->GetNumberOfDimensions() - 1);
  KVN_stringArray states;
  for (int row = 0; row < table->GetSize(); row += outcomes) {
    int state = 0;
    while (state < outcomes && (*table)[row + state] != 1.0) ++state;
    const char* name = state < outcomes ? (*definition.GetOutcomesNames())[state] : nullptr;
    Note(states.Add(name));
  }
  WriteStringList("resultingstates", states);
}

void XmlNetworkSaver::VisitCast(KVN_cast& definition) {
  OpenNode("cast", definition, /*hasStates=*/false);
  if (network.GetNumberOfParents(definition.GetHandle()) > 0) {
    SaveList("pweights", definition.GetPositiveWeights());
    SaveList("nweights", definition.GetNegativeWeights());
  }
  SaveNumber("baseline", definition.GetBaseline());
}

void XmlNetworkSaver::VisitDemorgan(KVN_demorgan& definition) {
  OpenNode("demorgan", definition, /*hasStates=*/false);
  if (network.GetNumberOfParents(definition.GetHandle()) > 0) {
    KVN_stringArray types;
    for (int type : definition.GetParentTypes()) {
      Note(types.Add(WordOf(kParentTypeWords, type)));
    }
    WriteStringList("types", types);
    SaveList("weights", definition.GetParentWeights());
  }
  SaveNumber("priorbelief", definition.GetPriorBelief());
}

/// The file gives, parent by parent, the rank of each state: the inverse of what the gate keeps.
void XmlNetworkSaver::VisitNoisyMax(KVN_noisyMAX& definition) {
  OpenNode("noisymax", definition, /*hasStates=*/true);
  KVN_intArray flat;
  for (int i = 0; definition.GetStrengths(i) != nullptr; ++i) {
    const KVN_intArray& strengths = *definition.GetStrengths(i);
    for (int state = 0; state < strengths.GetNumItems(); ++state) {
      Note(flat.Add(strengths.FindPosition(state)));
    }
  }
  if (network.GetNumberOfParents(definition.GetHandle()) > 0) {
    WriteIntList("strengths", flat.GetItems(), flat.GetNumItems());
  }
  SaveMatrix("parameters", definition.GetParameters());
}

void XmlNetworkSaver::VisitNoisyAdder(KVN_noisyAdder& definition) {
  if (definition.GetFunction() == KVN_ADDER_SINGLE_FAULT) AddAttribute("function", "singlefault");
  OpenNode("noisyadder", definition, /*hasStates=*/true);
  KVN_intArray states;
  Note(states.Add(definition.GetDistinguishedState()));
  for (int state : definition.GetParentDistinguishedStates()) Note(states.Add(state));
  WriteIntList("dstates", states.GetItems(), states.GetNumItems());
  SaveList("weights", definition.GetWeights());
  SaveMatrix("parameters", definition.GetParameters());
}

/// Constants of the formula have six digits, those of the range and the intervals all.
void XmlNetworkSaver::VisitEquation(KVN_equation& definition) {
  OpenNode("equation", definition, /*hasStates=*/false);
  if (definition.GetLowerBound() != kLowerBound || definition.GetUpperBound() != kUpperBound) {
    AddAttribute("lower", definition.GetLowerBound());
    AddAttribute("upper", definition.GetUpperBound());
  }
  std::string text;
  definition.GetEquation().Print(text);
  WriteElement("definition", text.c_str(), /*escaped=*/false);
  if (definition.GetDiscIntervals().empty()) return;
  OpenElement("discretization");
  for (const KVN_discInterval& interval : definition.GetDiscIntervals()) {
    AddAttribute("id", interval.id.c_str());
    AddAttribute("upper", interval.upper);
    WriteElement("interval", nullptr, /*escaped=*/false);
  }
  CloseElement("discretization");
}
