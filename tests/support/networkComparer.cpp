#include "tests/support/networkComparer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <utility>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/mau.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "expressions/equation.h"
#include "expressions/expression.h"
#include "expressions/variableVisitor.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "tests/support/builders.h"
#include "values/nodeValue.h"

namespace {

using Texts = std::vector<std::string>;
using Ints = std::vector<int>;
using Doubles = std::vector<double>;

constexpr const char* kUnset = "(unset)";

std::string TextOf(const char* text) { return text == nullptr ? kUnset : text; }

Texts TextsIn(const KVN_stringArray& list) {
  Texts texts;
  for (int i = 0; i < list.GetNumItems(); i++) texts.push_back(TextOf(list.GetString(i)));
  return texts;
}

Ints RectangleIn(const KVN_rectangle& r) { return {r.center_X, r.center_Y, r.width, r.height}; }

Texts DocumentsIn(const KVN_documentation& documents) {
  Texts texts;
  for (int i = 0; i < documents.GetCount(); i++) {
    texts.push_back(TextOf(documents.GetTitle(i)));
    texts.push_back(TextOf(documents.GetLocation(i)));
  }
  return texts;
}

Texts PropertiesIn(const KVN_userProperties& properties) {
  Texts texts;
  for (int i = 0; i < properties.GetCount(); i++) {
    texts.push_back(TextOf(properties.GetKey(i)));
    texts.push_back(TextOf(properties.GetValue(i)));
  }
  return texts;
}

Texts BoxesIn(const KVN_textBoxList& boxes) {
  Texts texts;
  for (int i = 0; i < boxes.GetCount(); i++) {
    std::ostringstream place;
    for (int number : RectangleIn(boxes.GetPosition(i))) place << number << ' ';
    texts.push_back(place.str());
    texts.push_back(TextOf(boxes.GetText(i)));
  }
  return texts;
}

Ints PositionIn(const KVN_screenInfo& s) { return {s.position.center_X, s.position.center_Y}; }

Ints ScreenIn(const KVN_screenInfo& s) {
  Ints numbers = {s.position.width, s.position.height};
  for (int number : {s.color, s.selColor, s.font, s.fontColor, s.borderThickness, s.borderColor,
                     s.screenFlags}) {
    numbers.push_back(number);
  }
  return numbers;
}

Texts ParentsOf(KVN_network& network, int handle, int layer) {
  Texts ids;
  for (int parent : network.GetParents(handle, layer)) {
    ids.push_back(TextOf(network.GetNode(parent)->GetId()));
  }
  return ids;
}

/// The numbers that a definition keeps, as one list, and the rest of its content as another.
struct Content {
  Doubles numbers;
  Ints function;   // discrete settings of a gate
  Ints strengths;  // of a noisy-MAX, parent after parent
  Doubles formulas;
};

/// The values of the formula where all its variables are 0.25 and where they are 1.
Doubles ValuesOf(const KVN_expression* formula) {
  struct Assigner : KVN_variableVisitor {
    explicit Assigner(double number) : value(number) {}
    void Visit(KVN_variable& variable) override { variable.value = value; }
    double value;
  };
  Doubles values;
  for (double number : {0.25, 1.0}) {
    const std::unique_ptr<KVN_expression> copy(formula->Clone());
    Assigner assigner(number);
    copy->Accept(assigner);
    values.push_back(SignedValue(*copy));
  }
  return values;
}

void Append(Doubles& list, const Doubles& more) {
  list.insert(list.end(), more.begin(), more.end());
}
void Append(Ints& list, const Ints& more) { list.insert(list.end(), more.begin(), more.end()); }

Content ContentOf(KVN_nodeDefinition& definition) {
  Content content;
  switch (definition.GetType()) {
    case KVN_TYPE_CAST: {
      auto& cast = static_cast<KVN_cast&>(definition);
      content.numbers = ItemsOf(cast.GetPositiveWeights());
      Append(content.numbers, ItemsOf(cast.GetNegativeWeights()));
      content.numbers.push_back(cast.GetBaseline());
      break;
    }
    case KVN_TYPE_DEMORGAN: {
      auto& gate = static_cast<KVN_demorgan&>(definition);
      content.numbers = ItemsOf(gate.GetParentWeights());
      content.numbers.push_back(gate.GetPriorBelief());
      content.function = ItemsOf(gate.GetParentTypes());
      break;
    }
    case KVN_TYPE_NOISY_MAX: {
      auto& gate = static_cast<KVN_noisyMAX&>(definition);
      content.numbers = CellsIn(gate.GetParameters());
      for (int i = 0; gate.GetStrengths(i) != nullptr; i++) {
        Append(content.strengths, ItemsOf(*gate.GetStrengths(i)));
      }
      break;
    }
    case KVN_TYPE_NOISY_ADDER: {
      auto& gate = static_cast<KVN_noisyAdder&>(definition);
      content.numbers = CellsIn(gate.GetParameters());
      Append(content.numbers, ItemsOf(gate.GetWeights()));
      content.function = {gate.GetFunction(), gate.GetDistinguishedState()};
      Append(content.function, ItemsOf(gate.GetParentDistinguishedStates()));
      break;
    }
    case KVN_TYPE_EQUATION: {
      auto& equation = static_cast<KVN_equation&>(definition);
      content.numbers = {equation.GetLowerBound(), equation.GetUpperBound()};
      content.formulas = ValuesOf(equation.GetEquation().Lhs());
      Append(content.formulas, ValuesOf(equation.GetEquation().Rhs()));
      for (const KVN_discInterval& interval : equation.GetDiscIntervals()) {
        content.numbers.push_back(interval.upper);
      }
      break;
    }
    default: {
      if (definition.GetType() == KVN_TYPE_MAU) {
        auto& utility = static_cast<KVN_mau&>(definition);
        const bool hasFormulas = utility.GetExpressions() != nullptr;
        for (int i = 0; hasFormulas && i < utility.CountExpressions(); i++) {
          Append(content.formulas, ValuesOf(utility.GetExpression(i)));
        }
      }
      KVN_Dmatrix* table = nullptr;
      KVN_doubleArray* list = nullptr;
      if (definition.GetDefinition(table) == 0) {
        content.numbers = CellsIn(*table);
      } else if (definition.GetDefinition(list) == 0) {
        content.numbers = ItemsOf(*list);
      }
      break;
    }
  }
  return content;
}

/// One comparison under way.
class Comparison {
 public:
  Comparison(KVN_network& a, KVN_network& b, const NetworkCompareOptions& o)
      : first(a), second(b), options(o) {}

