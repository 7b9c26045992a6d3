#pragma once

#include "foundation/idArray.h"
#include "foundation/stringArray.h"

/// Key and value pairs that a user attaches to a network or a node, in the order of insertion.
///
/// Invariants: both lists have equal length; a key is an identifier by the list rule and unique; a
/// value may be null.
class KVN_userProperties : public KVN_object {
 public:
  KVN_userProperties();

  int GetCount() const { return keys.GetNumItems(); }
  /// Null for a position outside the list.
  const char* GetKey(int position) const { return keys.GetString(position); }
  const char* GetValue(int position) const { return values.GetString(position); }

  /// Position of the key, or KVN_REFUSED.
  int FindProperty(const char* key) const;

  /// The value as an integer, as TextToInt reads it; 0 without the key or a value.
  int GetInteger(const char* key) const;

  /// InsertProperty at the end, so that an existing key moves to the end of the list.
  int AddProperty(const char* key, const char* value);

  /// Puts the pair at `position`. A key that stands there already only gets the new value. A key
  /// that stands elsewhere is removed first, and then the position moves down by one wherever the
  /// old pair stood (intended; never below 0). KVN_REFUSED for a bad position or a key that is no
  /// identifier: unchanged.
  int InsertProperty(int position, const char* key, const char* value);

  /// Replaces the value at a position; KVN_REFUSED for a bad one.
  int SetPropertyValue(int position, const char* value);

  /// KVN_REFUSED for a bad position.
  int DeleteProperty(int position);

  /// KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_userProperties& source);
  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  int CheckConsistency(int deep) override;

 private:
  int InsertPair(int position, const char* key, const char* value);

  KVN_idArray keys;
  KVN_stringArray values;
};
