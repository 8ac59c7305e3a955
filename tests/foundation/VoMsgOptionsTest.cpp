#include "vomsg/foundation/VoMsgOptions.h"

#include <gtest/gtest.h>

namespace {

TEST(VoMsgOptions, NegativeLimitRestoresTheDefaultAndZeroStays) {
  EXPECT_TRUE(MaxEntityHeaders == 100 && MaxHeaderAddress == 100 && MaxHeaderParams == 100);
  for (const int value : {7, 0, -5}) {
    VoMsgSetMaxEntityHeaders(value);
    VoMsgSetMaxHeaderAddress(value);
    VoMsgSetMaxHeaderParams(value);
    for (const int limit : {MaxEntityHeaders, MaxHeaderAddress, MaxHeaderParams})
      EXPECT_EQ(limit, value < 0 ? 100 : value);
  }
}

TEST(VoMsgOptions, BitsAreOnlyEverAdded) {
  const int before = VoMsgExtraOption;
  VoMsgExtraOption = 0;
  VoMsgSetEncodeDot(2);
  EXPECT_EQ(VoMsgExtraOption, 0);
  VoMsgSetEncodeDot(3);
  EXPECT_EQ(VoMsgExtraOption, kVoOptionEncodeDot);
  VoMsgSetExtraOption(kVoOptionRawSubject);
  VoMsgSetExtraOption(0);
  VoMsgSetEncodeDot(0);
  EXPECT_EQ(VoMsgExtraOption, kVoOptionEncodeDot | kVoOptionRawSubject);
  VoMsgExtraOption = before;
}

}  // namespace
