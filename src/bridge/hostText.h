#pragma once

#include <string>

/// Texts of the engine are bytes without a declared encoding: UTF-8 from the text formats and from
/// the host, Latin-1 from some files. The JVM takes modified UTF-8 only, and other bytes bring it
/// down.

/// Whether the text is modified UTF-8 as JNI has it: sequences of one to three bytes, of which the
/// two byte form C0 80 stands for NUL; no four byte form, and nothing longer than needed.
bool IsModifiedUtf8(const char* text);

/// Every byte above 0x7F as the two bytes of that Latin-1 character.
std::string Latin1ToUtf8(const char* text);

/// Lends a text to a JNI call: as it stands where the JVM can take it, else read as Latin-1. Null
/// stays null. `text` must outlive this object.
class HostText {
 public:
  explicit HostText(const char* text);
  HostText(const HostText&) = delete;
  HostText& operator=(const HostText&) = delete;

  const char* Get() const { return lent; }

 private:
  std::string converted;
  const char* lent;
};
