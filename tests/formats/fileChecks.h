#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "network/network.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkComparer.h"
#include "tests/support/scratchFolder.h"

/// Reading and writing in one line, and what holds for every format when memory is short.

inline std::string Repeated(const std::string& piece, int count) {
  std::string text;
  for (int i = 0; i < count; i++) text += piece;
  return text;
}

/// Reads `text` as a file with the extension, with this result. The messages.
inline std::vector<std::string> ReadText(KVN_network& network, const std::string& extension,
                                         const std::string& text, int result = 0) {
  const ScratchFolder folder;
  const LogWatch log;
  EXPECT_EQ(network.ReadFile(folder.Write("file." + extension, text).c_str()), result);
  return log.Texts();
}

/// A file of the whole network with the numbers to the eight decimals that text formats keep.
inline std::string WrittenText(KVN_network& network, const std::string& extension) {
  const ScratchFolder folder;
  EXPECT_EQ(network.WriteFile(folder.Path("file." + extension).c_str()), 0);
  return folder.Read("file." + extension);
}

/// What is written is read in silence, is the same by `compare`, and is written again with the same
/// bytes.
inline void ExpectComesBack(KVN_network& made, const std::string& extension,
                            const NetworkCompareOptions& compare) {
  const std::string first = WrittenText(made, extension);
  KVN_network read;
  EXPECT_THAT(ReadText(read, extension, first), testing::IsEmpty());
  EXPECT_TRUE(NetworksEqual(made, read, compare));
  EXPECT_EQ(WrittenText(read, extension), first);
}

/// Whichever allocation fails, writing what `fill` makes gives the whole file, or an error and the
/// old one.
template <typename Fill>
void ExpectWritesAllOrNothing(const std::string& extension, Fill fill) {
  const ScratchFolder folder;
  const std::string path = folder.Path("file." + extension);
  std::string whole;
  const int failures = FailEachAllocation([&](int succeeding) {
    KVN_network network;
    fill(network);
    if (whole.empty()) whole = WrittenText(network, extension);
    folder.Write("file." + extension, "old");
    const FailingAllocation failing(succeeding);
    const int result = network.WriteFile(path.c_str());
    EXPECT_TRUE(folder.Read("file." + extension) == (result == 0 ? whole : "old")) << succeeding;
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 2);
}

/// Whichever allocation fails, reading `text` gives what the file says, by `isSame(whole,
/// network)`, or tells that it doesn't: by its result, or, if `mayTellInTheLog`, by a message
/// alone.
template <typename IsSame>
void ExpectReadsAllOrTells(const std::string& extension, const std::string& text,
                           bool mayTellInTheLog, IsSame isSame) {
  const ScratchFolder folder;
  const std::string path = folder.Write("file." + extension, text);
  KVN_network whole;
  ASSERT_EQ(whole.ReadFile(path.c_str()), 0);
  const int failures = FailEachAllocation([&](int succeeding) {
    KVN_network network;
    const LogWatch log;
    int result = 0;
    bool hasFailed = false;
    {
      const FailingAllocation failing(succeeding);
      result = network.ReadFile(path.c_str());
      hasFailed = failing.HasFailed();
    }
    EXPECT_TRUE(hasFailed || result == 0);
    if (result == 0 && (log.Texts().empty() || !mayTellInTheLog)) {
      EXPECT_TRUE(isSame(whole, network)) << "allocation " << succeeding;
    }
    return hasFailed;
  });
  EXPECT_GT(failures, 100);
}
