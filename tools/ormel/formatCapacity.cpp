#include "ormel/formatCapacity.h"

#include "definitions/nodeDefinition.h"
#include "foundation/numberText.h"
#include "network/fileSpeaker.h"

namespace {

/// The text formats print eight decimals, and the reserved values by their names.
double KeepEightDecimals(double value) {
  char text[kNumberTextSize];
  DoubleToText(value, text);
  double kept = 0.0;
  return TextToDouble(text, kept) == 0 ? kept : value;
}

/// The XML format prints sixteen significant digits.
double KeepSixteenDigits(double value) {
  char text[kNumberTextSize];
  FormatDouble("%.16g", value, text, sizeof text);
  double kept = 0.0;
  return TextToDouble(text, kept) == 0 ? kept : value;
}

/// The text formats write the identifier as a word, which one behind "@" is not.
std::string KeepWord(const std::string& id) { return id[0] == '@' ? "" : id; }

bool IsWhite(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// An XML reader gives blanks for white space in an attribute, and takes no other control
/// character.
std::string KeepAttribute(const std::string& id) {
  std::string kept;
  for (char c : id) {
    if (static_cast<unsigned char>(c) < ' ' && !IsWhite(c)) return "";
    kept += IsWhite(c) ? ' ' : c;
  }
  return kept;
}

/// A run of white space is one blank, and none at the end.
std::string KeepSqueezed(const std::string& id) {
  std::string kept;
  bool isApart = false;
  for (char c : id) {
    if (!IsWhite(c)) kept += isApart ? std::string{' ', c} : std::string{c};
    isApart = IsWhite(c);
  }
  return kept;
}

constexpr int kLongestPiece = 10210;  // KVN_fileFormat::WriteLine cuts there

constexpr std::uint64_t kAllFeatures = ~std::uint64_t{0};
/// What no file has a place for: states of a session, and numbers that nothing uses.
constexpr std::uint64_t kOfTheSession = kAlgorithms | kSolver | kUpdateFlags | kNoisyMaxRelevance |
                                        kEvidence | kSoftEvidence | kChoiceValues;

FormatCapacity Native() {
  FormatCapacity made;
  made.format = KVN_FORMAT_KVN;
  made.features = kAllFeatures & ~(kOfTheSession | kDiscretization | kEpis | kCases | kTemporal |
                                   kUtilityFormulas);
  for (int type : {KVN_TYPE_CPT, KVN_TYPE_TRUTHTABLE, KVN_TYPE_LIST, KVN_TYPE_TABLE, KVN_TYPE_CAST,
                   KVN_TYPE_NOISY_MAX, KVN_TYPE_MAU}) {
    made.kinds.push_back({type, Fate::kOwn});
  }
  for (int type : {KVN_TYPE_DEMORGAN, KVN_TYPE_NOISY_ADDER, KVN_TYPE_DCHILD_HPARENT,
                   KVN_TYPE_DISTRIBUTION, KVN_TYPE_H_EQUATION}) {
    made.kinds.push_back({type, Fate::kKindOnly});
  }
  made.numberKept = KeepEightDecimals;
  made.longestText = kLongestPiece;
  made.identifierKept = KeepWord;
  made.namesNetworkFirst = true;
  return made;
}

FormatCapacity NativeXml() {
  FormatCapacity made;
  made.format = KVN_FORMAT_XKVN;
  made.features = kNetworkIdentifier | kNetworkProperties | kSamples | kDiscretization | kEpis |
                  kCases | kTemporal | kNodeProperties | kTargets | kDiagnosis | kFaultsOfTables |
                  kDefaultsOfStates | kCostsByParents | kOrigin | kUtilityFormulas;
  for (int type : {KVN_TYPE_CPT, KVN_TYPE_TRUTHTABLE, KVN_TYPE_LIST, KVN_TYPE_TABLE, KVN_TYPE_CAST,
                   KVN_TYPE_DEMORGAN, KVN_TYPE_NOISY_MAX, KVN_TYPE_NOISY_ADDER, KVN_TYPE_MAU,
                   KVN_TYPE_EQUATION}) {
    made.kinds.push_back({type, Fate::kOwn});
  }
  made.numberKept = KeepSixteenDigits;
  made.keepsNonFinite = true;
  made.dropsCarriageReturns = true;
  made.refusesControls = true;
  made.identifierKept = KeepAttribute;
  made.twin = Twin::kKept;
  made.needsDeterminism = true;
  return made;
}

/// A format whose only chance nodes are tables: `others` is what becomes of the gates over binary
/// nodes.
FormatCapacity PlainTables(int format, std::uint64_t features, Fate others) {
  FormatCapacity made;
  made.format = format;
  made.features = features;
  made.kinds = {
      {KVN_TYPE_CPT, Fate::kOwn},
      {KVN_TYPE_LIST, Fate::kOwn},
      {KVN_TYPE_TABLE, Fate::kOwn},
      {KVN_TYPE_TRUTHTABLE, Fate::kTable},
      {KVN_TYPE_NOISY_MAX, Fate::kTable},
      {KVN_TYPE_NOISY_ADDER, Fate::kTable},
      {KVN_TYPE_CAST, others},
      {KVN_TYPE_DEMORGAN, others},
      {KVN_TYPE_MAU, Fate::kRefused},
      {KVN_TYPE_EQUATION, Fate::kRefused},
  };
  made.numberKept = KeepEightDecimals;
  made.longestText = kLongestPiece;
  return made;
}

FormatCapacity Hugin() {
  FormatCapacity made =
      PlainTables(KVN_FORMAT_HUGIN, kNodeName | kNodeProperties | kPosition, Fate::kRefused);
  made.normalizesRows = true;
  return made;
}

/// A format that writes every node as one of three classes, and refuses none.
FormatCapacity Xmlbif() {
  FormatCapacity made = PlainTables(KVN_FORMAT_XMLBIF, kNetworkIdentifier, Fate::kTable);
  for (KindFate& kind : made.kinds) {
    if (kind.type == KVN_TYPE_MAU) kind.fate = Fate::kBlank;
    if (kind.type == KVN_TYPE_EQUATION) kind.fate = Fate::kGone;
  }
  made.identifierKept = KeepSqueezed;
  made.twin = Twin::kRenamed;
  return made;
}

/// A format with plain tables of chance nodes and nothing else.
FormatCapacity ChanceOnly() {
  FormatCapacity made = PlainTables(KVN_FORMAT_ERGO, kPosition | kOrigin, Fate::kRefused);
  for (KindFate& kind : made.kinds) {
    const bool isTable = kind.type == KVN_TYPE_CPT || kind.type == KVN_TYPE_TRUTHTABLE;
    if (!isTable) kind.fate = Fate::kRefused;
  }
  made.twin = Twin::kRenamed;
  return made;
}

/// The numbers of two kinds are written and not read.
FormatCapacity Netica() {
  FormatCapacity made =
      PlainTables(KVN_FORMAT_NETICA,
                  kNetworkIdentifier | kNetworkName | kNetworkComment | kCreator | kNodeName |
                      kNodeComment | kNodeProperties | kPosition | kOrigin,
                  Fate::kRefused);
  for (KindFate& kind : made.kinds) {
    if (kind.type == KVN_TYPE_TRUTHTABLE) kind.fate = Fate::kStates;
    if (kind.type == KVN_TYPE_NOISY_MAX) kind.fate = Fate::kBlank;
    if (kind.type == KVN_TYPE_NOISY_ADDER) kind.fate = Fate::kRefused;
  }
  made.identifierKept = KeepWord;
  made.namesNetworkFirst = true;
  return made;
}

const std::vector<FormatCapacity>& Table() {
  static const std::vector<FormatCapacity> table = {
      Native(),
      NativeXml(),
      Hugin(),
      PlainTables(KVN_FORMAT_MICROSOFT, kNetworkName | kNodeName | kPosition | kOrigin,
                  Fate::kRefused),
      Xmlbif(),
      ChanceOnly(),
      Netica(),
  };
  return table;
}

}  // namespace

Fate FormatCapacity::FateOf(int type) const {
  for (const KindFate& row : kinds) {
    if (row.type == type) return row.fate;
  }
  return Fate::kGone;
}

const FormatCapacity* CapacityOf(int format) {
  for (const FormatCapacity& row : Table()) {
    if (row.format == format) return &row;
  }
  return nullptr;
}
