#include "network/documentation.h"

#include "foundation/resultCodes.h"

int KVN_documentation::AddDocument(const char* title, const char* location) {
  if (int result = titles.Add(title); result < 0) return result;
  const int result = locations.Add(location);
  // Both lists keep equal length. The last position always stands.
  if (result < 0) (void)titles.Delete(titles.GetNumItems() - 1);
  return result;
}

int KVN_documentation::SetLocation(int position, const char* location) {
  // The lists test against their storage; only the used part counts here.
  if (position < 0 || position >= GetCount()) return KVN_REFUSED;
  return locations.SetString(position, location);
}

int KVN_documentation::Delete(int position) {
  if (position < 0 || position >= GetCount()) return KVN_REFUSED;
  if (int result = titles.Delete(position); result < 0) return result;
  return locations.Delete(position);
}

void KVN_documentation::Flush() {
  titles.CleanUp(/*deep=*/1);
  locations.CleanUp(/*deep=*/1);
}

int KVN_documentation::Assign(const KVN_documentation& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  KVN_stringArray newTitles;
  KVN_stringArray newLocations;
  if (int result = newTitles.Assign(source.titles); result < 0) return result;
  if (int result = newLocations.Assign(source.locations); result < 0) return result;
  titles.Swap(newTitles);
  locations.Swap(newLocations);
  return CheckReadiness(/*deep=*/0);
}

void KVN_documentation::CleanUp(int /*deep*/) {
  Flush();
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_documentation::CheckReadiness(int deep) {
  if (deep != 0) {
    (void)titles.CheckReadiness(deep);
    (void)locations.CheckReadiness(deep);
  }
  SetReady(titles.IsReady() && locations.IsReady());
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_documentation::CheckConsistency(int deep) {
  if (deep != 0) {
    (void)titles.CheckConsistency(deep);
    (void)locations.CheckConsistency(deep);
  }
  SetConsistent(titles.IsConsistent() && locations.IsConsistent() &&
                titles.GetNumItems() == locations.GetNumItems());
  return IsConsistent() ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}
