#include "inference/sampling/messagePropagation.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/sampling/sampleNet.h"

namespace {

void NormalizeRow(double* row, int count) {
  double sum = 0.0;
  for (int i = 0; i < count; ++i) sum += row[i];
  if (sum > 0.0) {
    for (int i = 0; i < count; ++i) row[i] /= sum;
  } else if (sum == 0.0) {
    std::fill_n(row, count, 1.0 / count);
  }
}

int SetupMessages(int rows, int width, KVN_Dmatrix& in, KVN_Dmatrix& next) {
  if (rows == 0) return 0;
  const int sizes[] = {rows, width};
  if (int result = in.Setup(sizes, 2); result < 0) return result;
  if (int result = next.Setup(sizes, 2); result < 0) return result;
  in.FillWith(1.0);
  next.FillWith(1.0);
  return 0;
}

int SetupOnes(KVN_doubleArray& array, int count) {
  if (int result = array.SetSize(count); result < 0) return result;
  array.FillWith(1.0);
  return 0;
}

double* RowOf(KVN_Dmatrix& messages, int row) {
  return messages.GetData() + std::ptrdiff_t{row} * messages.GetSizeOfDimension(1);
}

/// The received messages become those that were sent, and the next ones start at 1.0.
void Deliver(KVN_Dmatrix& in, KVN_Dmatrix& next) {
  in.Swap(next);
  next.FillWith(1.0);
}

}  // namespace

int MessagePropagation::Build() {
  nodes.reset(new (std::nothrow) MessageNode[net.GetCount()]);
  if (nodes == nullptr) return KVN_NO_MEMORY;
  int most = 0;
  for (int i = 0; i < net.GetCount(); ++i) {
    most = std::max(most, net[i].outcomes);
    if (int result = BuildNode(i); result < 0) return result;
  }
  for (int i = 0; i < net.GetCount(); ++i) {
    if (int result = LinkNode(i); result < 0) return result;
  }
  return sums.SetSize(most);
}

int MessagePropagation::BuildNode(int place) {
  const SampleNode& node = net[place];
  MessageNode& made = nodes[place];
  int widest = 0;
  for (int parent : node.parents) widest = std::max(widest, net[parent].outcomes);
  int result = SetupMessages(node.GetParentCount(), widest, made.piIn, made.piNext);
  if (result == 0) {
    result = SetupMessages(node.GetChildCount(), node.outcomes, made.lambdaIn, made.lambdaNext);
  }
  if (result == 0) result = SetupOnes(made.joint, node.GetRowCount());
  if (result == 0) result = SetupOnes(made.evidence, node.outcomes);
  if (result == 0) result = SetupOnes(made.lambda, node.outcomes);
  if (result == 0) result = SetupOnes(made.pi, node.outcomes);
  if (result == 0) result = made.belief.SetSize(node.outcomes);
  if (result == 0) result = made.placeAtParent.SetSize(node.GetParentCount());
  if (result == 0) result = made.placeAtChild.SetSize(node.GetChildCount());
  if (result < 0 || !node.HasEvidence()) return result;
  made.evidence.FillWith(0.0);
  made.evidence[node.evidence] = 1.0;
  return 0;
}

/// Where the messages between a node and its children go, so that no round has to look for it.
int MessagePropagation::LinkNode(int place) {
  const SampleNode& node = net[place];
  for (int c = 0; c < node.GetChildCount(); ++c) {
    const int child = node.children[c];
    const int k = net[child].parents.FindPosition(place);
    if (k < 0) return KVN_REFUSED;
    nodes[place].placeAtChild[c] = k;
    nodes[child].placeAtParent[k] = c;
  }
  return 0;
}

void MessagePropagation::Run(int rounds) {
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < net.GetCount(); ++i) (void)ProcessNode(i, /*withBelief=*/false);
    for (int i = 0; i < net.GetCount(); ++i) EndRound(i);
  }
}

int MessagePropagation::RunWithBeliefs(int rounds) {
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < net.GetCount(); ++i) {
      if (int result = ProcessNode(i, /*withBelief=*/true); result < 0) return result;
    }
    for (int i = 0; i < net.GetCount(); ++i) EndRound(i);
  }
  return 0;
}

int MessagePropagation::ProcessNode(int place, bool withBelief) {
  const SampleNode& node = net[place];
  NormalizeMessages(place);
  MultiplyLambda(place);
  MultiplyJoint(place);
  ComputePi(place);
  if (withBelief) {
    if (int result = ComputeBelief(place); result < 0) return result;
  }
  for (int i = 0; i < node.GetParentCount(); ++i) {
    if (!net[node.parents[i]].HasEvidence()) SendToParent(place, i);
  }
  for (int c = 0; c < node.GetChildCount(); ++c) SendToChild(place, c);
  return 0;
}

