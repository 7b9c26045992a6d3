#include "inference/sampling/sampleNode.h"

#include <algorithm>

#include "values/nodeValue.h"

void SampleNode::CopyBelief(double* out) const { std::copy(belief, belief + outcomes, out); }

int SampleNode::WriteToValue(KVN_nodeValue& value) const {
  KVN_Dmatrix posterior;
  if (int result = posterior.Setup(&outcomes, 1); result < 0) return result;
  CopyBelief(posterior.GetData());
  if (int result = value.SetValue(posterior); result < 0) return result;
  value.SetValueValid();
  return 0;
}
