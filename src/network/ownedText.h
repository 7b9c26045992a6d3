#pragma once

/// Private copy of a text, to be freed with delete[]; null for a null text or without memory.
char* CopyOfText(const char* text);

/// Replaces the owned text in `field` by a copy of `text`, which may be the old text itself; null
/// clears it. KVN_NO_MEMORY leaves the old text.
int ReplaceText(char*& field, const char* text);
