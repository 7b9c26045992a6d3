#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "expressions/equation.h"
#include "formats/xml/xmlErrorHandler.h"
#include "formats/xml/xmlHandler.h"
#include "formats/xml/xmlReader.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"

class KVN_expression;
class KVN_network;
class KVN_nodeDefinition;

/// What `loadOptions` (and the options of a save) may be besides a pointer.
constexpr std::intptr_t KVN_XML_USUAL_EXTENSION = 0;  // the graphical form of the network
constexpr std::intptr_t KVN_XML_NO_EXTENSION = -1;    // content of `extensions` is unknown content

/// Reads a native XML file into a network that has been emptied. False after an error, which the
/// log tells with line and column; the network keeps what was built up to there.
///
/// Any other value of `loadOptions` is the address of an IXmlBinding for the content of
/// `extensions`, which the caller keeps.
bool LoadXmlNetwork(const char* fileName, KVN_network& network, std::intptr_t loadOptions);

/// Nodes by their identifiers.
using XmlNodeHandles = std::unordered_map<std::string, int>;

/// Reader of the graphical form of a network, as the network loader sees it: a binding that is to
/// stand in `extensions`. It comes behind the nodes in every file that this system writes.
class IXmlVustaLoader {
 public:
  virtual IXmlBinding* GetRootBinding() = 0;
  /// Destroys the loader.
  virtual void Release() = 0;
  virtual ~IXmlVustaLoader() = default;
};

/// `handles` fills up while the file is read. Null when memory is short.
IXmlVustaLoader* NewVustaLoader(IXmlReader& reader, KVN_network& network,
                                const XmlNodeHandles& handles);

/// Builds a network from the elements of a native XML file; docs/formats.md has the table of
/// elements. Lives for one load.
///
/// A node is made at the start of its element. Its children, in any order, go to a work area, and
/// arcs, states and numbers are set at the end of the element, in this order. So a parent must
/// stand earlier in the file, which also keeps the graph acyclic without a test.
///
/// Words of lists must be numbers as a whole, unlike attributes. Every refusal, by the loader or by
/// the model, ends the load with a message.
class XmlNetLoader : public XmlReader, public XmlErrorHandler {
 public:
  explicit XmlNetLoader(KVN_network& target);
  ~XmlNetLoader() override;

  bool Load(const char* fileName, std::intptr_t loadOptions);

 private:
  using Handler = XmlHandler<XmlNetLoader>;
  using Callback = Handler::Callback;
  class NodeBinding;

  /// A child element of a kind of node.
  struct Child {
    const char* element;  // null behind the last
    int occurrence;
    Callback start;
    Callback end;
    Callback text;
  };
  /// A kind of node: its element and what the numbers in it become.
  struct Kind {
    const char* element;
    int type;
    bool hasStates;
    bool isTemporal;  // may stand in `dynamic` too
    Callback finish;  // null where nothing is left to do
    Child children[4];
  };
  static const Kind kKinds[];

  // Bindings, networkLoaderBindings.cpp.
  XmlBinding& Make(const char* name, Callback start = nullptr, Callback end = nullptr,
                   Callback text = nullptr, int options = KVN_XML_INHERIT);
  XmlBinding& MakeRoot(std::intptr_t loadOptions);
  XmlBinding& MakeAlgorithms();
  XmlBinding& MakeNodes();
  XmlBinding& MakeNode(const Kind& kind);
  XmlBinding& MakeState();
  void MakeEquationChildren(XmlBinding& node);
  XmlBinding& MakeCosts();
  XmlBinding& MakeTemporal();
  XmlBinding& MakeTemporalNode(const Kind& kind);
  XmlBinding& MakeCases();
  XmlBinding& MakeExtensions(std::intptr_t loadOptions);
  void AddChildren(XmlBinding& node, const Kind& kind);

  // Elements outside the nodes, networkLoader.cpp.
  void StartNetwork();
  void StartEpis();
  void StartProperty();
  void EndNetworkProperty();
  void EndNodeProperty();
  void StartCostNode();
  void EndCostNode();
  void StartDynamic();
  void StartTemporal(const Kind& kind);
  void EndTemporal();
  void StartCase();

