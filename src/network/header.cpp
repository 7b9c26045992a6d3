#include "network/header.h"

#include <utility>

#include "foundation/errorLog.h"
#include "foundation/identifier.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/ownedText.h"

KVN_header::KVN_header(KVN_node* newOwner) : owner(newOwner) {}

KVN_header::KVN_header(const KVN_header& source) : KVN_object(), owner(nullptr) {
  // Without memory the copy lacks texts; Assign is for callers that must know.
  (void)AssignUnchecked(source);
}

KVN_header& KVN_header::operator=(const KVN_header& source) {
  (void)Assign(source);  // see the copy constructor
  return *this;
}

KVN_header::~KVN_header() {
  delete[] id;
  delete[] name;
  delete[] comment;
}

KVN_network* KVN_header::NetworkOfOwner() const {
  KVN_network* network = owner != nullptr ? owner->GetNetwork() : nullptr;
  // A node under construction, or a copy that isn't attached yet, points at a network that doesn't
  // hold it.
  const bool stands = network != nullptr && network->GetNode(owner->Handle()) == owner;
  return stands ? network : nullptr;
}

void KVN_header::StoreId(char* newId) {
  char* oldId = std::exchange(id, newId);
  if (KVN_network* network = NetworkOfOwner(); network != nullptr) {
    network->IdentifierChanged(owner->Handle());
  }
  delete[] oldId;
}

int KVN_header::SetId(const char* text) {
  if (!IsLegalHeaderId(text)) return LogError(KVN_ILLEGAL_ID, "Illegal identifier");
  // Copied before the network is asked: once the children have been told there is no way back.
  char* copy = CopyOfText(text);
  if (copy == nullptr) return KVN_NO_MEMORY;
  KVN_network* network = NetworkOfOwner();
  if (network != nullptr && network->AcceptRename(owner->Handle(), id, copy) == 0) {
    delete[] copy;
    return KVN_ILLEGAL_ID;
  }
  StoreId(copy);
  return KVN_SUCCESS;
}

int KVN_header::SetName(const char* text) { return ReplaceText(name, text); }

int KVN_header::SetComment(const char* text) { return ReplaceText(comment, text); }

int KVN_header::Assign(const KVN_header& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  if (int result = SetId(source.id); result < 0) return result;
  if (int result = SetName(source.name); result < 0) return result;
  if (int result = SetComment(source.comment); result < 0) return result;
  return CheckReadiness(/*deep=*/0);
}

int KVN_header::AssignUnchecked(const KVN_header& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  char* copy = CopyOfText(source.id);
  if (copy == nullptr && source.id != nullptr) return KVN_NO_MEMORY;
  StoreId(copy);
  if (int result = SetName(source.name); result < 0) return result;
  if (int result = SetComment(source.comment); result < 0) return result;
  return CheckReadiness(/*deep=*/0);
}

void KVN_header::CleanUp(int deep) {
  StoreId(nullptr);
  (void)ReplaceText(name, nullptr);
  (void)ReplaceText(comment, nullptr);
  KVN_object::CleanUp(deep);
}

int KVN_header::CheckConsistency(int /*deep*/) {
  SetConsistent(IsLegalHeaderId(id));
  return IsConsistent() ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}
