#include "ormel/losses.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include "definitions/mau.h"
#include "expressions/equation.h"
#include "network/extraDefinition.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "ormel/definitionContent.h"
#include "ormel/featureChecks.h"
#include "ormel/formatCapacity.h"
#include "ormel/formulaPrint.h"

namespace {

const char* OrEmpty(const char* text) { return text == nullptr ? "" : text; }

/// White space doesn't count.
bool HasControls(const char* text) {
  for (; *text != '\0'; text++) {
    if (static_cast<unsigned char>(*text) < ' ' && std::strchr("\t\n\r", *text) == nullptr)
      return true;
  }
  return false;
}

/// One list of losses in the making.
class Finder {
 public:
  Finder(KVN_network& n, const FormatCapacity& c) : network(n), capacity(c) {}

  std::vector<Loss> Run() {
    for (const NetworkCheck& check : NetworkChecks()) {
      if (!capacity.Carries(check.feature) && check.isThere(network)) AddPlain(check.what);
    }
    if (capacity.Carries(kPosition) && !capacity.Carries(kOrigin) && HasPlacedNodes(network)) {
      Add("drawing", "it moves as a whole");
    }
    CheckIdentifier();
    CheckSubmodels();
    for (int handle : NodesInOrder()) Foresee(handle);
    for (int handle : NodesInOrder()) CheckNode(handle);
    return std::move(losses);
  }

 private:
  /// What a node is after the file has been read.
  struct Outlook {
    Fate fate = Fate::kOwn;
    std::string reason;    // of a node that is gone
    int outcomesBack = 0;  // its number of outcomes
    bool isRenamed = false;
  };

  std::vector<int> NodesInOrder() const {
    std::vector<int> handles;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) handles.push_back(h);
    return handles;
  }

  void Add(const std::string& what, const std::string& why) {
    losses.push_back({where, what, why, isSubmodel});
  }
  void AddPlain(const char* what) { Add(what, "the format has no place for it"); }

  const char* IdOf(int handle) const { return OrEmpty(network.GetNode(handle)->GetId()); }
  int OutcomesOf(int handle) const {
    const KVN_nodeDefinition* definition = network.DefinitionOf(handle);
    const int count = definition == nullptr ? 0 : definition->GetNumberOfOutcomes();
    return count > 0 ? count : 0;
  }

  // Identifiers.

  const char* IdWhileReading() const {
    return OrEmpty((capacity.namesNetworkFirst ? network.Header() : HeaderBeforeReading()).GetId());
  }

  void CheckIdentifier() {
    const std::string id = OrEmpty(network.Header().GetId());
    if (capacity.identifierKept == nullptr || id.empty()) return;
    const std::string kept = capacity.identifierKept(id);
    if (kept.empty()) {
      Add("file", "with the network's identifier '" + id + "' it can't be read back");
    } else if (kept != id) {
      Add("identifier", "it comes back as '" + kept + "'");
    } else if (capacity.twin == Twin::kRenamed && network.FindNode(id.c_str()) >= 0 &&
               id != IdWhileReading()) {
      Add("identifier", "a node has the same");
    }
  }

  /// Of a node or submodel.
  static bool IsWritable(const char* id) { return IsSet(id) && *id != '@'; }

  // Submodels.

  void CheckSubmodels() {
    KVN_submodelHandler& submodels = network.Submodels();
    CheckTexts(*submodels.GetSubmodel(KVN_ROOT_SUBMODEL));
    if (capacity.Carries(kCreator)) CheckText("creation", network.Creation().GetCreator());
    if (capacity.Carries(kCreation)) {
      CheckText("creation", network.Creation().GetCreated());
      CheckText("creation", network.Creation().GetModified());
    }
    CheckProperties(network.UserProperties(), kNetworkProperties);
    CheckDocuments("documents", network.Documentation(), kNetworkDocuments);
    KVN_intArray handles;
    if (submodels.GetDescendants(handles) < 0) return;
    for (int handle : handles) {
      KVN_submodel& submodel = *submodels.GetSubmodel(handle);
      if (handle == KVN_ROOT_SUBMODEL) continue;
      isSubmodel = true;
      where = OrEmpty(submodel.Header().GetId());
      if (!capacity.Carries(kSubmodels)) {
        AddPlain("submodel");
      } else if (!IsWritable(where.c_str())) {
        const char* const why =
            where.empty() ? "it has no identifier" : "its identifier can't be written";
        if (where.empty()) where = OrEmpty(submodel.Header().GetName());
        Add("submodel", why);
      } else {
        CheckTexts(submodel);
        const int around = submodels.GetParent(handle);
        if (around != KVN_ROOT_SUBMODEL &&
            !IsWritable(submodels.GetSubmodel(around)->Header().GetId())) {
          Add("submodel", "the submodel around it has no identifier that can be written");
        }
      }
    }
    isSubmodel = false;
    where.clear();
  }

