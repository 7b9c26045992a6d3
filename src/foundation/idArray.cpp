#include "foundation/idArray.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "foundation/identifier.h"
#include "foundation/resultCodes.h"

namespace {

bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }

/// Writes an identifier to a caller's buffer, cut to what fits.
void CopyToBuffer(const std::string& id, char* out) {
  const std::size_t length = std::min<std::size_t>(id.size(), KVN_idArray::kBufferSize - 1);
  std::memcpy(out, id.c_str(), length);
  out[length] = '\0';
}

}  // namespace

KVN_idArray& KVN_idArray::operator=(const KVN_idArray& source) {
  KVN_stringArray::operator=(source);
  return *this;
}

KVN_idArray& KVN_idArray::operator=(KVN_idArray&& source) noexcept {
  KVN_stringArray::operator=(std::move(source));
  return *this;
}

int KVN_idArray::CheckConsistency(int /*deep*/) {
  bool consistent = true;
  for (int i = 0; i < numItems && consistent; i++) {
    consistent = IsThisIdentifierValid((*this)[i], i);
  }
  SetConsistent(consistent);
  return consistent ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}

int KVN_idArray::SetString(int position, const char* text) {
  if (!IsThisIdentifierValid(text, position)) return KVN_REFUSED;
  return KVN_stringArray::SetString(position, text);
}

int KVN_idArray::Insert(int position, const char* text) {
  if (!IsThisIdentifierValid(text)) return KVN_REFUSED;
  return KVN_stringArray::Insert(position, text);
}

bool KVN_idArray::IsThisIdentifierValid(const char* id, int skip) const {
  if (id == nullptr) return false;
  if (*id == '\0') return allowEmpty;
  if (!IsIdentifierStart(*id)) return false;
  for (const char* c = id; *c != '\0'; c++) {
    if (!IsIdentifierCharacter(*c)) return false;
  }
  return FindPositionExcept(id, skip) < 0;
}

int KVN_idArray::MakeValidId(std::string& id) {
  if (id.empty()) return KVN_REFUSED;
  if (!IsIdentifierStart(id[0])) id.insert(id.begin(), 'x');
  std::replace_if(
      id.begin() + 1, id.end(), [](char c) { return !IsIdentifierCharacter(c); }, '_');
  return KVN_SUCCESS;
}

int KVN_idArray::MakeValidId(char* id) {
  if (IsEmpty(id)) return KVN_REFUSED;
  std::string text(id);
  if (int result = MakeValidId(text); result < 0) return result;
  CopyToBuffer(text, id);
  return KVN_SUCCESS;
}

int KVN_idArray::CreateValidId(const char* base, int start, std::string& out) const {
  out = IsEmpty(base) ? "x" : base;
  if (int result = MakeValidId(out); result < 0) return result;
  if (start < 0 && IsThisIdentifierValid(out.c_str())) return KVN_SUCCESS;
  const std::size_t baseLength = out.size();
  long long number = std::max(start, 0);
  do {
    out.resize(baseLength);
    out += std::to_string(number++);
  } while (!IsThisIdentifierValid(out.c_str()));
  return KVN_SUCCESS;
}

int KVN_idArray::CreateValidId(const char* base, int start, char* out) const {
  std::string cut(IsEmpty(base) ? "x" : base, 0, kMaxBase);
  std::string id;
  if (int result = CreateValidId(cut.c_str(), start, id); result < 0) return result;
  CopyToBuffer(id, out);
  return KVN_SUCCESS;
}

int KVN_idArray::CreateAndAddValidId(const char* base, int start) {
  return CreateAndInsertValidId(base, start, numItems);
}

int KVN_idArray::CreateAndInsertValidId(const char* base, int start, int position) {
  std::string id;
  if (int result = CreateValidId(base, start, id); result < 0) return result;
  return KVN_stringArray::Insert(position, id.c_str());  // tested just now
}

int KVN_idArray::MakeUnique() {
  if (!IsReady()) return KVN_NOT_READY;
  KVN_idArray mended(allowEmpty);
  if (int result = mended.SetSize(size); result < 0) return result;
  mended.growBy = growBy;
  for (int i = 0; i < numItems; i++) {
    const char* old = (*this)[i];
    int result = mended.Add(old);
    if (result == KVN_REFUSED) {
      std::string id = old == nullptr ? "" : old;
      (void)MakeValidId(id);  // an empty text stays, and CreateValidId takes "x" for it
      result = mended.Add(id.c_str());
      if (result == KVN_REFUSED) result = mended.CreateAndAddValidId(id.c_str(), 2);
    }
    if (result < 0) return result;
  }
  Swap(mended);
  return KVN_SUCCESS;
}
