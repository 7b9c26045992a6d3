#include "definitions/nodeDefinition.h"
#include "formats/text/kvnSpeaker.h"
#include "foundation/intArray.h"
#include "foundation/rectangle.h"
#include "foundation/stringArray.h"
#include "network/creation.h"
#include "network/documentation.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "network/textBoxList.h"
#include "network/userProperties.h"

namespace {

const char* TextOr(const char* text, const char* substitute) {
  return text == nullptr ? substitute : text;
}

}  // namespace

int KVN_kvnSpeaker::WriteFile(const char* fileName) {
  if (int result = outputFile.Open(fileName, KVN_OPEN_TO_WRITE); result != 0) return result;
  outOfMemory = false;
  WriteNetwork();
  if (!outOfMemory) return outputFile.Close();
  outputFile.Discard();
  return ReportError(KVN_NO_MEMORY, nullptr);
}

int KVN_kvnSpeaker::Note(int result) {
  if (result == KVN_NO_MEMORY) outOfMemory = true;
  return result;
}

const KVN_intArray& KVN_kvnSpeaker::OrderOfNodes() {
  const KVN_intArray& order = network->GetOrderOfNodes();
  if (order.GetNumItems() < network->GetNumberOfNodes()) outOfMemory = true;
  return order;
}

int KVN_kvnSpeaker::WriteBlockStart(const char* name) { return WriteBraceBlockStart(name); }

void KVN_kvnSpeaker::BeginContinuation() { UseBackslashContinuation(); }

void KVN_kvnSpeaker::EndContinuation() { outputFile.SetContinuation(nullptr); }

/// Text that no word wrap may break: a quote that moved to the next line would take the indent
/// before it into the string.
void KVN_kvnSpeaker::WritePlain(const char* text) {
  (void)outputFile.PutLines(text, KVN_textFile::kIndentLines);
}

/// `word id`, a line feed, and the brace with one more level for what follows.
void KVN_kvnSpeaker::OpenBlock(const char* word, const char* id) {
  (void)outputFile.WriteIndent();
  WritePlain(word);
  WritePlain(id);
  WritePlain("\n");
  (void)outputFile.WriteIndent();
  WritePlain("{\n");
  (void)outputFile.IncreaseIndent();
}

void KVN_kvnSpeaker::CloseBlock() {
  (void)outputFile.DecreaseIndent();
  (void)outputFile.WriteIndent();
  WritePlain("};\n");
}

void KVN_kvnSpeaker::WriteNetwork() {
  OpenBlock("net ", TextOr(network->Header().GetId(), "_Unnamed_Network_"));
  WriteNetPart();
  KVN_intArray submodels;
  (void)Note(network->Submodels().GetDescendants(submodels));
  for (int handle : submodels) {
    if (handle != KVN_ROOT_SUBMODEL) WriteSubmodel(handle);
  }
  for (int handle : OrderOfNodes()) WriteNode(handle);
  WriteCosts();
  CloseBlock();
}

void KVN_kvnSpeaker::WriteNetPart() {
  WriteHeader(network->Header());
  WriteCreation(network->Creation());
  (void)WriteIntStatement("NUMSAMPLES", network->GetNumberOfSamples());
  WriteSubmodelFields(*network->Submodels().GetSubmodel(KVN_ROOT_SUBMODEL));
  WriteUserProperties(network->UserProperties());
  WriteDocumentation(network->Documentation());
  (void)WriteIntStatement("SHOWAS", network->GetShowAs());
}