  void CheckTexts(KVN_submodel& submodel) {
    const bool isNetwork = where.empty();
    if (!isNetwork || capacity.Carries(kNetworkName)) {
      CheckText("name", submodel.Header().GetName());
    }
    if (!isNetwork || capacity.Carries(kNetworkComment)) {
      CheckText("comment", submodel.Header().GetComment());
    }
    const KVN_textBoxList& boxes = submodel.TextBoxes();
    if (!capacity.Carries(kTextBoxes)) {
      if (boxes.GetCount() > 0) AddPlain("text boxes");
      return;
    }
    for (int i = 0; i < boxes.GetCount(); i++) {
      if (boxes.GetText(i) == nullptr) Add("text boxes", "a text box without a text isn't written");
      CheckText("text boxes", boxes.GetText(i));
    }
  }

  // Texts.

  void CheckText(const char* what, const char* text) {
    const std::size_t length = std::strlen(OrEmpty(text));
    const std::size_t limit = static_cast<std::size_t>(capacity.longestText);
    if (limit > 0 && length > limit) {
      Add(what, "a text of " + std::to_string(length) + " bytes is cut to its first " +
                    std::to_string(limit));
    }
    if (capacity.dropsCarriageReturns && std::strchr(OrEmpty(text), '\r') != nullptr) {
      Add(what, "carriage returns aren't kept");
    }
    if (capacity.refusesControls && HasControls(OrEmpty(text))) {
      Add("file",
          std::string("with a control character in the ") + what + " it can't be read back");
    }
  }

  void CheckProperties(const KVN_userProperties& properties, Feature feature) {
    if (!capacity.Carries(feature)) return;
    for (int i = 0; i < properties.GetCount(); i++) {
      CheckText("properties", properties.GetValue(i));
    }
  }

  void CheckDocuments(const char* what, const KVN_documentation& documents, Feature feature) {
    if (!capacity.Carries(feature)) return;
    for (int i = 0; i < documents.GetCount(); i++) {
      CheckText(what, documents.GetTitle(i));
      CheckText(what, documents.GetLocation(i));
    }
  }

  void CheckNodeTexts(KVN_node& node) {
    if (capacity.Carries(kNodeName)) CheckText("name", node.Info().Header().GetName());
    if (capacity.Carries(kNodeComment)) CheckText("comment", node.Info().Header().GetComment());
    CheckProperties(node.Info().UserProperties(), kNodeProperties);
    CheckDocuments("documents", node.Info().Documentation(), kNodeDocuments);
    KVN_extraDefinition* extra = node.ExtraDefinition();
    if (extra == nullptr || !capacity.Carries(kDiagnosisTexts)) return;
    const char* const what = "diagnosis texts";
    CheckText(what, extra->GetQuestion());
    for (int i = 0; i < extra->GetOutcomeCount(); i++) {
      CheckText(what, extra->GetFaultNames().GetString(i));
      CheckText(what, extra->GetStateComments().GetString(i));
      CheckText(what, extra->GetStateRepairInfo().GetString(i));
      CheckDocuments(what, *extra->GetStateDocumentation(i), kDiagnosisTexts);
    }
  }

  // Nodes: first what becomes of each, then what follows for it and for its children.

