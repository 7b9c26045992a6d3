#pragma once

#include <cstdint>

/// Root of the engine classes that own data. Carries two status bits:
///
/// - ready: clear means "do not read this object's data". An operation that takes another object
///   as its source tests the bit first, returns KVN_NOT_READY when it is clear, and leaves the
///   target as it stands.
/// - consistent: clear means that the contents contradict each other, such as a repeated name. It
///   is a report only; no operation refuses because of it.
///
/// Both bits are recomputed by CheckReadiness and CheckConsistency alone, or by an operation that
/// says so. `deep` is 1 to ask the members too, 0 to look at this object's own fields.
///
/// A derived class adds its virtual operations after these and never changes their order.
class KVN_object {
 public:
  /// Both bits on. A composite object calls SetReady(false) until all its members are made.
  KVN_object() = default;
  KVN_object(const KVN_object&) = default;
  KVN_object& operator=(const KVN_object&) = default;

  /// Releases owned data and ends with CheckReadiness(0). May run more than once.
  virtual void CleanUp(int deep);
  /// Recomputes the ready bit: 0 or KVN_NOT_READY. The base is always ready.
  virtual int CheckReadiness(int deep);
  /// Recomputes the consistent bit: 0 or KVN_NOT_CONSISTENT. The base is always consistent.
  virtual int CheckConsistency(int deep);
  virtual ~KVN_object() = default;

  bool IsReady() const { return (flags & kReady) != 0; }
  bool IsConsistent() const { return (flags & kConsistent) != 0; }

 protected:
  void SetReady(bool ready) { SetFlag(kReady, ready); }
  void SetConsistent(bool consistent) { SetFlag(kConsistent, consistent); }

 private:
  static constexpr std::uint32_t kReady = 1;
  static constexpr std::uint32_t kConsistent = 2;

  void SetFlag(std::uint32_t flag, bool on) { flags = on ? (flags | flag) : (flags & ~flag); }

  std::uint32_t flags = kReady | kConsistent;
};
