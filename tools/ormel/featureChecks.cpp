#include "ormel/featureChecks.h"

#include <cstring>
#include <iterator>

#include "definitions/mau.h"
#include "definitions/nodeDefinition.h"
#include "network/algorithmParameters.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "values/nodeValue.h"

bool IsSet(const char* text) { return text != nullptr && *text != '\0'; }

namespace {

bool HasText(const KVN_stringArray& list) {
  for (int i = 0; i < list.GetNumItems(); i++) {
    if (IsSet(list.GetString(i))) return true;
  }
  return false;
}

bool HasDiagnosisType(const KVN_extraDefinition& extra) {
  return extra.GetDiagnosisType() != KVN_DIAGNOSIS_AUXILIARY || extra.GetRanked() != 0 ||
         extra.GetMandatory() != 0;
}

bool HasDiagnosisTexts(KVN_extraDefinition& extra) {
  for (int i = 0; i < extra.GetOutcomeCount(); i++) {
    if (extra.GetStateDocumentation(i)->GetCount() > 0) return true;
  }
  return extra.GetShowAs() != KVN_extraDefinition::kShowAsInherited || IsSet(extra.GetQuestion()) ||
         HasText(extra.GetFaultNames()) || HasText(extra.GetStateComments()) ||
         HasText(extra.GetStateRepairInfo());
}

bool HasFaults(const KVN_extraDefinition& extra) {
  for (int flag : extra.GetFaultStates()) {
    if (flag != 0) return true;
  }
  return HasText(extra.GetFaultLabels());
}

bool HasDefaults(const KVN_extraDefinition& extra) {
  return extra.GetSetAsDefault() != 0 || extra.GetDefaultOutcome() != 0;
}

}  // namespace

const KVN_header& HeaderBeforeReading() {
  static KVN_network emptied;
  static const int result = emptied.Submodels().Clear();
  static KVN_network usual;
  return (result == 0 ? emptied : usual).Header();
}

bool HasDiagnosis(KVN_node& node) {
  KVN_extraDefinition* extra = node.ExtraDefinition();
  return extra != nullptr && (HasDiagnosisType(*extra) || HasDiagnosisTexts(*extra) ||
                              HasFaults(*extra) || HasDefaults(*extra));
}

