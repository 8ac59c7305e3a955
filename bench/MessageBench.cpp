// Whole journeys through a message: parse; parse and decode everything; parse and write back. Beside them, in the
// same run, what the bytes themselves cost: a memcpy into a fresh block, a line scan with memchr, a plain base64 loop.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "vomsg/encoding/VoBase64.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace {

constexpr std::size_t kLarge = 64u << 20;

enum Shape : int { attachment, quotedPrintable, eightBit, manyParts, deepNesting, kShapes };

std::string base64Lines(std::size_t size) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::mt19937 random(1);
  std::string text;
  while (text.size() < size) {
    for (int i = 0; i < 76; ++i) text += kAlphabet[random() % 64];
    text += "\r\n";
  }
  return text;
}

std::string proseLines(std::size_t size, const char* accent, const char* end) {
  std::mt19937 random(2);
  std::string text;
  while (text.size() < size) {
    for (int word = 0; word < 11; ++word) {
      for (unsigned i = 0; i < 2 + random() % 6; ++i) text += static_cast<char>('a' + random() % 26);
      text += word % 5 == 4 ? accent : " ";
    }
    text += end;
  }
  return text;
}

std::string makeMessage(int shape, std::size_t size) {
  const std::string top = "From: a@example.org\r\nTo: b@example.org\r\nSubject: benchmark\r\nMIME-Version: 1.0\r\n";
  switch (shape) {
    case attachment:
      return top +
             "Content-Type: multipart/mixed; boundary=\"=_b\"\r\n\r\n--=_b\r\nContent-Type: text/plain\r\n\r\nhello\r\n"
             "--=_b\r\nContent-Type: application/pdf; name=a.pdf\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
             base64Lines(size) + "--=_b--\r\n";
    case quotedPrintable:
      return top + "Content-Type: application/x; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" +
             proseLines(size, "=C3=A9", "=\r\n");
    case eightBit:
      return top +
             "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: application/x\r\n"
             "Content-Transfer-Encoding: 8bit\r\n\r\n" +
             proseLines(size, "\xc3\xa9", "\r\n") + "--b--\r\n";
    case manyParts: {
      std::string text = top + "Content-Type: multipart/mixed; boundary=b\r\n\r\n";
      for (std::size_t i = 0; i < size; ++i) text += "--b\r\nContent-Type: text/plain\r\n\r\nA small part.\r\n";
      return text + "--b--\r\n";
    }
    default: {
      std::string text = top;
      for (std::size_t i = 0; i < size; ++i)
        text += "Content-Type: multipart/mixed; boundary=b" + std::to_string(i) + "\r\n\r\n--b" + std::to_string(i) +
                "\r\n";
      return text + "\r\nx\r\n";
    }
  }
}

const std::string& message(int shape) {
  static std::array<std::string, kShapes> messages;
  std::string& text = messages[static_cast<std::size_t>(shape)];
  if (text.empty()) text = makeMessage(shape, shape == manyParts ? 20000 : shape == deepNesting ? 5000 : kLarge);
  return text;
}

// Files of the messages, gone when the program ends.
class Files {
 public:
  ~Files() {
    for (const std::string& path : mPaths) std::remove(path.c_str());
  }
  const std::string& of(int shape) {
    std::string& path = mPaths[static_cast<std::size_t>(shape)];
    if (path.empty()) {
      path = std::filesystem::temp_directory_path() / ("vomsg-bench-" + std::to_string(shape) + ".eml");
      std::ofstream(path, std::ios::binary) << message(shape);
    }
    return path;
  }

 private:
  std::array<std::string, kShapes> mPaths;
};

const std::string& fileOf(int shape) {
  static Files files;
  return files.of(shape);
}

VoMsgResourceLocator* memorySource(const std::string& text) {
  return new VoMsgMemoryResource(const_cast<char*>(text.data()), static_cast<unsigned>(text.size()), nullptr, nullptr);
}

void setBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void parseMemory(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    benchmark::DoNotOptimize(mail.readFrom(memorySource(text)));
  }
  setBytes(state, text.size());
}

void parseFile(benchmark::State& state) {
  const std::string path = fileOf(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    benchmark::DoNotOptimize(mail.readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr)));
  }
  setBytes(state, message(static_cast<int>(state.range(0))).size());
}

void parseAndDecodeAll(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    mail.readFrom(memorySource(text));
    VoMsgEntityIterator walk(&mail);
    for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
      int err = 0;
      if (!entity->isMultipartEntity()) entity->getContent(err, &target);
    }
  }
  setBytes(state, text.size());
}

void parseAndWrite(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    mail.readFrom(memorySource(text));
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    benchmark::DoNotOptimize(mail.writeTo(&target));
  }
  setBytes(state, text.size());
}

