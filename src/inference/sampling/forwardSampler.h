#pragma once

class KVN_network;
class KVN_random;
class PartSamples;
class RelevanceGraph;

/// What tells the simple samplers that go sample by sample through all parts apart. They draw from
/// the thread's generator, in the order: sample, part, node.
class ForwardSampler {
 public:
  ForwardSampler() = default;
  ForwardSampler(const ForwardSampler&) = delete;
  ForwardSampler& operator=(const ForwardSampler&) = delete;
  virtual ~ForwardSampler() = default;

  /// Brings the records of a part into the order in which they are drawn, parents first.
  [[nodiscard]] virtual int Sort(RelevanceGraph& part) const;
  /// Called once, when the records of all parts are made.
  [[nodiscard]] virtual int Prepare(PartSamples* parts, int count);
  /// Draws one sample of part number `part`, setting the state of all records. Returns its weight,
  /// exactly 0 for one that is dropped.
  virtual double Draw(PartSamples& samples, int part, KVN_random& random) = 0;
  /// After sample `s` (from 0) of a part was counted with its weight.
  virtual void Kept(PartSamples& /*samples*/, int /*part*/, int /*s*/, double /*weight*/) {}
};

/// Reduces the network and runs the sampler on its parts, with as many samples as the network says.
/// Parts of one record get their table as it stands, without a draw. Each other part is finished by
/// itself, and it is meant that the result is that of the last one alone: 0, or
/// KVN_NO_USEFUL_SAMPLES when nothing was counted in it, as with a number of samples of 0 or less.
/// Nodes of a part that failed have values that aren't valid. KVN_NO_MEMORY, or KVN_REFUSED for a
/// table that doesn't fit its node, before the first draw.
int RunForwardSampler(KVN_network& network, ForwardSampler& sampler);

/// The same with the parts one after the other, all samples of a part in turn.
int RunPartByPart(KVN_network& network, ForwardSampler& sampler);
