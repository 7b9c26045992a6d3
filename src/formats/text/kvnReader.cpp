#include <cstdio>
#include <string>

#include "formats/text/kvnSpeaker.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/resultCodes.h"
#include "foundation/stringArray.h"
#include "network/extraDefinition.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"

namespace {

const char* const kNetFields[] = {"NUMSAMPLES",     "HEADER",  "CREATION",      "SCREEN",
                                  "WINDOWPOSITION", "BKCOLOR", "SCREENCOMMENT", "USER_PROPERTIES",
                                  "DOCUMENTATION",  "SHOWAS",  nullptr};

const char* const kSubmodelFields[] = {"PARENT",  "HEADER",        "SCREEN", "WINDOWPOSITION",
                                       "BKCOLOR", "SCREENCOMMENT", nullptr};

const char* const kNodeFields[] = {"TYPE",       "HEADER",           "SCREEN",        "TARGET",
                                   "SUBMODEL",   "USER_PROPERTIES",  "DOCUMENTATION", "PARENTS",
                                   "DEFINITION", "EXTRA_DEFINITION", nullptr};

constexpr const char* kUnnamedNetwork = "_Unnamed_Network_";

}  // namespace

KVN_kvnSpeaker::KVN_kvnSpeaker(KVN_network& target) : KVN_fileFormat(target) {}

int KVN_kvnSpeaker::ReadFile(const char* fileName) {
  if (int result = OpenLexer(fileName, KVN_LEXICAL_DEFAULT); result != 0) return result;
  int result = 0;
  // A foreign or empty file loads as an empty network: it is the tool that tells the user.
  if (PeekIs("net") == 1) {
    result = ReadNet();
    if (result == 0) (void)AcceptToken(KVN_TOKEN_PUNCTUATOR, ";");
  }
  CloseLexer();
  return result;
}

int KVN_kvnSpeaker::ReadBlockStart(const char* name) { return ReadBraceBlockStart(name); }

int KVN_kvnSpeaker::ReadAssignment(const char* name) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, name) != 0) return KVN_NOT_THIS_STATEMENT;
  return RequireToken(KVN_TOKEN_PUNCTUATOR, "=");
}

int KVN_kvnSpeaker::ReportUnknown(const char* what) {
  (void)PeekToken();
  std::snprintf(errorMessage, sizeof errorMessage, "ERROR: '%s' : Unknown %s", tokenText, what);
  return ReportError(KVN_SYNTAX_ERROR, errorMessage);
}

int KVN_kvnSpeaker::ReadNet() {
  (void)AcceptToken(KVN_TOKEN_IDENTIFIER, "net");
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result != 0) return result;
  KVN_header& header = network->Header();
  (void)header.SetName(tokenText);  // without memory the network stays without a name
  if (header.SetId(tokenText) != 0) {
    if (int result = header.SetId(kUnnamedNetwork); result != 0) return result;
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  return ReadBlockBody([this] { return ReadNetStatement(); });
}

int KVN_kvnSpeaker::ReadNetStatement() {
  if (PeekInList(kNetFields) == 1) return ReadNetField();
  if (PeekIs("node") == 1) return ReadNode();
  if (PeekIs("submodel") == 1) return ReadSubmodel();
  if (PeekIs("OBSERVATION_COST") == 1) return ReadCosts();
  return ReportUnknown("Net Statement");
}

int KVN_kvnSpeaker::ReadNetField() {
  KVN_submodel& main = *network->Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  return FirstOf(
      [&] {
        return ReadInt("NUMSAMPLES", [this](int value) { network->SetNumberOfSamples(value); });
      },
      [&] { return ReadHeader(network->Header()); },
      [&] { return ReadCreation(network->Creation()); }, [&] { return ReadSubmodelField(main); },
      [&] { return ReadUserProperties(network->UserProperties()); },
      [&] { return ReadDocumentation(network->Documentation()); },
      [&] { return ReadInt("SHOWAS", [this](int value) { network->SetShowAs(value); }); },
      [&] { return ReportUnknown("Net Field"); });
}

int KVN_kvnSpeaker::ReadSubmodelField(KVN_submodel& submodel) {
  return FirstOf(
      [&] { return ReadScreen(submodel.Screen()); },
      [&] { return ReadRectangle("WINDOWPOSITION", submodel.Window()); },
      [&] { return ReadInt("BKCOLOR", [&](int value) { submodel.SetWindowColor(value); }); },
      [&] { return ReadScreenComment(submodel.TextBoxes()); });
}

int KVN_kvnSpeaker::ReadSubmodel() {
  (void)AcceptToken(KVN_TOKEN_IDENTIFIER, "submodel");
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result != 0) return result;
  int handle = network->Submodels().Create(KVN_ROOT_SUBMODEL, tokenText);
  if (handle < 0) {
    std::snprintf(errorMessage, sizeof errorMessage, "ERROR: Couldn't Create Submodel (\"%s\")",
                  tokenText);
    return ReportError(handle, errorMessage);
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  return ReadBlockBody([this, handle] { return ReadSubmodelStatement(handle); });
}

