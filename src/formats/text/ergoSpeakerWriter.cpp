#include "definitions/nodeDefinition.h"
#include "formats/text/ergoSpeaker.h"
#include "foundation/numberText.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"

namespace {

constexpr int kWideMargin = 10000;
constexpr int kUsualMargin = 70;

}  // namespace

int KVN_ergoSpeaker::WriteFile(const char* fileName) {
  nodes = network->GetOrderOfNodes();
  if (nodes.GetNumItems() != network->GetNumberOfNodes()) {
    return ReportError(KVN_NO_MEMORY, nullptr);
  }
  for (int handle : nodes) {
    const int type = network->TypeOf(handle);
    if (type == KVN_TYPE_CPT || type == KVN_TYPE_TRUTHTABLE) continue;
    return ReportError(KVN_REFUSED, "ERROR: This Network cannot be saved in Ergo format");
  }
  if (int result = outputFile.Open(fileName, KVN_OPEN_TO_WRITE); result < 0) return result;
  (void)SetRightMargin(kWideMargin);  // cut to the widest that there is
  if (int result = WriteStructure(); result < 0) {
    outputFile.Discard();
    return ReportError(result, nullptr);
  }
  (void)SetRightMargin(kUsualMargin);
  WriteProbabilities();
  WriteNames();
  WriteLabels();
  WriteCenters();
  return outputFile.Close();
}

void KVN_ergoSpeaker::PutHeading(const char* word) {
  for (const char* piece : {"/*\t", word, "\t*/\n"}) PutText(piece);
}

/// With a tab behind it, at which the line may be broken.
void KVN_ergoSpeaker::PutCell(const char* text) {
  WriteText(text);
  WriteText("\t");
}

void KVN_ergoSpeaker::PutInt(int value, const char* behind) {
  char text[kNumberTextSize];
  IntToText(value, text);
  WriteText(text);
  WriteText(behind);
}

int KVN_ergoSpeaker::WriteStructure() {
  KVN_intArray positions;  // by handle, from 1
  if (int result = positions.SetSize(network->GetSize()); result < 0) return result;
  PutInt(nodes.GetNumItems(), "\n\n");
  int position = 0;
  for (int handle : nodes) {
    positions[handle] = ++position;
    PutInt(network->DefinitionOf(handle)->GetNumberOfOutcomes(), "\t");
  }
  PutText("\n\n");
  for (int handle : nodes) {
    PutInt(network->GetNumberOfParents(handle), "");
    for (int parent : network->GetParents(handle)) {
      WriteText("\t");
      PutInt(positions[parent], "");
    }
    PutText("\n");
  }
  return PutText("\n\n");
}

void KVN_ergoSpeaker::WriteProbabilities() {
  PutText("\n");
  PutHeading("Probabilities");
  for (int handle : nodes) {
    KVN_Dmatrix* table = nullptr;
    if (network->DefinitionOf(handle)->GetDefinition(table) < 0) continue;  // both kinds have one
    PutInt(table->GetSize(), "\n");
    char text[kNumberTextSize];
    for (double number : table->GetItems()) {
      DoubleToText(number, text);
      PutCell(text);
    }
    PutText("\n\n");
  }
  PutText("\n\n");
}

/// It is meant that this heading alone has no line feed of its own before it.
void KVN_ergoSpeaker::WriteNames() {
  PutHeading("Names");
  for (int handle : nodes) {
    const char* const id = network->GetNode(handle)->GetId();
    PutCell(id != nullptr ? id : "_Unnamed_Node_");
  }
  PutText("\n\n");
}

void KVN_ergoSpeaker::WriteLabels() {
  PutText("\n");
  PutHeading("Labels");
  for (int handle : nodes) {
    const KVN_idArray& names = *network->DefinitionOf(handle)->GetOutcomesNames();
    for (int i = 0; i < names.GetNumItems(); ++i) PutCell(names.GetString(i));
    PutText("\n");
  }
  PutText("\n\n");
}

void KVN_ergoSpeaker::WriteCenters() {
  PutText("\n");
  PutHeading("Centers");
  for (int handle : nodes) {
    const KVN_rectangle& rectangle = network->GetNode(handle)->Info().Screen().position;
    PutInt(rectangle.center_X, "\t");
    PutInt(rectangle.center_Y, "\n");
  }
}
