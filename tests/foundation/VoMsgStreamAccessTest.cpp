#include "vomsg/foundation/VoMsgStreamAccess.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"

namespace {

using vomsg::detail::copyRange;
using vomsg::detail::moveTo;
using vomsg::test::LimitedWriter;

TEST(VoMsgStreamAccess, CopiesAnyRangeOfAnySource) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += static_cast<char>(i * 5 >> 2);
  std::vector<unsigned char> block(text.begin(), text.end());
  const vomsg::test::ScratchDirectory dir;
  const std::string path = dir.write("file", text);
  VoMsgMemoryReader memory(block.data(), static_cast<unsigned>(block.size()));
  VoMsgFileReader small(path.c_str(), 100), large(path.c_str(), 0);
  std::minstd_rand random(3);
  for (VoMsgBufferedReader* const reader :
       {static_cast<VoMsgBufferedReader*>(&memory), static_cast<VoMsgBufferedReader*>(&small),
        static_cast<VoMsgBufferedReader*>(&large)}) {
    ASSERT_TRUE(reader->open());
    for (int i = 0; i < 2000; ++i) {
      const std::size_t offset = random() % 3010, size = random() % (random() % 4 ? 40 : 3010);
      const bool inside = size == 0 || offset + size <= text.size();
      LimitedWriter writer(SIZE_MAX, 64);
      ASSERT_EQ(copyRange(*reader, writer, offset, size), inside ? kVoSuccess : kVoReadFailed);
      ASSERT_TRUE(writer.flush());
      ASSERT_EQ(writer.text, offset <= text.size() ? text.substr(offset, size) : "");
      const std::size_t target = random() % 3004;
      const unsigned before = reader->getOffset();
      ASSERT_EQ(moveTo(*reader, target), target <= text.size());
      ASSERT_EQ(reader->getOffset(), target <= text.size() ? target : before);
    }
    LimitedWriter full(99, 10);
    EXPECT_EQ(copyRange(*reader, full, 0, 100), kVoWriteFailed);
    EXPECT_EQ(copyRange(*reader, full, ~std::uint64_t{0}, 1), kVoReadFailed);
    EXPECT_FALSE(moveTo(*reader, std::uint64_t{1} << 32));
  }
}

}  // namespace