  void Foresee(int handle) {
    Outlook& outlook = outlooks[handle];
    KVN_nodeDefinition* definition = network.DefinitionOf(handle);
    const char* const id = IdOf(handle);
    if (definition == nullptr) {
      outlook = {Fate::kGone, "it has no definition"};
    } else if (!IsWritable(id)) {
      outlook = {Fate::kGone, "its identifier can't be written"};
    } else if (capacity.Carries(kSubmodels) && network.Submodels().Exists(id) != 0) {
      outlook = {Fate::kGone, "the network or a submodel has the same identifier"};
    } else if (capacity.twin == Twin::kGone && std::strcmp(id, IdWhileReading()) == 0) {
      outlook = {Fate::kGone, "the network has the same identifier while the file is read"};
    } else {
      outlook.fate = capacity.FateOf(definition->GetType());
      outlook.outcomesBack = OutcomesOf(handle);
      if (outlook.fate == Fate::kGone) {
        outlook.reason = std::string("the format has no ") + definition->GetTypeName();
      } else if (outlook.fate == Fate::kKindOnly) {
        outlook.outcomesBack = OutcomesOfNew(definition->GetType());
      } else if (outlook.fate == Fate::kBlank) {
        outlook.outcomesBack = OutcomesOfNew(KindBack(definition->GetType(), Fate::kBlank));
      }
      outlook.isRenamed = capacity.twin == Twin::kRenamed && outlook.fate != Fate::kRefused &&
                          std::strcmp(id, IdWhileReading()) == 0;
    }
  }

  /// Outcomes that a new definition of the kind starts with.
  static int OutcomesOfNew(int type) {
    KVN_network scratch;
    const int handle = scratch.AddNode(type, "x");
    const KVN_nodeDefinition* made = scratch.DefinitionOf(handle);
    const int count = made == nullptr ? 0 : made->GetNumberOfOutcomes();
    return count > 0 ? count : 0;
  }

  void CheckNode(int handle) {
    where = IdOf(handle);
    const Outlook& outlook = outlooks[handle];
    if (outlook.fate == Fate::kGone) return Add("node", outlook.reason);
    if (outlook.isRenamed) {
      return Add("node",
                 "it comes back under another identifier: its own is the network's while the "
                 "file is read");
    }
    KVN_node& node = *network.GetNode(handle);
    CheckNodeTexts(node);
    for (const NodeCheck& check : nodeChecks) {
      if (!capacity.Carries(check.feature) && check.isThere(network, handle)) AddPlain(check.what);
    }
    CheckSubmodelOf(node);
    CheckDefinition(*node.Definition(), outlook);
    CheckParents(handle, outlook);
    CheckOwnOutcomes(node, outlook);
    if (CarriesCosts(handle)) CheckCosts(handle);
  }

  void CheckSubmodelOf(KVN_node& node) {
    if (!capacity.Carries(kSubmodels)) return;
    KVN_submodel* submodel = network.Submodels().GetSubmodel(node.GetSubmodel());
    const bool isOfRoot = (node.GetSubmodel() | KVN_SUBMODEL_BIT) == KVN_ROOT_SUBMODEL;
    if (submodel != nullptr && !isOfRoot && !IsWritable(submodel->Header().GetId())) {
      Add("submodel", "the submodel has no identifier that can be written");
    }
  }

  void CheckDefinition(KVN_nodeDefinition& definition, const Outlook& outlook) {
    const std::string kind = definition.GetTypeName();
    switch (outlook.fate) {
      case Fate::kTable:
        Add("kind", kind + " becomes a plain table");
        return CheckNumbers("digits", NumbersOf(definition, /*asTable=*/true),
                            RowSizeOf(definition));
      case Fate::kKindOnly:
        return Add("numbers", "the format has no statement for those of " + kind);
      case Fate::kStates:
        if (HasFirstStates(definition)) return;
        return Add("numbers", "no reader of the format takes those of " + kind);
      case Fate::kBlank:
        return Add("kind", kind + " becomes an empty plain table");
      case Fate::kRefused:
        return Add("node", "the format refuses networks with a node of the kind " + kind);
      default:
        break;
    }
    if (definition.GetType() == KVN_TYPE_TRUTHTABLE) CheckRows(RowsOf(definition));
    if (definition.GetType() == KVN_TYPE_EQUATION) {
      CheckEquation(static_cast<KVN_equation&>(definition));
    }
    if (definition.GetType() == KVN_TYPE_MAU && capacity.Carries(kUtilityFormulas)) {
      auto& utility = static_cast<KVN_mau&>(definition);
      if (utility.GetExpressions() != nullptr) return CheckFormulas(utility);
    }
    CheckNumbers("digits", NumbersOf(definition, /*asTable=*/false), RowSizeOf(definition));
  }

  // Formulas.

  void CheckPrinted(Printed printed) {
    if (printed == Printed::kUnreadable) {
      Add("file", "with a formula that has no text it can't be read back");
    } else if (printed == Printed::kChanged) {
      Add("formulas",
          "they aren't the same when read again: constants go out with six digits, and "
          "nested conditionals without parentheses");
    }
  }

