#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "network/node.h"
#include "tests/formats/fileChecks.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/networkComparer.h"
#include "tests/support/randomNetwork.h"

/// What the tests of the formats of other programs share. The networks that others wrote stand
/// beside the source tree, where they may be missing.

struct NetworkSize {
  const char* name;
  int nodes, arcs, freeParameters;
};

/// As the list of that folder gives them.
inline constexpr NetworkSize kNetworkSizes[] = {
    {"alarm", 37, 46, 509},
    {"andes", 223, 338, 1157},
    {"asia", 8, 8, 18},
    {"barley", 48, 84, 114005},
    {"cancer", 5, 4, 10},
    {"child", 20, 25, 230},
    {"diabetes", 413, 602, 429409},
    {"earthquake", 5, 4, 10},
    {"hailfinder", 56, 66, 2656},
    {"hepar2", 70, 123, 1453},
    {"insurance", 27, 52, 1008},
    {"link", 724, 1125, 14211},
    {"mildew", 35, 46, 540150},
    {"munin", 1041, 1397, 80592},
    {"munin1", 186, 273, 15622},
    {"munin2", 1003, 1244, 69431},
    {"munin3", 1041, 1306, 71059},
    {"munin4", 1038, 1388, 80352},
    {"pathfinder", 109, 195, 72079},
    {"pigs", 441, 592, 5618},
    {"sachs", 11, 17, 178},
    {"survey", 6, 6, 21},
    {"water", 32, 66, 10083},
    {"win95pts", 76, 112, 574},
};

inline std::string SharedNetwork(const std::string& extension, const std::string& name) {
  return std::string(KVN_SOURCE_DIR "/../shared/networks/") + extension + "/" + name + "." +
         extension;
}

inline bool HasSharedNetworks() {
  return std::filesystem::exists(KVN_SOURCE_DIR "/../shared/networks");
}

#define SKIP_WITHOUT_SHARED_NETWORKS() \
  if (!HasSharedNetworks()) GTEST_SKIP() << "no folder ../shared/networks beside the source tree"

inline NetworkSize SizeOf(const char* name, const KVN_network& network) {
  NetworkSize size = {name, network.GetNumberOfNodes(), 0, 0};
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    const int outcomes = network.DefinitionOf(node)->GetNumberOfOutcomes();
    size.arcs += network.GetNumberOfParents(node);
    size.freeParameters += network.DefinitionOf(node)->GetSize() / outcomes * (outcomes - 1);
  }
  return size;
}

/// The file loads in silence and has the listed size.
inline void ExpectLoads(const std::string& path, int format, const NetworkSize& size) {
  SCOPED_TRACE(path);
  KVN_network network;
  const LogWatch log;
  EXPECT_EQ(network.ReadFile(path.c_str(), format), 0);
  EXPECT_EQ(log.Texts(), std::vector<std::string>());
  const NetworkSize read = SizeOf(size.name, network);
  EXPECT_EQ(read.nodes, size.nodes);
  EXPECT_EQ(read.arcs, size.arcs);
  EXPECT_EQ(read.freeParameters, size.freeParameters);
}

/// Every network of the list that stands in the folder loads.
inline void ExpectSharedNetworksLoad(const std::string& extension) {
  int found = 0;
  for (const NetworkSize& size : kNetworkSizes) {
    const std::string path = SharedNetwork(extension, size.name);
    if (!std::filesystem::exists(path)) continue;
    found++;
    ExpectLoads(path, KVN_FORMAT_AUTO, size);
  }
  EXPECT_GT(found, 0);
}

inline std::vector<double> CellsOf(KVN_network& network, const char* id) {
  return ItemsOf(TableOfNode(network, network.FindNode(id)).GetItems());
}

inline std::vector<std::string> StatesOf(KVN_network& network, const char* id) {
  return TextsOf(*network.DefinitionOf(network.FindNode(id))->GetOutcomesNames());
}

/// The parents of a node by their identifiers.
inline std::vector<std::string> ParentsOf(KVN_network& network, const char* id) {
  std::vector<std::string> ids;
  for (int parent : network.GetParents(network.FindNode(id))) {
    ids.emplace_back(network.GetNode(parent)->GetId());
  }
  return ids;
}

/// A message as "2 words" where it is "(line 2) : ERROR: words".
inline std::string ShortMessage(const std::string& message) {
  const std::string line = "(line ", error = "ERROR: ";
  if (message.rfind(line, 0) != 0) return message;
  const std::size_t end = message.find(") : ");
  const std::size_t text = end + 4;
  return message.substr(line.size(), end - line.size()) + " " +
         message.substr(text +
                        (message.compare(text, error.size(), error) == 0 ? error.size() : 0));
}

/// Reading `text` gives these messages, in their short form, and leaves so many nodes. A table that
/// doesn't sum to 1 afterwards is no matter.
inline void ExpectMessages(const std::string& extension, const std::string& text, int nodes,
                           const std::vector<std::string>& expected, int result = 0) {
  SCOPED_TRACE(text);
  KVN_network network;
  std::vector<std::string> messages;
  for (const std::string& message : ReadText(network, extension, text, result)) {
    if (message.find("is not consistent") != std::string::npos) continue;
    messages.push_back(ShortMessage(message));
  }
  EXPECT_EQ(messages, expected);
  EXPECT_EQ(network.GetNumberOfNodes(), nodes);
}

