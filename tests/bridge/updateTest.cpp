#include <gmock/gmock.h>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "network/extraDefinition.h"
#include "network/node.h"
#include "tests/bridge/bridgeTest.h"
#include "tests/support/builders.h"

namespace {

using testing::ElementsAre;

class Updating : public BridgeTest {
 protected:
  void SetUp() override {
    Write("sample.kvn", kSampleNet);
    plain = Conversion(PathOf("sample.kvn"), PathOf("out.kvn"));
  }

  /// Edits of one node, A, in all six arrays.
  UpdateArguments EditsOfA(jdoubleArray numbers, jobjectArray keys, jobjectArray values,
                           jintArray type) {
    UpdateArguments made = plain;
    made.nodeIds = jni.Texts({"A"});
    made.probabilities = jni.Objects({numbers});
    made.nodeKeys = jni.Objects({keys});
    made.nodeValues = jni.Objects({values});
    made.diagnosisTypes = jni.Objects({type});
    return made;
  }

  static std::vector<double> NumbersOf(KVN_network& network, const char* id) {
    KVN_doubleArray* numbers = nullptr;
    EXPECT_EQ(network.DefinitionOf(network.FindNode(id))->GetDefinition(numbers), 0);
    return ItemsOf(*numbers);
  }

  static std::vector<std::string> PairsOf(const KVN_userProperties& properties) {
    std::vector<std::string> pairs;
    for (int i = 0; i < properties.GetCount(); i++) {
      pairs.push_back(std::string(properties.GetKey(i)) + "=" + properties.GetValue(i));
    }
    return pairs;
  }

  UpdateArguments plain;
};

TEST_F(Updating, EditsGoToTheOutputFileAndTheRestComesThrough) {
  UpdateArguments edits = EditsOfA(jni.Doubles({0.6, 0.3, 0.1}), jni.Texts({"unit", "extra"}),
                                   jni.Texts({"cm", "1"}), jni.Ints({1, 77}));
  edits.networkKeys = jni.Texts({"color", "shape"});
  edits.networkValues = jni.Texts({"blue", "round"});
  ASSERT_TRUE(Update(edits)) << jni.Pending();
  EXPECT_TRUE(jni.calls.empty());

  KVN_network written;
  ASSERT_EQ(written.ReadFile(PathOf("out.kvn").c_str()), 0);
  EXPECT_THAT(NumbersOf(written, "A"), ElementsAre(0.6, 0.3, 0.1));
  KVN_node& a = *written.GetNode(written.FindNode("A"));
  // A pair that stood there is replaced at the end of the list, for nodes and for the network.
  EXPECT_THAT(PairsOf(*a.UserProperties()), ElementsAre("range=wide", "unit=cm", "extra=1"));
  EXPECT_THAT(PairsOf(written.UserProperties()),
              ElementsAre("size=3", "color=blue", "shape=round"));
  EXPECT_EQ(a.ExtraDefinition()->GetDiagnosisType(), KVN_DIAGNOSIS_OBSERVATION);
  // What the host can't edit.
  EXPECT_THAT(NumbersOf(written, "T"), ElementsAre(0, 1, 1, 0));
  EXPECT_EQ(a.GetSubmodel(), 16387);
}

TEST_F(Updating, NoNodesMeansConversion) {
  EXPECT_TRUE(Update(plain));  // all arrays null
  const std::string first = folder.Read("out.kvn");
  EXPECT_NE(first.find("node G"), std::string::npos);
  plain.nodeIds = jni.Texts({});
  plain.probabilities = jni.Objects({});
  plain.inputFormat = -1;
  EXPECT_TRUE(Update(plain));
  EXPECT_EQ(folder.Read("out.kvn"), first);
}

TEST_F(Updating, ElementsThatAreMissingLeaveTheirPartAlone) {
  const UpdateArguments cases[] = {
      EditsOfA(nullptr, nullptr, nullptr, nullptr),
      EditsOfA(jni.Doubles({}), jni.Texts({}), jni.Texts({}), jni.Ints({})),
      EditsOfA(nullptr, jni.Texts({"unit"}), jni.Texts({"cm", "m"}), nullptr), [this] {
        UpdateArguments made = plain;
        made.nodeIds = jni.Texts({"A"});
        made.probabilities = jni.Objects({nullptr});
        made.nodeKeys = jni.Objects({});  // too short
        return made;
      }()};
  for (const UpdateArguments& arguments : cases) {
    SCOPED_TRACE(&arguments - cases);
    ASSERT_TRUE(Update(arguments)) << jni.Pending();
    KVN_node& a = *state.theNet->GetNode(0);
    EXPECT_THAT(NumbersOf(*state.theNet, "A"), ElementsAre(0.2, 0.3, 0.5));
    EXPECT_THAT(PairsOf(*a.UserProperties()), ElementsAre("unit=mm", "range=wide"));
    EXPECT_EQ(a.ExtraDefinition()->GetDiagnosisType(), KVN_DIAGNOSIS_TARGET);
  }
}

TEST_F(Updating, NumbersAreTakenAsFarAsTheyFit) {
  EXPECT_TRUE(Update(EditsOfA(jni.Doubles({0.9, 0.8}), nullptr, nullptr, nullptr)));
  EXPECT_THAT(NumbersOf(*state.theNet, "A"), ElementsAre(0.9, 0.8, 0.5));
  EXPECT_TRUE(Update(EditsOfA(jni.Doubles({1, 0, 0, 5, 5}), nullptr, nullptr, nullptr)));
  EXPECT_THAT(NumbersOf(*state.theNet, "A"), ElementsAre(1, 0, 0));
}

TEST_F(Updating, NoisyMaxTakesItsParameters) {
  UpdateArguments edits = plain;
  edits.nodeIds = jni.Texts({"G"});
  edits.probabilities =
      jni.Objects({jni.Doubles({0.8, 0.2, 0.6, 0.4, 0, 1, 0.3, 0.7, 0, 1, 0, 1})});
  ASSERT_TRUE(Update(edits));
  ASSERT_EQ(Load(PathOf("out.kvn")), 16384);
  EXPECT_THAT(jni.calls[8],
              testing::HasSubstr("[0.8 0.2 0.6 0.4 0 1 0.3 0.7 0 1 0 1] [2 0 1 0 1]"));
}

TEST_F(Updating, UnknownDiagnosisTypeIsReportedAndBecomesAuxiliary) {
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Update(EditsOfA(nullptr, nullptr, nullptr, jni.Ints({7}))));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "C++ warning: encountered unknown diagnosis type 7\n"
            "C++ defaulting to type 'auxiliary'.\n");
  EXPECT_EQ(state.theNet->GetNode(0)->ExtraDefinition()->GetDiagnosisType(), 2);
}

