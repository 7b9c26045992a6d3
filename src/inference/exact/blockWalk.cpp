#include "inference/exact/blockWalk.h"

#include <algorithm>

BlockWalk::BlockWalk(const std::vector<int>& theVariables,
                     const std::vector<std::int64_t>& theSizes, int theInner)
    : variables(theVariables), sizes(theSizes), inner(theInner), at(theInner, 0) {}

void BlockWalk::AddOperand(const std::vector<int>& operandVariables,
                           const std::vector<std::int64_t>& operandStrides) {
  std::int64_t strides[kTableDimensionLimit] = {};
  for (std::size_t i = 0; i < operandVariables.size(); ++i) {
    auto place = std::lower_bound(variables.begin(), variables.end(), operandVariables[i]);
    strides[place - variables.begin()] = operandStrides[i];
  }
  Operand& operand = operands.emplace_back();
  operand.plan.Build(static_cast<int>(variables.size()) - inner, sizes.data() + inner,
                     strides + inner);
  operand.steps.assign(strides, strides + inner);
}

bool BlockWalk::Next() {
  for (int d = inner - 1; d >= 0; --d) {
    for (Operand& operand : operands) operand.offset += operand.steps[d];
    if (++at[d] < sizes[d]) return true;
    for (Operand& operand : operands) operand.offset -= operand.steps[d] * sizes[d];
    at[d] = 0;
  }
  return false;
}
