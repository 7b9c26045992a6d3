#include "foundation/identifierIndex.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "foundation/resultCodes.h"

namespace {

constexpr int kFirstCapacity = 64;

unsigned HashOf(const char* text) {
  unsigned hash = 2166136261u;
  for (; *text != '\0'; text++) hash = (hash ^ static_cast<unsigned char>(*text)) * 16777619u;
  return hash;
}

}  // namespace

KVN_identifierIndex::KVN_identifierIndex(const Source& numbers) : source(numbers) {}

KVN_identifierIndex::~KVN_identifierIndex() { Release(); }

void KVN_identifierIndex::Release() {
  delete[] std::exchange(heads, nullptr);
  delete[] std::exchange(links, nullptr);
  mask = 0;
  capacity = 0;
  members = 0;
}

void KVN_identifierIndex::Clear() {
  Release();
  usable = true;
}

void KVN_identifierIndex::Add(const char* id, int number) {
  if (!usable || number < 0) return;
  Remove(number);
  if (id == nullptr) return;
  if (!Reserve(number) || !GrowHeads()) {
    Release();
    usable = false;
    return;
  }
  links[number].hash = HashOf(id);
  LinkIn(number);
  members++;
}

void KVN_identifierIndex::Remove(int number) {
  if (number < 0 || number >= capacity || links[number].previous == kNotIn) return;
  const Link link = std::exchange(links[number], Link{});
  (link.previous == kNone ? heads[link.hash & mask] : links[link.previous].next) = link.next;
  if (link.next != kNone) links[link.next].previous = link.previous;
  members--;
}

int KVN_identifierIndex::FindLowest(const char* id, int except) const {
  if (id == nullptr || members == 0) return KVN_REFUSED;
  const unsigned hash = HashOf(id);
  int lowest = std::numeric_limits<int>::max();
  for (int number = heads[hash & mask]; number != kNone; number = links[number].next) {
    if (links[number].hash != hash || number == except || number >= lowest) continue;
    const char* present = source.IdentifierOf(number);
    if (present != nullptr && std::strcmp(present, id) == 0) lowest = number;
  }
  return lowest != std::numeric_limits<int>::max() ? lowest : KVN_REFUSED;
}

/// Makes sure that `links` has a place for `number`.
bool KVN_identifierIndex::Reserve(int number) {
  if (number < capacity) return true;
  if (number > std::numeric_limits<int>::max() / 2) return false;
  const int newCapacity = std::max({kFirstCapacity, number + 1, capacity * 2});
  Link* block = new (std::nothrow) Link[newCapacity];
  if (block == nullptr) return false;
  std::copy_n(links, capacity, block);
  delete[] std::exchange(links, block);
  capacity = newCapacity;
  return true;
}

/// Makes sure that there is a head for one member more, and links the members anew if not.
bool KVN_identifierIndex::GrowHeads() {
  const unsigned count = heads == nullptr ? 0 : mask + 1;
  if (static_cast<unsigned>(members) < count) return true;
  const unsigned newCount = std::max(static_cast<unsigned>(kFirstCapacity), count * 2);
  int* block = new (std::nothrow) int[newCount];
  if (block == nullptr) return false;
  std::fill_n(block, newCount, kNone);
  delete[] std::exchange(heads, block);
  mask = newCount - 1;
  for (int number = 0; number < capacity; number++) {
    if (links[number].previous != kNotIn) LinkIn(number);
  }
  return true;
}

void KVN_identifierIndex::LinkIn(int number) {
  int& head = heads[links[number].hash & mask];
  links[number].next = head;
  links[number].previous = kNone;
  if (head != kNone) links[head].previous = number;
  head = number;
}
