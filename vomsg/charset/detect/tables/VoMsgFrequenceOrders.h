// How frequent the characters of the two-byte encodings are: the rank (0 the most frequent) of the character with order
// 0, 1, 2, ... The order of a character is that of its encoding's table class.
#pragma once

#include <cstdint>

extern const std::int16_t gBig5FrequenceOrder[5376];
extern const std::int16_t gEUCJPFrequenceOrder[4368];
extern const std::int16_t gEUCKRFrequenceOrder[2352];
extern const std::int16_t gEUCTWFrequenceOrder[8102];  // from 5376 on 0x7FFF: never frequent
extern const std::int16_t gGB2312FrequenceOrder[3760];
extern const std::int16_t gSJISFrequenceOrder[4368];