void KVN_kvnSpeaker::WriteHeader(KVN_header& header) {
  (void)WriteBlockStart("HEADER");
  (void)WriteStatement("ID", header.GetId(), /*quoted=*/false, /*escaped=*/false);
  (void)WriteStringStatement("NAME", header.GetName());
  (void)WriteStringStatement("COMMENT", header.GetComment());
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteCreation(KVN_creation& creation) {
  (void)WriteBlockStart("CREATION");
  (void)WriteStringStatement("CREATOR", creation.GetCreator());
  (void)WriteStringStatement("CREATED", creation.GetCreated());
  (void)WriteStringStatement("MODIFIED", creation.GetModified());
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteRectangle(const char* name, const KVN_rectangle& rectangle) {
  (void)WriteBlockStart(name);
  (void)WriteIntStatement("CENTER_X", rectangle.center_X);
  (void)WriteIntStatement("CENTER_Y", rectangle.center_Y);
  (void)WriteIntStatement("WIDTH", rectangle.width);
  (void)WriteIntStatement("HEIGHT", rectangle.height);
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteScreen(KVN_screenInfo& screen) {
  (void)WriteBlockStart("SCREEN");
  WriteRectangle("POSITION", screen.position);
  (void)WriteIntStatement("COLOR", screen.color);
  (void)WriteIntStatement("SELCOLOR", screen.selColor);
  (void)WriteIntStatement("FONT", screen.font);
  (void)WriteIntStatement("FONTCOLOR", screen.fontColor);
  (void)WriteIntStatement("BORDERTHICKNESS", screen.borderThickness);
  (void)WriteIntStatement("BORDERCOLOR", screen.borderColor);
  // Shown arcs are the default and write nothing.
  if ((screen.screenFlags & KVN_screenInfo::kShowInArcs) == 0) {
    (void)WriteBoolStatement("SHOWINARCS", false);
  }
  if ((screen.screenFlags & KVN_screenInfo::kShowOutArcs) == 0) {
    (void)WriteBoolStatement("SHOWOUTARCS", false);
  }
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteSubmodelFields(KVN_submodel& submodel) {
  WriteScreen(submodel.Screen());
  WriteRectangle("WINDOWPOSITION", submodel.Window());
  (void)WriteIntStatement("BKCOLOR", submodel.GetWindowColor());
  WriteScreenComments(submodel.TextBoxes());
}

void KVN_kvnSpeaker::WriteScreenComments(const KVN_textBoxList& boxes) {
  for (int i = 0; i < boxes.GetCount(); ++i) {
    if (boxes.GetText(i) == nullptr) continue;
    const KVN_rectangle& position = boxes.GetPosition(i);
    KVN_intArray numbers;
    for (int number : {position.center_X, position.center_Y, position.width, position.height}) {
      if (numbers.Add(number) != 0) return;  // four numbers fit into the array itself
    }
    (void)WriteLine("SCREENCOMMENT = { ");
    (void)WriteIntList(numbers, /*whole=*/false);
    WritePlain(",\"");
    (void)WriteText(boxes.GetText(i), /*escaped=*/true);
    WritePlain("\"};\n");
  }
}

void KVN_kvnSpeaker::WriteUserProperties(const KVN_userProperties& properties) {
  (void)WriteBlockStart("USER_PROPERTIES");
  for (int i = 0; i < properties.GetCount(); ++i) {
    (void)WriteStringStatement(properties.GetKey(i), TextOr(properties.GetValue(i), ""));
  }
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteDocumentation(const KVN_documentation& documentation) {
  (void)WriteBlockStart("DOCUMENTATION");
  for (int i = 0; i < documentation.GetCount(); ++i) {
    (void)WriteLine("\"");
    (void)WriteText(TextOr(documentation.GetTitle(i), ""), /*escaped=*/true);
    WritePlain("\" = \"");
    (void)WriteText(TextOr(documentation.GetLocation(i), ""), /*escaped=*/true);
    WritePlain("\";\n");
  }
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteSubmodel(int handle) {
  KVN_submodelHandler& submodels = network->Submodels();
  KVN_submodel& submodel = *submodels.GetSubmodel(handle);
  WritePlain("\n");
  OpenBlock("submodel ", TextOr(submodel.Header().GetId(), "_Unnamed_Submodel_"));
  if (int parent = submodels.GetParent(handle); parent != KVN_ROOT_SUBMODEL) {
    const KVN_submodel* above = submodels.GetSubmodel(parent);
    const char* id = above == nullptr ? nullptr : submodels.GetSubmodel(parent)->Header().GetId();
    (void)WriteStatement("PARENT", TextOr(id, "_Unknown_Parent_"), false, false);
  }
  WriteHeader(submodel.Header());
  WriteSubmodelFields(submodel);
  CloseBlock();
}

void KVN_kvnSpeaker::WriteNode(int handle) {
  KVN_node& node = *network->GetNode(handle);
  KVN_nodeInfo& info = node.Info();
  KVN_nodeDefinition* definition = node.Definition();
  WritePlain("\n");
  OpenBlock("node ", TextOr(node.GetId(), "_Unnamed_Node_"));
  if (definition != nullptr) {
    (void)WriteStatement("TYPE", definition->GetTypeName(), /*quoted=*/false, /*escaped=*/false);
  }
  WriteHeader(info.Header());
  WriteScreen(info.Screen());
  if (network->IsTarget(handle) == 1) (void)WriteBoolStatement("TARGET", true);
  if ((node.GetSubmodel() | KVN_SUBMODEL_BIT) != KVN_ROOT_SUBMODEL) {
    KVN_submodel* submodel = network->Submodels().GetSubmodel(node.GetSubmodel());
    const char* id = submodel == nullptr ? nullptr : submodel->Header().GetId();
    (void)WriteStatement("SUBMODEL", id, /*quoted=*/false, /*escaped=*/false);
  }
  WriteUserProperties(info.UserProperties());
  WriteDocumentation(info.Documentation());
  WriteParents(handle, /*layer=*/0);
  if (definition != nullptr) WriteDefinition(*definition);
  if (node.ExtraDefinition() != nullptr) WriteExtraDefinition(*node.ExtraDefinition());
  CloseBlock();
}

void KVN_kvnSpeaker::WriteParents(int handle, int layer) {
  KVN_stringArray ids;
  for (int parent : network->GetParents(handle, layer)) {
    const KVN_node* node = network->GetNode(parent);
    const char* const id = node == nullptr ? nullptr : node->GetId();
    if (Note(ids.Add(TextOr(id, "UnknownParent"))) < 0) return;
  }
  (void)WriteIdentifierListStatement("PARENTS", ids, /*whole=*/false);
}

void KVN_kvnSpeaker::WriteCosts() {
  (void)WriteBlockStart("OBSERVATION_COST");
  for (int handle : OrderOfNodes()) {
    KVN_node& node = *network->GetNode(handle);
    WritePlain("\n");
    OpenBlock("node ", TextOr(node.GetId(), "_Unnamed_Node_"));
    WriteParents(handle, /*layer=*/1);
    if (node.Cost() != nullptr) {
      (void)WriteDoubleListStatement("COSTS", node.Cost()->GetCosts().GetItems(), /*whole=*/true);
    }
    CloseBlock();
  }
  (void)WriteBlockEnd();
}
