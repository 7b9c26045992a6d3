// Evidence: what it makes stale, what follows from it, and what contradicts it.

#include <random>
#include <string>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/network/evidenceReference.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"

namespace {

// State of a node's value for messages: "u2v" is user evidence 2, valid; "p0v" propagated evidence.
std::string StateOf(bool user, bool propagated, int outcome, bool valid) {
  std::string text = user ? "u" : propagated ? "p" : "-";
  if (user || propagated) text += std::to_string(outcome);
  return valid ? text + "v" : text;
}

std::string StateOf(const KVN_network& network, int handle) {
  const KVN_nodeValue& value = *network.ValueOf(handle);
  return StateOf(value.IsEvidence(), value.IsPropagatedEvidence(), value.GetEvidence(),
                 value.IsValueValid());
}

std::vector<std::string> StatesOf(const KVN_network& network) {
  std::vector<std::string> states;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    states.push_back(StateOf(network, h));
  }
  return states;
}

std::vector<std::string> StatesOf(const EvidenceReference& reference) {
  std::vector<std::string> states;
  for (const EvidenceReference::Node& node : reference.nodes) {
    if (node.type == 0) continue;
    states.push_back(StateOf(node.user, node.propagated, node.outcome, node.valid));
  }
  return states;
}

void MakeAllValid(KVN_network& network) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    network.ValueOf(h)->SetValueValid();
  }
}

class RandomCase {
 public:
  explicit RandomCase(unsigned seed) : random(seed) { Build(Below(7) + 2); }

  int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }

  KVN_network network;
  std::vector<int> handles;

 private:
  void Build(int count) {
    network.SetUpdateFlags(0);
    for (int i = 0; i < count; i++) {
      const int kind = Below(8);
      const int type = kind == 0 ? KVN_TYPE_LIST : kind == 1 ? KVN_TYPE_TABLE : KVN_TYPE_CPT;
      const int outcomes = type == KVN_TYPE_TABLE ? 0 : 2 + Below(2);
      const int handle = AddNodeBelow(network, type, nullptr, outcomes, {});
      const int parents = handles.empty() ? 0 : Below(4);
      // A utility parent or a repeated arc is refused: fewer parents then.
      for (int p = 0; p < parents; p++) {
        const int parent = handles[Below(static_cast<int>(handles.size()))];
        if (network.TypeOf(parent) != KVN_TYPE_TABLE) (void)network.AddArc(parent, handle, 0);
      }
      if (type == KVN_TYPE_CPT) FillRows(TableOfNode(network, handle), outcomes);
      handles.push_back(handle);
    }
    network.SetUpdateFlags(KVN_UPDATE_TRACK_CHANGES | KVN_UPDATE_PROPAGATE_EVIDENCE);
  }

  // Half of the tables copy one dimension of theirs, so that one parent decides whatever the others
  // are. The rows of the rest are mostly certain, some exclude an outcome, and a few contradict
  // themselves, which a table may.
  void FillRows(KVN_Dmatrix& table, int outcomes) {
    const int copied = Below(2) == 0 ? Below(table.GetNumberOfDimensions()) : -1;
    for (int row = 0; row < table.GetSize(); row += outcomes) {
      const int kind = copied >= 0 ? 1 : Below(20);
      KVN_intArray at;
      EXPECT_EQ(table.CoordinatesOf(row, at), 0);
      const int chosen = copied >= 0 ? at[copied] % outcomes : Below(outcomes);
      for (int k = 0; k < outcomes; k++) {
        double cell = k == chosen ? 1.0 : 0.0;
        if (kind == 0) cell = 1.0;
        if (kind > 12) cell = k == chosen ? 0.0 : 1.0 / (outcomes - 1);
        if (kind > 16) cell = 1.0 / outcomes;
        table[row + k] = cell;
      }
    }
  }

  std::mt19937 random;
};

}  // namespace