  void CheckEquation(KVN_equation& equation) {
    CheckPrinted(WhatPrintingKeeps(equation.GetEquation()));
    const int handle = equation.GetHandle();
    std::vector<std::string> names;
    equation.GetEquation().GetVariables(names);
    std::erase(names, IdOf(handle));
    if (names != ParentsOf(handle)) Add("parents", "they come back as the equation names them");
  }

  void CheckFormulas(KVN_mau& utility) {
    Printed worst = Printed::kKept;
    for (int i = 0; i < utility.CountExpressions(); i++) {
      const KVN_expression* const formula = utility.GetExpression(i);
      if (formula != nullptr) worst = std::max(worst, WhatPrintingKeeps(*formula));
    }
    CheckPrinted(worst);
    if (!HasUsualWeights(utility)) Add("numbers", "weights aren't written beside formulas");
    const std::vector<std::string> names = ParentsOf(utility.GetHandle());
    const auto isDecision = [this](const std::string& id) {
      return network.TypeOf(network.FindNode(id.c_str())) == KVN_TYPE_LIST;
    };
    std::vector<std::string> back = names;
    std::sort(std::stable_partition(back.begin(), back.end(), isDecision), back.end());
    if (names != back) Add("parents", "they come back sorted, behind the decisions");
  }

  std::vector<std::string> ParentsOf(int handle) const {
    std::vector<std::string> ids;
    for (int parent : network.GetParents(handle)) ids.emplace_back(IdOf(parent));
    return ids;
  }

  void CheckRows(Rows rows) {
    if (rows == Rows::kExact) return;
    Add("numbers", "a row that isn't deterministic is written as its first 1.0");
    if (rows == Rows::kOpen && capacity.needsDeterminism) {
      Add("file", "with a row that has no 1.0 it can't be read back");
    }
  }

  /// Digits that aren't kept, and numbers that can't be read at all: with such a one the whole list
  /// is refused.
  void CheckNumbers(const char* what, const std::vector<double>& numbers, int rowSize = 0) {
    double largest = 0.0;
    const std::vector<double> kept = KeptNumbers(numbers, rowSize);
    for (std::size_t i = 0; i < numbers.size(); i++) {
      if (!std::isfinite(numbers[i])) {
        if (capacity.keepsNonFinite) continue;
        return Add(*what == 'd' ? "numbers" : "costs",
                   "number " + std::to_string(i + 1) +
                       " isn't finite, and no list with such a number can be read back");
      }
      largest = std::fmax(largest, std::fabs(numbers[i] - kept[i]));
    }
    if (largest == 0.0) return;
    char why[96];
    std::snprintf(why, sizeof why, "the format rounds the numbers; the largest change is %.2g",
                  largest);
    Add(what, why);
  }

  /// Length of a distribution in the table; 0 where the numbers are none.
  static int RowSizeOf(const KVN_nodeDefinition& definition) {
    const bool isUtility = (definition.GetType() & KVN_TYPE_BIT_UTILITY) != 0;
    return isUtility ? 0 : std::max(definition.GetNumberOfOutcomes(), 0);
  }

  /// The numbers after writing and reading.
  std::vector<double> KeptNumbers(const std::vector<double>& numbers, int rowSize) const {
    std::vector<double> kept;
    kept.reserve(numbers.size());
    for (double number : numbers) kept.push_back(capacity.numberKept(number));
    if (!capacity.normalizesRows || rowSize < 1) return kept;
    KVN_Dmatrix rows;
    const int sizes[] = {static_cast<int>(kept.size()) / rowSize, rowSize};
    if (sizes[0] < 1 || rows.Setup(sizes, 2) < 0) return kept;
    for (int i = 0; i < rows.GetSize(); i++) rows[i] = kept[i];
    rows.Normalize();
    for (int i = 0; i < rows.GetSize(); i++) kept[i] = rows[i];
    return kept;
  }

