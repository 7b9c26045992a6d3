#include "expressions/variableBinding.h"

#include "expressions/expression.h"
#include "expressions/variableVisitor.h"

namespace {

class BindingVisitor : public KVN_variableVisitor {
 public:
  BindingVisitor(const std::unordered_map<std::string, int>& sourcesByName,
                 std::vector<KVN_boundVariable>& list)
      : sources(sourcesByName), bound(list) {}

  void Visit(KVN_variable& variable) override {
    const auto found = sources.find(variable.name);
    if (found != sources.end()) bound.push_back({&variable, found->second});
  }

 private:
  const std::unordered_map<std::string, int>& sources;
  std::vector<KVN_boundVariable>& bound;
};

}  // namespace

void KVN_variableBinding::Bind(KVN_expression& root,
                               const std::unordered_map<std::string, int>& sources) {
  BindingVisitor visitor(sources, bound);
  root.Accept(visitor);
}

void KVN_variableBinding::Apply(const double* numbers) const {
  for (const KVN_boundVariable& entry : bound) entry.variable->value = numbers[entry.source];
}
