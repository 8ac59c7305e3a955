// Made by tools/make_detect_tables.py from state-machines/SJISSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x11111111, 0x00111111, 0x11111111, 0x11110111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x12222222,
    0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x33333333, 0x44433333, 0x44444444, 0x00044444,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11113001, 0x22221111, 0x00001122,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 1, 1, 2, 0, 0,
    // clang-format on
};

const SMModel SJISSMModel = {{3, 7, 2, 15, kClasses}, 6, {3, 7, 2, 15, kStates}, kCharLengths, "Shift_JIS"};
