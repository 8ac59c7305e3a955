// Made by tools/make_detect_tables.py from state-machines/GB18030SMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x11111111, 0x00111111, 0x11111111, 0x11110111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x00000001, 0x00000000, 0x00000000, 0x00000000, 0x22222220, 0x33333322, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x02222222,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11111301, 0x00112222,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 1, 2, 0,
    // clang-format on
};

const SMModel GB18030SMModel = {{3, 7, 2, 15, kClasses}, 4, {3, 7, 2, 15, kStates}, kCharLengths, "GB18030"};
