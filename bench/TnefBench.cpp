// TNEF streams: a usual one beside a memcpy of it, and the shapes that are all overhead. Each row of `doubling` times
// a whole journey (parse, ask every entity for its name and size, write back, destroy) over n and over 2n pieces; the
// ratio of the two must stay near 2.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <string>

#include "tests/tnef/HostileStreams.h"
#include "vomsg/entity/VoMsgEntityIterator.h"

namespace {

using namespace vomsg::test;

void visit(VoMsgEntity& root) {
  VoMsgEntityIterator walk(&root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    benchmark::DoNotOptimize(entity->getFileName("utf-8"));
    benchmark::DoNotOptimize(entity->getCharset());
    benchmark::DoNotOptimize(entity->getContentSize());
  }
}

// The allocator starts each journey tidy, or one would pay for sorting what the other has given back.
double journey(const std::string& bytes, bool edit) {
  malloc_trim(0);
  const std::clock_t start = std::clock();  // processor time, so that neighbours do not count
  {
    VoMsgTnefMessage message;
    message.readFrom(inPlace(bytes));
    visit(message);
    if (edit) message.removeChildEntityAt(0);
    VoMsgMemoryResource target(0, nullptr, nullptr);
    benchmark::DoNotOptimize(message.writeTo(&target));
  }
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void doubling(benchmark::State& state, const HostileShape& shape, bool edit) {
  const unsigned pieces = piecesFor(shape, 2000000);
  const std::string once = shape.make(pieces);
  const std::string twice = shape.make(2 * pieces);
  double small = 1e9;
  double large = 1e9;
  for (auto _ : state) {
    small = std::min(small, journey(once, edit));
    large = std::min(large, journey(twice, edit));
  }
  state.counters["ratio"] = large / small;
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * (once.size() + twice.size())));
}

const std::string& usual() {
  static const std::string bytes =
      stream(record(0x9007, le32(1252) + le32(0), 1) +
             record(0x9003, list({text8(0x0037, "subject"), text8(0x1000, std::string(4000, 't'))}), 1) +
             attachment("a.pdf", std::string(10 << 20, 'p'), {text8(0x3707, "a long name.pdf")}) +
             attachment("b.pdf", std::string(6 << 20, 'q')));
  return bytes;
}

void copyBytes(benchmark::State& state) {
  std::string target(usual().size(), '\0');
  for (auto _ : state) {
    std::memcpy(target.data(), usual().data(), target.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * usual().size()));
}

void parse(benchmark::State& state) {
  for (auto _ : state) {
    VoMsgTnefMessage message;
    benchmark::DoNotOptimize(message.readFrom(inPlace(usual())));
  }
}

void writeBack(benchmark::State& state) {
  const bool edit = state.range(0) != 0;
  VoMsgTnefMessage message;
  message.readFrom(inPlace(usual()));
  if (edit) message.getChildEntityAt(2)->replaceContent(resourceOf("new").get(), nullptr);
  for (auto _ : state) {
    VoMsgMemoryResource target(0, nullptr, nullptr);
    benchmark::DoNotOptimize(message.writeTo(&target));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * usual().size()));
}

BENCHMARK(copyBytes);
BENCHMARK(parse);
BENCHMARK(writeBack)->Arg(0)->Arg(1);

const bool kRegistered = [] {
  for (const HostileShape& shape : kHostileShapes)
    for (const bool edit : {false, true})
      benchmark::RegisterBenchmark((std::string("doubling/") + shape.name + (edit ? "/edited" : "")).c_str(),
                                   [&shape, edit](benchmark::State& state) { doubling(state, shape, edit); })
          ->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace
