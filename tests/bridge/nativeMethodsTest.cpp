#include "bridge/nativeMethods.h"

#include <dlfcn.h>

#include <new>

#include "tests/bridge/bridgeTest.h"

namespace {

class NativeMethods : public BridgeTest {
 protected:
  /// What testJNI (or its twin) prints.
  std::string Printed(jint (*test)(JNIEnv*, jobject)) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(test(jni.Env(), jni.Receiver()), 0);
    return testing::internal::GetCapturedStdout();
  }
};

TEST_F(NativeMethods, TheTwinsDoNotSeeEachOthersNetworks) {
  const auto test = Java_org_qorl_belief_io_kvn_ORMELReader_testJNI;
  const auto testW = Java_org_qorl_belief_io_kvn_ORMELReader_testJNIW;
  thePlainBridge.theNet = nullptr;
  EXPECT_EQ(Printed(test), "theNet->GetNumberOfNodes() == 0\n");
  const std::string path = WriteNet(PlainNode("A"));
  EXPECT_EQ(Java_org_qorl_belief_io_kvn_ORMELReader_loadKVNW(jni.Env(), jni.Receiver(),
                                                             jni.Text(path.c_str()), 0),
            16384);
  EXPECT_EQ(Printed(test), "theNet->GetNumberOfNodes() == 0\n");
  EXPECT_EQ(Printed(testW), "theNet->GetNumberOfNodes() == 1\n");

  const jstring two =
      jni.Text(Write("two.kvn", "net N {" + PlainNode("A") + PlainNode("B") + "};").c_str());
  const jstring out = jni.Text(PathOf("out.kvn").c_str());
  EXPECT_EQ(Java_org_qorl_belief_io_kvn_ORMELReader_updateKVN(jni.Env(), jni.Receiver(), two, 0,
                                                              out, 0, nullptr, nullptr, nullptr,
                                                              nullptr, nullptr, nullptr, nullptr),
            JNI_TRUE);
  EXPECT_EQ(Printed(test), "theNet->GetNumberOfNodes() == 2\n");
  EXPECT_EQ(Printed(testW), "theNet->GetNumberOfNodes() == 1\n");
}

TEST_F(NativeMethods, NothingThatIsThrownLeavesThem) {
  const jstring path = jni.Text(WriteNet(PlainNode("A")).c_str());
  // As if the standard library had thrown somewhere inside.
  jni.onCallback = [](const std::string&) { throw std::bad_alloc(); };
  EXPECT_EQ(Java_org_qorl_belief_io_kvn_ORMELReader_loadKVN(jni.Env(), jni.Receiver(), path, 0),
            -1);
}

TEST_F(NativeMethods, OneFunctionUnderTwoNamesTellsTheVersion) {
  void* first = dlsym(RTLD_DEFAULT, "JNI_OnLoad");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "JNI_OnLoadW"), first);
  EXPECT_EQ(JNI_OnLoadW(nullptr, nullptr), 0x10004);
}

}  // namespace
