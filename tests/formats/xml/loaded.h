#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "tests/support/logWatch.h"
#include "tests/support/scratchFolder.h"

inline std::string InRoot(const std::string& content, const std::string& attributes = "") {
  return "<ormel version=\"1.0\" id=\"N\"" + attributes + ">" + content + "</ormel>";
}
inline std::string InNodes(const std::string& content) {
  return InRoot("<nodes>" + content + "</nodes>");
}

/// A native XML document read into a network; the messages of the load, with F for the file. A load
/// that fails ends with an error and its place.
class Loaded {
 public:
  explicit Loaded(const std::string& document, std::intptr_t options = 0) {
    const ScratchFolder folder;
    const std::string path = folder.Write("f.xkvn", document);
    const LogWatch log;
    result = network.ReadFile(path.c_str(), KVN_FORMAT_AUTO, options);
    for (std::string text : log.Texts()) {
      const std::size_t at = text.find(path);
      messages.push_back(at == std::string::npos ? text : text.replace(at, path.size(), "F"));
    }
    if (result == 0) return;
    EXPECT_EQ(result, KVN_FILE_IO);
    EXPECT_TRUE(!messages.empty() && messages.back().rfind("Error at ", 0) == 0) << LastMessage();
  }

  /// Without its place; empty if there is none.
  std::string LastMessage() const {
    if (messages.empty()) return "";
    const std::string place = " while loading F: ";
    const std::size_t at = messages.back().find(place);
    return at == std::string::npos ? messages.back() : messages.back().substr(at + place.size());
  }
  template <class Definition>
  Definition& As(const char* id) {
    return *static_cast<Definition*>(network.DefinitionOf(network.FindNode(id)));
  }
  KVN_node& Node(const char* id) { return *network.GetNode(network.FindNode(id)); }

  KVN_network network;
  int result = 0;
  std::vector<std::string> messages;
};