/// The text cut at every byte, and with every byte in turn replaced by a character that means much
/// to a lexer, reads with one of the results; what was read can be written, of which every eighth
/// is tried.
inline void ExpectSurvivesDamage(const std::string& extension, const std::string& text,
                                 const std::vector<int>& results = {0},
                                 const std::string& targetExtension = "") {
  const ScratchFolder folder;
  const std::string source = folder.Path("file." + extension);
  const std::string target =
      folder.Path("copy." + (targetExtension.empty() ? extension : targetExtension));
  int reads = 0;
  const auto readAndWrite = [&](const std::string& damaged) {
    KVN_network network;
    folder.Write("file." + extension, damaged);
    EXPECT_THAT(results, testing::Contains(network.ReadFile(source.c_str()))) << damaged;
    if (++reads % 8 == 0) {
      EXPECT_EQ(network.WriteFile(target.c_str()), 0) << damaged;
    }
  };
  for (std::size_t length = 0; length <= text.size(); length++) {
    readAndWrite(text.substr(0, length));
  }
  const std::string signs = std::string("{}();\"%9x") + '\0' + '\xff';
  for (std::size_t i = 0; i < text.size(); i++) {
    std::string damaged = text;
    damaged[i] = signs[i * 7 % signs.size()];
    readAndWrite(damaged);
  }
}

/// A table of more parents and states than the arrays of a writer hold without a block of their
/// own.
inline void AddWideTable(KVN_network& network) {
  std::vector<int> parents;
  for (int i = 0; i < 10; i++) {
    parents.push_back(
        AddNodeBelow(network, KVN_TYPE_CPT, ("N" + std::to_string(i)).c_str(), 2, {}));
  }
  AddNodeBelow(network, KVN_TYPE_CPT, "Child", 9, parents);
}

/// The diagnosis attributes, of which these formats have none, may be short.
inline void ExpectReadsAllOrTells(const std::string& extension, const std::string& text) {
  NetworkCompareOptions compare;
  compare.ignored = {"diagnosis"};
  ExpectReadsAllOrTells(extension, text, /*mayTellInTheLog=*/true,
                        [&](KVN_network& whole, KVN_network& network) {
                          return NetworksEqual(whole, network, compare);
                        });
}

/// Random networks of these kinds read back without a message. They are the same but for the fields
/// that `compare` ignores, those that none of these formats has words for, and what
/// `adapt(network, copy)` takes from the original.
template <typename Adapt>
void ExpectReadsBack(const std::string& extension, const std::vector<int>& kinds,
                     NetworkCompareOptions compare, Adapt adapt) {
  RandomNetworkOptions options;
  options.nodes = 14;
  options.kinds = kinds;
  options.diagnosis = options.costs = false;
  for (const char* field : {"node.target", "node.submodel", "submodel", "text.documents",
                            "text.boxes", "text.creation", "layout", "setting", "diagnosis"}) {
    compare.ignored.emplace_back(field);
  }
  for (std::uint64_t seed = 1; seed <= 40; seed++) {
    SCOPED_TRACE(seed);
    KVN_network network, copy;
    FillRandomNetwork(network, seed, options);
    EXPECT_THAT(ReadText(copy, extension, WrittenText(network, extension)), testing::IsEmpty());
    adapt(network, copy);
    EXPECT_TRUE(NetworksEqual(network, copy, compare));
  }
}
inline void ExpectReadsBack(const std::string& extension, const std::vector<int>& kinds,
                            const NetworkCompareOptions& compare) {
  ExpectReadsBack(extension, kinds, compare, [](KVN_network&, KVN_network&) {});
}

inline constexpr double kHalfOfTheEighthDecimal = 5.1e-9;
/// The kinds of nodes that the formats with decisions and utilities carry as tables.
inline const std::vector<int> kKindsWithTables = {KVN_TYPE_CPT,       KVN_TYPE_TRUTHTABLE,
                                                  KVN_TYPE_LIST,      KVN_TYPE_TABLE,
                                                  KVN_TYPE_NOISY_MAX, KVN_TYPE_NOISY_ADDER};

/// A node of a kind without a block is refused with the message, and the target stays. Nothing is
/// tested while the engine has no such kind.
inline void ExpectRefusedToWrite(const std::string& extension, int type,
                                 const std::string& message) {
  if (!IsDefinitionType(type)) return;
  const ScratchFolder folder;
  const std::string path = folder.Write("file." + extension, "old");
  KVN_network network;
  AddNodeBelow(network, KVN_TYPE_CPT, "A", 2, {});
  ASSERT_GE(network.AddNode(type, "B"), 0);
  const LogWatch log;
  EXPECT_EQ(network.WriteFile(path.c_str()), KVN_REFUSED);
  EXPECT_EQ(log.Texts(), std::vector<std::string>{message});
  EXPECT_EQ(folder.Read("file." + extension), "old");
}
