// Header blocks: what the message parser pays for each (the survey), what a caller pays who asks for the fields, and
// what writing anew costs; beside the bare scan of the same lines. The doubling rows hold the nastiest shapes: their
// time for each byte must stay flat.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"
#include "vomsg/header/VoMsgStructuredValue.h"

namespace {

using vomsg::detail::HeaderSurvey;

const std::string kMail =
    "Return-Path: <alice@example.org>\r\n"
    "Received: from mx.example.org (mx.example.org [192.0.2.1])\r\n"
    "\tby mail.example.com (Postfix) with ESMTPS id 4F2A81C0B2\r\n"
    "\tfor <bob@example.com>; Tue,  3 Mar 2026 10:11:12 +0100 (CET)\r\n"
    "Received: from [198.51.100.7] (helo=client)\r\n"
    "\tby mx.example.org with esmtpa (Exim 4.96)\r\n"
    "\tid 1r2x3y-0004Ab-2c; Tue, 03 Mar 2026 10:11:10 +0100\r\n"
    "Message-ID: <7d1f0c2a-5b1e-4f57-9b0e-1a2b3c4d5e6f@example.org>\r\n"
    "Date: Tue, 3 Mar 2026 10:11:09 +0100\r\n"
    "MIME-Version: 1.0\r\n"
    "User-Agent: Mozilla Thunderbird\r\n"
    "From: =?UTF-8?Q?Alice_M=C3=BCller?= <alice@example.org>\r\n"
    "To: Bob Example <bob@example.com>, \"Carol, Sales\" <carol@example.com>\r\n"
    "Cc: team@example.com\r\n"
    "Subject: =?UTF-8?Q?Angebot_f=C3=BCr_M=C3=A4rz?=\r\n"
    "References: <a1b2c3@example.com> <d4e5f6@example.com>\r\n"
    "Content-Type: multipart/mixed; boundary=\"------------0abcDEF1234567890ghijKLM\"\r\n"
    "Content-Language: de-DE\r\n"
    "X-Spam-Status: No, score=-2.1\r\n"
    "\r\n";
const std::string kPart =
    "Content-Type: text/plain; charset=UTF-8\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n"
    "Content-Disposition: attachment; filename=\"report.txt\"\r\n"
    "\r\n";
const std::string kSmallPart = "Content-Type: text/plain\r\n\r\n";

struct Block {
  explicit Block(const std::string& source)
      : text(source), reader(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned>(text.size())) {
    reader.open();
    boundaries.push("------------0abcDEF1234567890ghijKLM");
  }
  std::string text;
  VoMsgMemoryReader reader;
  vomsg::detail::BoundaryTable boundaries;
};

void survey(benchmark::State& state, const std::string& text) {
  Block block(text);
  HeaderSurvey out;
  for (auto _ : state) {
    block.reader.rseek(0, 0);
    vomsg::detail::surveyHeaderBlock(out, block.reader, true, &block.boundaries);
    benchmark::DoNotOptimize(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void fields(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    VoMsgEntityHeader header;
    header.parseSurveyedBlock(text, "us-ascii");
    benchmark::DoNotOptimize(header.countHeaders());
  }
}

void writeAnew(benchmark::State& state, const std::string& text) {
  VoMsgEntityHeader header;
  header.parseSurveyedBlock(text, "us-ascii");
  for (auto _ : state) {
    VoMsgMemoryWriter writer;
    header.writeNewHeaderPart(&writer);
    benchmark::DoNotOptimize(writer.flush());
  }
}

void lineScan(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    std::size_t lines = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    while ((at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) && ++at != end)
      ++lines;
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void structured(benchmark::State& state, const std::string& text) {
  vomsg::detail::StructuredValue value;
  for (auto _ : state) {
    vomsg::detail::parseStructuredValue(value, text, 100);
    benchmark::DoNotOptimize(value);
  }
}

// `state.range(0)` times the same piece.
void doubling(benchmark::State& state, const char* before, const char* piece) {
  VoMsgSetMaxEntityHeaders(0);
  VoMsgSetMaxHeaderAddress(0);
  VoMsgSetMaxHeaderParams(0);
  std::string text = before;
  for (int64_t i = 0; i < state.range(0); ++i) text += piece;
  Block block(text + "\r\n\r\n");
  HeaderSurvey out;
  for (auto _ : state) {
    block.reader.rseek(0, 0);
    vomsg::detail::surveyHeaderBlock(out, block.reader, false, &block.boundaries);
    VoMsgEntityHeader header;
    header.parseSurveyedBlock(text, "us-ascii");
    VoMsgMemoryWriter writer;
    header.writeNewHeaderPart(&writer);
    benchmark::DoNotOptimize(writer.flush());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  VoMsgSetMaxEntityHeaders(-1);
  VoMsgSetMaxHeaderAddress(-1);
  VoMsgSetMaxHeaderParams(-1);
}

BENCHMARK_CAPTURE(survey, mail, kMail);
BENCHMARK_CAPTURE(survey, part, kPart);
BENCHMARK_CAPTURE(survey, smallPart, kSmallPart);
BENCHMARK_CAPTURE(lineScan, mail, kMail);
BENCHMARK_CAPTURE(structured, contentType, "multipart/mixed; boundary=\"------------0abcDEF1234567890ghijKLM\"");
BENCHMARK_CAPTURE(fields, mail, kMail);
BENCHMARK_CAPTURE(writeAnew, mail, kMail);
#define VOMSG_DOUBLING(name, before, piece) \
  BENCHMARK_CAPTURE(doubling, name, before, piece)->Arg(25000)->Arg(50000)->Arg(100000)->Unit(benchmark::kMillisecond)
VOMSG_DOUBLING(fields, "", "X: y\r\n");
VOMSG_DOUBLING(loneCrs, "", "X: y\r");
VOMSG_DOUBLING(contentTypes, "", "Content-Type: a/b; c=d\r\nX: y\r\n");
VOMSG_DOUBLING(parameters, "Content-Type: a/b", ";c=d");
VOMSG_DOUBLING(addresses, "To: a", ", b@c");
VOMSG_DOUBLING(addressFields, "", "To: b@c\r\n");
VOMSG_DOUBLING(continuations, "X: y", "\r\n z");
VOMSG_DOUBLING(encodedWords, "X: y", " =?utf-8?Q?a?=");
VOMSG_DOUBLING(openWords, "X: y", "=?a?q?");
VOMSG_DOUBLING(comments, "Content-Type: a/b;", "(");
VOMSG_DOUBLING(quotes, "To: ", "\"");

}  // namespace
