// Made by tools/make_detect_tables.py from state-machines/Big5SMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x11111111, 0x00111111, 0x11111111, 0x11110111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x12222222,
    0x44444444, 0x44444444, 0x44444444, 0x44444444, 0x33333334, 0x33333333, 0x33333333, 0x33333333,
    0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x03333333,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11113001, 0x12222211, 0x00000001,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 1, 1, 2, 0,
    // clang-format on
};

const SMModel Big5SMModel = {{3, 7, 2, 15, kClasses}, 5, {3, 7, 2, 15, kStates}, kCharLengths, "Big5"};
