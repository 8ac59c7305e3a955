#include "vomsg/tnef/VoTnefInteger.h"

#include <memory>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace {

std::uint32_t readInteger(VoMsgBufferedReader* source, unsigned size) {
  char bytes[4] = {};
  if (source) source->read(bytes, size);
  return vomsg::detail::littleEndian(reinterpret_cast<const unsigned char*>(bytes), size);
}

unsigned short writeInteger(VoMsgBufferedWriter* writer, std::uint32_t value, unsigned size) {
  char bytes[4];
  for (unsigned i = 0; i < size; ++i) bytes[i] = static_cast<char>(value >> (8 * i) & 0xFF);
  writer->write(bytes, size);
  return _tnefCalcCheckSum(bytes, size);
}

}  // namespace

unsigned int _tnefGetInt32(VoMsgBufferedReader* source) { return readInteger(source, 4); }

unsigned short _tnefGetInt16(VoMsgBufferedReader* source) {
  return static_cast<unsigned short>(readInteger(source, 2));
}

void _tnefSetInt32(VoMsgBufferedWriter* writer, unsigned int value) {
  if (writer) writeInteger(writer, value, 4);
}

void _tnefSetInt16(VoMsgBufferedWriter* writer, unsigned short value) {
  if (writer) writeInteger(writer, value, 2);
}

void _tnefSetInt32(VoMsgBufferedWriter* writer, unsigned int value, unsigned short& checkSum) {
  if (writer) checkSum = static_cast<unsigned short>(checkSum + writeInteger(writer, value, 4));
}

void _tnefSetInt16(VoMsgBufferedWriter* writer, unsigned short value, unsigned short& checkSum) {
  if (writer) checkSum = static_cast<unsigned short>(checkSum + writeInteger(writer, value, 2));
}

unsigned short _tnefCalcCheckSum(const char* data, unsigned int length) {
  if (!data) return 0;
  unsigned sum = 0;
  for (unsigned i = 0; i < length; ++i) sum += static_cast<unsigned char>(data[i]);
  return static_cast<unsigned short>(sum);
}

unsigned short _tnefCalcCheckSum(const VoMsgResourceLocator* resource) {
  if (!resource) return 0;
  const std::unique_ptr<VoMsgBufferedReader> reader(resource->getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader || !reader->open()) return 0;
  char piece[1024];
  unsigned sum = 0;
  while (const unsigned n = reader->read(piece, sizeof piece)) sum += _tnefCalcCheckSum(piece, n);
  reader->close();
  return static_cast<unsigned short>(sum);
}
