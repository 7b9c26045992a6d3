#include "expressions/expression.h"
