#include "expressions/function.h"

#include "expressions/expressionWalk.h"
#include "expressions/functionTable.h"

const KVN_functionRow theUnknownFunctionRow = {"", -KVN_MAX_ARGUMENTS, nullptr, nullptr, nullptr};

KVN_function::~KVN_function() {
  for (KVN_expression* argument : args) DeleteTree(argument);
}

KVN_expression* KVN_function::Clone() const { return CloneTree(*this); }

void KVN_function::CollectDistributions(KVN_expression**, std::vector<KVN_expression**>& found) {
  CollectInTree(*this, found);
}

void KVN_distribution::CollectDistributions(KVN_expression** slot,
                                            std::vector<KVN_expression**>& found) {
  found.push_back(slot);
}

bool KVN_function::IsDeterministic() const { return IsTreeDeterministic(*this); }

void KVN_function::Accept(KVN_variableVisitor& visitor) { AcceptTree(*this, visitor); }

bool KVN_function::Simplify(KVN_expression*& self) { return SimplifyTree(self); }

const char* KVN_function::GetName() const { return descriptor != nullptr ? descriptor->name : ""; }

int KVN_function::GetArgumentCount() const {
  if (descriptor != nullptr && descriptor->arity >= 0) return descriptor->arity;
  int count = 0;
  while (count < KVN_MAX_ARGUMENTS && args[count] != nullptr) count++;
  return count;
}

KVN_unknownFunction::KVN_unknownFunction(const std::string& name)
    : KVN_function(&theUnknownFunctionRow), functionName(name) {}
