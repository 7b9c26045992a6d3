#pragma once

#include "network/network.h"

/// Switches the hooks of a network off while it lives: copying a node rebuilds a definition and
/// sets evidence through the ordinary operations, which would otherwise make beliefs stale, or
/// even start an update, in the network that is only being read.
class KVN_quietScope {
 public:
  explicit KVN_quietScope(KVN_network& quieted)
      : network(quieted),
        updateFlags(quieted.GetUpdateFlags()),
        changeMask(quieted.GetChangeMask()) {
    network.SetUpdateFlags(0);
    network.SetChangeMask(0);
  }
  KVN_quietScope(const KVN_quietScope&) = delete;
  KVN_quietScope& operator=(const KVN_quietScope&) = delete;
  ~KVN_quietScope() {
    network.SetUpdateFlags(updateFlags);
    network.SetChangeMask(changeMask);
  }

 private:
  KVN_network& network;
  int updateFlags;
  int changeMask;
};
