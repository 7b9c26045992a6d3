#pragma once

/// The automaton of the lexical analyser: what a character is and where a state goes from there.

constexpr int KVN_LEXICAL_ROWS = 17;    // character classes, 0 to 16
constexpr int KVN_LEXICAL_STATES = 16;  // states, 0 to 15

/// Values in a table above the states: what to do instead of going on with the token.
enum KVN_lexicalAction : unsigned char {
  KVN_LEXICAL_SKIP = 0,  // in state 0: the character is no part of a token
  KVN_LEXICAL_STRING = 70,
  KVN_LEXICAL_LINE_COMMENT = 75,
  KVN_LEXICAL_BLOCK_COMMENT = 80,   // up to "*/"
  KVN_LEXICAL_NESTED_COMMENT = 85,  // up to the "#/" that matches
  KVN_LEXICAL_UNKNOWN = 90,
  KVN_LEXICAL_END = 95,  // the token ends before this character
};

/// Numbers of the tables.
enum KVN_lexicalTableNumber : int {
  KVN_LEXICAL_DEFAULT = 1,
  KVN_LEXICAL_ERGO = 2,       // words between blanks: no comments, no strings
  KVN_LEXICAL_HUGIN = 3,      // % starts a line comment
  KVN_LEXICAL_MICROSOFT = 4,  // "," and "|" are blanks
  KVN_LEXICAL_UNSIGNED = 5,   // a sign is always a token of its own; no format uses it
};

/// Class of every byte, 0 to 16, as an array of 256. Independent of the locale.
const unsigned char* GetCharacterClasses();

/// One row per character class, in it one entry per state: the next state or an action.
using KVN_lexicalTransitions = unsigned char[KVN_LEXICAL_ROWS][KVN_LEXICAL_STATES];

/// Copies the table of that number. KVN_REFUSED for a number outside 1 to 5; the target stays as it
/// was.
int CopyLexicalTable(int number, KVN_lexicalTransitions& transitions);
