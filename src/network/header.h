#pragma once

#include "foundation/object.h"

class KVN_network;
class KVN_node;

/// Identifier, name and comment of a node or a submodel (the root submodel's header is the
/// network's own).
///
/// Invariant: each text is a private copy, null when unset. A header is consistent exactly when
/// its identifier is legal by the header rule (see foundation/identifier.h).
class KVN_header : public KVN_object {
 public:
  /// `owner` is the node whose identifier this is, so that a rename can be checked against the
  /// network and told to the children; null for a submodel.
  explicit KVN_header(KVN_node* owner = nullptr);
  KVN_header(const KVN_header& source);
  KVN_header& operator=(const KVN_header& source);
  ~KVN_header() override;

  const char* GetId() const { return id; }
  const char* GetName() const { return name; }
  const char* GetComment() const { return comment; }
  KVN_node* GetOwner() const { return owner; }
  void SetOwner(KVN_node* newOwner) { owner = newOwner; }

  /// KVN_ILLEGAL_ID with "Illegal identifier" in the log for an illegal text; KVN_ILLEGAL_ID
  /// without a message when the owner's network refuses the new identifier as one in use;
  /// KVN_NO_MEMORY. Every failure leaves the old identifier.
  [[nodiscard]] int SetId(const char* text);

  /// Store a copy, or clear on null. KVN_NO_MEMORY leaves the old text.
  int SetName(const char* text);
  int SetComment(const char* text);

  /// KVN_NOT_READY if the source isn't ready; then SetId, name and comment. The owner stays.
  [[nodiscard]] int Assign(const KVN_header& source);
  /// The same, but the identifier is taken as it stands, without asking the network whether it is
  /// in use: a copied node keeps the identifier of its original.
  [[nodiscard]] int AssignUnchecked(const KVN_header& source);

  void CleanUp(int deep) override;
  int CheckConsistency(int deep) override;

 private:
  /// The network in whose table the owner stands; null for a header that no network knows.
  KVN_network* NetworkOfOwner() const;
  /// Puts `newId` (owned, may be null) in place of the identifier.
  void StoreId(char* newId);

  char* id = nullptr;       // owned
  char* name = nullptr;     // owned
  char* comment = nullptr;  // owned
  KVN_node* owner;          // not owned: the node holds this header
};