  std::vector<NetworkDifference> Run() {
    CompareNetworkParts();
    CompareSettings();
    CompareSubmodels();
    CompareNodes();
    return std::move(differences);
  }

 private:
  bool IsIgnored(const std::string& field) const {
    return std::any_of(options.ignored.begin(), options.ignored.end(), [&](const std::string& out) {
      return field == out || field.compare(0, out.size() + 1, out + ".") == 0;
    });
  }

  template <typename Value>
  void Tell(const char* field, const Value& a, const Value& b) {
    std::ostringstream text;
    text.precision(std::numeric_limits<double>::max_digits10);
    Print(text, a);
    text << " <> ";
    Print(text, b);
    differences.push_back({where, field, text.str()});
  }

  template <typename Value>
  static void Print(std::ostream& stream, const Value& value) {
    stream << value;
  }
  template <typename Value>
  static void Print(std::ostream& stream, const std::vector<Value>& values) {
    stream << '(';
    for (std::size_t i = 0; i < values.size(); i++) stream << (i == 0 ? "" : ", ") << values[i];
    stream << ')';
  }

  template <typename Value>
  void Expect(const char* field, const Value& a, const Value& b) {
    if (!IsIgnored(field) && !(a == b)) Tell(field, a, b);
  }

  std::string Folded(std::string text) const {
    return options.unsetIsEmpty && text == kUnset ? std::string() : text;
  }
  void ExpectText(const char* field, const char* a, const char* b) {
    Expect(field, Folded(TextOf(a)), Folded(TextOf(b)));
  }
  void ExpectTexts(const char* field, Texts a, Texts b) {
    for (Texts* texts : {&a, &b}) {
      for (std::string& text : *texts) text = Folded(text);
    }
    Expect(field, a, b);
  }

  bool IsNear(double a, double b) const {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return a == b || std::fabs(a - b) <= options.tolerance;
  }
  /// Names the first cell that differs, not the whole lists.
  void ExpectNumbers(const char* field, const Doubles& a, const Doubles& b) {
    if (IsIgnored(field)) return;
    if (a.size() != b.size()) return Tell(field, a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); i++) {
      if (IsNear(a[i], b[i])) continue;
      Tell(field, a[i], b[i]);
      differences.back().text += " at " + std::to_string(i);
      return;
    }
  }

