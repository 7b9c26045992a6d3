// A program of somebody else: sees installed files only, and calls into the library.

#include "foundation/intArray.h"

int main() {
  KVN_intArray numbers;
  if (numbers.Add(7) < 0) return 1;
  return numbers[0] == 7 ? 0 : 2;
}
