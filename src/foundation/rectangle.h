#pragma once

#include "foundation/object.h"

/// Place and extent of a drawing on a diagram, in the pixels of the host's editor.
class KVN_rectangle : public KVN_object {
 public:
  KVN_rectangle() = default;
  KVN_rectangle(int centerX, int centerY, int newWidth, int newHeight)
      : center_X(centerX), center_Y(centerY), width(newWidth), height(newHeight) {}

  int center_X = 0;
  int center_Y = 0;
  int width = 0;
  int height = 0;
};
