#include "network/submodel.h"

int KVN_submodel::Assign(KVN_submodel& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  // Unchecked, because a submodel may lack an identifier.
  if (int result = header.AssignUnchecked(source.header); result < 0) return result;
  if (int result = screen.Assign(source.screen); result < 0) return result;
  window = source.window;
  windowColor = source.windowColor;
  return textBoxes.Assign(source.textBoxes);
}

void KVN_submodel::CleanUp(int deep) {
  if (deep != 0) {
    header.CleanUp(deep);
    textBoxes.CleanUp(deep);
    screen = KVN_screenInfo();
    window = KVN_rectangle();
    windowColor = KVN_UNSET_SCREEN_VALUE;
  }
  CheckReadiness(0);
}
