#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "inference/exact/tableWalk.h"

/// A block grows variable by variable until it has at least this many cells: two such blocks of
/// doubles fit into a first-level cache.
constexpr std::int64_t kBlockCells = 1024;

/// Walk over a clique's cells in blocks of the variables from `inner` on, with the offset of each
/// operand, a table over some of the variables, kept up to date step by step.
class BlockWalk {
 public:
  /// `variables` ascend; `sizes` are their numbers of states. Both must outlive the walk.
  BlockWalk(const std::vector<int>& variables, const std::vector<std::int64_t>& sizes, int inner);

  /// An operand's steps along its variables, which are among the clique's.
  void AddOperand(const std::vector<int>& operandVariables,
                  const std::vector<std::int64_t>& operandStrides);

  std::size_t GetCount() const { return operands.size(); }
  const WalkPlan& Plan(std::size_t operand) const { return operands[operand].plan; }
  std::int64_t Offset(std::size_t operand) const { return operands[operand].offset; }

  /// The next block; false at the end, with all offsets back at 0.
  bool Next();

  std::vector<const double*> tables;  // of the first operands, for the caller's use

 private:
  struct Operand {
    WalkPlan plan;
    std::int64_t offset = 0;
    std::vector<std::int64_t> steps;  // along the variables before `inner`
  };

  const std::vector<int>& variables;
  const std::vector<std::int64_t>& sizes;
  int inner;
  std::vector<Operand> operands;
  std::vector<std::int64_t> at;  // state of each variable before `inner`
};