void MessagePropagation::NormalizeMessages(int place) {
  const SampleNode& node = net[place];
  MessageNode& own = nodes[place];
  for (int i = 0; i < node.GetParentCount(); ++i) {
    NormalizeRow(RowOf(own.piIn, i), net[node.parents[i]].outcomes);
  }
  for (int c = 0; c < node.GetChildCount(); ++c) {
    NormalizeRow(RowOf(own.lambdaIn, c), node.outcomes);
  }
}

void MessagePropagation::MultiplyLambda(int place) {
  const SampleNode& node = net[place];
  MessageNode& own = nodes[place];
  own.lambda.CopyItems(own.evidence);
  if (node.HasEvidence()) return;
  for (int c = 0; c < node.GetChildCount(); ++c) {
    const double* message = RowOf(own.lambdaIn, c);
    for (int x = 0; x < node.outcomes; ++x) own.lambda[x] *= message[x];
  }
}

void MessagePropagation::MultiplyJoint(int place) {
  const SampleNode& node = net[place];
  MessageNode& own = nodes[place];
  const int rows = node.GetRowCount();
  int inner = rows;  // rows over which the parent's outcome stays
  for (int i = 0; i < node.GetParentCount(); ++i) {
    const int outcomes = net[node.parents[i]].outcomes;
    inner /= outcomes;
    const double* message = RowOf(own.piIn, i);
    for (int j = 0; j < rows; ++j) own.joint[j] *= message[j / inner % outcomes];
  }
}

void MessagePropagation::ComputePi(int place) {
  const SampleNode& node = net[place];
  MessageNode& own = nodes[place];
  const double* cells = node.cpt->GetData();
  if (node.GetParentCount() == 0) {
    std::copy(cells, cells + node.outcomes, own.pi.GetItems());
    return;
  }
  own.pi.FillWith(0.0);
  for (int j = 0; j < node.GetRowCount(); ++j) {
    for (int x = 0; x < node.outcomes; ++x) own.pi[x] += *cells++ * own.joint[j];
  }
}

int MessagePropagation::ComputeBelief(int place) {
  MessageNode& own = nodes[place];
  double sum = 0.0;
  for (int x = 0; x < net[place].outcomes; ++x) {
    own.belief[x] = own.lambda[x] * own.pi[x];
    sum += own.belief[x];
  }
  if (!(sum > 0.0)) return KVN_CONFLICTING_EVIDENCE;
  for (int x = 0; x < net[place].outcomes; ++x) own.belief[x] /= sum;
  return 0;
}

/// The message of outcome u is the sum over the own outcomes of lambda times the sum over the rows
/// with this parent at u, in which its own message is divided out again.
void MessagePropagation::SendToParent(int place, int i) {
  const SampleNode& node = net[place];
  MessageNode& own = nodes[place];
  const int parent = node.parents[i];
  const int outcomes = net[parent].outcomes;
  const int inner = node.cpt->GetMultipliers()[i] / node.outcomes;
  const double* pi = RowOf(own.piIn, i);
  double* message = RowOf(nodes[parent].lambdaNext, own.placeAtParent[i]);
  std::fill_n(message, outcomes, 0.0);
  for (int x = 0; x < node.outcomes; ++x) {
    std::fill_n(sums.GetItems(), outcomes, 0.0);
    const double* cell = node.cpt->GetData() + x;
    for (int j = 0; j < node.GetRowCount(); ++j, cell += node.outcomes) {
      const int u = j / inner % outcomes;
      if (pi[u] != 0.0) sums[u] += *cell * own.joint[j] / pi[u];
    }
    for (int u = 0; u < outcomes; ++u) message[u] += own.lambda[x] * sums[u];
  }
}

void MessagePropagation::SendToChild(int place, int c) {
  const SampleNode& node = net[place];
  MessageNode& own = nodes[place];
  const double* lambdaIn = RowOf(own.lambdaIn, c);
  double* message = RowOf(nodes[node.children[c]].piNext, own.placeAtChild[c]);
  for (int x = 0; x < node.outcomes; ++x) {
    message[x] = lambdaIn[x] == 0.0 ? 0.0 : own.lambda[x] / lambdaIn[x] * own.pi[x];
  }
}

void MessagePropagation::EndRound(int place) {
  MessageNode& own = nodes[place];
  if (net[place].GetChildCount() > 0) Deliver(own.lambdaIn, own.lambdaNext);
  if (net[place].GetParentCount() == 0) return;
  Deliver(own.piIn, own.piNext);
  own.joint.FillWith(1.0);
}

const KVN_doubleArray& MessagePropagation::ComputeLambda(int place) {
  NormalizeMessages(place);
  MultiplyLambda(place);
  return nodes[place].lambda;
}
