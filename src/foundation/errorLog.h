#pragma once

#include "foundation/intArray.h"
#include "foundation/stringArray.h"

/// Receiver of messages in place of the log.
class KVN_errorTarget {
 public:
  virtual ~KVN_errorTarget() = default;
  /// `text` is the complete message and is valid during the call only.
  virtual void Log(int code, const char* text) = 0;
};

/// List of the messages of the process, with a code for each.
///
/// The log only grows: nothing empties it, a read does not start with an empty one, and after a
/// success GetLastErrorMessage still gives the last failure of an earlier call. A caller that wants
/// the messages of one operation remembers GetNumItems() before it.
class KVN_errorStringHandler : public KVN_stringArray {
 public:
  KVN_errorStringHandler() = default;
  KVN_errorStringHandler(const KVN_errorStringHandler&) = delete;
  KVN_errorStringHandler& operator=(const KVN_errorStringHandler&) = delete;
  ~KVN_errorStringHandler() override;

  /// Stores a message, or hands it to the target. A null text becomes the standard text of the
  /// code; a prefix is put in front of it, the whole then cut to 1,999 bytes. Code 0 does nothing.
  /// Returns `code`, so that a caller can write `return LogError(...)`. A message that cannot be
  /// stored for want of memory is dropped.
  int LogError(int code, const char* text, const char* prefix);

  /// The newest message, or "NO ERRORS SO FAR". Valid until the next message.
  const char* GetLastErrorMessage() const;

  /// Message and code at a position in [0, GetNumItems()); null and 0 outside.
  const char* GetMessage(int position) const;
  int GetCode(int position) const;

  /// Sends the messages from now on to `target` (null: to the log again). With `own` the log
  /// deletes the target when it is replaced or when the log ends.
  void SetRedirect(KVN_errorTarget* target, bool own);

 private:
  void Store(int code, const char* text);

  KVN_intArray codes;  // same order and length as the messages
  KVN_errorTarget* redirect = nullptr;
  bool ownsRedirect = false;
};

/// The log of the process. Made at first use, and so before any code that logs.
KVN_errorStringHandler& KVN_errorLog();

/// The operations of the same names on the log of the process.
int LogError(int code, const char* text = nullptr, const char* prefix = nullptr);
const char* GetLastErrorMessage();

/// Standard text of a code. It is meant that several codes have the text "NO ERROR": they are only
/// reported with a text of their own, or not at all. A code without an entry gives "UNKNOWN ERROR
/// CODE".
const char* GetErrorString(int code);
