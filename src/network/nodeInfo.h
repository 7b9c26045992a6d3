#pragma once

#include "network/documentation.h"
#include "network/header.h"
#include "network/screenInfo.h"
#include "network/userProperties.h"

/// Everything descriptive about a node: nothing here has influence on inference.
class KVN_nodeInfo : public KVN_object {
 public:
  explicit KVN_nodeInfo(KVN_node* owner);

  KVN_header& Header() { return header; }
  const KVN_header& Header() const { return header; }
  KVN_screenInfo& Screen() { return screen; }
  KVN_userProperties& UserProperties() { return userProperties; }
  KVN_documentation& Documentation() { return documentation; }

  /// KVN_NOT_READY, unchanged, if the source isn't ready. The identifier is taken as it stands,
  /// without asking the network: this is how a node is copied.
  int Assign(const KVN_nodeInfo& source);
  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  int CheckConsistency(int deep) override;

 private:
  KVN_header header;
  KVN_screenInfo screen;
  KVN_userProperties userProperties;
  KVN_documentation documentation;
};
