// The result codes of the library. Nearly every operation returns one; 0x00010000 is success and every
// failure has bit 31 set, so callers ask voFailed() and never compare with zero.
#pragma once

#include <cstdint>

using VoErrorCode = std::uint32_t;

inline constexpr VoErrorCode kVoSuccess = 0x00010000u;

// The 0x81010000 family: general errors.
inline constexpr VoErrorCode kVoConverterMissing =
    0x81010001u;  // a charset converter could not be created or could not decode
inline constexpr VoErrorCode kVoNoMemory =
    0x81010005u;  // no memory, no stream, a message read twice, or a null output pointer
inline constexpr VoErrorCode kVoRestructureFailed = 0x81010007u;  // an entity could not be restructured
inline constexpr VoErrorCode kVoBadArgument =
    0x81010008u;  // a required argument is null or invalid; writing onto the own source
inline constexpr VoErrorCode kVoBadFormat = 0x8101000Au;  // wrong signature or format (TNEF, MAPI)
inline constexpr VoErrorCode kVoOutOfRange =
    0x8101000Cu;  // an index is out of range, or an insertion or removal failed
inline constexpr VoErrorCode kVoWrapFailed = 0x81010018u;   // a message could not be wrapped for a disclaimer
inline constexpr VoErrorCode kVoReadFailed = 0x8101001Au;   // no reader, or the data ended too early
inline constexpr VoErrorCode kVoWriteFailed = 0x8101001Bu;  // no writer, or a write was refused

// The 0x81011000 family: errors of messages and entities.
inline constexpr VoErrorCode kVoNoSuchHeader = 0x81011000u;  // the header field or parameter does not exist
inline constexpr VoErrorCode kVoNotSupported =
    0x81011001u;  // this entity or this encoding does not support the operation
inline constexpr VoErrorCode kVoDecodeFailed = 0x81011002u;  // encoded input could not be decoded
inline constexpr VoErrorCode kVoEncodeFailed = 0x81011003u;  // a value could not be encoded
inline constexpr VoErrorCode kVoNoChildren = 0x81011004u;    // the entity cannot hold children
inline constexpr VoErrorCode kVoBadEncoding = 0x81011005u;   // the transfer encoding is not supported
inline constexpr VoErrorCode kVoNoContent =
    0x81011006u;  // content asked of a multipart, of a missing or of an empty body
inline constexpr VoErrorCode kVoContentHeaderFailed =
    0x81011007u;  // Content-Type or Content-Disposition could not be set
inline constexpr VoErrorCode kVoContentParameterFailed =
    0x81011008u;                                                     // a parameter of a content header could not be set
inline constexpr VoErrorCode kVoEncodingHeaderFailed = 0x81011009u;  // Content-Transfer-Encoding could not be set
inline constexpr VoErrorCode kVoTnefMalformed = 0x8101100Au;         // TNEF data is short or malformed
inline constexpr VoErrorCode kVoMalformed = 0x8101100Bu;          // malformed message: too many or conflicting headers
inline constexpr VoErrorCode kVoPartialMessage = 0x8101100Cu;     // message/partial or message/external-body
inline constexpr VoErrorCode kVoConversionFailed = 0x8101100Du;   // charset conversion failed
inline constexpr VoErrorCode kVoDisclaimerRefused = 0x8101100Fu;  // a disclaimer cannot be put there
inline constexpr VoErrorCode kVoDisclaimerCopyFailed = 0x81011010u;  // the disclaimer could not be copied

// True for every failure. The overload for int serves the content getters, which report through an int&.
constexpr bool voFailed(VoErrorCode code) noexcept { return (code & 0x80000000u) != 0; }
constexpr bool voFailed(int code) noexcept { return code < 0; }
