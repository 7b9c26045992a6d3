#pragma once

#include <string>
#include <vector>

#include "foundation/errorLog.h"

/// The messages that come to the process's log from its construction on.
class LogWatch {
 public:
  LogWatch() : start(KVN_errorLog().GetNumItems()) {}

  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (int i = start; i < KVN_errorLog().GetNumItems(); i++) {
      texts.emplace_back(KVN_errorLog().GetMessage(i));
    }
    return texts;
  }
  std::vector<int> Codes() const {
    std::vector<int> codes;
    for (int i = start; i < KVN_errorLog().GetNumItems(); i++) {
      codes.push_back(KVN_errorLog().GetCode(i));
    }
    return codes;
  }

 private:
  int start;
};
