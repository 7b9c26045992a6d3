// What is left of a network for its targets: which records, in which parts, with which tables.

#include "inference/exact/relevanceGraph.h"

#include <string>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/noisyMAX.h"
#include "foundation/resultCodes.h"
#include "inference/exact/sepsetJoinTree.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/userProperties.h"
#include "tests/support/builders.h"
#include "tests/support/definitionBuilder.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/oracle.h"
#include "tests/support/randomBayes.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"

namespace {

constexpr double kRounding = 1e-12;

std::unique_ptr<RelevanceParts> Reduce(KVN_network& network, bool absorbRoots = true,
                                       bool useDeterminism = true) {
  int result = 0;
  std::unique_ptr<RelevanceParts> parts =
      ReduceNetwork(network, absorbRoots, useDeterminism, result);
  EXPECT_EQ(result, 0);
  return parts;
}

std::string NameOf(const RelevanceNode& record) {
  return record.node == nullptr ? "?" : record.node->Info().Header().GetId();
}

/// The records of each part with their parents and evidence: "A B(A)=1 | C". Holds the lists of
/// children against those of parents on the way.
std::string Describe(RelevanceParts* parts) {
  if (parts == nullptr) return "null";
  std::string text;
  for (int p = 0; p < parts->GetCount(); p++) {
    RelevanceGraph& part = (*parts)[p];
    int evidence = 0;
    for (int i = 0; i < part.GetSize(); i++) {
      const RelevanceNode& record = part.Node(i);
      text += text.empty() ? "" : i == 0 ? " | " : " ";
      text += NameOf(record);
      std::string parents;
      for (int number : record.parents) {
        parents += (parents.empty() ? "" : ",") + NameOf(part.Record(number));
        EXPECT_TRUE(part.Record(number).children.IsInList(part.nodes[i]));
      }
      if (!parents.empty()) text += "(" + parents + ")";
      if (record.HasEvidence()) text += "=" + std::to_string(record.evidence);
      evidence += record.HasEvidence();
    }
    EXPECT_EQ(part.evidenceCount, evidence);
  }
  return text;
}

std::string Describe(const std::unique_ptr<RelevanceParts>& parts) { return Describe(parts.get()); }

/// The network of most cases, all nodes with two outcomes:
///
///     A -> B -> C -> D    E -> C     F
///
/// C is 0 for certain when E is, and D repeats C.
struct Example {
  Example() {
    network.SetUpdateFlags(0);
    a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
    b = AddCpt(network, "B", 2, {a}, {0.9, 0.1, 0.2, 0.8});
    e = AddCpt(network, "E", 2, {}, {0.3, 0.7});
    c = AddCpt(network, "C", 2, {b, e}, {1, 0, 0.6, 0.4, 1, 0, 0.2, 0.8});
    d = AddCpt(network, "D", 2, {c}, {1, 0, 0, 1});
    f = AddCpt(network, "F", 2, {}, {0.4, 0.6});
  }

  void Observe(const std::string& findings) {  // "B0 E0"
    for (std::size_t i = 0; i < findings.size(); i += 3) {
      const int handle = network.FindNode(findings.substr(i, 1).c_str());
      ASSERT_EQ(network.ValueOf(handle)->SetEvidence(findings[i + 1] - '0'), 0);
    }
  }
  void Aim(const std::string& targets) {
    for (char id : targets) {
      ASSERT_EQ(network.SetTarget(network.FindNode(std::string(1, id).c_str())), 0);
    }
  }
  std::string ValidNodes() const {
    std::string valid;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      if (network.ValueOf(h)->IsValueValid()) valid += network.GetNode(h)->Info().Header().GetId();
    }
    return valid;
  }

  KVN_network network;
  int a, b, c, d, e, f;
};