TEST_F(Updating, PropertiesListedForRemovalGoFirst) {
  Write("list.kvn",
        "net N { USER_PROPERTIES = { a = \"1\"; b = \"2\"; user_properties = \"b,a\"; "
        "c = \"3\"; }; };");
  plain.inputFile = jni.Text(PathOf("list.kvn").c_str());
  plain.networkKeys = jni.Texts({"a"});
  plain.networkValues = jni.Texts({"new"});
  ASSERT_TRUE(Update(plain));
  EXPECT_THAT(PairsOf(state.theNet->UserProperties()), ElementsAre("c=3", "a=new"));
}

TEST_F(Updating, UnequalLengthsAreReportedBeforeAnythingIsLookedUp) {
  jni.missing = {"debugLoadNode(Ljava/lang/String;)V"};
  plain.nodeIds = jni.Texts({"A"});
  EXPECT_FALSE(Update(plain));
  EXPECT_EQ(jni.Pending(),
            "java/lang/Exception: C++ array of node IDs and array of probabilities are of unequal "
            "length.");
  EXPECT_EQ(state.theNet, nullptr);
  jni.ReturnToHost();
  plain.nodeIds = nullptr;
  EXPECT_FALSE(Update(plain));
  EXPECT_EQ(jni.Pending(), kInterfaceMessage);
}

TEST_F(Updating, UnknownNodeEndsTheUpdateWithoutOutput) {
  const std::string longId(300, 'x');
  const struct {
    const char* id;
    std::string text;
  } cases[] = {
      {"Nobody", "C++ error: Attempt to update node 'Nobody' that does not exist in network '" +
                     PathOf("sample.kvn") + "'"},
      {nullptr, "C++ error: Attempt to update node '(null)' that does not exist in network '" +
                    PathOf("sample.kvn") + "'"},
      // 254 characters and the end.
      {longId.c_str(), ("C++ error: Attempt to update node '" + longId).substr(0, 254)}};
  for (const auto& c : cases) {
    plain.nodeIds = jni.Texts({"A", c.id});
    plain.probabilities = jni.Objects({jni.Doubles({1, 0, 0}), nullptr});
    EXPECT_FALSE(Update(plain));
    EXPECT_EQ(jni.Pending(), "java/lang/Exception: " + c.text);
    EXPECT_FALSE(std::filesystem::exists(PathOf("out.kvn")));
    jni.ReturnToHost();
  }
}

TEST_F(Updating, InputThatCannotBeRead) {
  plain.inputFile = jni.Text(PathOf("missing.kvn").c_str());
  EXPECT_FALSE(Update(plain));
  EXPECT_EQ(jni.Pending(), "");
  plain.inputFile = nullptr;
  EXPECT_FALSE(Update(plain));
  EXPECT_EQ(jni.Pending(), "");
  plain.inputFile = jni.Text(Write("bad.kvn", "net {").c_str());
  EXPECT_FALSE(Update(plain));
  EXPECT_EQ(jni.Pending().rfind("java/lang/Exception: KVN_SYNTAX_ERROR; ", 0), 0u);
}

TEST_F(Updating, OutputThatCannotBeWritten) {
  const struct {
    const char* name;
    std::string path;
    int format;
  } cases[] = {{"a format that is only read", PathOf("out.kvn"), 7},
               {"no such folder", PathOf("none/out.kvn"), 0},
               {"negative format", PathOf("out.kvn"), -1},
               {"unknown extension", PathOf("out"), 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    plain.outputFile = jni.Text(c.path.c_str());
    plain.outputFormat = c.format;
    EXPECT_FALSE(Update(plain));
    EXPECT_EQ(jni.Pending(), "java/lang/Exception: C++ error: Failed to write file.");
    jni.ReturnToHost();
    if (c.format == 7) {
      EXPECT_STREQ(GetLastErrorMessage(), "Writing to KI file format not supported.");
    }
  }
  plain.outputFile = nullptr;
  EXPECT_FALSE(Update(plain));
  EXPECT_EQ(jni.Pending(), "java/lang/Exception: C++ error: Failed to write file.");
}

TEST_F(Updating, CharactersOfNamesStayAndThoseOfIdentifiersDoNot) {
  ASSERT_TRUE(
      Update(EditsOfA(nullptr, jni.Texts({"unit", nullptr}), jni.Texts({nullptr, "x"}), nullptr)));
  // Both file names and the key "unit": its value is null, and a null key isn't looked at.
  EXPECT_EQ(jni.charactersHeld, 3);
  EXPECT_EQ(state.theNet->GetNode(0)->UserProperties()->GetCount(), 2);
  EXPECT_LE(jni.mostLocals, 16);
  EXPECT_EQ(jni.ReturnToHost(), 4);
}

}  // namespace
