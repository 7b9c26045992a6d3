#include "tests/bridge/bridgeTest.h"
#include "tests/support/failingAllocation.h"

namespace {

/// Each JNI call that can fail does so once, in an otherwise good load or update. The base class
/// checks that no call is made that a JVM wouldn't stand; a leak would be found by the sanitizer.
class Faults : public BridgeTest {
 protected:
  /// Runs `operation` with call 0, 1, 2 ... failing until it succeeds undisturbed. Returns how
  /// often it failed.
  template <typename Operation>
  int FailEachCall(Operation operation) {
    for (int n = 0;; n++) {
      jni.failAt = n;
      jni.failable = 0;
      SCOPED_TRACE("call " + std::to_string(n));
      const bool succeeded = operation();
      const bool wasHit = jni.failable > n;
      // The class for exceptions, looked up second, is only missed when there is one to throw.
      EXPECT_EQ(succeeded, !wasHit || n == 1);
      EXPECT_EQ(jni.elementsHeld, 0);
      if (succeeded) {
        EXPECT_EQ(jni.Pending(), "");
      } else if (n < 10) {  // the look-ups and the empty string
        EXPECT_EQ(jni.Pending(), kInterfaceMessage);
      } else {
        EXPECT_NE(jni.Pending(), "");
      }
      EXPECT_LE(jni.ReturnToHost(), 4);
      if (!wasHit) return n;
    }
  }
};

TEST_F(Faults, LoadFailsCleanlyAtEveryCall) {
  Write("sample.kvn", kSampleNet);
  testing::internal::CaptureStderr();
  const int failures = FailEachCall([this] { return Load(PathOf("sample.kvn")) == 16384; });
  const std::string errors = testing::internal::GetCapturedStderr();
  EXPECT_GT(failures, 100);
  // Four submodels and four nodes have an int[] each, and the gate has its strengths.
  EXPECT_EQ(jni.nullRegionCopies, 9);
  std::string expected;
  for (int i = 0; i < 9; i++) expected += "We're in trouble.\n";
  EXPECT_EQ(errors, expected);
}

TEST_F(Faults, UpdateFailsCleanlyAtEveryCall) {
  Write("sample.kvn", kSampleNet);
  UpdateArguments edits = Conversion(PathOf("sample.kvn"), PathOf("out.kvn"));
  edits.nodeIds = jni.Texts({"A", "B"});
  edits.probabilities = jni.Objects({jni.Doubles({1, 0, 0}), jni.Doubles({1, 0, 0, 1, 0, 1})});
  edits.networkKeys = edits.networkValues = jni.Texts({"a", "b"});
  edits.nodeKeys = edits.nodeValues = jni.Objects({jni.Texts({"k"}), jni.Texts({"l", "m"})});
  edits.diagnosisTypes = jni.Objects({jni.Ints({0}), jni.Ints({1})});
  const int failures = FailEachCall([&] {
    const bool updated = Update(edits);
    EXPECT_EQ(std::filesystem::remove(PathOf("out.kvn")), updated);
    return updated;
  });
  // 10 to find the host, 2 file names, 4 texts of the network, 2 identifiers, 2 x 2 arrays, 2 + 4
  // texts of the nodes.
  EXPECT_EQ(failures, 28);
}

TEST_F(Faults, ShortMemoryInTheEngineDoesNotBringTheHostDown) {
  Write("sample.kvn", kSampleNet);
  const int failures = FailEachAllocation([this](int n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const FailingAllocation failing(n);
    const jint result = Load(PathOf("sample.kvn"));
    EXPECT_TRUE(result == 16384 || result == -1);
    jni.ReturnToHost();
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 100);
}

TEST_F(Faults, LengthErrorWithoutTheClassForItStillFails) {
  UpdateArguments edits = Conversion("a", "b");
  edits.nodeIds = jni.Texts({"A"});
  jni.failAt = 0;
  EXPECT_FALSE(Update(edits));
  EXPECT_NE(jni.Pending(), "");
}

}  // namespace
