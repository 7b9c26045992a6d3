#include "tests/bridge/bridgeTest.h"

#include <gmock/gmock.h>

#include "foundation/errorLog.h"

namespace {

using testing::ElementsAre;

class Loading : public BridgeTest {};

TEST_F(Loading, HostInterfaceIsLookedUpInItsOrder) {
  ASSERT_EQ(Load(WriteNet("")), 16384);
  EXPECT_THAT(
      jni.lookups,
      ElementsAre("java/lang/String", "java/lang/Exception", "class of receiver",
                  "loadNode(Ljava/lang/String;Ljava/lang/String;[Ljava/lang/Object;[I"
                  "[Ljava/lang/String;[D[I[Ljava/lang/String;[Ljava/lang/String;)V",
                  "loadChildOfRootSubmodels([I[Ljava/lang/String;[I[I)V",
                  "loadSubmodel(ILjava/lang/String;II[I)V", "debugLoadNode(Ljava/lang/String;)V",
                  "putNetworkParameter(Ljava/lang/Object;Ljava/lang/Object;)V",
                  "putNetworkParameter(Ljava/lang/Object;I)V"));
}

TEST_F(Loading, EveryMethodIsRequiredAlsoThoseNeverCalled) {
  ASSERT_EQ(Load(WriteNet("")), 16384);
  const KVN_network* before = state.theNet;
  const std::vector<std::string> lookups = jni.lookups;
  for (std::size_t i = 3; i < lookups.size(); i++) {
    SCOPED_TRACE(lookups[i]);
    jni.missing = {lookups[i]};
    EXPECT_EQ(Load(PathOf("net.kvn")), -1);
    EXPECT_EQ(jni.Pending(), kInterfaceMessage);
    EXPECT_EQ(state.theNet, before);  // no new network is made
    jni.ReturnToHost();
  }
}

TEST_F(Loading, FailureToReadLeavesNothingPendingButANewNetwork) {
  const struct {
    const char* name;
    std::string path;
    int format;
  } cases[] = {{"no such file", PathOf("missing.kvn"), 0},
               {"unknown extension", Write("net.text", "net N { };"), 0},
               {"unknown format", WriteNet(""), 99},
               {"a folder", PathOf("."), 4}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const KVN_network* before = state.theNet;
    EXPECT_EQ(Load(c.path, c.format), -1);
    EXPECT_EQ(jni.Pending(), "");
    EXPECT_NE(state.theNet, before);
    EXPECT_TRUE(jni.calls.empty());
  }
  EXPECT_EQ(LoadNetwork(state, jni.Env(), jni.Receiver(), nullptr, 0), -1);
  EXPECT_EQ(jni.Pending(), "");
}

TEST_F(Loading, SyntaxErrorOfTheOutermostFrameBecomesAnException) {
  EXPECT_EQ(Load(Write("bad.kvn", "net {")), -1);
  EXPECT_EQ(jni.Pending(),
            std::string("java/lang/Exception: KVN_SYNTAX_ERROR; ") + GetLastErrorMessage());
  EXPECT_TRUE(jni.calls.empty());
}

TEST_F(Loading, WhatHasNoNodesShowsItsRootOnly) {
  const struct {
    const char* name;
    std::string path;
    int format;
    const char* root;
  } cases[] = {{"an empty network", WriteNet(""), 0, "'N' "},
               {"a negative format counts as 0", PathOf("net.kvn"), -7, "'N' "},
               {"the format is told", Write("net.other", "net N { };"), 4, "'N' "},
               {"a foreign file", Write("poem.kvn", "roses are red"), 0, "'"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Load(c.path, c.format), 16384);
    ASSERT_EQ(jni.calls.size(), 1u);
    EXPECT_EQ(jni.calls[0].rfind(std::string("loadSubmodel 16384 ") + c.root, 0), 0u)
        << jni.calls[0];
  }
  EXPECT_EQ(Load(WriteNet("node A { TYPE = ; };" + PlainNode("B"))), 16384);
  EXPECT_EQ(jni.calls.size(), 2u) << "a syntax error in a block costs that block alone";
}

TEST_F(Loading, EarlierNetworksAndFileNamesAreKept) {
  ASSERT_EQ(Load(WriteNet(PlainNode("First"))), 16384);
  KVN_network* first = state.theNet;
  ASSERT_EQ(Load(WriteNet(PlainNode("Second"))), 16384);
  EXPECT_NE(state.theNet, first);
  EXPECT_EQ(first->FindNode("First"), 0);  // still there
  EXPECT_EQ(jni.charactersHeld, 2);
}

TEST_F(Loading, LocalReferencesDoNotPileUp) {
  std::string nodes;
  for (int i = 0; i < 300; i++) nodes += PlainNode("Node_" + std::to_string(i));
  ASSERT_EQ(Load(WriteNet(nodes)), 16384);
  EXPECT_EQ(jni.calls.size(), 301u);
  EXPECT_LE(jni.mostLocals, 16);     // what the JVM grants without being asked
  EXPECT_EQ(jni.ReturnToHost(), 4);  // three classes and the empty string
}

}  // namespace
