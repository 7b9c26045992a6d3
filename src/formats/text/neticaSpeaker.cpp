#include "formats/text/neticaSpeaker.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "definitions/nodeDefinition.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/creation.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"

namespace {

constexpr const char* kUnnamedNetwork = "_Unnamed_Network_";

// Statements and blocks that mean nothing here. The last ones of each list come from later versions
// of the program, which spell some words anew.
const char* const kNetWords[] = {"numdimensions",  "eqncontext", "whochanged", "locked",
                                 "autoupdate",     "elimorder",  "ElimOrder",  "AutoCompile",
                                 "AutoUpdate",     "user",       "NodeSet",    "NodeSets",
                                 "PrinterSetting", nullptr};
const char* const kVisualNetWords[] = {
    "dispname",      "dispform",       "defdispform",     "nodelabeling",   "nodefont",
    "hidden",        "linkfont",       "commentfont",     "linkjoin",       "showstrength",
    "nodecolors",    "linkcolors",     "backcolor",       "commentcolor",   "pagebreakcolor",
    "groupingcolor", "commentinfos",   "parts",           "windowposn",     "scrollposn",
    "resolution",    "magnification",  "drawingbounds",   "showpagebreaks", "usegrid",
    "gridspace",     "user",           "nodebordercolor", "CommentShowing", "CommentWindowPosn",
    "NodeSet",       "PrinterSetting", "NodeSets",        nullptr};
const char* const kVisualNodeWords[] = {"center", "size", "dispform", "hidden", "height",
                                        "links",  "user", "parts",    nullptr};
const char* const kVisualLinkWords[] = {"path", "labelposn", "hidden", "dispform", nullptr};
const char* const kParamWords[] = {"discrete", "measure", "numstates", "states",  "levels", "units",
                                   "kind",     "chance",  "title",     "comment", nullptr};

int ClampToInt(double value) {
  constexpr double kLargest = std::numeric_limits<int>::max();
  if (!(value > -kLargest)) return -std::numeric_limits<int>::max();  // a NaN too
  return static_cast<int>(std::min(value, kLargest));
}

}  // namespace

int KVN_neticaSpeaker::ReadFile(const char* fileName) {
  if (int result = OpenLexer(fileName, KVN_LEXICAL_DEFAULT, /*returnsEndLines=*/true); result < 0) {
    return result;
  }
  lexer->AcceptHexEscapes();
  statesLeft = fileBytes;
  int result = 0;
  if (PeekIs("bnet") == 1) {
    result = ReadNet();
    if (result == 0) (void)AcceptToken(KVN_TOKEN_PUNCTUATOR, ";");
    FinishDeferred();
    // A "}" too many ends the network early, and the rest of the file would be lost in silence.
    if (result == 0 && PeekToken() == 0) (void)ReportToken("ERROR: '%s' : Unexpected");
  } else {
    (void)ReportToken("ERROR: '%s' : 'bnet' expected");
  }
  CloseLexer();
  return result;
}

int KVN_neticaSpeaker::ReadNet() {
  ConsumeToken();
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  KVN_header& header = network->Header();
  (void)header.SetName(tokenText);  // without memory the network stays without a name
  if (header.SetId(tokenText) < 0) {
    if (int result = header.SetId(kUnnamedNetwork); result < 0) return result;
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result < 0) return result;
  return ReadBlockBody([this] { return ReadNetStatement(); });
}

/// What is left of a statement that means nothing; its failure is the end of the file.
int KVN_neticaSpeaker::SkipKnown() {
  (void)SkipStatement();
  return 0;
}

int KVN_neticaSpeaker::ReadNetStatement() {
  if (int result = ReadNetText(); result != KVN_NOT_THIS_STATEMENT) return result;
  if (PeekInList(kNetWords) == 1) return SkipKnown();
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "visual") == 0) {
    return ReadNamedBlock([this] { return ReadVisualNet(); });
  }
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "node") == 0) return ReadNode();
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "param") == 0) {
    return ReadNamedBlock([this] { return ReadParamStatement(); });
  }
  return ReportToken("ERROR: '%s' : Unknown Net Statement");
}