namespace {

/// What a network has before anybody has set anything.
KVN_network& UsualNetwork() {
  static KVN_network usual;
  return usual;
}

/// A name that differs from the identifier: where there is none, the identifier is shown.
bool HasOwnName(const KVN_header& header) {
  const bool equalsId = IsSet(header.GetName()) && header.GetId() != nullptr &&
                        std::strcmp(header.GetName(), header.GetId()) == 0;
  return IsSet(header.GetName()) && !equalsId;
}

bool IsSamePlace(const KVN_rectangle& a, const KVN_rectangle& b) {
  return a.center_X == b.center_X && a.center_Y == b.center_Y && a.width == b.width &&
         a.height == b.height;
}

bool IsSameStyle(const KVN_screenInfo& a, const KVN_screenInfo& b) {
  return a.color == b.color && a.selColor == b.selColor && a.font == b.font &&
         a.fontColor == b.fontColor && a.borderThickness == b.borderThickness &&
         a.borderColor == b.borderColor && a.screenFlags == b.screenFlags;
}

bool IsSameScreen(const KVN_screenInfo& a, const KVN_screenInfo& b) {
  return IsSamePlace(a.position, b.position) && IsSameStyle(a, b);
}

// Of the network.

bool IsNamed(KVN_network& n) {
  return HasOwnName(n.Header()) &&
         std::strcmp(n.Header().GetName(), HeaderBeforeReading().GetName()) != 0;
}
bool IsCommented(KVN_network& n) { return IsSet(n.Header().GetComment()); }
bool HasProperties(KVN_network& n) { return n.UserProperties().GetCount() > 0; }
bool HasDocuments(KVN_network& n) { return n.Documentation().GetCount() > 0; }
bool HasShowAs(KVN_network& n) { return n.GetShowAs() != UsualNetwork().GetShowAs(); }
bool HasEpis(KVN_network& n) { return !(n.GetEpisParams() == EpisParameters()); }
bool HasRelevanceFlag(KVN_network& n) { return n.GetNoisyMaxRelevance() != 0; }
bool HasCases(KVN_network& n) { return n.Cases() != nullptr; }
bool HasTimeSlices(KVN_network& n) { return n.Temporal() != nullptr; }

bool HasIdentifier(KVN_network& n) {
  const char* const usual = HeaderBeforeReading().GetId();
  return IsSet(n.Header().GetId()) && std::strcmp(n.Header().GetId(), usual) != 0;
}

bool HasLayout(KVN_network& n) {
  KVN_submodel& own = *n.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  KVN_submodel& usual = *UsualNetwork().Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  return !IsSameScreen(own.Screen(), usual.Screen()) ||
         !IsSamePlace(own.Window(), usual.Window()) ||
         own.GetWindowColor() != usual.GetWindowColor();
}

bool HasDates(KVN_network& n) {
  return IsSet(n.Creation().GetCreated()) || IsSet(n.Creation().GetModified());
}

bool HasCreator(KVN_network& n) { return IsSet(n.Creation().GetCreator()); }

bool HasSamples(KVN_network& n) {
  return n.GetNumberOfSamples() != UsualNetwork().GetNumberOfSamples();
}

bool HasDiscretization(KVN_network& n) {
  const KVN_network& usual = UsualNetwork();
  return n.GetDiscSamples() != usual.GetDiscSamples() ||
         n.GetDiscAvoidZero() != usual.GetDiscAvoidZero() ||
         n.GetEquationDiscretized() != usual.GetEquationDiscretized();
}

bool HasAlgorithms(KVN_network& n) {
  const KVN_network& usual = UsualNetwork();
  return n.GetDefaultBNAlgorithm() != usual.GetDefaultBNAlgorithm() ||
         n.GetDefaultIDAlgorithm() != usual.GetDefaultIDAlgorithm() ||
         n.GetDefaultHybridAlgorithm() != usual.GetDefaultHybridAlgorithm();
}

bool HasSolver(KVN_network& n) {
  const KVN_solverParameters& p = n.GetSolverParameters();
  const KVN_solverParameters u;
  return p.d1 != u.d1 || p.d2 != u.d2 || p.d3 != u.d3 || p.d4 != u.d4 || p.i1 != u.i1 ||
         p.i2 != u.i2 || p.i3 != u.i3 || n.GetSolverSteps() != UsualNetwork().GetSolverSteps();
}

bool HasUpdateFlags(KVN_network& n) {
  return n.GetUpdateFlags() != UsualNetwork().GetUpdateFlags() ||
         n.GetChangeMask() != UsualNetwork().GetChangeMask();
}

const NetworkCheck kNetworkChecks[] = {
    {kNetworkIdentifier, "identifier", HasIdentifier},
    {kNetworkLayout, "layout", HasLayout},
    {kNetworkName, "name", IsNamed},
    {kNetworkComment, "comment", IsCommented},
    {kCreation, "creation", HasDates},
    {kCreator, "creation", HasCreator},
    {kNetworkProperties, "properties", HasProperties},
    {kNetworkDocuments, "documents", HasDocuments},
    {kSamples, "number of samples", HasSamples},
    {kShowAs, "display mode", HasShowAs},
    {kDiscretization, "discretization settings", HasDiscretization},
    {kAlgorithms, "choice of algorithms", HasAlgorithms},
    {kEpis, "settings of importance sampling", HasEpis},
    {kSolver, "settings of the equation solver", HasSolver},
    {kUpdateFlags, "update flags", HasUpdateFlags},
    {kNoisyMaxRelevance, "noisy-MAX relevance flag", HasRelevanceFlag},
    {kCases, "cases", HasCases},
    {kTemporal, "time slices", HasTimeSlices},
};

// Of a node.

KVN_nodeInfo& InfoOf(KVN_network& n, int handle) { return n.GetNode(handle)->Info(); }

bool IsInSubmodel(KVN_network& n, int handle) {
  return (n.GetNode(handle)->GetSubmodel() | KVN_SUBMODEL_BIT) != KVN_ROOT_SUBMODEL;
}

bool IsNodeNamed(KVN_network& n, int handle) { return HasOwnName(InfoOf(n, handle).Header()); }

bool IsNodeCommented(KVN_network& n, int handle) {
  return IsSet(InfoOf(n, handle).Header().GetComment());
}

bool HasNodeProperties(KVN_network& n, int handle) {
  return InfoOf(n, handle).UserProperties().GetCount() > 0;
}

bool HasNodeDocuments(KVN_network& n, int handle) {
  return InfoOf(n, handle).Documentation().GetCount() > 0;
}

bool HasPosition(KVN_network& n, int handle) {
  const KVN_rectangle& place = InfoOf(n, handle).Screen().position;
  return place.center_X != 0 || place.center_Y != 0;
}

bool HasAppearance(KVN_network& n, int handle) {
  const KVN_screenInfo& own = InfoOf(n, handle).Screen();
  const KVN_screenInfo& usual = n.Submodels().NodeDefaults();
  return own.position.width != usual.position.width ||
         own.position.height != usual.position.height || !IsSameStyle(own, usual);
}

bool IsTarget(KVN_network& n, int handle) { return n.IsTarget(handle) == 1; }

KVN_extraDefinition& ExtraOf(KVN_network& n, int handle) {
  return *n.GetNode(handle)->ExtraDefinition();
}

/// Whether files list the outcomes of the node one by one: those of the gates over binary nodes are
/// always the same two.
bool HasListedStates(KVN_network& n, int handle) {
  const int type = n.TypeOf(handle);
  return type != KVN_TYPE_CAST && type != KVN_TYPE_DEMORGAN &&
         ExtraOf(n, handle).GetOutcomeCount() > 0;
}

bool HasType(KVN_network& n, int handle) { return HasDiagnosisType(ExtraOf(n, handle)); }
bool HasTexts(KVN_network& n, int handle) { return HasDiagnosisTexts(ExtraOf(n, handle)); }

bool HasFaultsOfTable(KVN_network& n, int handle) {
  return HasListedStates(n, handle) && HasFaults(ExtraOf(n, handle));
}

bool HasFaultsOfGate(KVN_network& n, int handle) {
  return !HasListedStates(n, handle) && HasFaults(ExtraOf(n, handle));
}

bool HasDefaultOfState(KVN_network& n, int handle) {
  return HasListedStates(n, handle) && ExtraOf(n, handle).GetSetAsDefault() != 0;
}

bool HasOtherDefault(KVN_network& n, int handle) {
  return HasDefaults(ExtraOf(n, handle)) && !HasDefaultOfState(n, handle);
}

bool HasCostParents(KVN_network& n, int handle) {
  return n.GetNumberOfParents(handle, /*layer=*/1) > 0;
}

bool HasPlainCost(KVN_network& n, int handle) {
  const KVN_Dmatrix& costs = n.GetNode(handle)->Cost()->GetCosts();
  return !HasCostParents(n, handle) && costs.GetSize() > 0 && costs[0] != 0.0;
}

bool HasEvidence(KVN_network& n, int handle) {
  return n.ValueOf(handle) != nullptr && n.ValueOf(handle)->IsEvidence();
}

bool HasSoftEvidence(KVN_network& n, int handle) {
  return n.ValueOf(handle) != nullptr && n.ValueOf(handle)->IsVirtualEvidence();
}

bool IsTemporal(KVN_network& n, int handle) { return n.GetTemporalType(handle) != 0; }

bool HasChoiceValues(KVN_network& n, int handle) {
  KVN_nodeDefinition* definition = n.DefinitionOf(handle);
  KVN_doubleArray* values = nullptr;
  return definition != nullptr && definition->GetType() == KVN_TYPE_LIST &&
         definition->GetDefinition(values) == 0 && UsedCount(*values) > 0;
}

bool HasUtilityFormulas(KVN_network& n, int handle) {
  return n.TypeOf(handle) == KVN_TYPE_MAU &&
         static_cast<const KVN_mau&>(*n.DefinitionOf(handle)).GetExpressions() != nullptr;
}

const NodeCheck kNodeChecks[] = {
    {kSubmodels, "submodel", IsInSubmodel},
    {kNodeName, "name", IsNodeNamed},
    {kNodeComment, "comment", IsNodeCommented},
    {kNodeProperties, "properties", HasNodeProperties},
    {kNodeDocuments, "documents", HasNodeDocuments},
    {kPosition, "position", HasPosition},
    {kAppearance, "appearance", HasAppearance},
    {kTargets, "target mark", IsTarget},
    {kDiagnosis, "diagnosis type", HasType},
    {kDiagnosisTexts, "diagnosis texts", HasTexts},
    {kFaultsOfTables, "faults", HasFaultsOfTable},
    {kFaultsOfGates, "faults", HasFaultsOfGate},
    {kDefaultsOfStates, "default outcome", HasDefaultOfState},
    {kOtherDefaults, "default outcome", HasOtherDefault},
    {kCostsByParents, "costs", HasCostParents},
    {kPlainCosts, "costs", HasPlainCost},
    {kEvidence, "evidence", HasEvidence},
    {kSoftEvidence, "soft evidence", HasSoftEvidence},
    {kTemporal, "temporal kind", IsTemporal},
    {kChoiceValues, "choice values", HasChoiceValues},
    {kUtilityFormulas, "formulas", HasUtilityFormulas},
};

}  // namespace

bool HasPlacedNodes(KVN_network& n) {
  for (int handle = n.GetFirstNode(); handle >= 0; handle = n.GetNextNode(handle)) {
    if (HasPosition(n, handle)) return true;
  }
  return false;
}

std::vector<NetworkCheck> NetworkChecks() {
  return {std::begin(kNetworkChecks), std::end(kNetworkChecks)};
}

std::vector<NodeCheck> NodeChecks() { return {std::begin(kNodeChecks), std::end(kNodeChecks)}; }