  void CompareNetworkParts() {
    where.clear();
    KVN_header& a = first.Header();
    KVN_header& b = second.Header();
    ExpectText("text.identifier", a.GetId(), b.GetId());
    CompareHeader(a, b);
    CompareCreation(first.Creation(), second.Creation());
    ExpectTexts("text.properties", PropertiesIn(first.UserProperties()),
                PropertiesIn(second.UserProperties()));
    ExpectTexts("text.documents", DocumentsIn(first.Documentation()),
                DocumentsIn(second.Documentation()));
  }

  void CompareHeader(const KVN_header& a, const KVN_header& b) {
    ExpectText("text.name", a.GetName(), b.GetName());
    ExpectText("text.comment", a.GetComment(), b.GetComment());
  }

  void CompareCreation(const KVN_creation& a, const KVN_creation& b) {
    ExpectText("text.creation", a.GetCreator(), b.GetCreator());
    ExpectText("text.creation", a.GetCreated(), b.GetCreated());
    ExpectText("text.creation", a.GetModified(), b.GetModified());
  }

  void CompareSettings() {
    Expect("setting.samples", first.GetNumberOfSamples(), second.GetNumberOfSamples());
    Expect("setting.showAs", first.GetShowAs(), second.GetShowAs());
    Expect("setting.noisyMaxRelevance", first.GetNoisyMaxRelevance(),
           second.GetNoisyMaxRelevance());
    const auto discretization = [](KVN_network& n) {
      return Ints{n.GetDiscSamples(), n.GetDiscAvoidZero(), n.GetEquationDiscretized()};
    };
    Expect("setting.discretization", discretization(first), discretization(second));
    const auto algorithms = [](KVN_network& n) {
      return Ints{n.GetDefaultBNAlgorithm(), n.GetDefaultIDAlgorithm(),
                  n.GetDefaultHybridAlgorithm()};
    };
    Expect("setting.algorithms", algorithms(first), algorithms(second));
    const auto flags = [](KVN_network& n) { return Ints{n.GetUpdateFlags(), n.GetChangeMask()}; };
    Expect("setting.flags", flags(first), flags(second));
    const auto epis = [](KVN_network& n) {
      const EpisParameters& e = n.GetEpisParams();
      return Doubles{double(e.proplen),
                     double(e.numstates1),
                     double(e.numstates2),
                     double(e.numstates3),
                     e.eps1,
                     e.eps2,
                     e.eps3,
                     e.eps4};
    };
    ExpectNumbers("setting.epis", epis(first), epis(second));
    const auto solver = [](KVN_network& n) {
      const KVN_solverParameters& s = n.GetSolverParameters();
      return Doubles{s.d1,         s.d2,         s.d3,         s.d4,
                     double(s.i1), double(s.i2), double(s.i3), double(n.GetSolverSteps())};
    };
    ExpectNumbers("setting.solver", solver(first), solver(second));
  }

  static std::map<std::string, int> SubmodelsOf(KVN_network& network) {
    std::map<std::string, int> found;
    KVN_intArray handles;
    EXPECT_EQ(network.Submodels().GetDescendants(handles), 0);
    for (int handle : handles) {
      if (handle == KVN_ROOT_SUBMODEL) continue;
      found[TextOf(network.Submodels().GetSubmodel(handle)->Header().GetId())] = handle;
    }
    return found;
  }