void writeOnly(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  VoMsgRfc822Message mail;
  mail.readFrom(memorySource(text));
  for (auto _ : state) {
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    benchmark::DoNotOptimize(mail.writeTo(&target));
  }
  setBytes(state, text.size());
}

void yardstickMemcpy(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    char* const block = static_cast<char*>(std::malloc(text.size() + 17));
    std::memcpy(block, text.data(), text.size());
    benchmark::DoNotOptimize(block);
    benchmark::ClobberMemory();
    std::free(block);
  }
  setBytes(state, text.size());
}

void yardstickLineScan(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::size_t lines = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end && (at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at))))) {
      ++lines;
      ++at;
    }
    benchmark::DoNotOptimize(lines);
  }
  setBytes(state, text.size());
}

void yardstickBase64Loop(benchmark::State& state) {
  const std::string& text = message(static_cast<int>(state.range(0)));
  std::vector<char> out(text.size());
  for (auto _ : state) {
    unsigned bits = 0;
    unsigned value = 0;
    char* to = out.data();
    for (const char c : text) {
      const int sextet = base64table_int[static_cast<unsigned char>(c)];
      if (sextet < 0) continue;
      value = value << 6 | static_cast<unsigned>(sextet);
      if ((bits += 6) >= 8) *to++ = static_cast<char>(value >> (bits -= 8));
    }
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  setBytes(state, text.size());
}

// A mailbox of small messages, 1 to 8 KB each, as they come: headers, two alternatives.
const std::vector<std::string>& smallMessages() {
  static const std::vector<std::string> messages = [] {
    std::vector<std::string> all;
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
      std::string text = "Return-Path: <sender@example.org>\r\n";
      for (int hop = 0; hop < 4; ++hop)
        text += "Received: from mx" + std::to_string(hop) +
                ".example.org (mx.example.org [192.0.2.1])\r\n\tby in.example.net with "
                "ESMTPS id " +
                std::to_string(i) + "\r\n\tfor <b@example.net>; Mon, 1 Jan 2024 00:00:00 +0000\r\n";
      text += "Message-ID: <" + std::to_string(i) +
              "@example.org>\r\nDate: Mon, 1 Jan 2024 00:00:00 +0000\r\n"
              "From: \"A Sender\" <a@example.org>\r\nTo: b@example.net, c@example.net\r\n"
              "Subject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?= number " +
              std::to_string(i) +
              "\r\nMIME-Version: 1.0\r\n"
              "X-Mailer: none\r\nContent-Type: multipart/alternative; boundary=\"----=_b\"\r\n\r\n------=_b\r\n"
              "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" +
              proseLines(random() % 3000, " ", "\r\n") +
              "\r\n------=_b\r\nContent-Type: text/html; charset=utf-8\r\nContent-Transfer-Encoding: "
              "quoted-printable\r\n\r\n" +
              proseLines(random() % 3000, " ", "\r\n") + "\r\n------=_b--\r\n";
      all.push_back(std::move(text));
    }
    return all;
  }();
  return messages;
}

void parseSmallMessages(benchmark::State& state) {
  const std::vector<std::string>& all = smallMessages();
  std::size_t bytes = 0;
  for (const std::string& text : all) bytes += text.size();
  for (auto _ : state)
    for (const std::string& text : all) {
      VoMsgRfc822Message mail;
      benchmark::DoNotOptimize(mail.readFrom(memorySource(text)));
    }
  setBytes(state, bytes);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}

// Time per unit must stay flat when the shape doubles.
void doubling(benchmark::State& state) {
  const std::string text = makeMessage(static_cast<int>(state.range(0)), static_cast<std::size_t>(state.range(1)));
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    benchmark::DoNotOptimize(mail.readFrom(memorySource(text)));
  }
  state.SetComplexityN(state.range(1));
  state.SetItemsProcessed(state.iterations() * state.range(1));
}

