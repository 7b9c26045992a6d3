#pragma once

#include <cstdint>

#include "formats/xml/nodeDefVisitor.h"
#include "formats/xml/xmlWriter.h"

class KVN_Dmatrix;
class KVN_doubleArray;
class KVN_extraDefinition;
class KVN_intArray;
class KVN_network;
class KVN_userProperties;

/// Writes a network as a native XML file. False when the file couldn't be written or memory is
/// short; it is then as it was before. `saveOptions` is KVN_XML_USUAL_EXTENSION,
/// KVN_XML_NO_EXTENSION or the address of an IXmlWriterExtension, which the caller keeps.
bool SaveXmlNetwork(const char* fileName, KVN_network& network, std::intptr_t saveOptions);

/// The writer of the graphical form of a network. Null as long as there is none.
IXmlWriterExtension* NewVustaSaver(KVN_network& network);

/// Writes the elements of a native XML file, parents before children; docs/formats.md has the table
/// of elements. What is at its default isn't written.
///
/// It is meant that hybrid nodes are left out without a message: the format has no element for
/// them. A node below one still lists it as a parent, so such a file doesn't load.
class XmlNetworkSaver : public XmlWriter, private NodeDefVisitor {
 public:
  /// `extension` may be null.
  XmlNetworkSaver(KVN_network& source, IXmlWriterExtension* contentOfExtensions)
      : network(source), extension(contentOfExtensions) {}

  bool Save(const char* fileName);

 private:
  void VisitMau(KVN_mau& definition) override;
  void VisitEquation(KVN_equation& definition) override;
  void VisitTable(KVN_table& definition) override;
  void VisitList(KVN_list& definition) override;
  void VisitDemorgan(KVN_demorgan& definition) override;
  void VisitCast(KVN_cast& definition) override;
  void VisitNoisyAdder(KVN_noisyAdder& definition) override;
  void VisitNoisyMax(KVN_noisyMAX& definition) override;
  void VisitTruthTable(KVN_truthTable& definition) override;
  void VisitCpt(KVN_cpt& definition) override;

  void SaveFormulas(KVN_mau& definition);
  void SaveNetwork();
  void SaveProperties(const KVN_userProperties& properties);
  void SaveAlgorithms();
  void SaveNodes();
  void SaveCosts();
  void SaveExtensions();
  /// Queued attributes, start tag, states, parents: what all kinds of nodes begin with.
  void OpenNode(const char* name, KVN_nodeDefinition& definition, bool hasStates);
  void SaveStates(KVN_nodeDefinition& definition);
  void AddStateMarks(const KVN_extraDefinition& extra, int state);
  void SaveParents(int handle, int layer);
  void SaveMatrix(const char* name, const KVN_Dmatrix& matrix);
  void SaveList(const char* name, const KVN_doubleArray& list);
  void SaveNumber(const char* name, double number);
  /// Parents before children.
  const KVN_intArray& SortedNodes();
  /// What comes of a step that fails only where memory is short: a list with holes.
  void Note(int result) { isWhole = isWhole && result >= 0; }

  KVN_network& network;
  IXmlWriterExtension* extension;  // not owned
  const char* elementName = "";    // of the node in hand
  bool isWhole = true;             // nothing was left out for want of memory
};
