// Bytes per second of each converter for 1 and 8 MB, which must be the same, and beside it ICU's on the same text,
// which goes through UTF-16. Yardstick: a memcpy.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/charset/convert/VoMsgICUConverter.h"

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

// Lines as people write them: mostly their own script, some ASCII, CR LF.
constexpr char kJapanese[] =
    "いつもお世話になっております。先日ご依頼いただきました資料を添付いたしますので、ご確認ください。\r\n"
    "会議は10月12日(木)の午後3時から、東京本社のA会議室で行います。 URL: http://www.example.jp/\r\n";
constexpr char kChinese[] =
    "您好！附件是上次会议的记录，请查收。如有问题，请随时与我联系。\r\n"
    "会议将于10月12日下午3点在北京总部A会议室举行。 URL: http://www.example.cn/\r\n";
constexpr char kTaiwan[] =
    "您好！附件是上次會議的記錄，請查收。如有問題，請隨時與我聯絡。\r\n"
    "會議將於10月12日下午3點在台北總公司A會議室舉行。 URL: http://www.example.tw/\r\n";
constexpr char kGerman[] =
    "Sehr geehrte Damen und Herren, anbei die gewünschten Unterlagen für die Prüfung der Verträge.\r\n";
constexpr char kRussian[] = "Добрый день! Во вложении протокол вчерашнего совещания, проверьте, пожалуйста.\r\n";

std::string converted(VoMsgCharsetConverter* converter, std::string text) {
  std::string out;
  if (!converter || converter->convert(out, text) != kVoSuccess) std::abort();
  return out;
}

std::string textIn(const char* charset, const char* sample, std::size_t size) {
  std::string text;
  while (text.size() < size) text += sample;
  if (std::strcmp(charset, "utf-8") == 0) return text;
  // HZ is written by way of GB2312: ICU's leaves its mode open.
  auto* factory = VoMsgConverterFactory::getInstance();
  const bool isHz = std::strcmp(charset, "hz-gb-2312") == 0;
  std::unique_ptr<VoMsgCharsetConverter> first(factory->createConverter(isHz ? "gb2312" : charset, "utf-8", 1, '?'));
  text = converted(first.get(), text);
  if (!isHz) return text;
  std::unique_ptr<VoMsgCharsetConverter> second(factory->createConverter(charset, "gb2312", 1, '?'));
  return converted(second.get(), text);
}

void convertAll(benchmark::State& state, VoMsgCharsetConverter& converter, std::string text) {
  std::string out;
  for (auto _ : state)
    if (converter.convert(out, text) != kVoSuccess) state.SkipWithError("conversion failed");
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void own(benchmark::State& state, const char* from, const char* to, const char* sample) {
  std::unique_ptr<VoMsgCharsetConverter> converter(
      VoMsgConverterFactory::getInstance()->createConverter(to, from, 1, '?'));
  convertAll(state, *converter, textIn(from, sample, static_cast<std::size_t>(state.range(0)) * kMegabyte));
}

void icu(benchmark::State& state, const char* from, const char* to, const char* sample) {
  VoMsgICUConverter converter(to, from, 1, '?');
  convertAll(state, converter, textIn(from, sample, static_cast<std::size_t>(state.range(0)) * kMegabyte));
}

constexpr struct {
  const char *from, *to, *sample;
} kPairs[] = {
    {"gb2312", "utf-8", kChinese},
    {"utf-8", "gb2312", kChinese},
    {"gb2312", "hz-gb-2312", kChinese},
    {"hz-gb-2312", "gb2312", kChinese},
    {"hz-gb-2312", "utf-8", kChinese},
    {"big5", "utf-8", kTaiwan},
    {"utf-8", "big5", kTaiwan},
    {"iso-8859-1", "iso-8859-15", kGerman},
    {"iso-8859-5", "utf-8", kRussian},
    {"utf-8", "iso-8859-5", kRussian},
    {"iso-2022-jp", "euc-jp", kJapanese},
    {"euc-jp", "iso-2022-jp", kJapanese},
    {"iso-2022-jp", "Shift_jis", kJapanese},
    {"Shift_jis", "iso-2022-jp", kJapanese},
    {"Shift_jis", "euc-jp", kJapanese},
    {"euc-jp", "Shift_jis", kJapanese},
    {"iso-2022-jp", "us-ascii", kJapanese},
    {"iso-2022-jp", "utf-8", kJapanese},
    {"utf-8", "iso-2022-jp", kJapanese},
};

void yardstick(benchmark::State& state) {
  const std::string text = textIn("utf-8", kJapanese, 8 * kMegabyte);
  std::string out(text.size(), '\0');
  for (auto _ : state) {
    std::memcpy(out.data(), text.data(), text.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(yardstick)->Name("memcpy");

[[maybe_unused]] const bool kRegistered = [] {
  for (const auto& pair : kPairs) {
    const std::string name = std::string(pair.from) + " to " + pair.to;
    benchmark::RegisterBenchmark((name + ", own, MB").c_str(), own, pair.from, pair.to, pair.sample)->Arg(1)->Arg(8);
    benchmark::RegisterBenchmark((name + ", ICU, MB").c_str(), icu, pair.from, pair.to, pair.sample)->Arg(8);
  }
  return true;
}();

}  // namespace