TEST(Evidence, WalksAgreeWithPlainRecursionOnRandomNetworks) {
  int conflicts = 0, derived = 0;
  for (unsigned seed = 1; seed <= FewerIfSanitized(1500u); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomCase net(seed);
    EvidenceReference reference(net.network);
    for (int step = 0; step < 12; step++) {
      SCOPED_TRACE("step " + std::to_string(step));
      // Every other network begins with nothing valid, where a change needs no walk at all.
      if (step % 3 == 0 && seed % 2 == 0) {
        MakeAllValid(net.network);
        for (auto& node : reference.nodes) node.valid = true;
      } else if (net.Below(6) == 0) {
        const int one = net.handles[net.Below(static_cast<int>(net.handles.size()))];
        net.network.ValueOf(one)->SetValueValid();
        reference.nodes[one].valid = true;
      }
      const int handle = net.handles[net.Below(static_cast<int>(net.handles.size()))];
      KVN_nodeValue& value = *net.network.ValueOf(handle);
      const int action = net.network.TypeOf(handle) == KVN_TYPE_TABLE ? 9 : net.Below(10);
      int result = 0, expected = 0;
      if (action < 6) {
        const int outcome = net.Below(reference.nodes[handle].outcomes);
        result = value.SetEvidence(outcome);
        expected = reference.SetEvidence(handle, outcome);
      } else if (action < 8) {
        result = value.ClearEvidence();
        expected = reference.ClearEvidence(handle);
      } else {
        result = net.network.NotifyChange(handle, KVN_CHANGE_NUMBERS);
        expected = reference.Cascade(handle);
      }
      ASSERT_EQ(result, expected);
      ASSERT_EQ(StatesOf(net.network), StatesOf(reference));
      if (result == KVN_CONFLICTING_EVIDENCE) conflicts++;
      for (const auto& node : reference.nodes) derived += node.propagated;
    }
  }
  // The networks do exercise what they are for.
  EXPECT_GT(conflicts, FewerIfSanitized(100));
  EXPECT_GT(derived, FewerIfSanitized(1000));
}

TEST(Evidence, StaysOffTheTrailsThatItBlocks) {
  // A -> B -> C and A -> D, no certainties. Evidence on B cuts C from A and D.
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.3, 0.7});
  const int b = AddCpt(network, "B", 2, {a}, {0.2, 0.8, 0.6, 0.4});
  const int c = AddCpt(network, "C", 2, {b}, {0.5, 0.5, 0.1, 0.9});
  const int d = AddCpt(network, "D", 2, {a}, {0.5, 0.5, 0.1, 0.9});
  MakeAllValid(network);
  ASSERT_EQ(network.ValueOf(b)->SetEvidence(0), 0);
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"-", "u0v", "-", "-"}));
  MakeAllValid(network);
  ASSERT_EQ(network.ValueOf(d)->SetEvidence(1), 0);
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"-", "u0v", "-v", "u1v"}));
  MakeAllValid(network);
  EXPECT_EQ(network.NotifyChange(c, KVN_CHANGE_NUMBERS), 0);
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"-v", "u0v", "-", "u1v"}));
}

TEST(Evidence, CertainChildrenFollowAndAreReleased) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.3, 0.7});
  const int b = AddCpt(network, "B", 3, {a}, {0, 0, 1, 1, 0, 0});
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(0), 0);
  EXPECT_EQ(StateOf(network, b), "p2v");
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(1), 0);
  EXPECT_EQ(StateOf(network, b), "p0v");
  ASSERT_EQ(network.ValueOf(a)->ClearEvidence(), 0);
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"-", "-"}));

  // The other way round, and with the derivation switched off.
  ASSERT_EQ(network.ValueOf(b)->SetEvidence(2), 0);
  EXPECT_EQ(StateOf(network, a), "p0v");
  ASSERT_EQ(network.ValueOf(b)->ClearEvidence(), 0);
  network.SetUpdateFlags(KVN_UPDATE_TRACK_CHANGES);
  ASSERT_EQ(network.ValueOf(b)->SetEvidence(2), 0);
  EXPECT_EQ(StateOf(network, a), "-");
}

TEST(Evidence, ASiblingIsNotHelpedInTheSamePass) {
  // C = A and B. From C = 0 and A = 1 follows B = 0, but C's pass over its parents frees A's
  // coordinate again before it comes to B; with B known and A asked first, it is found.
  const std::vector<double> kAnd = {1, 0, 1, 0, 1, 0, 0, 1};
  for (int known : {0, 1}) {
    SCOPED_TRACE(known);
    KVN_network network;
    const int inputs[] = {AddCpt(network, "A", 2, {}, {0.5, 0.5}),
                          AddCpt(network, "B", 2, {}, {0.5, 0.5})};
    const int c = AddCpt(network, "C", 2, {inputs[0], inputs[1]}, kAnd);
    ASSERT_EQ(network.ValueOf(inputs[known])->SetEvidence(1), 0);
    ASSERT_EQ(network.ValueOf(c)->SetEvidence(0), 0);
    EXPECT_EQ(StateOf(network, inputs[1 - known]), known == 1 ? "p0v" : "-");
  }
}

