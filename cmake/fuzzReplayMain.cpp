// main() of a fuzz target in a build without libFuzzer: runs the target once on each file named on
// the command line, and on each file below each folder named there, in the order of their names.
// Ends with 1 when there was nothing to run, so that a corpus that went missing does not pass.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(int argc, char** argv) {
  std::vector<fs::path> files;
  for (int i = 1; i < argc; i++) {
    if (!fs::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<fs::path> files = FilesOf(argc, argv);
  for (const fs::path& file : files) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    if (stream.bad() || !stream.is_open()) {
      std::fprintf(stderr, "cannot read %s\n", file.c_str());
      return 1;
    }
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);  // a crash must leave the name of its input behind
    // Exactly as long as the file, so that a sanitizer sees a read past the end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("%zu inputs replayed\n", files.size());
  return files.empty() ? 1 : 0;
}
