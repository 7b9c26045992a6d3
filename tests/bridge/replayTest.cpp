#include "bridge/replay.h"

#include <gmock/gmock.h>

#include "definitions/noisyMAX.h"
#include "network/extraDefinition.h"
#include "network/node.h"
#include "network/submodelHandler.h"
#include "tests/bridge/bridgeTest.h"
#include "tests/support/builders.h"

namespace {

using testing::ElementsAre;

class Replay : public BridgeTest {
 protected:
  /// Runs `action` and returns what it wrote to standard error.
  template <typename Action>
  static std::string ErrorsOf(Action action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
  }
};

TEST_F(Replay, TellsPropertiesThenTheTreeThenTheNodes) {
  ASSERT_EQ(Load(Write("sample.kvn", kSampleNet)), 16384);
  // The record of A: faults are the flags equal to 1, so 0 and 2; the default is 2 and is on.
  // B is set to default 1, but that is off: -1. Root handle: 16384; Inner came third: 16387.
  // The gate: raw rows in file order. The file's strengths (1, 2, 0) are the ranks of lo, mid and
  // hi; the host gets the outcomes by rank: hi, lo, mid.
  EXPECT_THAT(
      jni.calls,
      ElementsAre(
          "putNetworkParameter 'color' 'red'", "putNetworkParameter 'size' '3'",
          testing::ContainsRegex("^loadSubmodel 16384 'Sample network' .* \\[16385 16386\\]$"),
          "loadSubmodel 16385 'Upper part' 11 12 [16387]",
          testing::ContainsRegex("^loadSubmodel 16387 'Inner part' .* \\[\\]$"),
          testing::ContainsRegex("^loadSubmodel 16386 'Lower part' .* \\[\\]$"),
          "loadNode 'Cause A' 'A' ['lo' 'mid' 'hi'] [1 2 3 4 0 0 0 1 2 16387 2 0 2] []"
          " [0.2 0.3 0.5] null ['unit' 'range'] ['mm' 'wide']",
          "loadNode 'Cause B' 'B' ['yes' 'no'] [5 6 7 8 0 1 1 0 -1 16384 0] ['A']"
          " [0.1 0.9 0.2 0.8 0.4 0.6] null [] []",
          "loadNode 'Gate' 'G' ['on' 'off'] [5 6 7 8 1 2 0 0 -1 16384 0] ['A' 'B']"
          " [0.9 0.1 0.5 0.5 0 1 0.7 0.3 0 1 0.01 0.99] [2 0 1 0 1] [] []",
          "loadNode 'Table' 'T' ['t' 'f'] [5 6 7 8 2 2 0 0 -1 16384 0] ['B']"
          " [0 1 1 0] null [] []"));
}

TEST_F(Replay, TellingAGateMarksItsTableStale) {
  ASSERT_EQ(Load(Write("sample.kvn", kSampleNet)), 16384);
  const int handle = state.theNet->FindNode("G");
  auto& gate = static_cast<KVN_noisyMAX&>(*state.theNet->DefinitionOf(handle));
  ASSERT_EQ(gate.BuildCpt(), 0);
  ASSERT_EQ(gate.GetCiFlags() & KVN_CI_CPT_CURRENT, KVN_CI_CPT_CURRENT);
  ASSERT_TRUE(ReplayNode(state, handle));
  EXPECT_EQ(gate.GetCiFlags() & KVN_CI_CPT_CURRENT, 0);
}

TEST_F(Replay, NodesThatTheHostDoesNotKnowStopTheLoad) {
  const struct {
    const char* type;
    const char* word;
  } cases[] = {{"LIST", "LIST"}, {"TABLE", "TABLE"}, {"CAST", "(null)"}, {"DEMORGAN", "(null)"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    const std::string node = std::string("node X { TYPE = ") + c.type + "; PARENTS = (); };";
    EXPECT_EQ(Load(WriteNet(PlainNode("A") + node + PlainNode("Z"))), -1);
    EXPECT_EQ(jni.calls.size(), 2u);  // the root submodel and A
    EXPECT_EQ(jni.Pending(),
              std::string("java/lang/Exception: C++ error: Network contains unsupported KVN node "
                          "type: ") +
                  c.word + ".");
    jni.ReturnToHost();
  }
}

TEST_F(Replay, ExceptionOfACallbackEndsTheLoadThere) {
  Write("sample.kvn", kSampleNet);
  const struct {
    const char* method;
    std::size_t calls;
  } cases[] = {{"putNetworkParameter", 1}, {"loadSubmodel", 3}, {"loadNode", 7}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.method);
    jni.throwIn = c.method;
    EXPECT_EQ(Load(PathOf("sample.kvn")), -1);
    EXPECT_EQ(jni.Pending(), std::string("java/lang/RuntimeException: thrown by ") + c.method);
    EXPECT_EQ(jni.calls.size(), c.calls);
    EXPECT_EQ(jni.ReturnToHost(), 4);
  }
}

TEST_F(Replay, BadSubmodelDoesNotStopTheWalk) {
  jni.onCallback = [this](const std::string& line) {
    // Once the root was told, its two children vanish.
    if (line.rfind("loadSubmodel 16384", 0) == 0) {
      EXPECT_EQ(state.theSubmodels->Clear(), 0);
    }
  };
  Write("tree.kvn", "net N { submodel Upper { }; submodel Lower { }; " + PlainNode("A") + "};");
  const std::string errors = ErrorsOf([this] { EXPECT_EQ(Load(PathOf("tree.kvn")), 16384); });
  EXPECT_EQ(errors, "C++ warning: bad submodel handle.\nC++ warning: bad submodel handle.\n");
  EXPECT_EQ(jni.calls.size(), 2u);
  ErrorsOf([this] { EXPECT_EQ(ReplaySubmodels(state, 16384 + 77), kReplayBadSubmodel); });
}

TEST_F(Replay, DeepTreeOfSubmodelsNeedsNoStack) {
  std::string tree = "submodel S0 { };\n";
  constexpr int kDepth = 1000;
  for (int i = 1; i < kDepth; i++) {
    tree += "submodel S" + std::to_string(i) + " { PARENT = S" + std::to_string(i - 1) + "; };\n";
  }
  ASSERT_EQ(Load(WriteNet(tree)), 16384);
  ASSERT_EQ(jni.calls.size(), kDepth + 1u);
  EXPECT_EQ(jni.calls.back().rfind("loadSubmodel 17384 ", 0), 0u) << jni.calls.back();
}

TEST_F(Replay, UnsetTextsAreNullAndForeignBytesLatin1) {
  ASSERT_EQ(Load(WriteNet(PlainNode("A", "USER_PROPERTIES = { k = \"caf\xE9\"; };"))), 16384);
  KVN_node& node = *state.theNet->GetNode(0);
  ASSERT_EQ(node.SetName(nullptr), 0);
  ASSERT_EQ(node.UserProperties()->AddProperty("none", nullptr), 0);
  jni.calls.clear();
  ASSERT_TRUE(ReplayNode(state, 0));
  EXPECT_EQ(jni.calls[0].rfind("loadNode null 'A' ", 0), 0u);
  EXPECT_THAT(jni.calls[0], testing::EndsWith("['k' 'none'] ['caf\xC3\xA9' null]"));
}

TEST_F(Replay, ListsWithBadHandlesAreReported) {
  ASSERT_EQ(Load(Write("sample.kvn", kSampleNet)), 16384);
  const std::string text =
      "() called on bad KVN_intArray, either contains invalid node handles or not initialized to "
      "the right length.\n";
  KVN_stringArray ids;
  EXPECT_EQ(ErrorsOf([&] {
              EXPECT_EQ(MakeNodeIDList(*state.theNet, IntsOf({1, 99, 0}), ids), 0);
            }),
            "C++ error: MakeNodeIDList" + text);
  EXPECT_THAT(TextsOf(ids), ElementsAre("B", "(null)", "(null)"));

  const auto& gate = static_cast<KVN_noisyMAX&>(*state.theNet->DefinitionOf(2));
  KVN_intArray strengths;
  EXPECT_EQ(ErrorsOf([&] {
              EXPECT_EQ(MakeStrengthsArray(gate, IntsOf({0, 99}), strengths), 0);
            }),
            "C++ error: MakeStrengthsArray" + text);
  EXPECT_THAT(ItemsOf(strengths), ElementsAre(2, 0, 1));
}

TEST_F(Replay, RecordTakesTheSubmodelWithOrWithoutItsBit) {
  ASSERT_EQ(Load(WriteNet(PlainNode("A"))), 16384);
  KVN_node& node = *state.theNet->GetNode(0);
  for (int handle : {0, 16384}) {
    ASSERT_EQ(node.SetSubmodel(handle), 0);
    KVN_intArray record;
    ASSERT_EQ(MakeNodeRecord(node, 0, record), 0);
    EXPECT_EQ(record[9], 16384);
  }
}

}  // namespace
