#pragma once

#include <memory>
#include <string>

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
/// definition without outcomes). Unset texts are "" and never null, so that a network that was
/// written and read again is equal to the first, and so that the label list stays an identifier
/// list that allows empty entries.
///
/// A new object has empty lists: its maker calls Refresh once the definition stands. Later the
/// definition tells every edit of its outcomes; a node whose definition is replaced calls
/// FitToOutcomes, and the setters here do so too before they store anything.
///
/// Setters of a whole list: KVN_REFUSED, unchanged, when the count isn't the outcome count. Setters
/// for one outcome: KVN_REFUSED for a position outside. Null texts count as "".
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
  /// 1 marks a fault; the numbers are stored as given.
  int SetFaultStates(const KVN_intArray& flags);
  int SetFaultState(int outcome, int flag);

  int GetDefaultOutcome() const { return defaultOutcome; }
  /// KVN_REFUSED outside 0 to outcome count - 1.
  int SetDefaultOutcome(int outcome);

  /// Documents of one outcome; null for a position outside.
  KVN_documentation* GetStateDocumentation(int outcome);

  const KVN_stringArray& GetFaultNames() const { return faultNames; }
  int SetFaultNames(const KVN_stringArray& names);
  int SetFaultName(int outcome, const char* name);

  const KVN_idArray& GetFaultLabels() const { return faultLabels; }
  /// While a file is read stored without a test across nodes; otherwise a non-empty label must not
  /// be in use at another node: KVN_REFUSED. Unique within the node in any case.
  int SetFaultLabel(int position, const char* label);
  /// The same as MakeLabelsUnique, after a test of the count.
  int SetFaultLabels(const KVN_stringArray& labels);
  /// Sets each label in order; a refused one is replaced by a generated one and the result is then
  /// KVN_REFUSED though the run goes on (intended: the caller learns that labels were changed). It
  /// is meant that a label still in use by a later outcome is refused too, so that two labels can't
  /// be exchanged in one call: an order of outcomes is what moves labels. KVN_NO_MEMORY ends the
  /// run.
  int MakeLabelsUnique(const KVN_stringArray& labels);
  /// Makes a label of `base` (mended to an identifier, "x" if it is empty) and a number: the first
  /// that SetFaultLabel accepts, counting up from 1 plus the sum of all outcome counts of the
  /// network.
  void CreateLabel(const char* base, std::string& out) const;

  const KVN_stringArray& GetStateComments() const { return stateComments; }
  int SetStateComments(const KVN_stringArray& comments);
  int SetStateComment(int outcome, const char* comment);
  const KVN_stringArray& GetStateRepairInfo() const { return stateRepairInfo; }
  int SetStateRepairInfo(const KVN_stringArray& texts);
  int SetStateRepairInfo(int outcome, const char* text);

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

  /// The definition has just changed an outcome. KVN_REFUSED for a position outside the lists:
  /// unchanged. Adding puts a default entry at the position; removing the default outcome makes
  /// outcome 0 the default.
  int OutcomeAdded(int position);
  int OutcomeRemoved(int position);
  /// KVN_REFUSED for a bad permutation; the lists done up to then stay permuted (intended).
  int ReorderOutcomes(const KVN_intArray& order);
  /// All lists to one default entry for each outcome, and the default outcome to 0: the outcomes
  /// were replaced as a whole.
  int Refresh();
  /// Cuts lists that are too long and fills short ones with default entries; the entries that fit
  /// stay. Nothing when the counts agree.
  int FitToOutcomes();

  /// Takes network and handle too. KVN_NOT_READY if the source isn't ready, KVN_NO_MEMORY:
  /// unchanged.
  int Assign(const KVN_extraDefinition& source);
  void Attach(KVN_network* newNetwork) { network = newNetwork; }
  void CleanUp(int deep) override;

 private:
  /// Items in every per-outcome list.
  int GetCount() const { return faultStates.GetNumItems(); }
  /// Whether another node has the label, as far as that counts at present.
  bool IsLabelRefused(const char* label) const;
  bool IsLabelUsedElsewhere(const char* label) const;
  long long SumOfOutcomeCounts() const;
  bool HasCount(int count) const;
  int ResizeLists(int count);
  void ClearLists();
  int SetTexts(KVN_stringArray& list, const KVN_stringArray& texts);
  int SetText(KVN_stringArray& list, int outcome, const char* text);

  KVN_network* network;  // not owned
  int handle;
  KVN_intArray faultStates;
  int defaultOutcome = 0;
  std::unique_ptr<KVN_documentation[]> documents;  // one per outcome
  KVN_stringArray faultNames;
  KVN_idArray faultLabels{/*allowEmptyIds=*/true};
  KVN_stringArray stateComments;
  KVN_stringArray stateRepairInfo;
  std::unique_ptr<char[]> question;  // null when unset
  int diagnosisType = KVN_DIAGNOSIS_AUXILIARY;
  unsigned char ranked = 0;
  unsigned char mandatory = 0;
  unsigned char setAsDefault = 0;
  int showAs = kShowAsInherited;
  std::unique_ptr<KVN_stateData> stateData;  // null: no class of this system provides any
};
