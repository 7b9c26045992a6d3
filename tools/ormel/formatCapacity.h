#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Contents of a network that a format may or may not have a place for. Structure, identifiers of
/// nodes, outcomes and the order of parents are carried by all.
enum Feature : std::uint64_t {
  kNetworkIdentifier = 1ull << 0,
  kNetworkName = 1ull << 1,
  kNetworkComment = 1ull << 2,
  kNetworkLayout = 1ull << 3,  // window and box of the whole network
  kCreation = 1ull << 4,
  kNetworkProperties = 1ull << 5,
  kNetworkDocuments = 1ull << 6,
  kSubmodels = 1ull << 7,
  kTextBoxes = 1ull << 8,
  kSamples = 1ull << 9,
  kShowAs = 1ull << 10,
  kDiscretization = 1ull << 11,
  kAlgorithms = 1ull << 12,
  kEpis = 1ull << 13,
  kSolver = 1ull << 14,
  kUpdateFlags = 1ull << 15,
  kNoisyMaxRelevance = 1ull << 16,
  kCases = 1ull << 17,
  kTemporal = 1ull << 18,
  kNodeName = 1ull << 19,
  kNodeComment = 1ull << 20,
  kNodeProperties = 1ull << 21,
  kNodeDocuments = 1ull << 22,
  kPosition = 1ull << 23,
  kAppearance = 1ull << 24,  // size, colours, font and border of a node
  kTargets = 1ull << 25,
  kDiagnosis = 1ull << 26,         // type, ranked, mandatory
  kDiagnosisTexts = 1ull << 27,    // names, comments, documents, question, display mode
  kFaultsOfTables = 1ull << 28,    // fault marks and labels of the outcomes
  kFaultsOfGates = 1ull << 29,     // the same of a gate over binary nodes
  kDefaultsOfStates = 1ull << 30,  // the default outcome where it is to be set
  kOtherDefaults = 1ull << 31,     // where it is not, or is of such a gate or a utility
  kCostsByParents = 1ull << 32,    // costs that depend on other nodes
  kPlainCosts = 1ull << 33,        // a single cost
  kEvidence = 1ull << 34,
  kSoftEvidence = 1ull << 35,
  kChoiceValues = 1ull << 36,
  kOrigin = 1ull << 37,   // where the whole drawing stands, as against the places in it
  kCreator = 1ull << 38,  // kCreation is the two dates
  kUtilityFormulas = 1ull << 39,
};

/// What becomes of a definition in a file of the format.
enum class Fate {
  kOwn,       // comes back as it was
  kTable,     // its numbers come back as a plain table of the same content
  kKindOnly,  // comes back with the numbers and outcomes of a new definition of its kind
  kStates,    // comes back with its outcomes and the numbers of a new definition of its kind
  kBlank,     // comes back as a new plain table
  kGone,      // the node doesn't come back
  kRefused,   // the format refuses a network that has such a node
};

/// What becomes of a node that is called as the network is while its file is read.
enum class Twin {
  kKept,
  kGone,
  kRenamed,  // comes back under an identifier that the reader makes up
};

struct KindFate {
  int type;  // definition type code
  Fate fate;
};

/// What one format can carry: the description from which all its losses follow. A new format is a
/// new description, and the test of the losses holds each against what its writer and reader do.
struct FormatCapacity {
  int format = 0;
  std::uint64_t features = 0;              // that it carries
  std::vector<KindFate> kinds;             // other kinds are kGone
  double (*numberKept)(double) = nullptr;  // a number after writing and reading
  bool normalizesRows = false;             // its reader does, but for utilities
  bool keepsNonFinite = false;             // also NaN and infinity
  bool dropsCarriageReturns = false;
  bool refusesControls = false;   // to read texts with control characters that are no white space
  bool needsDeterminism = false;  // refuses to read a deterministic row without a 1.0
  int longestText = 0;            // bytes, 0 for no limit
  /// The identifier of the network after writing and reading; empty where the file can't be read
  /// then. Null for a format that has no place for it.
  std::string (*identifierKept)(const std::string&) = nullptr;
  Twin twin = Twin::kGone;
  bool namesNetworkFirst = false;  // before the nodes, and not at the end or never

  Fate FateOf(int type) const;
  bool Carries(Feature feature) const { return (features & feature) != 0; }
};

/// Null for a format that nobody has described.
const FormatCapacity* CapacityOf(int format);
