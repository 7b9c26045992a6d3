#pragma once

#include <cstdint>

#include "foundation/object.h"

class KVN_network;

/// Codes of the file formats; 0 lets the file name's extension decide.
enum KVN_fileFormatCode : int {
  KVN_FORMAT_AUTO = 0,
  KVN_FORMAT_ERGO = 1,
  KVN_FORMAT_NETICA = 2,
  KVN_FORMAT_MICROSOFT = 3,
  KVN_FORMAT_KVN = 4,
  KVN_FORMAT_HUGIN = 5,
  KVN_FORMAT_XMLBIF = 6,
  KVN_FORMAT_KI = 7,
  KVN_FORMAT_XKVN = 8,
};

/// What the network needs of a reader and writer of one file format: the network knows that there
/// are formats, not which. A speaker lives for one ReadFile or WriteFile.
///
/// Slots 0 to 8 of the table that every format class overrides; KVN_fileFormat continues it.
class KVN_fileSpeaker : public KVN_object {
 public:
  /// Reads into the network that the speaker was made for. 0 or a code; what was read up to a
  /// failure stays in the network.
  [[nodiscard]] virtual int ReadFile(const char* fileName) = 0;
  [[nodiscard]] virtual int WriteFile(const char* fileName) = 0;

  /// Whether identifiers in a file of this format are known to be unique (arcs to be acyclic), so
  /// that the tests may be left out while it is read.
  virtual bool SkipsIdentifierCheck() { return false; }
  virtual bool SkipsCycleCheck() { return false; }

  /// A word of options, wide enough for a pointer; not called for 0.
  virtual void SetOptions(std::intptr_t /*options*/) {}
};

/// One row per format. The table ends with a row whose code is -1.
struct KVN_formatRow {
  int code;
  KVN_fileSpeaker* (*make)(KVN_network& network);  // null without memory
};
extern const KVN_formatRow theFileFormats[];  // defined in formats/formatTable.cpp

/// Format code from the extension (what follows the last "."), without regard to case;
/// KVN_REFUSED for a null name, no extension or an unknown one.
int DetectFileFormat(const char* fileName);

/// Makes the speaker; the caller owns it. A `format` of 0 is first replaced by the detected code.
/// Null with "Unknown File Format" in the log for a code that no format has, and without a message
/// when memory is short.
KVN_fileSpeaker* CreateSpeaker(const char* fileName, int& format, KVN_network& network);
