#pragma once

#include <cstdint>

#include "formats/text/fileFormat.h"

/// The native XML format, extensions "xkvn" and "qkvn". It hands everything on to the XML reader
/// and writer and uses nothing of the machinery for text formats.
///
/// Files of this format list parents before children and give each node an identifier of its own,
/// which the loader holds against them as it reads, so the network needn't test either again.
class KVN_xkvnSpeaker : public KVN_fileFormat {
 public:
  explicit KVN_xkvnSpeaker(KVN_network& target) : KVN_fileFormat(target) {}

  /// 0, or KVN_FILE_IO after any failure; the log has the reason.
  int ReadFile(const char* fileName) override;
  int WriteFile(const char* fileName) override;
  bool SkipsIdentifierCheck() override { return true; }
  bool SkipsCycleCheck() override { return true; }
  /// What becomes of the extensions: see LoadXmlNetwork and SaveXmlNetwork.
  void SetOptions(std::intptr_t options) override { loadOptions = options; }

 private:
  std::intptr_t loadOptions = 0;
};
