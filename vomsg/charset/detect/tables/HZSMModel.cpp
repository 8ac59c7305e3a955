// Made by tools/make_detect_tables.py from state-machines/HZSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x00000001, 0x00000000, 0x00000000, 0x00001000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x02504000,
    0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11000310, 0x22221111, 0x14001122, 0x14551615, 0x14144414, 0x00000024,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 0, 0, 0, 0, 0,
    // clang-format on
};

const SMModel HZSMModel = {{3, 7, 2, 15, kClasses}, 6, {3, 7, 2, 15, kStates}, kCharLengths, "HZ-GB-2312"};
