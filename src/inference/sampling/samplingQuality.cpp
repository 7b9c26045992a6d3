#include "inference/sampling/samplingQuality.h"

namespace {

SamplingQuality* theReceiver = nullptr;  // not owned

}  // namespace

int SamplingQuality::PlaceOf(int handle) const {
  return handle >= 0 && handle < places.GetNumItems() ? places[handle] - 1 : -1;
}

const double* SamplingQuality::GetStandardErrors(int handle) const {
  const int place = PlaceOf(handle);
  return place < 0 ? nullptr : allErrors.GetItems() + starts[place];
}

double SamplingQuality::GetEffectiveShare(int handle) const {
  const int place = PlaceOf(handle);
  return place < 0 ? 1.0 : shares[place];
}

void SamplingQuality::Clear() {
  places.Flush();
  starts.Flush();
  shares.Flush();
  allErrors.Flush();
}

int SamplingQuality::Note(int handle, const double* errors, int count, double effectiveShare) {
  while (places.GetNumItems() <= handle) {
    if (int result = places.Add(0); result < 0) return result;
  }
  if (int result = starts.Add(allErrors.GetNumItems()); result < 0) return result;
  if (int result = shares.Add(effectiveShare); result < 0) return result;
  for (int i = 0; i < count; ++i) {
    if (int result = allErrors.Add(errors[i]); result < 0) return result;
  }
  places[handle] = shares.GetNumItems();
  return 0;
}

void SetSamplingQuality(SamplingQuality* receiver) { theReceiver = receiver; }

SamplingQuality* GetSamplingQuality() { return theReceiver; }
