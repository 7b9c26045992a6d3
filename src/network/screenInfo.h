#pragma once

#include "foundation/object.h"
#include "foundation/rectangle.h"

/// Marks a colour, font or border field that nobody has set.
constexpr int KVN_UNSET_SCREEN_VALUE = static_cast<int>(0x80000001u);

/// How a node or a submodel is drawn: place, colours (RGB integers), font and border. The engine
/// only stores it.
class KVN_screenInfo : public KVN_object {
 public:
  /// Bits of `screenFlags`.
  static constexpr int kShowInArcs = 1;
  static constexpr int kShowOutArcs = 2;

  KVN_screenInfo() = default;

  KVN_rectangle position;
  int color = KVN_UNSET_SCREEN_VALUE;
  int selColor = KVN_UNSET_SCREEN_VALUE;
  int font = KVN_UNSET_SCREEN_VALUE;
  int fontColor = KVN_UNSET_SCREEN_VALUE;
  int borderThickness = KVN_UNSET_SCREEN_VALUE;
  int borderColor = KVN_UNSET_SCREEN_VALUE;
  int screenFlags = kShowInArcs | kShowOutArcs;

  /// Takes width and height where they are 0 and each unset value from `other`.
  /// KVN_NOT_READY, unchanged, if `other` isn't ready.
  int FillUnset(const KVN_screenInfo& other);

  /// Copies everything; KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_screenInfo& source);
};
