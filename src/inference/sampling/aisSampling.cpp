#include "inference/sampling/aisSampling.h"

#include "inference/sampling/importanceRows.h"
#include "inference/sampling/runOnParts.h"
#include "inference/sampling/sampleNet.h"
#include "inference/sampling/samplingPhase.h"
#include "network/network.h"

namespace {

constexpr int kLearningSamples = 25000;
constexpr int kUpdateInterval = 2500;
constexpr double kFirstLearningRate = 0.4;
constexpr double kLearningDecay = 0.9;

void ApplyHeuristic(SampleNode& node, bool uniform) {
  if (!node.relevantAncestor) return;
  for (int start = 0; start < node.cpt->GetSize(); start += node.outcomes) {
    const double* row = node.cpt->GetData() + start;
    double* importance = node.icpt.GetData() + start;
    if (uniform) {
      SpreadEvenly(row, importance, node.outcomes);
    } else {
      RaiseSmall(row, importance, node.outcomes);
    }
  }
}

/// It is meant that the parents of evidence lose what the first pass gave them.
void ApplyHeuristics(SampleNet& net) {
  for (int i = 0; i < net.GetCount(); ++i) {
    if (!net[i].HasEvidence()) ApplyHeuristic(net[i], /*uniform=*/false);
  }
  for (int i = 0; i < net.GetCount(); ++i) {
    if (!net[i].HasEvidence()) continue;
    for (int parent : net[i].parents) ApplyHeuristic(net[parent], /*uniform=*/true);
  }
}

void UpdateImportance(SampleNode& node, double learningRate) {
  for (int start = 0; start < node.cpt->GetSize(); start += node.outcomes) {
    LearnFromScores(node.score.GetData() + start, node.icpt.GetData() + start, node.outcomes,
                    learningRate);
  }
  node.score.FillWith(0.0);
}

/// It is meant that a score is the square of the importance times the weight.
void Score(SampleNet& net, double weight) {
  for (int i = 0; i < net.GetCount(); ++i) {
    SampleNode& node = net[i];
    if (node.HasEvidence()) continue;
    const double score = node.icpt[node.cell] * weight;
    node.score[node.cell] += score * score;
  }
}

void Learn(SampleNet& net, KVN_random& random) {
  double learningRate = kFirstLearningRate;
  for (int s = 1; s <= kLearningSamples; ++s) {
    const double weight = net.DrawSample(random);
    if (weight > 0.0) Score(net, weight);
    if (s % kUpdateInterval != 0) continue;
    for (int i = 0; i < net.GetCount(); ++i) {
      if (net[i].relevantAncestor) UpdateImportance(net[i], learningRate);
    }
    learningRate *= kLearningDecay;
  }
}

int SampleAdaptively(SampleNet& net, int /*rounds*/) {
  if (int result = net.PrepareTables(); result < 0) return result;
  KVN_random& random = KVN_adaptiveSamplerRandom();
  random.Seed(NewAdaptiveSeed());
  net.ClearBeliefs();
  ApplyHeuristics(net);
  Learn(net, random);
  return RunSamplingPhase(net, net.View().GetNetwork().GetNumberOfSamples(), random);
}

}  // namespace

int RunAisSampling(KVN_network& network) { return RunOnParts(network, SampleAdaptively, 0); }
