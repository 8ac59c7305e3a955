// vomsg decode and vomsg encode: single streams through the library's transfer encodings.

#include <algorithm>
#include <memory>

#include "cli/Command.h"
#include "cli/Failure.h"
#include "cli/Input.h"
#include "cli/Output.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoCompressedRtf.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace cli {

namespace {

struct Options {
  std::string as, in, out, name;
};

std::uint32_t littleEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// A compressed RTF stream has a header of 16 bytes: the size of what follows it and the last three words of the header,
// the size of the text, how it is stored, and a checksum. What the data expands to beyond the text is its end mark.
VoErrorCode decodeRtf(OutputFile& target, VoMsgBufferedReader& source) {
  constexpr std::uint32_t kCompressed = 0x75465A4C, kPlain = 0x414C454D;
  std::string header(16, '\0');
  if (source.read(header.data(), 16) < 16) return kVoDecodeFailed;
  const std::uint32_t size = littleEndian(header, 0), textSize = littleEndian(header, 4);
  const std::uint32_t kind = littleEndian(header, 8);
  const std::uint32_t left = source.getSize() - 16;
  if ((kind != kCompressed && kind != kPlain) || size < 12) return kVoDecodeFailed;
  VoMsgMemoryResource text(0u, nullptr, nullptr);
  if (kind == kCompressed) {
    const VoErrorCode code = voDecodeLZFu(&text, &source, static_cast<long>(std::min(left, size - 12)));
    if (voFailed(code)) return code;
  }
  const std::unique_ptr<VoMsgBufferedReader> expanded(text.getInputStream(VoMsgResourceLocator::dataPart));
  const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(VoMsgResourceLocator::dataPart));
  if (!expanded || !writer) return kVoWriteFailed;
  const std::uint32_t available = kind == kCompressed ? expanded->getSize() : std::min(left, size - 12);
  return writer->copyFrom(kind == kCompressed ? expanded.get() : &source, std::min(available, textSize));
}

VoErrorCode decodeAs(const std::string& encoding, OutputFile& target, VoMsgBufferedReader& source) {
  const long size = static_cast<long>(source.getSize());
  if (encoding == "base64") return voDecodeBase64(&target, &source, size);
  if (encoding == "qp") return voDecodeQuotedPrintable(&target, &source, size);
  if (encoding == "uuencode") return voDecodeUUEncode(&target, &source, size);
  if (encoding == "binhex") return voDecodeBinHex(&target, &source);
  return decodeRtf(target, source);
}

VoErrorCode encodeAs(const std::string& encoding, VoMsgBufferedWriter& target, const VoMsgResourceLocator& source) {
  if (encoding == "base64") return voEncodeBase64(&target, &source);
  if (encoding == "qp") return voEncodeQuotedPrintable(&target, &source);
  if (encoding == "uuencode") return voEncodeUUEncode(&target, &source);
  return voEncodeBinHex(&target, &source);
}

int decode(const Options& options) {
  const std::unique_ptr<VoMsgResourceLocator> input = openInput(options.in);
  const std::unique_ptr<VoMsgBufferedReader> reader(input->getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) throw failureOf(kVoReadFailed, options.in);
  OutputFile output(options.out);
  const VoErrorCode code = decodeAs(options.as, output, *reader);
  if (voFailed(code) && code != kVoWriteFailed) throw failureOf(code, options.in);
  output.commit();
  return kOk;
}

int encode(const Options& options) {
  const std::unique_ptr<VoMsgResourceLocator> input = openInput(options.in);
  std::string name = options.name;
  if (name.empty() && options.in != "-") name = options.in.substr(options.in.rfind('/') + 1);
  input->setResourceName(name.c_str(), "utf-8");
  OutputFile output(options.out);
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(output.getOutputStream(VoMsgResourceLocator::dataPart));
    const VoErrorCode code = encodeAs(options.as, *writer, *input);
    if (voFailed(code) && code != kVoWriteFailed) throw failureOf(code, options.in);
  }
  output.commit();
  return kOk;
}

void addFiles(CLI::App& app, Options& options, const std::vector<std::string>& encodings) {
  app.add_option("--as", options.as, "The encoding")->required()->check(CLI::IsMember(encodings));
  app.add_option("IN", options.in, "What to read; - for the standard input")->required();
  app.add_option("OUT", options.out, "The result; - for the standard output")->required();
}

const Command kDecode("decode", "Decode a single encoded stream", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  addFiles(app, *options, {"uuencode", "binhex", "rtf", "base64", "qp"});
  return [options] { return decode(*options); };
});

const Command kEncode("encode", "Encode a file as a single stream", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  addFiles(app, *options, {"uuencode", "binhex", "base64", "qp"});
  app.add_option("--name", options->name, "The file name in a uuencode or BinHex stream, instead of IN's");
  return [options] { return encode(*options); };
});

}  // namespace

}  // namespace cli
