#pragma once

class KVN_expression;
class KVN_equationSides;

/// What becomes of a formula that is printed and parsed again, as a file does it.
enum class Printed {
  kKept,        // the same tree, with the same constants
  kChanged,     // another one: constants go out with six digits, and a conditional in the last
                // branch of another without parentheses
  kUnreadable,  // none, or one over other variables: an infinite constant reads as a name
};

Printed WhatPrintingKeeps(const KVN_expression& formula);
Printed WhatPrintingKeeps(const KVN_equationSides& equation);
