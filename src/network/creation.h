#pragma once

#include "foundation/object.h"

/// Who made a network and when: three free texts, null when unset. The engine reads no clock; the
/// texts are whatever a file or a caller says.
class KVN_creation : public KVN_object {
 public:
  KVN_creation() = default;
  KVN_creation(const KVN_creation&) = delete;
  KVN_creation& operator=(const KVN_creation&) = delete;
  ~KVN_creation() override;

  const char* GetCreator() const { return creator; }
  const char* GetCreated() const { return created; }
  const char* GetModified() const { return modified; }

  /// Store a copy, or clear on null. KVN_NO_MEMORY leaves the old text.
  int SetCreator(const char* text);
  int SetCreated(const char* text);
  int SetModified(const char* text);

  /// KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_creation& source);
  void CleanUp(int deep) override;

 private:
  char* creator = nullptr;   // owned
  char* created = nullptr;   // owned
  char* modified = nullptr;  // owned
};