TEST(Evidence, ContradictionsAreRefusedWithTheirReason) {
  const struct {
    const char* name;
    int a, c, b;  // evidence in this order, negative: none; that on B is refused
    int result;
    const char* message;
  } kCases[] = {
      // Rows of B by A: A = 0 leaves 0 and 2, A = 1 leaves 1, A = 2 leaves 0 and 2.
      {"impossible with the parent", 0, -1, 1, KVN_REFUSED,
       "Outcome [State1] of node [B] is impossible"},
      {"impossible with any parent", -1, -1, 3, KVN_REFUSED,
       "Outcome [State3] of node [B] is impossible"},
      // B = 1 needs A = 1, which makes C = 0 certain.
      {"the consequence is excluded", -1, 2, 1, KVN_CONFLICTING_EVIDENCE,
       "ERROR: conficting evidence between nodes [A] and [C]"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int a = AddCpt(network, "A", 3, {}, {0.2, 0.3, 0.5});
    const int b = AddCpt(network, "B", 4, {a}, {0.5, 0, 0.5, 0, 0, 1, 0, 0, 0.5, 0, 0.5, 0});
    const int other = AddCpt(network, "C", 3, {a}, {0, 0.5, 0.5, 1, 0, 0, 0, 0.5, 0.5});
    if (c.a >= 0) {
      ASSERT_EQ(network.ValueOf(a)->SetEvidence(c.a), 0);
    }
    if (c.c >= 0) {
      ASSERT_EQ(network.ValueOf(other)->SetEvidence(c.c), 0);
    }
    const std::vector<std::string> before = StatesOf(network);
    EXPECT_EQ(network.ValueOf(b)->SetEvidence(c.b), c.result);
    EXPECT_STREQ(GetLastErrorMessage(), c.message);
    EXPECT_EQ(StatesOf(network), before);
  }
}

TEST(Evidence, AChangeThatBringsAConflictIsNotRefused) {
  // A -> B equal by certainty; the table is edited under evidence on both, so that they conflict.
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {a}, {1, 0, 0, 1});
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(0), 0);
  ASSERT_EQ(network.ValueOf(b)->SetEvidence(0), 0);
  WriteCells(network, b, {0, 1, 1, 0});
  EXPECT_EQ(network.NotifyChange(b, KVN_CHANGE_NUMBERS), 0);
  EXPECT_STREQ(GetLastErrorMessage(), "ERROR: conficting evidence between nodes [B] and [A]");
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"u0v", "u0v"}));
}

TEST(Evidence, HooksRunAsFlagsAndMaskAllow) {
  enum Hook { kArcAdded, kArcRemoved, kEvidenceSet, kEvidenceCleared, kSoft, kNotify };
  const struct {
    Hook hook;
    int code;  // of kNotify
    int bit;   // of the mask; 0: the mask isn't asked
    bool makesStale;
  } kCases[] = {
      {kArcAdded, 0, KVN_HOOK_ARC_ADDED, true},
      {kArcRemoved, 0, KVN_HOOK_ARC_REMOVED, true},
      {kEvidenceSet, 0, KVN_HOOK_EVIDENCE_SET, true},
      {kEvidenceCleared, 0, KVN_HOOK_EVIDENCE_CLEARED, true},
      {kSoft, 0, 0, true},
      {kNotify, KVN_CHANGE_OUTCOMES, KVN_CHANGE_OUTCOMES, true},
      {kNotify, KVN_CHANGE_NUMBERS, KVN_CHANGE_NUMBERS, true},
      {kNotify, KVN_CHANGE_DEFINITION, KVN_CHANGE_DEFINITION, true},
      {kNotify, KVN_CHANGE_NO_CASCADE, KVN_HOOK_ARC_ADDED, false},
  };
  constexpr int kDefaultMask = 463;
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << "hook " << c.hook << " code " << c.code);
    for (int mask : {kDefaultMask, kDefaultMask & ~c.bit}) {
      for (int flags : {0, KVN_UPDATE_TRACK_CHANGES}) {
        KVN_network network;
        const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
        const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.1, 0.9});
        MakeAllValid(network);
        network.SetChangeMask(mask);
        network.SetUpdateFlags(flags);
        const auto raise = [&](int handle) {
          switch (c.hook) {
            case kArcAdded:
              return network.ArcAdded(a, handle);
            case kArcRemoved:
              return network.ArcRemoved(a, handle);
            case kEvidenceSet:
              return network.EvidenceChanged(handle);
            case kEvidenceCleared:
              return network.EvidenceCleared(handle);
            case kSoft:
              return network.VirtualEvidenceChanged(handle);
            default:
              return network.NotifyChange(handle, c.code);
          }
        };
        EXPECT_EQ(raise(a), 0);
        const bool runs = flags != 0 && (c.bit == 0 || mask == kDefaultMask);
        EXPECT_EQ(network.ValueOf(b)->IsValueValid(), !(runs && c.makesStale));
        const bool looksAtHandle = c.hook != kSoft && c.makesStale;
        EXPECT_EQ(raise(99), runs && looksAtHandle ? KVN_REFUSED : 0);
      }
    }
  }
}