  // Nodes, networkLoaderNodes.cpp.
  void StartNode(const Kind& kind);
  void EndNode(const Kind& kind);
  /// Aborts, and gives false for the caller to pass on.
  bool Refuse(const char* message) {
    Abort(message);
    return false;
  }
  int CreateNode(const Kind& kind, const std::string& id, int temporalType);
  /// Aborts and gives false where a step ran out of memory; other results are the caller's.
  bool HadMemory(int result);
  /// An attribute that is one of `count` words; absent and empty give `absent`.
  bool GetWord(const char* name, const char* const* words, int count, int absent,
               const char* complaint, int& value);
  bool ReadAdderFunction(const Kind& kind);
  void StartState();
  bool AddArcs(int layer);
  bool SetStates();
  bool HasAllRows();
  bool SetStateMarks();
  bool IsCountPlausible(const Kind& kind);
  bool AreRowsPlausible();
  bool IsGatePlausible(const Kind& kind);
  bool IsBinaryPlausible(const Kind& kind);
  bool IsMauPlausible(const Kind& kind);
  /// A few parents are enough to ask for a table of gigabytes: whether a list of `listed` words may
  /// be the numbers of `cells` cells. Small tables are left to the model.
  static bool MayFill(std::int64_t cells, int listed);
  void FinishCpt();
  void FinishUtility();
  void FinishMau();
  void FinishMauFormulas();
  void FinishTruthTable();
  void FinishCast();
  void FinishDemorgan();
  void FinishNoisyMax();
  void FinishNoisyAdder();
  bool SetStrengths(class KVN_noisyMAX& gate);
  bool SetDistinguishedStates(class KVN_noisyAdder& gate);

  // Equation nodes, networkLoaderEquations.cpp.
  void StartFormula();
  void EndFormula();
  void StartInterval();
  void FinishEquation();

  // Lists and numbers, networkLoaderLists.cpp.
  void ResetWork();
  void AddParentWord();
  void StartNumbers();
  void StartParameters();
  void StartStrengths();
  void AddNumberWord() { AddDouble(numbers); }
  void AddWeightWord() { AddDouble(weights); }
  void AddPositiveWord() { AddDouble(positiveWeights); }
  void AddNegativeWord() { AddDouble(negativeWeights); }
  void AddCostWord();
  void AddIntegerWord();
  void AddTypeWord();
  void AddResultingState();
  void EndExpression();
  void EndBaseline();
  void EndPriorBelief();
  void AddDouble(KVN_doubleArray& list);
  /// Cells of a table over the parents read so far, with `own` in the last dimension.
  std::int64_t CountCells(std::int64_t own) const;
  /// Cells of the parameters of a gate over the parents read so far, with `own` outcomes.
  std::int64_t CountParameters(std::int64_t own) const;
  /// Combinations of alternatives of the decisions among the parents read so far, and the number of
  /// other parents.
  std::int64_t CountChoices(std::int64_t& others) const;

  KVN_network& network;
  std::vector<std::unique_ptr<XmlBinding>> bindings;
  std::unique_ptr<IXmlVustaLoader, XmlReleaser> vusta;
  XmlNodeHandles nodeHandles;
  std::int64_t longestList = 0;  // words that the file has room for, if its size is known
  std::int64_t unlisted = 0;     // cells of gates that the file gives no numbers for
  std::string propertyId;

  // Work area of the node in hand.
  int nodeHandle = -1;
  KVN_nodeDefinition* definition = nullptr;  // not owned
  int order = 0;                             // of a temporal definition
  int function = 0;                          // of a noisy adder
  KVN_intArray parents;
  std::unordered_map<int, int> childOfParent;  // the last node that listed the parent
  int serial = 0;                              // number of the node in hand
  KVN_stringArray stateIds;
  std::unordered_set<std::string> stateSet;  // the same
  std::vector<std::string> stateLabels;
  int defaultState = -1;
  KVN_intArray faultStates;
  KVN_doubleArray numbers;  // probabilities, utilities, parameters, costs
  KVN_doubleArray weights;
  KVN_doubleArray positiveWeights;
  KVN_doubleArray negativeWeights;
  KVN_intArray integers;  // strengths, distinguished states
  KVN_intArray parentTypes;
  bool hasParameters = false;
  bool hasStrengths = false;
  double baseline = -1.0;
  double priorBelief = -1.0;
  std::vector<std::unique_ptr<KVN_expression>> formulas;
  std::unordered_map<std::string, int> resultIndex;  // distinct names of resulting states
  KVN_stringArray resultNames;                       // the same by first occurrence
  KVN_intArray results;                              // positions among the names, row by row
  std::string formula;                               // of an equation
  std::vector<KVN_discInterval> intervals;
};