  void CheckParents(int handle, const Outlook& outlook) {
    std::string changed;
    const int type = network.TypeOf(handle);
    for (int parent : network.GetParents(handle)) {
      const std::string id = IdOf(parent);
      if (outlooks[parent].fate == Fate::kGone) {
        Add("parents", "node " + id + " isn't in the file");
        changed = "without node " + id + " the table has another shape";
      } else if (outlooks[parent].isRenamed) {
        Add("parents", "node " + id + " comes back under another identifier");
      } else if (!IsReadableArc(network.TypeOf(parent), KindBack(type, outlook.fate))) {
        Add("parents", "no reader takes " + id + ", whose kind is no parent of this one's");
        changed = "without node " + id + " the table has another shape";
      } else if (outlooks[parent].outcomesBack != OutcomesOf(parent)) {
        changed = "node " + id + " comes back with " +
                  std::to_string(outlooks[parent].outcomesBack) + " outcomes in place of " +
                  std::to_string(OutcomesOf(parent));
      }
    }
    const bool hasNumbers =
        type != KVN_TYPE_LIST && (outlook.fate == Fate::kOwn || outlook.fate == Fate::kTable ||
                                  outlook.fate == Fate::kStates || outlook.fate == Fate::kRefused);
    if (hasNumbers && !changed.empty()) Add("numbers", changed);
  }

  /// Kind of the node that comes back, where it takes other parents than the one that went.
  static int KindBack(int type, Fate fate) {
    if (fate != Fate::kBlank) return type;
    return type == KVN_TYPE_MAU ? KVN_TYPE_TABLE : KVN_TYPE_CPT;
  }

  /// The rule by which definitions take parents.
  static bool IsReadableArc(int parentType, int childType) {
    switch (childType) {
      case KVN_TYPE_CAST:
      case KVN_TYPE_DEMORGAN:
        return parentType == childType;
      case KVN_TYPE_CPT:
      case KVN_TYPE_TRUTHTABLE:
      case KVN_TYPE_LIST:
      case KVN_TYPE_TABLE:
      case KVN_TYPE_NOISY_MAX:
      case KVN_TYPE_NOISY_ADDER:
        return HasTableDimension(parentType);
      default:
        return true;
    }
  }

  void CheckOwnOutcomes(KVN_node& node, const Outlook& outlook) {
    const KVN_idArray* names = node.Definition()->GetOutcomesNames();
    const bool isBlank = outlook.fate == Fate::kBlank;
    if ((outlook.fate != Fate::kKindOnly && !isBlank) || names == nullptr) return;
    const int count = OutcomesOf(node.Handle());
    KVN_network scratch;
    const int type = KindBack(node.GetType(), outlook.fate);
    const KVN_nodeDefinition* fresh = scratch.DefinitionOf(scratch.AddNode(type, "x"));
    bool differ = count != outlook.outcomesBack;
    for (int i = 0; i < count && !differ; i++) {
      differ = std::strcmp(OrEmpty(names->GetString(i)),
                           OrEmpty(fresh->GetOutcomesNames()->GetString(i))) != 0;
    }
    if (differ) Add("outcomes", "the format has no statement for those of this kind");
    if (count != outlook.outcomesBack && HasDiagnosis(node)) {
      Add("diagnosis attributes", "they are lists with an entry per outcome, of which " +
                                      std::to_string(outlook.outcomesBack) + " come back");
    }
  }

  bool CarriesCosts(int handle) const {
    const bool dependsOnNodes = network.GetNumberOfParents(handle, /*layer=*/1) > 0;
    return capacity.Carries(dependsOnNodes ? kCostsByParents : kPlainCosts);
  }

  void CheckCosts(int handle) {
    for (int parent : network.GetParents(handle, /*layer=*/1)) {
      const bool isGone = outlooks[parent].fate == Fate::kGone;
      if (!isGone && outlooks[parent].outcomesBack == OutcomesOf(parent)) continue;
      return Add("costs", std::string("node ") + IdOf(parent) +
                              (isGone ? " isn't in the file" : " has other outcomes there"));
    }
    const KVN_doubleArray& costs = network.GetNode(handle)->Cost()->GetCosts().GetItems();
    CheckNumbers("cost digits", {costs.GetItems(), costs.GetItems() + costs.GetSize()});
  }

  KVN_network& network;
  const FormatCapacity& capacity;
  const std::vector<NodeCheck> nodeChecks = NodeChecks();
  std::map<int, Outlook> outlooks;
  std::string where;        // identifier for the losses found now
  bool isSubmodel = false;  // which `where` names then
  std::vector<Loss> losses;
};

}  // namespace

std::vector<Loss> ListLosses(KVN_network& network, int format) {
  const FormatCapacity* capacity = CapacityOf(format);
  if (capacity == nullptr) return {{"", "unknown", "nobody has described what the format carries"}};
  return Finder(network, *capacity).Run();
}
