#pragma once

class RelevanceGraph;

/// Orders the records of a part so that parents stand before their children: depth first from each
/// record in list order, through its parents in theirs. The records' `position` follows.
/// KVN_NO_MEMORY leaves the part as it was.
[[nodiscard]] int SortParentsFirst(RelevanceGraph& part);

/// The same, but the walk begins at the records with evidence, those with the smallest share of
/// zeros in their tables first, so that evidence and what lies above it comes as early as can be.
/// KVN_NO_MEMORY.
[[nodiscard]] int SortEvidenceFirst(RelevanceGraph& part);
