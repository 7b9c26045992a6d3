#include "inference/exact/joinTree.h"

#include <sys/mman.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <utility>

#include "foundation/dmatrix.h"
#include "inference/exact/blockWalk.h"
#include "inference/exact/relevanceGraph.h"
#include "network/network.h"
#include "network/node.h"
#include "values/nodeValue.h"

namespace {

/// Most nodes of a part; above it the caller solves the targets in groups, with smaller parts.
constexpr int kMostNodes = 65535;
/// Cliques up to this many cells keep their potential.
constexpr std::int64_t kStoredCells = 4096;
/// A stored potential is checked for cells that are too small after this many factors.
constexpr int kFactorsPerCheck = 8;
/// Cliques with more factors than this are stored whatever their size, so that they can be checked.
constexpr int kMostBlockFactors = 64;
/// Above this size the arena asks for large pages: the first touch of small ones costs ten times a
/// multiplication in place.
constexpr std::size_t kLargePageBytes = std::size_t{1} << 21;
/// Bounds of the largest cell of a message that is left unscaled, as powers of two.
constexpr int kScaleExponent = 100;

double* AllocateArena(std::size_t count) {
  std::size_t bytes = count * sizeof(double);
  if (bytes < 2 * kLargePageBytes) {
    return static_cast<double*>(std::aligned_alloc(64, (bytes + 63) / 64 * 64));
  }
  bytes = (bytes + kLargePageBytes - 1) / kLargePageBytes * kLargePageBytes;
  void* block = std::aligned_alloc(kLargePageBytes, bytes);
  if (block != nullptr) (void)madvise(block, bytes, MADV_HUGEPAGE);  // only a wish
  return static_cast<double*>(block);
}

/// Scales cells by a power of two when their largest has left the middle of the range. Exact, but
/// for cells that are hundreds of orders of magnitude below the largest.
void ScaleToMiddle(double* cells, std::int64_t count) {
  double largest = 0.0;
  for (std::int64_t i = 0; i < count; ++i) largest = std::max(largest, cells[i]);
  if (!(largest > 0.0) || std::isinf(largest)) return;
  int exponent = std::ilogb(largest);
  if (exponent >= -kScaleExponent && exponent <= kScaleExponent) return;
  for (std::int64_t i = 0; i < count; ++i) cells[i] = std::scalbn(cells[i], -exponent);
}

/// Processor time of this thread: what other programs of the machine do at the same time must not
/// enter a comparison of runs. Asked only for statistics, since the question costs a system call.
double ThreadSeconds() {
  timespec time = {};
  if (JoinTree::statistics != nullptr) (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

JoinTreeStatistics* JoinTree::statistics = nullptr;

struct JoinTree::Clique {
  std::vector<int> variables;       // with more than one state, ascending
  std::vector<std::int64_t> sizes;  // of each
  std::int64_t cells = 1;
  int inner = 0;  // the block is made of the variables from here on
  std::int64_t blockCells = 1;
  std::vector<int> separator;  // variables with more than one state
  std::int64_t separatorCells = 1;
  bool sends = false;     // a separator without variables carries no message either way
  bool isUnit = false;    // the message upward is 1 everywhere
  bool isNeeded = false;  // a wanted marginal stands here or below
  int parent = -1;
  std::vector<int> children;    // in the order of their making
  std::vector<int> assigned;    // positions whose tables are multiplied in, ascending
  std::vector<int> homes;       // positions whose marginals are read here
  double* potential = nullptr;  // null when formed in blocks
  double* before = nullptr;     // message to the parent, from the collect pass
  double* now = nullptr;        // the same sum after the parent has been updated

  bool IsStored() const { return potential != nullptr; }
};

JoinTree::JoinTree(RelevanceGraph& thePart, JoinTreeOptions theOptions)
    : part(thePart), options(theOptions), input(thePart) {}

JoinTree::~JoinTree() { std::free(arena); }

bool JoinTree::Run(unsigned char* pending, std::int64_t limit) {
  if (part.GetSize() > kMostNodes) return false;
  double start = ThreadSeconds();
  if (!input.Load()) return false;
  if (options.effort && !input.PruneStates(contradiction)) return false;
  if (!contradiction && !Triangulate(limit)) return false;
  if (statistics != nullptr) statistics->triangulationSeconds += ThreadSeconds() - start;
  start = ThreadSeconds();
  if (!contradiction) {
    MakeCliques();
    AssignTables();
    if (options.effort) FindUnitMessages();
  }
  marginals.assign(part.GetSize(), nullptr);
  if (!contradiction) {
    FindHomes(pending);
    if (!Allocate()) return false;
    for (Clique& clique : cliques) Collect(clique);
    for (auto clique = cliques.rbegin(); clique != cliques.rend(); ++clique) Distribute(*clique);
  }
  WriteMarginals(pending);
  if (statistics != nullptr) statistics->propagationSeconds += ThreadSeconds() - start;
  return true;
}

void JoinTree::Connect(Triangulator& graph) const {
  for (int i = 0; i < part.GetSize(); ++i) {
    const KVN_intArray& parents = part.Node(i).parents;
    for (int a = 0; a < parents.GetNumItems(); ++a) {
      int first = part.Record(parents[a]).position;
      graph.Connect(i, first);
      for (int b = a + 1; b < parents.GetNumItems(); ++b) {
        graph.Connect(first, part.Record(parents[b]).position);
      }
    }
  }
}

/// The documented order, lowest weight first, or with effort the cheapest of four; the first wins a
/// tie. Later tries stop where they pass the best total so far.
bool JoinTree::Triangulate(std::int64_t limit) {
  constexpr EliminationRule kRules[] = {
      EliminationRule::kLowestWeight, EliminationRule::kFewestFillIns,
      EliminationRule::kLogarithmicFillIns, EliminationRule::kWeightedFillIns};
  if (limit == 0) limit = kTotalWeightLimit;
  Triangulator graph(input.States());
  Connect(graph);
  bool found = false;
  for (EliminationRule rule : kRules) {
    Triangulator copy = graph;
    std::vector<CliqueNodes> tried;
    std::int64_t total = 0;
    if (copy.Triangulate(rule, limit, tried, total)) {
      found = true;
      limit = total - 1;
      made.swap(tried);
    }
    if (!options.effort) break;
  }
  return found;
}

void JoinTree::ShapeClique(Clique& clique, const CliqueNodes& nodes) {
  const std::vector<int>& states = input.States();
  clique.parent = nodes.parent;
  for (int v : nodes.nodes) {
    if (states[v] == 1) continue;
    clique.variables.push_back(v);
    clique.sizes.push_back(states[v]);
    clique.cells *= states[v];
  }
  for (int v : nodes.separator) {
    if (states[v] == 1) continue;
    clique.separator.push_back(v);
    clique.separatorCells *= states[v];
  }
  clique.sends = clique.parent >= 0 && !clique.separator.empty();
  clique.inner = static_cast<int>(clique.sizes.size());
  while (clique.inner > 0 && clique.blockCells < kBlockCells) {
    clique.blockCells *= clique.sizes[--clique.inner];
  }
}

void JoinTree::MakeCliques() {
  int count = static_cast<int>(made.size());
  cliques.resize(count);
  cliquesOf.resize(part.GetSize());
  for (int c = 0; c < count; ++c) {
    ShapeClique(cliques[c], made[c]);
    for (int v : made[c].nodes) cliquesOf[v].push_back(c);
    if (cliques[c].parent >= 0) cliques[cliques[c].parent].children.push_back(c);
  }
  std::vector<int> order(count);
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [this](int a, int b) {
    if (made[a].weight != made[b].weight) return made[a].weight < made[b].weight;
    return made[a].nodes.size() < made[b].nodes.size();
  });
  rank.resize(count);
  for (int i = 0; i < count; ++i) rank[order[i]] = i;
}

/// Each table goes into the smallest clique that holds its node and all parents.
void JoinTree::AssignTables() {
  std::vector<int> family;
  for (int i = 0; i < part.GetSize(); ++i) {
    family.assign(1, i);
    for (int parent : part.Node(i).parents) family.push_back(part.Record(parent).position);
    std::sort(family.begin(), family.end());
    int rarest = *std::min_element(family.begin(), family.end(), [this](int a, int b) {
      return cliquesOf[a].size() < cliquesOf[b].size();
    });
    int best = -1;
    for (int c : cliquesOf[rarest]) {
      if (best >= 0 && rank[c] > rank[best]) continue;
      const std::vector<int>& nodes = made[c].nodes;
      if (std::includes(nodes.begin(), nodes.end(), family.begin(), family.end())) best = c;
    }
    cliques[best].assigned.push_back(i);
  }
}

/// A message upward is 1 everywhere when what it sums out are the whole distributions of the
/// variables that end here, and nothing else: then its pass can be skipped.
void JoinTree::FindUnitMessages() {
  for (Clique& clique : cliques) {
    std::size_t ending = clique.variables.size() - clique.separator.size();
    bool unit = clique.sends && clique.assigned.size() == ending;
    for (int child : clique.children)
      unit = unit && (!cliques[child].sends || cliques[child].isUnit);
    for (std::size_t i = 0; unit && i < clique.assigned.size(); ++i) {
      int v = clique.assigned[i];
      unit = std::binary_search(clique.variables.begin(), clique.variables.end(), v) &&
             !std::binary_search(clique.separator.begin(), clique.separator.end(), v) &&
             input.IsDistribution(v);
    }
    clique.isUnit = unit;
  }
}

bool JoinTree::IsWanted(int position, const unsigned char* pending) const {
  const KVN_node* node = part.Node(position).node;
  if (node == nullptr) return false;
  const KVN_network& network = part.GetNetwork();
  return (pending != nullptr && pending[node->Handle()] != 0) ||
         network.IsTarget(node->Handle()) == 1 || network.GetNumberOfTargets() == 0;
}

/// The clique where the marginal of each wanted variable is read: the smallest one that holds it.
void JoinTree::FindHomes(const unsigned char* pending) {
  for (int v = 0; v < part.GetSize(); ++v) {
    if (part.Node(v).HasEvidence() || !IsWanted(v, pending)) continue;
    int best = cliquesOf[v].front();
    for (int c : cliquesOf[v]) {
      if (rank[c] < rank[best]) best = c;
    }
    cliques[best].homes.push_back(v);
    cliques[best].isNeeded = true;
  }
  for (Clique& clique : cliques) {
    if (clique.isNeeded && clique.parent >= 0) cliques[clique.parent].isNeeded = true;
  }
}

bool JoinTree::Allocate() {
  std::int64_t total = 0;
  std::int64_t block = 1;
  auto isStored = [this](const Clique& clique) {
    return options.storeAll || clique.cells <= kStoredCells ||
           clique.children.size() + clique.assigned.size() > kMostBlockFactors;
  };
  for (const Clique& clique : cliques) {
    if (clique.sends) total += 2 * clique.separatorCells;
    for (int v : clique.homes) total += input.States()[v];
    if (isStored(clique)) {
      total += clique.cells;
    } else {
      block = std::max(block, clique.blockCells);
    }
  }
  total += block;
  arena = AllocateArena(total);
  if (arena == nullptr) return false;
  double* next = arena;
  auto take = [&next](std::int64_t count) { return std::exchange(next, next + count); };
  buffer = take(block);
  for (Clique& clique : cliques) {
    if (clique.sends) {
      clique.before = take(clique.separatorCells);
      clique.now = take(clique.separatorCells);
    }
    for (int v : clique.homes) marginals[v] = take(input.States()[v]);
    if (!isStored(clique)) continue;
    clique.potential = take(clique.cells);
    clique.inner = 0;
    clique.blockCells = clique.cells;
  }
  if (statistics != nullptr) {
    statistics->bytes = std::max(statistics->bytes, total * 8);
    statistics->cliques += static_cast<std::int64_t>(cliques.size());
    for (const Clique& clique : cliques) {
      statistics->cells += clique.cells;
      statistics->largestCells = std::max(statistics->largestCells, clique.cells);
    }
  }
  return true;
}

void JoinTree::AddFactorOperand(BlockWalk& walk, int position) const {
  const TreeFactor& factor = input.Factor(position);
  walk.AddOperand(factor.variables, factor.strides);
}

/// A table over some of the clique's variables in ascending order, such as a separator.
void JoinTree::AddTableOperand(BlockWalk& walk, const std::vector<int>& variables) const {
  std::vector<std::int64_t> strides(variables.size());
  std::int64_t stride = 1;
  for (std::size_t d = variables.size(); d-- > 0;) {
    strides[d] = stride;
    stride *= input.States()[variables[d]];
  }
  walk.AddOperand(variables, strides);
}

/// What a clique's potential is the product of: its tables in ascending position, then the messages
/// of its children in the order of their making.
void JoinTree::AddProductOperands(BlockWalk& walk, const Clique& clique) const {
  for (int i : clique.assigned) {
    AddFactorOperand(walk, i);
    walk.tables.push_back(input.Factor(i).cells);
  }
  for (int child : clique.children) {
    if (!cliques[child].sends || cliques[child].isUnit) continue;
    AddTableOperand(walk, cliques[child].separator);
    walk.tables.push_back(cliques[child].before);
  }
}

/// The product for the present block; of a stored clique, scaled now and then.
void JoinTree::FormBlock(const BlockWalk& walk, const Clique& clique, double* cells) const {
  const TableKernels& kernels = GetTableKernels();
  if (walk.tables.empty()) {
    std::fill(cells, cells + clique.blockCells, 1.0);
    return;
  }
  for (std::size_t i = 0; i < walk.tables.size(); ++i) {
    const double* table = walk.tables[i] + walk.Offset(i);
    (i == 0 ? kernels.copy : kernels.multiply)(walk.Plan(i), cells, table);
    if (clique.IsStored() && (i + 1) % kFactorsPerCheck == 0) {
      ScaleToMiddle(cells, clique.blockCells);
    }
  }
}

void JoinTree::Collect(Clique& clique) {
  if (!clique.IsStored() && (!clique.sends || clique.isUnit)) return;
  BlockWalk walk(clique.variables, clique.sizes, clique.inner);
  AddProductOperands(walk, clique);
  std::size_t message = walk.tables.size();
  bool adds = clique.sends && !clique.isUnit;
  if (adds) {
    AddTableOperand(walk, clique.separator);
    std::fill(clique.before, clique.before + clique.separatorCells, 0.0);
  }
  double* cells = clique.IsStored() ? clique.potential : buffer;
  do {
    FormBlock(walk, clique, cells);
    if (adds) {
      GetTableKernels().add(walk.Plan(message), cells, clique.before + walk.Offset(message));
    }
  } while (walk.Next());
  if (adds) ScaleToMiddle(clique.before, clique.separatorCells);
}

void JoinTree::Distribute(Clique& clique) {
  if (!clique.isNeeded) return;
  const TableKernels& kernels = GetTableKernels();
  BlockWalk walk(clique.variables, clique.sizes, clique.inner);
  if (!clique.IsStored()) AddProductOperands(walk, clique);
  std::size_t fromParent = walk.GetCount();
  if (clique.sends) AddTableOperand(walk, clique.separator);
  std::size_t firstSum = walk.GetCount();
  std::vector<double*> sums;
  for (int c : clique.children) {
    Clique& child = cliques[c];
    if (!child.sends || !child.isNeeded) continue;
    AddTableOperand(walk, child.separator);
    sums.push_back(child.now);
    std::fill(child.now, child.now + child.separatorCells, 0.0);
  }
  for (int v : clique.homes) {
    int states = input.States()[v];
    std::fill(marginals[v], marginals[v] + states, 0.0);
    // A known variable has no dimension: all cells go into one sum, which tells a contradiction.
    AddTableOperand(walk, states == 1 ? std::vector<int>{} : std::vector<int>{v});
    sums.push_back(marginals[v]);
  }
  double* cells = clique.IsStored() ? clique.potential : buffer;
  do {
    if (!clique.IsStored()) FormBlock(walk, clique, cells);
    if (clique.sends) {
      const WalkPlan& plan = walk.Plan(fromParent);
      std::int64_t offset = walk.Offset(fromParent);
      if (options.effort) {
        kernels.multiply(plan, cells, clique.now + offset);
      } else {
        kernels.replace(plan, cells, clique.now + offset, clique.before + offset);
      }
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
      kernels.add(walk.Plan(firstSum + i), cells, sums[i] + walk.Offset(firstSum + i));
    }
  } while (walk.Next());
  for (int c : clique.children) FinishMessage(cliques[c]);
}

/// Makes the sum that a parent has left for a child ready for use: with effort the ratio to the
/// message that went up, so that the child divides once a separator cell and not once a cell.
void JoinTree::FinishMessage(Clique& child) const {
  if (!child.sends || !child.isNeeded) return;
  ScaleToMiddle(child.now, child.separatorCells);
  if (!options.effort || child.isUnit) return;
  for (std::int64_t i = 0; i < child.separatorCells; ++i) {
    child.now[i] = child.before[i] == 0.0 ? 0.0 : child.now[i] / child.before[i];
  }
}

void JoinTree::WriteMarginals(unsigned char* pending) {
  for (int v = 0; v < part.GetSize(); ++v) {
    if (!IsWanted(v, pending)) continue;
    RelevanceNode& record = part.Node(v);
    int handle = record.node->Handle();
    if (!contradiction) {
      if (record.HasEvidence()) {
        (void)SetRecordEvidence(record, record.evidence);
      } else {
        WriteMarginal(v);
      }
    }
    if (pending != nullptr) pending[handle] = 0;
  }
}

void JoinTree::WriteMarginal(int position) {
  RelevanceNode& record = part.Node(position);
  int states = input.States()[position];
  double* sums = marginals[position];
  double sum = 0.0;
  for (int k = 0; k < states; ++k) sum += sums[k];
  if (sum == 0.0) return;
  KVN_Dmatrix posterior;
  if (posterior.Setup(&record.outcomes, 1) < 0) return;  // the value stays invalid
  for (int k = 0; k < states; ++k) posterior[input.OutcomeOf(position, k)] = sums[k] / sum;
  KVN_nodeValue& value = *record.node->Value();
  if (value.SetValue(posterior) == 0) value.SetValueValid();
}