struct PartsCase {
  const char* name;
  const char* findings;
  const char* targets;
  bool absorbRoots;
  bool useDeterminism;
  const char* parts;
  const char* valid;  // what is known after the reduction, in handle order
};
const PartsCase kPartsCases[] = {
    {"no targets means all", "", "", true, true, "A B(A) E C(B,E) D(C) | F", ""},
    {"barren nodes go", "", "B", false, true, "A B(A)", ""},
    {"a root is summed into its child", "", "B", true, true, "B", ""},
    {"and that into its own", "", "D", true, true, "D", ""},
    {"unless it is a target", "", "AC", true, true, "A B(A) C(B)", ""},
    {"evidence cuts its arcs", "C1", "D", false, false, "D", "C"},
    {"so that parts come apart", "B1", "AD", false, true, "A B(A)=1 | E C(E) D(C)", "B"},
    {"a target with evidence is settled", "F1", "F", true, true, "", "F"},
    {"but not when others depend on it", "B1", "AB", true, true, "A B(A)=1", "B"},
    {"what is certain below is known", "E0", "D", true, true, "", "ECD"},
    {"if it is looked for", "E0", "D", false, false, "A B(A) C(B) D(C)", "E"},
    {"what is certain above is known", "D1", "E", true, true, "", "ECD"},
    {"uncertain parents stay", "C1", "B", true, true, "B C(B)=1", "EC"},
    {"components without a target go", "D0", "F", true, true, "F", "CD"},
    {"contradictions aren't looked for", "E0 D1", "AD", true, true, "A", "ECD"},
};

TEST(Relevance, LeavesWhatTheTargetsNeed) {
  for (const PartsCase& c : kPartsCases) {
    SCOPED_TRACE(c.name);
    Example example;
    example.Observe(c.findings);
    example.Aim(c.targets);
    EXPECT_EQ(Describe(Reduce(example.network, c.absorbRoots, c.useDeterminism)), c.parts);
    EXPECT_EQ(example.ValidNodes(), c.valid);
    EXPECT_EQ(example.network.GetNumberOfTargets(),
              static_cast<int>(std::string(c.targets).size()));
  }
}

TEST(Relevance, HasNothingToSayOfNoNodes) {
  KVN_network network;
  EXPECT_EQ(Describe(Reduce(network)), "null");
}

TEST(Relevance, RefusesANodeWithoutAValue) {
  KVN_network network;
  const int gate = AddNodeBelow(network, KVN_TYPE_NOISY_MAX, "G", 2, {});
  network.SetNoisyMaxRelevance(1);
  ASSERT_EQ(network.GetNode(gate)->ChangeValue(KVN_TYPE_NONE), 0);
  int result = 0;
  EXPECT_EQ(ReduceNetwork(network, true, true, result), nullptr);
  EXPECT_EQ(result, KVN_REFUSED);
}

// It is meant that all is computed again.
TEST(Relevance, DoesNotSpareValidValues) {
  Example example;
  for (int h : {example.a, example.d}) example.network.ValueOf(h)->SetValueValid();
  EXPECT_EQ(Describe(Reduce(example.network)), "A B(A) E C(B,E) D(C) | F");
}

TEST(Relevance, TakesPropagatedEvidenceWithDeterminismOnly) {
  Example example;
  ASSERT_EQ(example.network.ValueOf(example.e)->SetPropagatedEvidence(1), 0);
  example.Aim("C");
  EXPECT_EQ(Describe(Reduce(example.network, false, false)), "A B(A) E C(B,E)");
  EXPECT_EQ(Describe(Reduce(example.network, false, true)), "A B(A) C(B)");
}

TEST(Relevance, WritesPointMassesOfWhatIsCertain) {
  Example example;
  example.Observe("D1");
  MatrixOf(example.network, example.e).CleanUp();  // of another shape
  (void)Reduce(example.network);
  for (int h : {example.c, example.d, example.e}) {
    EXPECT_TRUE(CellsNear(MatrixOf(example.network, h), {0, 1}, 0.0));
  }
}

TEST(Relevance, CutsAndSumsTables) {
  Example example;
  example.Observe("B1");
  example.Aim("AC");
  const std::unique_ptr<RelevanceParts> parts = Reduce(example.network);
  ASSERT_EQ(Describe(parts), "A B(A)=1 | C");
  EXPECT_TRUE(CellsNear(*(*parts)[0].Node(1).GetTable(), {0.9, 0.1, 0.2, 0.8}, 0.0));
  // 0.3 * (1, 0) + 0.7 * (0.2, 0.8)
  EXPECT_TRUE(CellsNear(*(*parts)[1].Node(0).GetTable(), {0.44, 0.56}, kRounding));
}

TEST(Relevance, ReleasesPartsOfOneNodeAsTheyStand) {
  Example example;
  WriteCells(example.network, example.f, {0.4, 0.9});
  const std::unique_ptr<RelevanceParts> parts = Reduce(example.network);
  ReleaseOneNodeParts(*parts);
  EXPECT_EQ(Describe(parts), "A B(A) E C(B,E) D(C)");
  EXPECT_EQ(example.ValidNodes(), "F");
  EXPECT_TRUE(CellsNear(MatrixOf(example.network, example.f), {0.4, 0.9}, 0.0));
  RelevanceNode& record = (*parts)[0].Node(0);
  EXPECT_EQ(SetRecordEvidence(record, 2), KVN_REFUSED);
  EXPECT_EQ(SetRecordEvidence(record, -1), KVN_REFUSED);
  EXPECT_FALSE(record.HasEvidence());
}

