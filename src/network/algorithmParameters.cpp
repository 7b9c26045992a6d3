#include "network/algorithmParameters.h"

bool KVN_solverParameters::IsAcceptable() const {
  const bool doublesFit = d1 >= 0.5 && d1 <= 0.99 && d2 > 0.0 && d3 > 0.0 && d4 > 0.0 && d2 < d3;
  return doublesFit && i1 >= 1 && i2 >= 1 && i3 >= i2;
}
