// Made by tools/make_detect_tables.py from state-machines/EUCTWSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x22222222, 0x00222222, 0x22222222, 0x22220222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x00000000, 0x06000000, 0x00000000, 0x00000000, 0x44444430, 0x11111155, 0x11111111, 0x11111111,
    0x33331311, 0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x33333333, 0x03333333,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x14333011, 0x22111111, 0x10122222, 0x11111000, 0x00101115, 0x00000010,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 0, 1, 2, 2, 2, 3,
    // clang-format on
};

const SMModel EUCTWSMModel = {{3, 7, 2, 15, kClasses}, 7, {3, 7, 2, 15, kStates}, kCharLengths, "x-euc-tw"};