int KVN_kvnSpeaker::ReadSubmodelStatement(int handle) {
  if (PeekInList(kSubmodelFields) != 1) return ReportUnknown("Submodel Statement");
  KVN_submodelHandler& submodels = network->Submodels();
  KVN_submodel& submodel = *submodels.GetSubmodel(handle);
  return FirstOf([&] { return ReadHeader(submodel.Header()); },
                 [&] { return ReadSubmodelField(submodel); },
                 [&] {
                   return ReadText("PARENT", KVN_TOKEN_IDENTIFIER, [&](const char* id) {
                     int parent = submodels.Find(id);
                     int moved = parent < 0 ? parent : submodels.Move(handle, parent);
                     if (moved >= 0) return 0;
                     std::snprintf(errorMessage, sizeof errorMessage,
                                   "ERROR: (\"%s\") : Unknown Submodel", id);
                     return ReportError(KVN_SYNTAX_ERROR, errorMessage);
                   });
                 },
                 [&] { return ReportUnknown("Submodel Field"); });
}

int KVN_kvnSpeaker::ReadNode() {
  (void)AcceptToken(KVN_TOKEN_IDENTIFIER, "node");
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result != 0) return result;
  int handle = network->AddNode(/*definitionType=*/0, tokenText);
  stateDocumentationIndex = 0;
  if (handle < 0) {
    std::snprintf(errorMessage, sizeof errorMessage, "ERROR: Couldn't Create Node (\"%s\")",
                  tokenText);
    return ReportError(handle, errorMessage);
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  return ReadBlockBody([this, handle] { return ReadNodeStatement(handle); });
}

int KVN_kvnSpeaker::ReadNodeStatement(int handle) {
  if (PeekInList(kNodeFields) != 1) return ReportUnknown("Node Statement");
  KVN_node& node = *network->GetNode(handle);
  KVN_nodeInfo& info = node.Info();
  return FirstOf(
      [&] { return ReadNodeType(node); }, [&] { return ReadHeader(info.Header()); },
      [&] { return ReadScreen(info.Screen()); },
      [&] {
        return ReadBool("TARGET", [&](int flag) {
          // FALSE does not take a mark away, and a second TRUE changes nothing: both are intended.
          if (flag != 0) (void)network->SetTarget(handle);
        });
      },
      [&] {
        return ReadText("SUBMODEL", KVN_TOKEN_IDENTIFIER, [&](const char* id) {
          return ReportError(node.SetSubmodel(id), "Invalid submodel");
        });
      },
      [&] { return ReadUserProperties(info.UserProperties()); },
      [&] { return ReadDocumentation(info.Documentation()); }, [&] { return ReadDefinition(node); },
      [&] {
        return ReadArcs(handle, /*layer=*/0, "ERROR: Couldn't add arc from node [%s] to node [%s]");
      },
      [&] { return ReadExtraDefinition(node); }, [&] { return ReportUnknown("Node Field"); });
}

int KVN_kvnSpeaker::ReadNodeType(KVN_node& node) {
  return ReadText("TYPE", KVN_TOKEN_IDENTIFIER, [&](const char*) {
    noisyOrMode = TokenIs("NOISY_OR") != 0;
    noisyAndMode = TokenIs("NOISY_AND") != 0;
    const char* typeName = noisyOrMode || noisyAndMode ? "NOISY_MAX" : tokenText;
    return ReportError(node.ChangeType(typeName), nullptr);
  });
}

int KVN_kvnSpeaker::ReadArcs(int child, int layer, const char* message) {
  if (int result = ReadAssignment("PARENTS"); result != 0) return result;
  KVN_stringArray ids;
  if (int result = ReadIdentifierList(ids); result != 0) return result;
  for (int i = 0; i < ids.GetNumItems(); ++i) {
    int result = budget.AddArc(*network, network->FindNode(ids[i]), child, layer);
    if (result == 0) continue;
    const char* childId = network->GetNode(child)->GetId();
    std::snprintf(errorMessage, sizeof errorMessage, message, ids[i],
                  childId == nullptr ? "(null)" : childId);
    (void)ReportError(result, errorMessage);  // the next parent is tried all the same
  }
  return 0;
}

int KVN_kvnSpeaker::ReadCosts() {
  return ReadBlock("OBSERVATION_COST", [this] { return ReadCostNode(); });
}

int KVN_kvnSpeaker::ReadCostNode() {
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, "node"); result != 0) return result;
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result != 0) return result;
  int handle = network->FindNode(tokenText);
  if (handle < 0) {
    std::snprintf(errorMessage, sizeof errorMessage, "ERROR: Couldn't Find Node (\"%s\")",
                  tokenText);
    return ReportError(KVN_SYNTAX_ERROR, errorMessage);
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  return ReadBlockBody([this, handle] { return ReadCostStatement(handle); });
}

int KVN_kvnSpeaker::ReadCostStatement(int handle) {
  int result =
      ReadArcs(handle, /*layer=*/1, "ERROR: Couldn't add cost arc from node [%s] to node [%s]");
  if (result != KVN_NOT_THIS_STATEMENT) return result;
  result = ReadAssignment("COSTS");
  if (result == KVN_NOT_THIS_STATEMENT) return ReportUnknown("Cost Statement");
  if (result != 0) return result;
  KVN_doubleArray costs;
  result = ReadDoubleList(costs);
  if (result != 0) return result;
  KVN_nodeCost* cost = network->GetNode(handle)->Cost();
  return ReportError(cost == nullptr ? KVN_REFUSED : cost->SetCosts(costs), nullptr);
}