TEST(Evidence, AUtilityThatIsReachedMakesDecisionsStale) {
  KVN_network network;
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 2, {});
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {d, a});
  ASSERT_EQ(network.ValueOf(d)->SetEvidence(1), 0);
  MakeAllValid(network);
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(0), 0);
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"u1", "u0v", "-"}));
}

TEST(Evidence, EvidenceThatIsNotValidStillDecidesOthers) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.5, 0.5});
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(1), 0);
  network.ValueOf(a)->ClearValueValid();  // as an evaluation of decisions does
  EXPECT_EQ(network.NotifyChange(a, KVN_CHANGE_NUMBERS), 0);
  WriteCells(network, b, {1, 0, 0, 1});
  EXPECT_EQ(network.NotifyChange(b, KVN_CHANGE_NUMBERS), 0);
  EXPECT_EQ(StatesOf(network), (std::vector<std::string>{"u1", "p1v"}));
}

TEST(Evidence, NoWalkLeavesAStaleValueValidWhenMemoryIsOut) {
  const int failures = FailEachAllocation([](int allocations) {
    KVN_network network;
    const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
    const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.1, 0.9});
    const int c = AddCpt(network, "C", 2, {b}, {0.5, 0.5, 0.1, 0.9});
    MakeAllValid(network);
    FailingAllocation failing(allocations);
    const int result = network.ValueOf(b)->SetEvidence(0);
    EXPECT_FALSE(network.ValueOf(a)->IsValueValid());
    EXPECT_FALSE(network.ValueOf(c)->IsValueValid());
    EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : 0);
    EXPECT_EQ(network.ValueOf(b)->IsEvidence(), result == 0);
    return failing.HasFailed();
  });
  EXPECT_GE(failures, 2);
}

// Every node equal to its parent by certainty, so that evidence anywhere decides all of them.
TEST(Evidence, LongChainNeedsLittleStack) {
  RunInSmallStack([] {
    constexpr int kNodes = FewerIfSanitized(50000);
    constexpr int kLast = kNodes - 1;
    KVN_network network;
    for (int i = 0; i < kNodes; i++) {
      ASSERT_EQ(network.AddNode(KVN_TYPE_CPT, nullptr), i);
      if (i == 0) continue;
      ASSERT_EQ(network.AddArc(i - 1, i, 0), 0);
      WriteCells(network, i, {1, 0, 0, 1});
    }
    for (int source : {0, kLast}) {
      EXPECT_EQ(network.ValueOf(source)->SetEvidence(1), 0);
      for (int h = 0; h < kNodes; h++) EXPECT_EQ(network.ValueOf(h)->GetEvidence(), 1);
      EXPECT_EQ(network.ValueOf(source)->ClearEvidence(), 0);
      for (int h = 0; h < kNodes; h++) EXPECT_FALSE(network.ValueOf(h)->IsValueValid());
    }
    // The same without derived evidence: the walks alone, up and down.
    network.SetUpdateFlags(KVN_UPDATE_TRACK_CHANGES);
    MakeAllValid(network);
    EXPECT_EQ(network.ValueOf(kLast)->SetEvidence(1), 0);
    EXPECT_FALSE(network.ValueOf(0)->IsValueValid());
  });
}
