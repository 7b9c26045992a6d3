#include <string>

#include "definitions/nodeDefinition.h"
#include "formats/text/xmlSpeaker.h"
#include "foundation/doubleArray.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"

namespace {

constexpr const char* kProlog =
    "<?XML VERSION=\"1.0\"?>\n"
    "<!--\n"
    "\tBayesian network in XMLBIF v0.3 (BayesNet Interchange Format)\n"
    "\tProduced by ORMEL/VUSTA (http://ormel.example/)\n"
    "-->\n"
    "\n"
    "<!-- DTD for the XMLBIF 0.3 format -->\n"
    "<!DOCTYPE BIF [\n"
    "\t<!ELEMENT BIF ( NETWORK )*>\n"
    "\t      <!ATTLIST BIF VERSION CDATA #REQUIRED>\n"
    "\t<!ELEMENT NETWORK ( NAME, ( PROPERTY | VARIABLE | DEFINITION )* )>\n"
    "\t<!ELEMENT NAME (#PCDATA)>\n"
    "\t<!ELEMENT VARIABLE ( NAME, ( OUTCOME |  PROPERTY )* ) >\n"
    "\t      <!ATTLIST VARIABLE TYPE (chance|decision|utility) chance>\n"
    "\t<!ELEMENT OUTCOME (#PCDATA)>\n"
    "\t<!ELEMENT DEFINITION ( FOR | GIVEN | TABLE | PROPERTY )* >\n"
    "\t<!ELEMENT FOR (#PCDATA)>\n"
    "\t<!ELEMENT GIVEN (#PCDATA)>\n"
    "\t<!ELEMENT TABLE (#PCDATA)>\n"
    "\t<!ELEMENT PROPERTY (#PCDATA)>\n"
    "]>\n"
    "\n"
    "<BIF VERSION=\"0.3\">\n";

const char* Or(const char* text, const char* standIn) { return text != nullptr ? text : standIn; }

}  // namespace

int KVN_xmlSpeaker::WriteFile(const char* fileName) {
  const KVN_intArray& order = network->GetOrderOfNodes();
  if (order.GetNumItems() != network->GetNumberOfNodes()) {
    return ReportError(KVN_NO_MEMORY, nullptr);
  }
  if (int result = outputFile.Open(fileName, KVN_OPEN_TO_WRITE); result < 0) return result;
  PutText(kProlog);
  WriteTag("<", "NETWORK");
  (void)outputFile.IncreaseIndent();  // the format goes three levels deep
  WriteElement("NAME", Or(network->Header().GetId(), "Unnamed"));
  for (int handle : order) WriteVariable(handle);
  for (int handle : order) {
    if (int result = WriteDefinition(handle); result < 0) {
      outputFile.Discard();
      return ReportError(result, nullptr);
    }
  }
  (void)outputFile.DecreaseIndent();
  WriteTag("</", "NETWORK");
  WriteTag("</", "BIF");
  return outputFile.Close();
}

int KVN_xmlSpeaker::WriteDoubleList(const KVN_doubleArray& list, bool whole) {
  const int count = whole ? list.GetSize() : list.GetNumItems();
  char text[kNumberTextSize + 1];
  int result = 0;
  for (int i = 0; i < count && result == 0; ++i) {
    DoubleToText(list[i], text);
    const std::size_t length = std::char_traits<char>::length(text);
    text[length] = ' ';
    text[length + 1] = '\0';
    result = WriteText(text);  // which breaks no number, however long
  }
  return result;
}

void KVN_xmlSpeaker::WriteTag(const char* before, const char* name) {
  outputFile.WriteIndent();
  PutText(before);
  PutText(name);
  PutText(">\n");
}

/// The texts of this format are identifiers. Those of networks may hold any character behind an
/// "@".
void KVN_xmlSpeaker::WriteElement(const char* name, const char* text) {
  std::string escaped;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c == '&') {
      escaped += "&amp;";
    } else if (*c == '<') {
      escaped += "&lt;";
    } else {
      escaped += *c;
    }
  }
  outputFile.WriteIndent();
  for (const char* piece : {"<", name, ">", escaped.c_str(), "</", name, ">\n"}) PutText(piece);
}

/// A deterministic node has states and a table, and goes out as what it is to a reader that knows
/// three classes only.
const char* KVN_xmlSpeaker::TypeWordOf(int handle) {
  const int type = network->TypeOf(handle);
  if ((type & KVN_TYPE_BIT_DECISION) != 0) return "decision";
  if ((type & KVN_TYPE_BIT_UTILITY) != 0) return "utility";
  if ((type & KVN_TYPE_BIT_DISCRETE) != 0) return "chance";
  (void)ReportError(KVN_REFUSED, "ERROR: Unsupported node type");
  return "Unknown";
}

void KVN_xmlSpeaker::WriteVariable(int handle) {
  const char* const word = TypeWordOf(handle);
  outputFile.WriteIndent();
  for (const char* piece : {"<VARIABLE TYPE=\"", word, "\">\n"}) PutText(piece);
  (void)outputFile.IncreaseIndent();
  WriteElement("NAME", IdOf(handle));
  const KVN_nodeDefinition* const definition = network->DefinitionOf(handle);
  const KVN_idArray* const names = definition != nullptr ? definition->GetOutcomesNames() : nullptr;
  for (int i = 0; names != nullptr && i < names->GetNumItems(); ++i) {
    WriteElement("OUTCOME", Or(names->GetString(i), ""));
  }
  (void)outputFile.DecreaseIndent();
  WriteTag("</", "VARIABLE");
}

/// A definition without a table has none in the file; a gate may lack the memory to build it.
int KVN_xmlSpeaker::WriteDefinition(int handle) {
  WriteTag("<", "DEFINITION");
  (void)outputFile.IncreaseIndent();
  WriteElement("FOR", IdOf(handle));
  for (int parent : network->GetParents(handle)) {
    const KVN_node* const node = network->GetNode(parent);
    WriteElement("GIVEN", Or(node != nullptr ? node->GetId() : nullptr, "UnknownParent"));
  }
  KVN_nodeDefinition* const definition = network->DefinitionOf(handle);
  KVN_Dmatrix* table = nullptr;
  const int result = definition != nullptr ? definition->GetDefinition(table) : KVN_NOT_APPLICABLE;
  if (result < 0 && result != KVN_NOT_APPLICABLE) return result;
  if (result == 0) {
    WriteTag("<", "TABLE");
    (void)outputFile.IncreaseIndent();
    outputFile.WriteIndent();
    (void)WriteDoubleList(table->GetItems(), /*whole=*/true);
    PutText("\n");
    (void)outputFile.DecreaseIndent();
    WriteTag("</", "TABLE");
  }
  (void)outputFile.DecreaseIndent();
  WriteTag("</", "DEFINITION");
  return 0;
}
