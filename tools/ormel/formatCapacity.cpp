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

constexpr int kLongestPiece = 10210;  // KVN_fileFormat::WriteLine cuts there

constexpr unsigned kDescription =
    kNetworkIdentifier | kNetworkLayout | kNetworkName | kNetworkComment | kNetworkProperties |
    kSubmodels | kTextBoxes | kSamples | kShowAs | kNodeName | kNodeComment | kNodeProperties |
    kNodeDocuments | kPosition | kAppearance | kTargets | kDiagnosis | kCosts;

/// Kinds that the formats with nothing but tables take.
std::vector<KindFate> PlainTables() {
  return {
      {KVN_TYPE_CPT,         Fate::kOwn  },
      {KVN_TYPE_TRUTHTABLE,  Fate::kTable},
      {KVN_TYPE_NOISY_MAX,   Fate::kTable},
      {KVN_TYPE_NOISY_ADDER, Fate::kTable},
  };
}

std::vector<KindFate> TablesAndDecisions(Fate others) {
  std::vector<KindFate> kinds = PlainTables();
  kinds.push_back({KVN_TYPE_LIST, Fate::kOwn});
  kinds.push_back({KVN_TYPE_TABLE, Fate::kOwn});
  kinds.push_back({KVN_TYPE_CAST, others});
  kinds.push_back({KVN_TYPE_DEMORGAN, others});
  return kinds;
}

const std::vector<FormatCapacity>& Table() {
  static const std::vector<FormatCapacity> table = {
      {KVN_FORMAT_KVN,
       kDescription | kCreation | kNetworkDocuments,
       {{KVN_TYPE_CPT, Fate::kOwn},
        {KVN_TYPE_TRUTHTABLE, Fate::kOwn},
        {KVN_TYPE_LIST, Fate::kOwn},
        {KVN_TYPE_TABLE, Fate::kOwn},
        {KVN_TYPE_CAST, Fate::kOwn},
        {KVN_TYPE_NOISY_MAX, Fate::kOwn},
        {KVN_TYPE_MAU, Fate::kOwn},
        {KVN_TYPE_DEMORGAN, Fate::kKindOnly},
        {KVN_TYPE_NOISY_ADDER, Fate::kKindOnly},
        {KVN_TYPE_DCHILD_HPARENT, Fate::kKindOnly},
        {KVN_TYPE_DISTRIBUTION, Fate::kKindOnly},
        {KVN_TYPE_H_EQUATION, Fate::kKindOnly}},
       KeepEightDecimals,                                                                                                  kLongestPiece},
      {KVN_FORMAT_XKVN,
       kDescription | kDiscretization | kEpis | kCases | kTemporal,
       {{KVN_TYPE_CPT, Fate::kOwn},
        {KVN_TYPE_TRUTHTABLE, Fate::kOwn},
        {KVN_TYPE_LIST, Fate::kOwn},
        {KVN_TYPE_TABLE, Fate::kOwn},
        {KVN_TYPE_CAST, Fate::kOwn},
        {KVN_TYPE_DEMORGAN, Fate::kOwn},
        {KVN_TYPE_NOISY_MAX, Fate::kOwn},
        {KVN_TYPE_NOISY_ADDER, Fate::kOwn},
        {KVN_TYPE_MAU, Fate::kOwn},
        {KVN_TYPE_EQUATION, Fate::kOwn}},
       KeepSixteenDigits,                                                                                                  0            },
      {KVN_FORMAT_HUGIN,     kNodeName | kNodeProperties | kPosition,
       TablesAndDecisions(Fate::kRefused),                                                              KeepEightDecimals, kLongestPiece},
      {KVN_FORMAT_XMLBIF,    0,                                       TablesAndDecisions(Fate::kTable), KeepEightDecimals, kLongestPiece},
      {KVN_FORMAT_MICROSOFT, kNetworkName | kNodeName | kPosition,
       TablesAndDecisions(Fate::kRefused),                                                              KeepEightDecimals, kLongestPiece},
      {KVN_FORMAT_ERGO,
       kPosition,                                                     {{KVN_TYPE_CPT, Fate::kOwn},
        {KVN_TYPE_TRUTHTABLE, Fate::kTable},
        {KVN_TYPE_LIST, Fate::kRefused},
        {KVN_TYPE_TABLE, Fate::kRefused},
        {KVN_TYPE_CAST, Fate::kRefused},
        {KVN_TYPE_DEMORGAN, Fate::kRefused},
        {KVN_TYPE_NOISY_MAX, Fate::kRefused},
        {KVN_TYPE_NOISY_ADDER, Fate::kRefused}},
       KeepEightDecimals,                                                                                                  kLongestPiece},
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
