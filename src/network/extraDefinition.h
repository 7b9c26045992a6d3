#pragma once

#include <memory>

#include "foundation/idArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"
#include "network/documentation.h"

class KVN_network;

/// Diagnosis types, in the numbers that files and the host use.
enum KVN_diagnosisType : int {
  KVN_DIAGNOSIS_TARGET = 0,
  KVN_DIAGNOSIS_OBSERVATION = 1,
  KVN_DIAGNOSIS_AUXILIARY = 2,
};

/// Further data for each outcome that an application may hang on a node; it is told of every edit
/// of the outcomes. No class of this system implements it.
class KVN_stateData {
 public:
  virtual ~KVN_stateData() = default;
  virtual KVN_stateData* Clone() const = 0;
  virtual int OutcomeAdded(int position) = 0;
  virtual int OutcomeRemoved(int position) = 0;
  virtual int Reorder(const KVN_intArray& order) = 0;
};

/// Diagnosis attributes of a node, for troubleshooting applications: which outcomes are faults, how
/// they are called, what an observer should ask. Stored and kept in step with the outcomes; no
/// influence on inference.
///
/// Invariant: every per-outcome list has as many items as the definition has outcomes (0 for a
/// definition without outcomes). Unset labels are "" so that the label list stays an identifier
/// list that allows empty entries.
///
/// Setters of a whole list: KVN_REFUSED, unchanged, when the count isn't the outcome count.
class KVN_extraDefinition : public KVN_object {
 public:
  /// showAs: the node takes the network's display mode.
  static constexpr int kShowAsInherited = 4;

  KVN_extraDefinition(KVN_network* network, int handle);
  KVN_extraDefinition(const KVN_extraDefinition&) = delete;
  KVN_extraDefinition& operator=(const KVN_extraDefinition&) = delete;
  ~KVN_extraDefinition() override;

  /// Number of outcomes of the node's definition, 0 without any.
  int GetOutcomeCount() const;

  const KVN_intArray& GetFaultStates() const { return faultStates; }
  int SetFaultStates(const KVN_intArray& flags);
  int SetFaultState(int outcome, int flag);

  int GetDefaultOutcome() const { return defaultOutcome; }
  /// KVN_REFUSED outside 0 to outcome count - 1.
  int SetDefaultOutcome(int outcome);

  /// Documents of one outcome; null for a position outside.
  KVN_documentation* GetStateDocumentation(int outcome);

  const KVN_stringArray& GetFaultNames() const { return faultNames; }
  int SetFaultNames(const KVN_stringArray& names);

  const KVN_idArray& GetFaultLabels() const { return faultLabels; }
  /// While a file is read stored without a test across nodes; otherwise a non-empty label must not
  /// be in use at another node: KVN_REFUSED. Unique within the node in any case.
  int SetFaultLabel(int position, const char* label);
  /// The same as MakeLabelsUnique, after a test of the count.
  int SetFaultLabels(const KVN_stringArray& labels);
  /// Sets each label in order; a refused one is replaced by a generated one and the result is then
  /// KVN_REFUSED though the run goes on (intended: the caller learns that labels were changed).
  int MakeLabelsUnique(const KVN_stringArray& labels);
  /// A label for `position` made of `base` and a number that SetFaultLabel accepts; it is set.
  int CreateLabel(int position, const char* base);

  const KVN_stringArray& GetStateComments() const { return stateComments; }
  int SetStateComments(const KVN_stringArray& comments);
  const KVN_stringArray& GetStateRepairInfo() const { return stateRepairInfo; }
  int SetStateRepairInfo(const KVN_stringArray& texts);

  /// Empty text when unset, never null.
  const char* GetQuestion() const;
  int SetQuestion(const char* text);

  int GetDiagnosisType() const { return diagnosisType; }
  /// Anything but 0, 1 and 2 becomes KVN_DIAGNOSIS_AUXILIARY.
  void SetDiagnosisType(int type);
  int GetRanked() const { return ranked; }
  void SetRanked(int flag) { ranked = flag != 0; }
  int GetMandatory() const { return mandatory; }
  void SetMandatory(int flag) { mandatory = flag != 0; }
  int GetSetAsDefault() const { return setAsDefault; }
  void SetSetAsDefault(int flag) { setAsDefault = flag != 0; }
  int GetShowAs() const { return showAs; }
  /// Values outside 0 to 4 are ignored.
  void SetShowAs(int mode);

  int OutcomeAdded(int position);
  int OutcomeRemoved(int position);
  /// KVN_REFUSED for a bad permutation; the lists done up to then stay permuted (intended).
  int ReorderOutcomes(const KVN_intArray& order);
  /// All lists to one default entry for each outcome, and the default outcome to 0: the outcomes
  /// were replaced as a whole.
  int Refresh();

  /// KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_extraDefinition& source);
  void Attach(KVN_network* newNetwork) { network = newNetwork; }
  void CleanUp(int deep) override;

 private:
  bool IsLabelUsedElsewhere(const char* label) const;

  KVN_network* network;  // not owned
  int handle;
  KVN_intArray faultStates;
  int defaultOutcome = 0;
  KVN_documentation* documents = nullptr;  // owned array
  int documentCount = 0;
  KVN_stringArray faultNames;
  KVN_idArray faultLabels{/*allowEmpty=*/true};
  KVN_stringArray stateComments;
  KVN_stringArray stateRepairInfo;
  char* question = nullptr;  // owned
  int diagnosisType = KVN_DIAGNOSIS_AUXILIARY;
  unsigned char ranked = 0;
  unsigned char mandatory = 0;
  unsigned char setAsDefault = 0;
  int showAs = kShowAsInherited;
  std::unique_ptr<KVN_stateData> stateData;
};
