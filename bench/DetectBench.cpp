// Bytes per second of the charset analysis for 1 to 64 MB, which must be the same; and what a text costs that its first
// block decides. Yardstick: a memcpy.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

void analyse(benchmark::State& state, std::string text, bool isDecided) {
  const VoMsgMemoryResource resource(text.data(), static_cast<unsigned>(text.size()), nullptr, nullptr);
  for (auto _ : state) {
    const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(VoMsgResourceLocator::dataPart));
    char* charset = nullptr;
    VoMsgCharSetAnalysis::getInstance()->analysisText(reader.get(), "text/plain", charset);
    if ((charset != nullptr) != isDecided) std::abort();
    std::free(charset);
  }
  if (!isDecided) state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

std::size_t sizeOf(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)) * kMegabyte; }

// Pairs above 0x7F that are rare characters, or none, in the two-byte encodings, and unlikely in all languages.
void undecidedPairs(benchmark::State& state) {
  std::minstd_rand random(1);
  std::string text(sizeOf(state), '\0');
  for (std::size_t i = 0; i < text.size(); ++i)
    text[i] = static_cast<char>(i % 2 == 0 ? 0xC6 + random() % 2 : 0xE0 + random() % 26);
  analyse(state, std::move(text), false);
}
BENCHMARK(undecidedPairs)->RangeMultiplier(4)->Range(1, 64)->Unit(benchmark::kMillisecond);

// ASCII, which only the single-byte members look at.
void ascii(benchmark::State& state) {
  std::string text;
  while (text.size() < sizeOf(state)) text += "0123456789 2,718 3.1415 (42) 1/2; 7 = 3 + 4\r\n";
  analyse(state, std::move(text), false);
}
BENCHMARK(ascii)->RangeMultiplier(4)->Range(1, 64)->Unit(benchmark::kMillisecond);

void utf8(benchmark::State& state) {
  std::string text;
  while (text.size() < sizeOf(state)) text += "d\u00E9j\u00E0 vu \u2014 na\u00EFve\r\n";
  analyse(state, std::move(text), true);
}
BENCHMARK(utf8)->Arg(64);

void copy(benchmark::State& state) {
  const std::string text(sizeOf(state), 'x');
  std::string to(text.size(), '\0');
  for (auto _ : state) {
    std::memcpy(to.data(), text.data(), text.size());
    benchmark::DoNotOptimize(to.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(copy)->Arg(64);

}  // namespace
