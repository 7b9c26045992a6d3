#pragma once

#include "foundation/resultCodes.h"
#include "network/header.h"
#include "network/screenInfo.h"
#include "network/textBoxList.h"

/// One group of the submodel tree: how it is called and drawn. The tree itself is kept by
/// KVN_submodelHandler.
class KVN_submodel : public KVN_object {
 public:
  KVN_submodel() = default;

  KVN_header& Header() { return header; }
  KVN_screenInfo& Screen() { return screen; }
  KVN_rectangle& Window() { return window; }
  KVN_textBoxList& TextBoxes() { return textBoxes; }
  int GetWindowColor() const { return windowColor; }
  void SetWindowColor(int color) { windowColor = color; }

  /// KVN_NOT_READY, unchanged, if the source isn't ready; KVN_NO_MEMORY, as far as it got.
  [[nodiscard]] int Assign(KVN_submodel& source);
  void CleanUp(int deep) override;

 private:
  KVN_header header;
  KVN_screenInfo screen;  // the box on the parent's diagram
  KVN_rectangle window;   // the window of its own diagram
  int windowColor = KVN_UNSET_SCREEN_VALUE;
  KVN_textBoxList textBoxes;
};
