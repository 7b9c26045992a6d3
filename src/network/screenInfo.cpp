#include "network/screenInfo.h"

#include "foundation/resultCodes.h"

namespace {

void FillColor(int& field, int value) {
  if (field == KVN_UNSET_SCREEN_VALUE) field = value;
}

}  // namespace

int KVN_screenInfo::FillUnset(const KVN_screenInfo& other) {
  if (!other.IsReady()) return KVN_NOT_READY;
  if (position.width == 0) position.width = other.position.width;
  if (position.height == 0) position.height = other.position.height;
  FillColor(color, other.color);
  FillColor(selColor, other.selColor);
  FillColor(font, other.font);
  FillColor(fontColor, other.fontColor);
  FillColor(borderThickness, other.borderThickness);
  FillColor(borderColor, other.borderColor);
  return KVN_SUCCESS;
}

int KVN_screenInfo::Assign(const KVN_screenInfo& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  *this = source;
  return KVN_SUCCESS;
}
