#pragma once

#include <string>

/// Rule for names of nodes and submodels. Two rules for identifiers exist side by side and differ
/// on purpose: this one overwrites a bad first character ("1a" becomes "xa"), the one of
/// KVN_idArray puts 'x' in front of it ("x1a"), and only this one knows the '@' of helper nodes.

/// A text that starts with '@' is legal whatever follows, and names the helper nodes of soft
/// evidence. Otherwise a letter first, then letters, digits and '_'. Null and empty are illegal.
bool IsLegalHeaderId(const char* id);

/// Overwrites a first character that is no letter with 'x' and every other illegal one with '_'. A
/// text that is legal already stays; the empty text becomes "x".
void MakeLegalHeaderId(std::string& id);

/// Character classes of identifiers, by the C library for the current locale.
bool IsIdentifierStart(char c);
bool IsIdentifierCharacter(char c);
