#pragma once

#include "foundation/idArray.h"

/// Edits of the outcome names of a definition, the same for every class that owns such a list.
/// `prefix` is the word that names the class's generated outcomes: "State" or "Choice".
///
/// Results: 0 or the code of the list.

/// Inserts `name`, or a generated name made of `prefix` and the number of names when the list
/// refuses it. Fails for a bad position and for want of memory only.
[[nodiscard]] int InsertOutcomeName(KVN_idArray& names, int position, const char* name,
                                    const char* prefix);

/// Appends `prefix` and the index until there are `count` names.
[[nodiscard]] int FillOutcomeNames(KVN_idArray& names, const char* prefix, int count);

/// Makes `target` a copy of `source`, untested; a source that is an identifier list hands on
/// whether it allows empty names. KVN_NO_MEMORY: unchanged.
[[nodiscard]] int CopyOutcomeNames(KVN_idArray& target, const KVN_stringArray& source);

/// Replaces all names by as many of `source`, each mended where it is illegal or a repeat.
/// KVN_REFUSED if `source` has fewer: unchanged.
[[nodiscard]] int ReplaceOutcomeNames(KVN_idArray& names, const KVN_stringArray& source);

/// A copy of `source` that is fit to be the names of a node, mended where needed. KVN_REFUSED when
/// it can't be mended.
[[nodiscard]] int MakeOutcomeNames(KVN_idArray& made, const KVN_stringArray& source);
