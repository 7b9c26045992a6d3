#pragma once

#include "formats/text/fileFormat.h"
#include "foundation/resultCodes.h"

class KVN_cast;
class KVN_creation;
class KVN_documentation;
class KVN_extraDefinition;
class KVN_header;
class KVN_node;
class KVN_nodeDefinition;
class KVN_nodeInfo;
class KVN_noisyMAX;
class KVN_rectangle;
class KVN_screenInfo;
class KVN_submodel;
class KVN_textBoxList;
class KVN_userProperties;

/// The native text format, extension "kvn": blocks `NAME = { statements };` that carry a network
/// with its layout, definitions, diagnosis attributes and observation costs. docs/formats.md holds
/// the grammar.
///
/// Reading. A syntax error costs one statement: it is told to the error log and reading goes on
/// behind the next ";", so the result is 0 and the log tells of the errors. KVN_SYNTAX_ERROR comes
/// only from the outermost frame. A file whose first word isn't `net` loads as an empty network.
///
/// Writing. Blocks in a fixed order, numbers with eight decimals. Kinds of nodes for which the
/// format has no statement keep their TYPE line and lose their numbers.
class KVN_kvnSpeaker : public KVN_fileFormat {
 public:
  explicit KVN_kvnSpeaker(KVN_network& target);

  int ReadFile(const char* fileName) override;
  int WriteFile(const char* fileName) override;

 protected:
  int ReadBlockStart(const char* name) override;
  int WriteBlockStart(const char* name) override;
  void BeginContinuation() override;
  void EndContinuation() override;

 private:
  // Reading, kvnReader.cpp: the net and the blocks on its first level.
  int ReadNet();
  int ReadNetStatement();
  int ReadNetField();
  int ReadSubmodel();
  int ReadSubmodelStatement(int handle);
  int ReadSubmodelField(KVN_submodel& submodel);
  int ReadNode();
  int ReadNodeStatement(int handle);
  int ReadNodeType(KVN_node& node);
  int ReadCosts();
  int ReadCostNode();
  int ReadCostStatement(int handle);
  int ReadArcs(int child, int layer, const char* message);
  int ReportUnknown(const char* what);

  // Reading, kvnReaderCommon.cpp: blocks that several objects have.
  int ReadHeader(KVN_header& header);
  int ReadCreation(KVN_creation& creation);
  int ReadRectangle(const char* name, KVN_rectangle& rectangle);
  int ReadScreen(KVN_screenInfo& screen);
  int ReadUserProperties(KVN_userProperties& properties);
  int ReadDocumentation(KVN_documentation& documentation);
  int ReadScreenComment(KVN_textBoxList& boxes);
  /// Tries readers of statements in turn, up to the first whose keyword stands here.
  template <typename... Readers>
  static int FirstOf(Readers... readers) {
    int result = KVN_NOT_THIS_STATEMENT;
    (void)((result = readers(), result != KVN_NOT_THIS_STATEMENT) || ...);
    return result;
  }
  /// `name = value` handed to `setter`, which gives the statement's result.
  template <typename Setter>
  int ReadText(const char* name, int tokenClass, Setter setter) {
    if (int result = ReadStatement(name, tokenClass); result != 0) return result;
    return setter(tokenText);
  }
  template <typename Setter>
  int ReadInt(const char* name, Setter setter) {
    int value = 0;
    if (int result = ReadIntStatement(name, value); result != 0) return result;
    setter(value);
    return 0;
  }
  template <typename Setter>
  int ReadBool(const char* name, Setter setter) {
    int value = 0;
    if (int result = ReadBoolStatement(name, value); result != 0) return result;
    setter(value);
    return 0;
  }
  /// `name =`, after which a list or a brace follows.
  int ReadAssignment(const char* name);

  // Reading, kvnReaderDefinition.cpp.
  int ReadDefinition(KVN_node& node);
  int ReadDefinitionStatement(KVN_nodeDefinition& definition);
  template <typename List, typename Reader, typename Setter>
  int ReadListStatement(const char* name, List& list, Reader reader, Setter setter);
  int SetProbabilities(KVN_nodeDefinition& definition, const KVN_doubleArray& values);
  int SetNoisyAnd(KVN_noisyMAX& definition, const KVN_doubleArray& values);
  int SetStrengths(KVN_nodeDefinition& definition, const KVN_intArray& flat);
  int ReadExtraDefinition(KVN_node& node);
  int ReadExtraStatement(KVN_extraDefinition& extra);
  int ReadDiagnosisType(KVN_extraDefinition& extra);
  int ReadStateDocumentation(KVN_extraDefinition& extra);

  // Writing, kvnWriter.cpp and kvnWriterDefinition.cpp.
  void WriteNetwork();
  void WriteNetPart();
  void WriteSubmodelFields(KVN_submodel& submodel);
  void WriteHeader(KVN_header& header);
  void WriteCreation(KVN_creation& creation);
  void WriteRectangle(const char* name, const KVN_rectangle& rectangle);
  void WriteScreen(KVN_screenInfo& screen);
  void WriteScreenComments(const KVN_textBoxList& boxes);
  void WriteUserProperties(const KVN_userProperties& properties);
  void WriteDocumentation(const KVN_documentation& documentation);
  void WriteSubmodel(int handle);
  void WriteNode(int handle);
  void WriteDefinition(KVN_nodeDefinition& definition);
  void WriteStateNames(KVN_nodeDefinition& definition);
  void WriteStrengths(KVN_noisyMAX& definition);
  void WriteExtraDefinition(KVN_extraDefinition& extra);
  void WriteCosts();
  void WritePlain(const char* text);
  void OpenBlock(const char* word, const char* id);
  void CloseBlock();
  void WriteParents(int handle, int layer);
  /// Remembers a lack of memory, so that a file with a part left out never replaces a whole one.
  int Note(int result);
  const KVN_intArray& OrderOfNodes();

  bool outOfMemory = false;         // since the writing began
  int stateDocumentationIndex = 0;  // next state to get a DOCUMENTATION block
  unsigned char noisyOrMode = 0;    // set by TYPE = NOISY_OR; every TYPE clears both modes, and
  unsigned char noisyAndMode = 0;   // a node without TYPE inherits them (intended)
};