/// Nothing in the engine sets the reserved flag.
struct FlagAccess : KVN_nodeValue {
  static void Reserve(KVN_nodeValue& value) {
    (value.*(&FlagAccess::ChangeFlags))(KVN_VALUE_RESERVED, 0);
  }
};

TEST(Relevance, ReservedFlagMakesARootOfThePrior) {
  struct Case {
    int type;
    double prior;
  };
  for (const Case& c :
       {Case{KVN_TYPE_CAST, 0.3}, {KVN_TYPE_DEMORGAN, 0.2}, {KVN_TYPE_NOISY_MAX, 0.1}}) {
    SCOPED_TRACE(c.type);
    KVN_network network;
    const int parent = AddNodeBelow(network, c.type, "P", 0, {});
    const int gate = AddNodeBelow(network, c.type, "G", 0, {parent});
    if (c.type == KVN_TYPE_CAST) {
      ASSERT_EQ(DefinitionAs<KVN_cast>(network, gate).SetBaseline(c.prior), 0);
    } else if (c.type == KVN_TYPE_DEMORGAN) {
      ASSERT_EQ(DefinitionAs<KVN_demorgan>(network, gate).SetPriorBelief(c.prior), 0);
    } else {
      KVN_Dmatrix& rows = DefinitionAs<KVN_noisyMAX>(network, gate).GetParameters();
      rows[rows.GetSize() - 2] = c.prior;
      rows[rows.GetSize() - 1] = 1 - c.prior;
    }
    FlagAccess::Reserve(*network.ValueOf(gate));
    const std::unique_ptr<RelevanceParts> parts = Reduce(network);
    ASSERT_EQ(Describe(parts), "P | G");
    EXPECT_TRUE(CellsNear(*(*parts)[1].Node(0).GetTable(), {c.prior, 1 - c.prior}, 0.0));
  }
}

struct GateCase {
  const char* name;
  int parents;
  int outcome;  // of three
  bool flag;
  const char* property;
  const char* parts;
};
const GateCase kGateCases[] = {
    {"off", 2, 2, false, nullptr, "P0 P1 G(P0,P1)=2"},
    {"by flag", 2, 2, true, nullptr, "P0 ?(P0)=2 | P1 ?(P1)=2"},
    {"by property", 2, 2, false, "1", "P0 ?(P0)=2 | P1 ?(P1)=2"},
    {"the property goes first", 2, 2, true, "0", "P0 P1 G(P0,P1)=2"},
    {"and is a number", 2, 2, true, "yes", "P0 P1 G(P0,P1)=2"},
    {"not in another outcome", 2, 1, true, nullptr, "P0 P1 G(P0,P1)=1"},
    {"not with one parent", 1, 2, true, nullptr, "P0 G(P0)=2"},
};

TEST(Relevance, DecomposesGatesInTheirLastOutcome) {
  for (const GateCase& c : kGateCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    network.SetUpdateFlags(0);
    const int gate = AddNodeBelow(network, KVN_TYPE_NOISY_MAX, "G", 3, {});
    for (int i = 0; i < c.parents; i++) {
      const int parent =
          AddNodeBelow(network, KVN_TYPE_CPT, ("P" + std::to_string(i)).c_str(), 2, {});
      ASSERT_EQ(network.AddArc(parent, gate, 0), 0);
      ASSERT_EQ(network.SetTarget(parent), 0);
    }
    network.SetNoisyMaxRelevance(c.flag);
    if (c.property != nullptr) {
      ASSERT_EQ(network.UserProperties().AddProperty("KVN_NOISYMAXRELEVANCE", c.property), 0);
    }
    ASSERT_EQ(network.ValueOf(gate)->SetEvidence(c.outcome), 0);
    std::string described = Describe(Reduce(network));
    // The gate has the lowest handle, so it stands first where it stays.
    const std::string whole = c.parts;
    const std::size_t at = whole.find(" G(");
    const std::string expected =
        at == std::string::npos ? whole : whole.substr(at + 1) + " " + whole.substr(0, at);
    EXPECT_EQ(described, expected);
  }
}