// Multiparts inside each other, each with a part that becomes a subtree, which must not cost more the deeper it lies.
void subtreeAtEveryLevel(benchmark::State& state, std::string_view part) {
  std::string text = "MIME-Version: 1.0\r\n";
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    const std::string boundary = "b" + std::to_string(i);
    const std::string delimiter = "\r\n--" + boundary + "\r\n";
    text += "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n" + delimiter;
    text.append(part) += delimiter;
  }
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    benchmark::DoNotOptimize(mail.readFrom(memorySource(text)));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A part is added to each of many multiparts inside each other, from the root down and from the innermost up.
void appendAtEveryLevel(benchmark::State& state) {
  const std::string text = makeMessage(deepNesting, static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    VoMsgRfc822Message mail;
    mail.readFrom(memorySource(text));
    std::vector<VoMsgEntity*> multiparts;
    for (VoMsgEntity* entity = &mail; entity->isMultipartEntity(); entity = entity->getChildEntity())
      multiparts.push_back(entity);
    if (state.range(1)) std::reverse(multiparts.begin(), multiparts.end());
    for (VoMsgEntity* multipart : multiparts) {
      auto part = std::make_unique<VoMsgMimeEntity>();
      VoMsgMemoryResource content(const_cast<char*>("added"), 5, nullptr, nullptr);
      part->setContent(&content, "text/plain", "7bit");
      benchmark::DoNotOptimize(multipart->appendChildEntity(part.release()));
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Heap that a message keeps for each of its parts: once it is read, and once every header of every part was asked for.
void heapPerPart(benchmark::State& state, std::string_view part) {
  constexpr int kParts = 20000;
  std::string text = "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";
  for (int i = 0; i < kParts; ++i) text.append("--b\r\n").append(part).append("\r\n");
  for (auto _ : state) {
    const std::size_t before = mallinfo2().uordblks;
    VoMsgRfc822Message mail;
    mail.readFrom(memorySource(text));
    const std::size_t parsed = mallinfo2().uordblks;
    VoMsgEntityIterator walk(&mail);
    for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
      for (unsigned i = 0; i < entity->countHeaders(); ++i) entity->getHeaderAt(i)->getFieldValue("utf-8");
    const std::size_t asked = mallinfo2().uordblks;
    state.counters["parsed/part"] = static_cast<double>(parsed - before) / kParts;
    state.counters["asked/part"] = static_cast<double>(asked - before) / kParts;
  }
}

void allShapes(benchmark::internal::Benchmark* bench) {
  bench->ArgName("shape")->DenseRange(0, kShapes - 1)->Unit(benchmark::kMillisecond);
}
void largeShapes(benchmark::internal::Benchmark* bench) {
  bench->ArgName("shape")->DenseRange(0, eightBit)->Unit(benchmark::kMillisecond);
}

BENCHMARK(yardstickMemcpy)->Apply(largeShapes);
BENCHMARK(yardstickLineScan)->Apply(allShapes);
BENCHMARK(yardstickBase64Loop)->Arg(attachment)->Unit(benchmark::kMillisecond);
BENCHMARK(parseMemory)->Apply(allShapes);
BENCHMARK(parseFile)->Apply(allShapes);
BENCHMARK(parseAndDecodeAll)->Apply(allShapes);
BENCHMARK(parseAndWrite)->Apply(largeShapes);
BENCHMARK(writeOnly)->Apply(largeShapes);
BENCHMARK(parseSmallMessages)->Unit(benchmark::kMillisecond);
BENCHMARK(doubling)->ArgsProduct({{manyParts}, {25000, 50000, 100000, 200000}})->Unit(benchmark::kMillisecond);
BENCHMARK(doubling)->ArgsProduct({{deepNesting}, {12500, 25000, 50000, 100000}})->Unit(benchmark::kMillisecond);
#define VOMSG_EVERY_LEVEL(name, part) \
  BENCHMARK_CAPTURE(subtreeAtEveryLevel, name, part)->Arg(10000)->Arg(20000)->Arg(40000)->Unit(benchmark::kMillisecond)
VOMSG_EVERY_LEVEL(message, "Content-Type: message/rfc822\r\n\r\nSubject: x\r\n\r\nx");
VOMSG_EVERY_LEVEL(tnef, "Content-Type: application/ms-tnef\r\n\r\nx\x9F>\"12");
VOMSG_EVERY_LEVEL(uuencodedMessage,
                  "Content-Type: text/plain\r\n\r\nbegin 644 a.eml\r\n/4W5B:F5C=#H@> H*:&D*\r\n`\r\nend");
BENCHMARK(appendAtEveryLevel)->ArgsProduct({{2000, 4000, 8000}, {0, 1}})->Unit(benchmark::kMillisecond);
#define VOMSG_HEAP(name, part) BENCHMARK_CAPTURE(heapPerPart, name, part)->Iterations(1)->Unit(benchmark::kMillisecond)
VOMSG_HEAP(plain, "Content-Type: text/plain\r\n\r\nA small part.");
VOMSG_HEAP(typed,
           "Content-Type: application/pdf; name=\"a.pdf\"\r\nContent-Transfer-Encoding: base64\r\n"
           "Content-Disposition: attachment; filename=\"a.pdf\"\r\n\r\nAAAA");
VOMSG_HEAP(message, "Content-Type: message/rfc822\r\n\r\nSubject: x\r\n\r\nx");
VOMSG_HEAP(tnef, "Content-Type: application/ms-tnef\r\n\r\nx\x9F>\"12");
VOMSG_HEAP(multipart, "Content-Type: multipart/mixed; boundary=c\r\n\r\n--c\r\n\r\nx\r\n--c--");

}  // namespace
