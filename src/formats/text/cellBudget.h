#pragma once

#include <cstdint>
#include <limits>

class KVN_network;
class KVN_stringArray;

/// What the tables of a network may grow to while a file is read. Arcs and outcomes make tables
/// before their numbers are read, and a few words of a file can ask for gigabytes: 28 parents of
/// two outcomes do. No file has numbers for more cells than it has bytes; beyond these there are
/// 2^24 cells, 128 MB, for the tables that files leave out.
///
/// Its operations do what those of the network do, or answer KVN_NO_MEMORY and change nothing.
class KVN_cellBudget {
 public:
  void Start(std::int64_t fileBytes);

  [[nodiscard]] int AddArc(KVN_network& network, int parent, int child, int layer);
  [[nodiscard]] int SetOutcomes(KVN_network& network, int handle, const KVN_stringArray& names);
  [[nodiscard]] int SetOutcomes(KVN_network& network, int handle, int count);

 private:
  template <typename Change>
  int Spend(std::int64_t growth, Change change);

  std::int64_t left = std::numeric_limits<std::int64_t>::max();
};
