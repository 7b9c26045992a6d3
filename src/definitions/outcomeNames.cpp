#include "definitions/outcomeNames.h"

#include <string>

#include "foundation/resultCodes.h"

int InsertOutcomeName(KVN_idArray& names, int position, const char* name, const char* prefix) {
  const int result = names.Insert(position, name);
  if (result != KVN_REFUSED) return result;
  return names.CreateAndInsertValidId(prefix, names.GetNumItems(), position);
}

int FillOutcomeNames(KVN_idArray& names, const char* prefix, int count) {
  // In a list that begins empty no number can repeat, and the search for repeats would make the
  // time grow with the square of the count.
  if (names.GetNumItems() == 0) {
    for (int i = 0; i < count; i++) {
      const std::string name = prefix + std::to_string(i);
      if (int result = names.KVN_stringArray::Insert(i, name.c_str()); result < 0) return result;
    }
  }
  while (names.GetNumItems() < count) {
    if (int result = names.CreateAndAddValidId(prefix, names.GetNumItems()); result < 0) {
      return result;
    }
  }
  return KVN_SUCCESS;
}

int CopyOutcomeNames(KVN_idArray& target, const KVN_stringArray& source) {
  const auto* identifiers = dynamic_cast<const KVN_idArray*>(&source);
  KVN_idArray copy(identifiers != nullptr && identifiers->GetAllowEmpty());
  const int count = UsedCount(source);
  for (int i = 0; i < count; i++) {
    if (int result = copy.KVN_stringArray::Insert(i, source[i]); result < 0) return result;
  }
  target.SetAllowEmpty(copy.GetAllowEmpty());
  target.Swap(copy);
  return KVN_SUCCESS;
}

int ReplaceOutcomeNames(KVN_idArray& names, const KVN_stringArray& source) {
  const int count = names.GetNumItems();
  if (UsedCount(source) < count) return KVN_REFUSED;
  KVN_idArray made(names.GetAllowEmpty());
  for (int i = 0; i < count; i++) {
    if (int result = made.CreateAndAddValidId(source[i], /*start=*/-1); result < 0) return result;
  }
  names.Swap(made);
  return KVN_SUCCESS;
}

int MakeOutcomeNames(KVN_idArray& made, const KVN_stringArray& source) {
  if (int result = CopyOutcomeNames(made, source); result < 0) return result;
  if (made.CheckConsistency(/*deep=*/1) == 0) return KVN_SUCCESS;
  if (int result = made.MakeUnique(); result < 0) return result;
  return made.CheckConsistency(/*deep=*/1);
}
