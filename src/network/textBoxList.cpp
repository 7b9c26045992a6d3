#include "network/textBoxList.h"

#include "foundation/resultCodes.h"

int KVN_textBoxList::AddTextBox(const KVN_rectangle& position, const char* text) {
  if (int result = positions.Add(position); result < 0) return result;
  const int result = texts.Add(text);
  // Both lists keep equal length. The last position always stands.
  if (result < 0) (void)positions.Delete(positions.GetNumItems() - 1);
  return result;
}

int KVN_textBoxList::Assign(const KVN_textBoxList& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  KVN_stringArray newTexts;
  if (int result = newTexts.Assign(source.texts); result < 0) return result;
  if (int result = positions.Assign(source.positions); result < 0) return result;
  texts.Swap(newTexts);
  return CheckReadiness(/*deep=*/0);
}

void KVN_textBoxList::CleanUp(int deep) {
  positions.CleanUp(deep);
  texts.CleanUp(deep);
  KVN_object::CleanUp(deep);
}
