// The native XML format on its way to the host and back.

#include <gmock/gmock.h>

#include "definitions/noisyMAX.h"
#include "foundation/errorLog.h"
#include "tests/bridge/bridgeTest.h"

namespace {

using testing::HasSubstr;

class XmlFiles : public BridgeTest {
 protected:
  /// The number before the last of the gate's parameters, with all its digits.
  double LeakOfGate() const {
    const auto* const gate =
        dynamic_cast<const KVN_noisyMAX*>(state.theNet->DefinitionOf(state.theNet->FindNode("G")));
    return gate == nullptr ? -1.0 : gate->GetParameters()[6];
  }
};

const char* const kXmlNet = R"(<?xml version="1.0" encoding="UTF-8"?>
<ormel version="1.0" id="Sample" numsamples="100">
  <properties><property id="color">red</property></properties>
  <nodes>
    <cpt id="A" diagtype="target" ranked="true">
      <state id="lo" fault="true"/><state id="mid"/><state id="hi" default="true" fault="true"/>
      <probabilities>0.2 0.3 0.5</probabilities>
      <property id="unit">&#956;m or &#181;m</property>
    </cpt>
    <noisymax id="G">
      <state id="on"/><state id="off"/>
      <parents>A</parents>
      <strengths>1 2 0</strengths>
      <parameters>0.9 0.1 0.5 0.5 0 1 0.123456789012345 0.876543210987655</parameters>
    </noisymax>
    <deterministic id="T">
      <state id="t"/><state id="f"/>
      <parents>G</parents>
      <resultingstates>f t</resultingstates>
    </deterministic>
  </nodes>
</ormel>
)";

// Numbers keep their digits beyond the eighth; layout and names have no place in the file, and a
// character above 255 none in the engine's texts.
TEST_F(XmlFiles, ReachTheHost) {
  ASSERT_EQ(Load(Write("net.xkvn", kXmlNet)), 16384);
  EXPECT_EQ(jni.Pending(), "");
  ASSERT_EQ(jni.calls.size(), 5u);
  EXPECT_EQ(jni.calls[0], "putNetworkParameter 'color' 'red'");
  EXPECT_THAT(jni.calls[1], HasSubstr("loadSubmodel 16384 "));
  EXPECT_THAT(jni.calls[2], HasSubstr("'A' ['lo' 'mid' 'hi'] "));
  EXPECT_THAT(jni.calls[2], HasSubstr(" 0 0 1 2 16384 2 0 2] [] [0.2 0.3 0.5] null ['unit'] "));
  EXPECT_THAT(jni.calls[3], HasSubstr("'G' ['on' 'off'] "));
  EXPECT_THAT(jni.calls[3],
              HasSubstr("['A'] [0.9 0.1 0.5 0.5 0 1 0.123457 0.876543] [2 0 1] [] []"));
  EXPECT_EQ(LeakOfGate(), 0.123456789012345);
  EXPECT_THAT(jni.calls[4], HasSubstr("'T' ['t' 'f'] "));
  EXPECT_THAT(jni.calls[4], HasSubstr("['G'] [0 1 1 0] null [] []"));
}

// The host sees the same network whether it comes as text or as XML, but for names and layout.
TEST_F(XmlFiles, ConvertBothWays) {
  ASSERT_TRUE(Update(Conversion(Write("net.xkvn", kXmlNet), PathOf("copy.kvn"))));
  ASSERT_TRUE(Update(Conversion(PathOf("copy.kvn"), PathOf("back.qkvn"))));
  ASSERT_EQ(Load(PathOf("back.qkvn")), 16384);
  ASSERT_EQ(jni.calls.size(), 5u);
  EXPECT_THAT(jni.calls[3], HasSubstr(" 0.123457 0.876543] [2 0 1] [] []"));
  EXPECT_EQ(LeakOfGate(), 0.12345679);
}

// Only a syntax error of a text format throws; the reason of this one is in the log alone.
TEST_F(XmlFiles, BadFilesGiveTheFailureWithoutAnException) {
  const std::string good = kXmlNet;
  const auto without = [&good](const std::string& part, const std::string& other) {
    return std::string(good).replace(good.find(part), part.size(), other);
  };
  // clang-format off
  const struct {
    const char* name;
    std::string text;
    const char* message;
  } cases[] = {
      {"empty", "", "no element found"},
      {"cut off", good.substr(0, 400), "Error at "},
      {"no XML", "net N { };", "syntax error"},
      {"another root", "<net/>", "Error at 1, "},
      {"mismatched tags", without("</nodes>", "</node>"), "mismatched tag"},
      {"missing attribute", without("id=\"A\" ", ""), "Error at 5, "},
      {"wrong count", without("0.2 0.3 0.5", "0.2 0.8"), "SetProbabilities failed"},
      {"no number", without("0.2 0.3", "0.2 x"), "Error at 7, "},
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Load(Write("bad.xkvn", c.text)), -1);
    EXPECT_EQ(jni.Pending(), "");
    EXPECT_TRUE(jni.calls.empty());
    EXPECT_THAT(GetLastErrorMessage(), HasSubstr(c.message));
    EXPECT_FALSE(Update(Conversion(PathOf("bad.xkvn"), PathOf("out.kvn"))));
    EXPECT_FALSE(std::filesystem::exists(PathOf("out.kvn")));
  }
}

}  // namespace
