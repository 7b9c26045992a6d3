#pragma once

#include <string>
#include <vector>

class KVN_variableVisitor;

/// What `KVN_expression::GetKind` answers. Readers and simplification compare these numbers.
constexpr int KVN_KIND_VARIABLE = 0;
constexpr int KVN_KIND_CONSTANT = 1;
constexpr int KVN_KIND_FUNCTION = 2;  // KVN_unknownFunction too
constexpr int KVN_KIND_DISTRIBUTION = 3;
constexpr int KVN_KIND_PLUS = 4;
constexpr int KVN_KIND_MINUS = 5;
constexpr int KVN_KIND_DIVIDE = 6;
constexpr int KVN_KIND_MULTIPLY = 7;
constexpr int KVN_KIND_EXP = 8;
constexpr int KVN_KIND_LT = 9;
constexpr int KVN_KIND_GT = 10;
constexpr int KVN_KIND_LE = 11;
constexpr int KVN_KIND_GE = 12;
constexpr int KVN_KIND_EQ = 13;
constexpr int KVN_KIND_NE = 14;
constexpr int KVN_KIND_CONDITIONAL = 15;

/// A formula as a tree: the root class of its nodes. Equations, utility formulas and hybrid
/// distributions all hold their formulas so; `ParseExpression` makes them from text.
///
/// A unary minus is no node of its own but the `sign` of the node it stands before. A node's own
/// operations don't apply it: the value in its parent's eyes, and that of a whole tree, is
/// `Evaluate() * sign` (SignedValue), and its text is that of PrintSigned.
///
/// A node owns its children, and a tree has one owner; Clone is the way to share. Variables hold
/// the value they were assigned, so a tree is never evaluated from two places at once.
///
/// No operation needs stack in proportion to the depth of the tree. A failed parse leaves null
/// children behind for a moment; Evaluate, Simplify and Isolate need every child.
class KVN_expression {
 public:
  KVN_expression() = default;
  KVN_expression(const KVN_expression&) = delete;
  KVN_expression& operator=(const KVN_expression&) = delete;
  virtual ~KVN_expression() = default;

  /// A deep copy, `sign` and the values of variables included, owned by the caller; null when the
  /// memory ends.
  virtual KVN_expression* Clone() const = 0;
  /// One of KVN_KIND_...
  virtual int GetKind() const = 0;
  /// True for the binary operators and the conditional.
  virtual bool IsOperator() const { return false; }
  /// Appends to `found` the owners' pointers to the distributions of the tree, in the order of
  /// Accept; `slot` is the owner's pointer to this node. The arguments of a distribution are not
  /// looked at. A caller may replace a distribution by writing through its slot, but see
  /// KVN_operatorConditional.
  virtual void CollectDistributions(KVN_expression** slot, std::vector<KVN_expression**>& found);
  /// False when the tree holds a distribution, so that each evaluation gives another number.
  virtual bool IsDeterministic() const { return true; }
  /// Shows every variable of the tree to the visitor, depth first, children in their order.
  virtual void Accept(KVN_variableVisitor& visitor);
  /// Moves one layer of this node, the left side of the equation `lhs = rhs`, over to the right:
  /// `lhs`, which points to this node, receives the child that holds `variable`, `rhs` a new tree,
  /// and the node deletes itself. Only that one child may hold the variable. `sign` is not looked
  /// at: a caller flips it to +1 first and negates `rhs`. False, and nothing has changed, where
  /// there is no inverse or the memory ends. Log with the variable in neither argument answers true
  /// and changes nothing, so a loop must look whether anything has moved.
  virtual bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs);
  /// Rewrites the tree by one step at each place where a rule applies, from the root down, not
  /// going below a place that changed. `self` is the owner's pointer to this node, which may delete
  /// itself and leave a replacement there. True when the tree changed; SimplifyFully repeats it.
  /// docs/expressions.md tells the rules that change a value; one of them looks
  /// at the values that variables have now, so a tree that is to hold for all values is simplified
  /// under a KVN_valueBlindScope.
  virtual bool Simplify(KVN_expression*& self);
  /// The value without the node's own sign. Never fails: what has no value gives an infinity or a
  /// NaN. A distribution draws a sample. Allocates nothing in trees of up to 256 levels.
  virtual double Evaluate() const = 0;
  /// Appends the text without the node's own sign, with the fewest parentheses.
  virtual void Print(std::string& out) const = 0;

  int sign = 1;  // +1 or -1
};

/// A number. Simplification keeps `value` at or above 0 and puts a minus into `sign`.
class KVN_constant : public KVN_expression {
 public:
  explicit KVN_constant(double number) : value(number) {}
  KVN_expression* Clone() const override;
  int GetKind() const override { return KVN_KIND_CONSTANT; }
  double Evaluate() const override { return value; }
  /// In the form "%g": six digits, which is all that a file keeps of a constant.
  void Print(std::string& out) const override;

  double value;
};

/// A name that stands for a number. Until a value is assigned it is KVN_UNDEFINED_VALUE.
class KVN_variable : public KVN_expression {
 public:
  explicit KVN_variable(const std::string& identifier);
  KVN_expression* Clone() const override;
  int GetKind() const override { return KVN_KIND_VARIABLE; }
  void Accept(KVN_variableVisitor& visitor) override;
  double Evaluate() const override { return value; }
  void Print(std::string& out) const override;

  std::string name;
  double value;
};

/// The value and the text of a tree, its sign included. PrintSigned puts a negated operator into
/// parentheses: "-(a+b)". The text is appended.
double SignedValue(const KVN_expression& root);
void PrintSigned(const KVN_expression& root, std::string& out);

/// Whether the node is a constant, and whether it is one of that signed value.
bool IsConstant(const KVN_expression& node);
bool IsConstantOf(const KVN_expression& node, double signedValue);

/// Whether Isolate moves a node of this form at all: where it does and the variable occurs in one
/// child, a refusal means that the memory ended.
bool HasInverse(const KVN_expression& node);

/// What becomes of SimplifyFully's tree at most: rules that multiply out sums double the tree for
/// each factor.
constexpr int KVN_MAX_SIMPLIFY_PASSES = 10000;
constexpr int KVN_MAX_SIMPLIFY_NODES = 1000000;

/// Repeats Simplify until nothing changes, or until one of the limits above is passed; the tree has
/// the value of the first one wherever it stops. Returns the number of passes that changed it.
int SimplifyFully(KVN_expression*& root, long long mostNodes = KVN_MAX_SIMPLIFY_NODES);

/// While one lives, simplification keeps what a formula means for all values and in each run:
/// - It doesn't look at the values that variables have at the moment, nor does it draw from
///   distributions: a product stays whose left side only happens to be 0 now, as `(x>5)*10` is
///   before x has a value.
/// - It copies no operand that draws random numbers, since the copies would draw for themselves: a
///   product with such an operand isn't multiplied out.
/// Not guarded.
class KVN_valueBlindScope {
 public:
  KVN_valueBlindScope();
  KVN_valueBlindScope(const KVN_valueBlindScope&) = delete;
  KVN_valueBlindScope& operator=(const KVN_valueBlindScope&) = delete;
  ~KVN_valueBlindScope();

  /// Whether a rule has been left out since the scope began because the memory ended.
  bool HasRunOut() const;

 private:
  bool wasBlind;
};

/// Number of nodes, and number of levels (1 for a leaf). 0 for null.
long long CountNodes(const KVN_expression* root);
int GetDepth(const KVN_expression* root);