  static std::map<std::string, int> NodesOf(KVN_network& network) {
    std::map<std::string, int> found;
    for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
      found[TextOf(network.GetNode(handle)->GetId())] = handle;
    }
    return found;
  }

  /// Calls `compare(handle, handle)` for the names that both have, and tells of the others.
  template <typename Compare>
  void ForEachPair(const char* field, const std::map<std::string, int>& a,
                   const std::map<std::string, int>& b, Compare compare) {
    std::map<std::string, int> all = a;
    all.insert(b.begin(), b.end());
    for (const auto& [id, ignored] : all) {
      where = id;
      const bool inFirst = a.count(id) != 0;
      const bool inSecond = b.count(id) != 0;
      Expect(field, inFirst, inSecond);
      if (inFirst && inSecond) compare(a.at(id), b.at(id));
    }
    where.clear();
  }

  static std::string SubmodelIdOf(KVN_network& network, int handle) {
    if (handle < 0 || (handle | KVN_SUBMODEL_BIT) == KVN_ROOT_SUBMODEL) return "(root)";
    KVN_submodel* submodel = network.Submodels().GetSubmodel(handle);
    return submodel == nullptr ? "(none)" : TextOf(submodel->Header().GetId());
  }

  void CompareSubmodels() {
    CompareDiagram(*first.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL),
                   *second.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL));
    ForEachPair("submodel.exists", SubmodelsOf(first), SubmodelsOf(second), [&](int i, int j) {
      Expect("submodel.parent", SubmodelIdOf(first, first.Submodels().GetParent(i)),
             SubmodelIdOf(second, second.Submodels().GetParent(j)));
      KVN_submodel& a = *first.Submodels().GetSubmodel(i);
      KVN_submodel& b = *second.Submodels().GetSubmodel(j);
      CompareHeader(a.Header(), b.Header());
      CompareDiagram(a, b);
    });
  }

  void CompareDiagram(KVN_submodel& a, KVN_submodel& b) {
    Expect("layout.position", PositionIn(a.Screen()), PositionIn(b.Screen()));
    Expect("layout.screen", ScreenIn(a.Screen()), ScreenIn(b.Screen()));
    Expect("layout.window", RectangleIn(a.Window()), RectangleIn(b.Window()));
    Expect("layout.window", a.GetWindowColor(), b.GetWindowColor());
    ExpectTexts("text.boxes", BoxesIn(a.TextBoxes()), BoxesIn(b.TextBoxes()));
  }

  void CompareNodes() {
    ForEachPair("node.exists", NodesOf(first), NodesOf(second), [&](int i, int j) {
      CompareInfo(*first.GetNode(i), *second.GetNode(j));
      Expect("node.target", first.IsTarget(i), second.IsTarget(j));
      Expect("node.parents", ParentsOf(first, i, 0), ParentsOf(second, j, 0));
      CompareDefinitions(first.DefinitionOf(i), second.DefinitionOf(j));
      CompareExtra(first.GetNode(i)->ExtraDefinition(), second.GetNode(j)->ExtraDefinition());
      Expect("cost.parents", ParentsOf(first, i, 1), ParentsOf(second, j, 1));
      ExpectNumbers("cost.numbers", CellsIn(first.GetNode(i)->Cost()->GetCosts()),
                    CellsIn(second.GetNode(j)->Cost()->GetCosts()));
      CompareEvidence(first.ValueOf(i), second.ValueOf(j));
    });
  }

  void CompareInfo(KVN_node& a, KVN_node& b) {
    CompareHeader(a.Info().Header(), b.Info().Header());
    Expect("node.submodel", SubmodelIdOf(first, a.GetSubmodel()),
           SubmodelIdOf(second, b.GetSubmodel()));
    Expect("layout.position", PositionIn(a.Info().Screen()), PositionIn(b.Info().Screen()));
    Expect("layout.screen", ScreenIn(a.Info().Screen()), ScreenIn(b.Info().Screen()));
    ExpectTexts("text.properties", PropertiesIn(a.Info().UserProperties()),
                PropertiesIn(b.Info().UserProperties()));
    ExpectTexts("text.documents", DocumentsIn(a.Info().Documentation()),
                DocumentsIn(b.Info().Documentation()));
  }

  void CompareDefinitions(KVN_nodeDefinition* a, KVN_nodeDefinition* b) {
    const auto outcomes = [](KVN_nodeDefinition* d) {
      const KVN_idArray* names = d == nullptr ? nullptr : d->GetOutcomesNames();
      return names == nullptr ? Texts() : TextsIn(*names);
    };
    ExpectTexts("definition.outcomes", outcomes(a), outcomes(b));
    if (options.byTable) return CompareTables(a, b);
    const auto kind = [](KVN_nodeDefinition* d) { return d == nullptr ? 0 : d->GetType(); };
    Expect("node.kind", kind(a), kind(b));
    if (a == nullptr || b == nullptr || kind(a) != kind(b)) return;
    const Content ofFirst = ContentOf(*a);
    const Content ofSecond = ContentOf(*b);
    ExpectNumbers("definition.numbers", ofFirst.numbers, ofSecond.numbers);
    Expect("definition.function", ofFirst.function, ofSecond.function);
    Expect("definition.strengths", ofFirst.strengths, ofSecond.strengths);
    ExpectNumbers("definition.formulas", ofFirst.formulas, ofSecond.formulas);
  }

  void CompareTables(KVN_nodeDefinition* a, KVN_nodeDefinition* b) {
    const auto table = [](KVN_nodeDefinition* d) {
      KVN_Dmatrix* found = nullptr;
      if (d == nullptr || d->GetDefinition(found) != 0) return KVN_Dmatrix();
      return *found;
    };
    const KVN_Dmatrix ofFirst = table(a);
    const KVN_Dmatrix ofSecond = table(b);
    const auto shape = [](const KVN_Dmatrix& matrix) {
      Ints sizes;
      for (int i = 0; i < matrix.GetNumberOfDimensions(); i++) {
        sizes.push_back(matrix.GetSizeOfDimension(i));
      }
      return sizes;
    };
    Expect("definition.shape", shape(ofFirst), shape(ofSecond));
    ExpectNumbers("definition.numbers", CellsIn(ofFirst), CellsIn(ofSecond));
  }

  void CompareExtra(KVN_extraDefinition* a, KVN_extraDefinition* b) {
    if (a == nullptr || b == nullptr) {
      return Expect("diagnosis.type", a != nullptr, b != nullptr);
    }
    Expect("diagnosis.type", a->GetDiagnosisType(), b->GetDiagnosisType());
    const auto flags = [](KVN_extraDefinition& e) {
      return Ints{e.GetRanked(), e.GetMandatory(), e.GetSetAsDefault()};
    };
    Expect("diagnosis.flags", flags(*a), flags(*b));
    Expect("diagnosis.showAs", a->GetShowAs(), b->GetShowAs());
    Expect("diagnosis.faults", ItemsOf(a->GetFaultStates()), ItemsOf(b->GetFaultStates()));
    ExpectTexts("diagnosis.faults", TextsIn(a->GetFaultNames()), TextsIn(b->GetFaultNames()));
    ExpectTexts("diagnosis.faults", TextsIn(a->GetFaultLabels()), TextsIn(b->GetFaultLabels()));
    Expect("diagnosis.default", a->GetDefaultOutcome(), b->GetDefaultOutcome());
    ExpectTexts("diagnosis.comments", TextsIn(a->GetStateComments()),
                TextsIn(b->GetStateComments()));
    ExpectTexts("diagnosis.comments", TextsIn(a->GetStateRepairInfo()),
                TextsIn(b->GetStateRepairInfo()));
    ExpectText("diagnosis.question", a->GetQuestion(), b->GetQuestion());
    for (int i = 0; i < std::min(a->GetOutcomeCount(), b->GetOutcomeCount()); i++) {
      ExpectTexts("diagnosis.documents", DocumentsIn(*a->GetStateDocumentation(i)),
                  DocumentsIn(*b->GetStateDocumentation(i)));
    }
  }

  void CompareEvidence(KVN_nodeValue* a, KVN_nodeValue* b) {
    const auto outcome = [](KVN_nodeValue* v) {
      double number = 0.0;
      if (v == nullptr || !v->IsEvidence()) return -1.0;
      if (int found = v->GetEvidence(); found >= 0) return double(found);
      return v->GetValue(number) == 0 ? number : -1.0;
    };
    ExpectNumbers("evidence.outcome", {outcome(a)}, {outcome(b)});
    const auto likelihoods = [](KVN_nodeValue* v) {
      Doubles found;
      if (v != nullptr && v->IsVirtualEvidence()) (void)v->GetVirtualEvidence(found);
      return found;
    };
    ExpectNumbers("evidence.virtual", likelihoods(a), likelihoods(b));
  }

  KVN_network& first;
  KVN_network& second;
  const NetworkCompareOptions& options;
  std::string where;
  std::vector<NetworkDifference> differences;
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, const NetworkDifference& difference) {
  return stream << (difference.node.empty() ? "network" : difference.node) << ": "
                << difference.field << ": " << difference.text;
}

std::vector<NetworkDifference> CompareNetworks(KVN_network& first, KVN_network& second,
                                               const NetworkCompareOptions& options) {
  return Comparison(first, second, options).Run();
}

testing::AssertionResult NetworksEqual(KVN_network& first, KVN_network& second,
                                       const NetworkCompareOptions& options) {
  const std::vector<NetworkDifference> differences = CompareNetworks(first, second, options);
  if (differences.empty()) return testing::AssertionSuccess();
  testing::AssertionResult failure = testing::AssertionFailure();
  failure << differences.size() << " differences";
  for (std::size_t i = 0; i < differences.size() && i < 10; i++) failure << "\n" << differences[i];
  return failure;
}
