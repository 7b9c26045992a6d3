#pragma once

/// Results of operations: 0 is success, below 0 is failure. The host sees these numbers, so a code
/// is never renumbered or reused; new ones go at the end. GetErrorString (errorLog.h) has the
/// texts.
constexpr int KVN_SUCCESS = 0;
constexpr int KVN_FAILURE = -1;            // general failure of file readers and parsing helpers
constexpr int KVN_REFUSED = -2;            // bad handle, index or argument; refused operation
constexpr int KVN_EXPRESSION_ERROR = -3;   // local to the expression code
constexpr int KVN_LENGTH_MISMATCH = -4;    // local to the numeric checks of definitions
constexpr int KVN_NO_USEFUL_SAMPLES = -5;  // sampling produced nothing usable
constexpr int KVN_HAS_CHILDREN = -19;      // refused because the node has children
constexpr int KVN_CONFLICTING_EVIDENCE = -26;
constexpr int KVN_ILLEGAL_ID = -30;  // illegal or unknown identifier
constexpr int KVN_DUPLICATED_ID = -32;
constexpr int KVN_NO_MEMORY = -42;       // an allocation failed, or a table would be too large
constexpr int KVN_NOT_APPLICABLE = -51;  // this kind of node or definition has no such operation
constexpr int KVN_WRONG_ELEMENT =
    -52;  // this kind of hybrid table element does not answer the call
constexpr int KVN_WRONG_MESSAGE = -53;    // a discrete operation on a continuous message or reverse
constexpr int KVN_OPEN_TO_READ = -100;    // mode of an open file; XML uses it as code of a warning
constexpr int KVN_OPEN_TO_WRITE = -101;   // mode of an open file
constexpr int KVN_END_OF_FILE = -102;     // read past the end of the file
constexpr int KVN_FILE_IO = -103;         // a file could not be opened, read or written
constexpr int KVN_NO_MORE_TOKENS = -111;  // the lexical analyser is at the end of its input
constexpr int KVN_LEXICAL_ERROR = -126;   // unknown character
constexpr int KVN_SYNTAX_ERROR = -127;    // syntax error in a network file
constexpr int KVN_UNEXPECTED_EOF = -128;  // end of file inside a comment or string
constexpr int KVN_NOT_THIS_STATEMENT = -129;  // the input is another statement: try the next reader
constexpr int KVN_NOT_READY = -567;           // the source object is only half built
constexpr int KVN_NOT_CONSISTENT = -568;      // the contents contradict each other
