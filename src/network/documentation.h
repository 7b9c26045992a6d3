#pragma once

#include "foundation/stringArray.h"

/// Titles and locations of documents attached to a network, a node or an outcome. Both lists have
/// equal length.
class KVN_documentation : public KVN_object {
 public:
  KVN_documentation() = default;

  int GetCount() const { return titles.GetNumItems(); }
  /// Null for a position outside the list.
  const char* GetTitle(int position) const { return titles.GetString(position); }
  const char* GetLocation(int position) const { return locations.GetString(position); }

  int AddDocument(const char* title, const char* location);
  /// KVN_REFUSED for a bad position.
  int SetLocation(int position, const char* location);
  int Delete(int position);
  void Flush();

  /// KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_documentation& source);
  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  int CheckConsistency(int deep) override;

 private:
  KVN_stringArray titles;
  KVN_stringArray locations;
};
