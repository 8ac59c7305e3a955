// Streams: a whole source copied beside the plain memcpy into a fresh block, and lines of every shape beside the line
// scan. The time for each byte of the doubling rows must stay flat; lone CRs are what makes careless scans quadratic.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using Resource = std::unique_ptr<VoMsgResourceLocator>;
constexpr auto kData = VoMsgResourceLocator::dataPart;

std::string textOf(std::size_t size, std::size_t lineLength, const char* lineEnd) {
  std::string text;
  text.reserve(size + lineLength + 2);
  while (text.size() < size) text.append(lineLength, 'x').append(lineEnd);
  text.resize(size);
  return text;
}

void plainCopy(benchmark::State& state) {
  const std::string text = textOf(static_cast<std::size_t>(state.range(0)), 76, "\r\n");
  for (auto _ : state) {
    char* const copy = static_cast<char*>(std::malloc(text.size()));
    std::memcpy(copy, text.data(), text.size());
    benchmark::DoNotOptimize(copy);
    benchmark::ClobberMemory();
    std::free(copy);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void streamCopy(benchmark::State& state, bool fromFile, bool toFile) {
  std::string text = textOf(static_cast<std::size_t>(state.range(0)), 76, "\r\n");
  const auto size = static_cast<unsigned>(text.size());
  Resource source(new VoMsgMemoryResource(text.data(), size, nullptr, nullptr));
  if (fromFile) {
    Resource file(VoMsgResourceManager::createTmpFileResource());
    const std::unique_ptr<VoMsgBufferedWriter> out(file->getOutputStream(kData));
    const std::unique_ptr<VoMsgBufferedReader> in(source->getInputStream(kData));
    out->copyFrom(in.get());
    source = std::move(file);
  }
  for (auto _ : state) {
    const Resource target(toFile ? VoMsgResourceManager::createTmpFileResource()
                                 : new VoMsgMemoryResource(0u, nullptr, nullptr));
    const std::unique_ptr<VoMsgBufferedReader> in(source->getInputStream(kData));
    const std::unique_ptr<VoMsgBufferedWriter> out(target->getOutputStream(kData));
    if (voFailed(vomsg::detail::copyRange(*in, *out, 0, size)) || !out->flush()) state.SkipWithError("copy failed");
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void lineScan(benchmark::State& state) {
  const std::string text = textOf(static_cast<std::size_t>(state.range(0)), 76, "\r\n");
  for (auto _ : state) {
    const char* at = text.data();
    const char* const end = at + text.size();
    std::size_t lines = 0;
    for (; at != end; ++lines) {
      const void* const found = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
      at = found ? static_cast<const char*>(found) + 1 : end;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void readLines(benchmark::State& state, std::size_t lineLength, const char* lineEnd) {
  std::string text = textOf(static_cast<std::size_t>(state.range(0)), lineLength, lineEnd);
  const VoMsgMemoryResource source(text.data(), static_cast<unsigned>(text.size()), nullptr, nullptr);
  for (auto _ : state) {
    const std::unique_ptr<VoMsgBufferedReader> in(source.getInputStream(kData));
    unsigned capacity = 0, terminator = 0;
    for (char* line = nullptr; (line = in->readline(line, capacity, terminator)) != nullptr;)
      benchmark::DoNotOptimize(line);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

constexpr std::int64_t kLarge = std::int64_t{64} << 20;

BENCHMARK(plainCopy)->Arg(4096)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(streamCopy, memoryToMemory, false, false)->Arg(4096)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(streamCopy, fileToMemory, true, false)->Arg(4096)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(streamCopy, memoryToFile, false, true)->Arg(4096)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK(lineScan)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(readLines, crlf, 76, "\r\n")->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(readLines, loneCr, 0, "\r")
    ->RangeMultiplier(2)
    ->Range(1 << 20, 8 << 20)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(readLines, oneLine, 1 << 24, "")
    ->RangeMultiplier(2)
    ->Range(1 << 20, 8 << 20)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