int KVN_neticaSpeaker::ReadNetText() {
  KVN_header& header = network->Header();
  KVN_creation& creation = network->Creation();
  int result = ReadStatement("title", KVN_TOKEN_STRING);
  if (result == 0) return ReportError(header.SetName(tokenText), nullptr);
  if (result == KVN_NOT_THIS_STATEMENT) {
    result = ReadStatement("comment", KVN_TOKEN_STRING);
    if (result == 0) return ReportError(header.SetComment(tokenText), nullptr);
  }
  if (result == KVN_NOT_THIS_STATEMENT) {
    result = ReadStatement("author", KVN_TOKEN_STRING);
    if (result == 0) return ReportError(creation.SetCreator(tokenText), nullptr);
  }
  if (result == KVN_NOT_THIS_STATEMENT) {
    result = ReadStatement("whenchanged", KVN_TOKEN_INTEGER);
    if (result == 0) return ReportError(creation.SetModified(tokenText), nullptr);
  }
  return result;
}

// Layout.

int KVN_neticaSpeaker::ReadVisualNet() {
  KVN_submodel& root = *network->Submodels().GetSubmodel(KVN_ROOT_SUBMODEL);
  if (PeekIs("windowposn") == 1) return ReadWindow();
  int color = 0;
  if (PeekIs("backcolor") == 1) {
    const int result = ReadColor(color);
    if (result == 0) root.SetWindowColor(color);
    return result;
  }
  if (PeekIs("nodebordercolor") == 1) {
    return ReadColor(network->Submodels().NodeDefaults().borderColor);
  }
  if (PeekInList(kVisualNetWords) == 1) return SkipKnown();
  return ReportToken("ERROR: '%s' : Unknown Visual Net Statement");
}

/// `windowposn = (left, top, right, bottom)`.
int KVN_neticaSpeaker::ReadWindow() {
  ConsumeToken();
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  KVN_doubleArray edges;
  if (int result = ReadNumbers(edges); result < 0) return result;
  if (edges.GetNumItems() != 4) return ReportError(KVN_REFUSED, "ERROR: Wrong Window Position");
  KVN_rectangle& window = network->Submodels().GetSubmodel(KVN_ROOT_SUBMODEL)->Window();
  window.center_X = ClampToInt((edges[0] + edges[2]) / 2);
  window.center_Y = ClampToInt((edges[1] + edges[3]) / 2);
  window.width = ClampToInt(edges[2] - edges[0]);
  window.height = ClampToInt(edges[3] - edges[1]);
  return 0;
}

/// An integer, or `0x` and hexadecimal digits, which are two tokens.
int KVN_neticaSpeaker::ReadColor(int& color) {
  ConsumeToken();
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_INTEGER, nullptr); result < 0) return result;
  int value = 0;
  (void)TextToInt(tokenText, value);
  if (value == 0 && PeekIsIdentifier() == 1 && (*tokenText == 'x' || *tokenText == 'X')) {
    ConsumeToken();
    value = static_cast<int>(std::strtoul(tokenText + 1, nullptr, 16) & 0xffffffu);
  }
  color = value;
  return 0;
}

int KVN_neticaSpeaker::ReadParamStatement() {
  if (PeekInList(kParamWords) == 1) return SkipKnown();
  return ReportToken("ERROR: '%s' : Unknown Param Statement");
}

int KVN_neticaSpeaker::ReadVisualNodeStatement(KVN_node& node) {
  KVN_rectangle& place = node.Info().Screen().position;
  int result =
      ReadPair("center", place.center_X, place.center_Y, "ERROR: Wrong Center Coordinates");
  if (result == KVN_NOT_THIS_STATEMENT) {
    result = ReadPair("size", place.width, place.height, "ERROR: Wrong Size Values");
  }
  if (result != KVN_NOT_THIS_STATEMENT) return result;
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "link") == 0) return ReadLink();
  if (PeekInList(kVisualNodeWords) == 1) return SkipKnown();
  return ReportToken("ERROR: '%s' : Unknown Visual Node Statement");
}

/// `link 2 { statements }`, of which none means anything.
int KVN_neticaSpeaker::ReadLink() {
  if (int result = RequireToken(KVN_TOKEN_INTEGER, nullptr); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result < 0) return result;
  return ReadBlockBody([this] {
    if (PeekInList(kVisualLinkWords) == 1) return SkipKnown();
    return ReportToken("ERROR: '%s' : Unknown Visual Link Statement");
  });
}

/// `name = (first, second)`.
int KVN_neticaSpeaker::ReadPair(const char* name, int& first, int& second, const char* message) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, name) != 0) return KVN_NOT_THIS_STATEMENT;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  KVN_doubleArray pair;
  if (int result = ReadNumbers(pair); result < 0) return result;
  if (pair.GetNumItems() != 2) return ReportError(KVN_REFUSED, message);
  first = ClampToInt(pair[0]);
  second = ClampToInt(pair[1]);
  return 0;
}
