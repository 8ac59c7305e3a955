// Made by tools/make_detect_tables.py from state-machines/UCS2LESMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x00000000, 0x00200100, 0x00000000, 0x00003000, 0x00000000, 0x00333330, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x54000000,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11346766, 0x22221111, 0x12155522, 0x66151555, 0x15558867, 0x55111555, 0x00151555,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    2, 2, 2, 2, 2, 2,
    // clang-format on
};

const SMModel UCS2LESMModel = {{3, 7, 2, 15, kClasses}, 6, {3, 7, 2, 15, kStates}, kCharLengths, "UTF-16LE"};
