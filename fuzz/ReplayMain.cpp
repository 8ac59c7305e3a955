// The main() of a fuzz target where no fuzzer drives it: runs every file of the folders given, each of its prefixes
// and a fixed number of its single-byte mutations. Every run is the same, so a failure can be repeated.
// The longest seeds are not cut at every byte, but at as many places as the budget allows.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t kCutsPerSeed = 4096;
constexpr std::size_t kMutationsPerSeed = 1000;

// Hands the input over in a block of exactly its size, so that sanitizers see one byte too far.
void runExact(const std::uint8_t* data, std::size_t size) {
  const auto block = std::make_unique<std::uint8_t[]>(size);
  std::copy_n(data, size, block.get());
  LLVMFuzzerTestOneInput(block.get(), size);
}

void replay(std::vector<std::uint8_t> seed) {
  const std::size_t step = seed.size() / kCutsPerSeed + 1;
  for (std::size_t size = 0; size < seed.size(); size += step) runExact(seed.data(), size);
  runExact(seed.data(), seed.size());
  if (seed.empty()) return;
  // Half of the bytes put in are those that structure a message.
  constexpr char kLikely[] = "\r\n-=:; \t\"?\0<>(),_";
  std::minstd_rand random(static_cast<unsigned>(seed.size()));
  for (std::size_t i = 0; i < kMutationsPerSeed; ++i) {
    std::uint8_t& byte = seed[random() % seed.size()];
    const std::uint8_t saved = byte;
    const unsigned any = static_cast<unsigned>(random() % 256);
    byte = static_cast<std::uint8_t>(random() % 2 ? static_cast<unsigned>(kLikely[random() % sizeof kLikely]) : any);
    runExact(seed.data(), seed.size());
    byte = saved;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file() && entry.path().extension() != ".tree") files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
      std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
      return EXIT_FAILURE;
    }
    replay({std::istreambuf_iterator<char>(in), {}});
  }
  std::printf("replayed %zu files\n", files.size());
  return files.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
