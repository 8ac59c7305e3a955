// The full-width forms of the half-width kana, as JIS X 0208 codes: entry k belongs to the byte 0xA1 + k of Shift_JIS,
// so that 0xB1, half-width A, gives 0x2522.
#pragma once

#include <array>
#include <cstdint>

inline constexpr unsigned kFirstKana = 0xA1;
inline constexpr unsigned kLastKana = 0xDF;
inline constexpr unsigned kVoicedMark = 0xDE;
inline constexpr unsigned kSemiVoicedMark = 0xDF;

extern const std::array<std::uint16_t, kLastKana - kFirstKana + 1> gFullWidthKana;