TEST(Relevance, DecompositionChangesNoPosterior) {
  int decomposed = 0;
  for (std::uint64_t seed = 0; seed < 500; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    RandomNetworkOptions options = PlainNetworkOptions(/*nodes=*/7);
    options.maxOutcomes = 3;
    options.kinds = {KVN_TYPE_CPT, KVN_TYPE_NOISY_MAX, KVN_TYPE_NOISY_MAX};
    network.SetUpdateFlags(0);
    FillRandomNetwork(network, seed, options);
    network.SetNoisyMaxRelevance(1);
    RandomSource random(seed);
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      if (network.TypeOf(h) != KVN_TYPE_NOISY_MAX || random.Chance(0.3)) continue;
      ASSERT_EQ(network.ValueOf(h)->SetEvidence(network.DefinitionOf(h)->GetNumberOfOutcomes() - 1),
                0);
    }
    const OracleResult expected = EnumeratePosteriors(network);
    if (!expected.isPossible) continue;
    decomposed += Describe(Reduce(network)).find('?') != std::string::npos;
    ASSERT_EQ(SepsetJoinTreeUpdate(network), 0);
    ASSERT_TRUE(PosteriorsNear(network, expected, kRounding));
  }
  EXPECT_GT(decomposed, 100);
}

std::vector<std::vector<double>> TablesOf(KVN_network& network) {
  std::vector<std::vector<double>> tables;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    tables.push_back(ItemsOf(TableOfNode(network, h).GetItems()));
  }
  return tables;
}

TEST(Relevance, LeavesDefinitionsAndTargetsAlone) {
  for (std::uint64_t seed = 0; seed < 300; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    FillRandomBayes(network, seed, {.nodes = 20, .maxParents = 4, .deterministicShare = 0.5});
    ObserveAtRandom(network, seed, 0.3, /*possible=*/seed % 2 == 0);
    if (seed % 3 != 0) AimAtRandom(network, seed, 0.3);
    network.SetNoisyMaxRelevance(1);
    const std::vector<std::vector<double>> before = TablesOf(network);
    const int targets = network.GetNumberOfTargets();
    const std::unique_ptr<RelevanceParts> parts = Reduce(network);
    (void)Describe(parts);  // holds children against parents
    for (int i = parts->GetCount() - 1; i >= 0; i -= 2) parts->Free(i);  // parts go in any order
    EXPECT_EQ(TablesOf(network), before);
    EXPECT_EQ(network.GetNumberOfTargets(), targets);
  }
}

TEST(Relevance, LongChainsNeedLittleStack) {
  RunInSmallStack([] {
    KVN_network network;
    network.SetUpdateFlags(0);
    int last = AddCpt(network, nullptr, 2, {}, {0.25, 0.75});
    const int first = last;
    for (int i = 1; i < FewerIfSanitized(50000); i++)
      last = AddCpt(network, nullptr, 2, {last}, {1, 0, 0, 1});
    ASSERT_EQ(network.SetTarget(last), 0);
    const std::unique_ptr<RelevanceParts> parts = Reduce(network);
    ASSERT_EQ(parts->GetCount(), 1);
    EXPECT_TRUE(CellsNear(*(*parts)[0].Node(0).GetTable(), {0.25, 0.75}, 0.0));
    ASSERT_EQ(network.ClearAllTargets(), 0);
    ASSERT_EQ(network.SetTarget(first), 0);
    ASSERT_EQ(network.ValueOf(last)->SetEvidence(1), 0);
    EXPECT_EQ(Reduce(network)->GetCount(), 0);
    EXPECT_TRUE(CellsNear(MatrixOf(network, first), {0, 1}, 0.0));
  });
}

TEST(Relevance, FailingAllocationsGiveACodeAndNoParts) {
  const int failures = FailEachAllocation([](int n) {
    KVN_network network;
    FillRandomBayes(network, /*seed=*/11,
                    {.nodes = 15, .maxParents = 4, .deterministicShare = 0.5});
    ObserveAtRandom(network, /*seed=*/11, 0.3, /*possible=*/true);
    network.SetNoisyMaxRelevance(1);
    int result = 0;
    bool failed = false;
    {
      FailingAllocation failing(n);
      const std::unique_ptr<RelevanceParts> parts = ReduceNetwork(network, true, true, result);
      failed = failing.HasFailed();
      EXPECT_EQ(parts == nullptr, failed);
    }
    EXPECT_EQ(result, failed ? int{KVN_NO_MEMORY} : 0);
    EXPECT_EQ(network.GetNumberOfTargets(), 0);
    return failed;
  });
  EXPECT_GT(failures, 10);
}

}  // namespace
