#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder of its own for the files of one test, removed at the end.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kvnXXXXXX").string();
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    folder = pattern;
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  std::string Path(const std::string& name) const { return (folder / name).string(); }

  /// Bytes as they are; returns the path.
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }

  /// The whole file, empty when there is none.
  std::string Read(const std::string& name) const {
    std::ifstream stream(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

  /// Files and folders directly in here.
  int CountEntries() const {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder),
                                          std::filesystem::directory_iterator()));
  }

 private:
  std::filesystem::path folder;
};
