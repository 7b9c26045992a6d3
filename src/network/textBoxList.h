#pragma once

#include "foundation/rectangleArray.h"
#include "foundation/stringArray.h"

/// Free texts on the diagram of a submodel. Both lists have equal length.
class KVN_textBoxList : public KVN_object {
 public:
  KVN_textBoxList() = default;

  int GetCount() const { return texts.GetNumItems(); }
  const char* GetText(int index) const { return texts.GetString(index); }
  const KVN_rectangle& GetPosition(int index) const { return positions[index]; }
  int AddTextBox(const KVN_rectangle& position, const char* text);

  /// KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_textBoxList& source);
  void CleanUp(int deep) override;

 private:
  KVN_rectangleArray positions;
  KVN_stringArray texts;
};
