#include "bridge/keptNetworks.h"

#include <memory>
#include <new>

#include "network/network.h"

namespace {

struct KeptNetwork {
  KVN_network network;
  KeptNetwork* previous = nullptr;
};

/// The chain keeps abandoned networks reachable: a leak checker reports what nobody points at, and
/// these would drown the leaks that are faults.
KeptNetwork* lastKept = nullptr;

}  // namespace

KVN_network* MakeKeptNetwork() {
  std::unique_ptr<KeptNetwork> made(new (std::nothrow) KeptNetwork);
  if (made == nullptr || !made->network.IsReady()) return nullptr;
  made->previous = lastKept;
  lastKept = made.release();
  return &lastKept->network;
}
