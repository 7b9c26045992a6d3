#include "network/nodeInfo.h"

#include "foundation/resultCodes.h"

KVN_nodeInfo::KVN_nodeInfo(KVN_node* owner) : header(owner) {}

int KVN_nodeInfo::Assign(const KVN_nodeInfo& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  if (int result = header.AssignUnchecked(source.header); result < 0) return result;
  if (int result = screen.Assign(source.screen); result < 0) return result;
  if (int result = userProperties.Assign(source.userProperties); result < 0) return result;
  if (int result = documentation.Assign(source.documentation); result < 0) return result;
  return CheckReadiness(/*deep=*/0);
}

void KVN_nodeInfo::CleanUp(int deep) {
  header.CleanUp(deep);
  screen.CleanUp(deep);
  userProperties.CleanUp(deep);
  documentation.CleanUp(deep);
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_nodeInfo::CheckReadiness(int deep) {
  if (deep != 0) {
    (void)header.CheckReadiness(deep);
    (void)screen.CheckReadiness(deep);
    (void)userProperties.CheckReadiness(deep);
    (void)documentation.CheckReadiness(deep);
  }
  SetReady(header.IsReady() && screen.IsReady() && userProperties.IsReady() &&
           documentation.IsReady());
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_nodeInfo::CheckConsistency(int deep) {
  if (deep != 0) {
    (void)header.CheckConsistency(deep);
    (void)userProperties.CheckConsistency(deep);
    (void)documentation.CheckConsistency(deep);
  }
  SetConsistent(header.IsConsistent() && userProperties.IsConsistent() &&
                documentation.IsConsistent());
  return IsConsistent() ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}
