#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "bridge/bridgeState.h"
#include "bridge/load.h"
#include "bridge/update.h"
#include "network/network.h"
#include "tests/support/fakeJni.h"
#include "tests/support/scratchFolder.h"

/// A fake JVM, a bridge state of its own, and a folder of its own for network files.
class BridgeTest : public testing::Test {
 protected:
  ~BridgeTest() override {
    EXPECT_EQ(jni.violations, std::vector<std::string>{});
    EXPECT_EQ(jni.elementsHeld, 0);
  }

  std::string PathOf(const std::string& name) const { return folder.Path(name); }

  std::string Write(const std::string& name, const std::string& text) const {
    return folder.Write(name, text);
  }

  /// A file with the network N, whose blocks are `body`.
  std::string WriteNet(const std::string& body) const {
    return Write("net.kvn", "net N {\n" + body + "\n};\n");
  }

  jint Load(const std::string& path, int format = 0) {
    jni.calls.clear();
    return LoadNetwork(state, jni.Env(), jni.Receiver(), jni.Text(path.c_str()), format);
  }

  /// No edits, from `input` to `output`.
  UpdateArguments Conversion(const std::string& input, const std::string& output) {
    UpdateArguments made{};
    made.inputFile = jni.Text(input.c_str());
    made.outputFile = jni.Text(output.c_str());
    return made;
  }

  bool Update(const UpdateArguments& arguments) {
    return UpdateFile(state, jni.Env(), jni.Receiver(), arguments);
  }

  FakeJni jni;
  BridgeState state;
  ScratchFolder folder;
};

/// Two outcomes, no parents.
inline std::string PlainNode(const std::string& id, const std::string& more = "") {
  return "node " + id + " { TYPE = CPT; HEADER = { ID = " + id +
         "; NAME = \"\"; }; PARENTS = (); DEFINITION = { NAMESTATES = (yes, no);" +
         " PROBABILITIES = (0.25, 0.75); }; " + more + " };\n";
}

constexpr const char* kInterfaceMessage =
    "java/lang/Exception: C++ failed to find expected interface to class ORMELReader.";

/// A bit of everything that goes to the host: three submodels, one below another, properties, and
/// the three kinds of definition with unequal numbers of outcomes.
inline const char* const kSampleNet = R"(net Sample {
HEADER = { ID = Sample; NAME = "Sample network"; };
USER_PROPERTIES = { color = "red"; size = "3"; };
submodel Upper { HEADER = { ID = Upper; NAME = "Upper part"; };
  SCREEN = { POSITION = { CENTER_X = 11; CENTER_Y = 12; WIDTH = 13; HEIGHT = 14; }; }; };
submodel Lower { HEADER = { ID = Lower; NAME = "Lower part"; }; };
submodel Inner { PARENT = Upper; HEADER = { ID = Inner; NAME = "Inner part"; }; };
node A { TYPE = CPT; HEADER = { ID = A; NAME = "Cause A"; };
  SCREEN = { POSITION = { CENTER_X = 1; CENTER_Y = 2; WIDTH = 3; HEIGHT = 4; }; };
  SUBMODEL = Inner; USER_PROPERTIES = { unit = "mm"; range = "wide"; }; PARENTS = ();
  DEFINITION = { NAMESTATES = (lo, mid, hi); PROBABILITIES = (0.2, 0.3, 0.5); };
  EXTRA_DEFINITION = { DIAGNOSIS_TYPE = TARGET; RANKED = TRUE; FAULT_STATES = (1, 2, 1);
    DEFAULT_STATE = 2; SETASDEFAULT = TRUE; }; };
node B { TYPE = CPT; HEADER = { ID = B; NAME = "Cause B"; }; PARENTS = (A);
  SCREEN = { POSITION = { CENTER_X = 5; CENTER_Y = 6; WIDTH = 7; HEIGHT = 8; }; };
  DEFINITION = { NAMESTATES = (yes, no); PROBABILITIES = (0.1, 0.9, 0.2, 0.8, 0.4, 0.6); };
  EXTRA_DEFINITION = { DIAGNOSIS_TYPE = OBSERVATION; MANDATORY = TRUE; DEFAULT_STATE = 1; }; };
node G { TYPE = NOISY_MAX; HEADER = { ID = G; NAME = "Gate"; }; PARENTS = (A, B);
  SCREEN = { POSITION = { CENTER_X = 5; CENTER_Y = 6; WIDTH = 7; HEIGHT = 8; }; };
  DEFINITION = { NAMESTATES = (on, off); STRENGTHS = (1, 2, 0, 0, 1);
    PROBABILITIES = (0.9, 0.1, 0.5, 0.5, 0, 1, 0.7, 0.3, 0, 1, 0.01, 0.99); }; };
node T { TYPE = TRUTHTABLE; HEADER = { ID = T; NAME = "Table"; }; PARENTS = (B);
  SCREEN = { POSITION = { CENTER_X = 5; CENTER_Y = 6; WIDTH = 7; HEIGHT = 8; }; };
  DEFINITION = { NAMESTATES = (t, f); RESULTINGSTATES = (f, t); }; };
};
)";
