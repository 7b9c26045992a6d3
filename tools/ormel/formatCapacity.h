#pragma once

#include <vector>

/// Contents of a network that a format may or may not have a place for. Structure, identifiers of
/// nodes, outcomes and the order of parents are carried by all.
enum Feature : unsigned {
  kNetworkName = 1u << 0,
  kNetworkComment = 1u << 1,
  kCreation = 1u << 2,
  kNetworkProperties = 1u << 3,
  kNetworkDocuments = 1u << 4,
  kSubmodels = 1u << 5,
  kTextBoxes = 1u << 6,
  kSamples = 1u << 7,
  kShowAs = 1u << 8,
  kDiscretization = 1u << 9,
  kAlgorithms = 1u << 10,
  kEpis = 1u << 11,
  kSolver = 1u << 12,
  kUpdateFlags = 1u << 13,
  kNoisyMaxRelevance = 1u << 14,
  kCases = 1u << 15,
  kTemporal = 1u << 16,
  kNodeName = 1u << 17,
  kNodeComment = 1u << 18,
  kNodeProperties = 1u << 19,
  kNodeDocuments = 1u << 20,
  kPosition = 1u << 21,
  kAppearance = 1u << 22,  // size, colours, font and border of a node
  kTargets = 1u << 23,
  kDiagnosis = 1u << 24,
  kCosts = 1u << 25,
  kEvidence = 1u << 26,
  kSoftEvidence = 1u << 27,
  kChoiceValues = 1u << 28,
  kNetworkIdentifier = 1u << 29,
  kNetworkLayout = 1u << 30,  // window and box of the whole network
};

/// What becomes of a definition in a file of the format.
enum class Fate {
  kOwn,       // comes back as it was
  kTable,     // its numbers come back as a plain table of the same content
  kKindOnly,  // comes back with the numbers and outcomes of a new definition of its kind
  kGone,      // the node doesn't come back
  kRefused,   // the format refuses a network that has such a node
};

struct KindFate {
  int type;  // definition type code
  Fate fate;
};

/// What one format can carry: the description from which all its losses follow. A new format is a
/// new row, and the test of the losses holds every row against what its writer and reader do.
struct FormatCapacity {
  int format;
  unsigned features;
  std::vector<KindFate> kinds;   // other kinds are kGone
  double (*numberKept)(double);  // a number after writing and reading
  int longestText;               // bytes, 0 for no limit

  Fate FateOf(int type) const;
  bool Carries(Feature feature) const { return (features & feature) != 0; }
};

/// Null for a format that nobody has described.
const FormatCapacity* CapacityOf(int format);
