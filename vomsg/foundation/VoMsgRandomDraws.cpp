#include "vomsg/foundation/VoMsgRandomDraws.h"

#include <cstdlib>
#include <mutex>

namespace vomsg::detail {

namespace {

// Ready before any constructor runs: static objects of the host may make messages.
constinit std::mutex gGenerator;

}  // namespace

RandomDraws::RandomDraws() { gGenerator.lock(); }
RandomDraws::~RandomDraws() { gGenerator.unlock(); }

std::uint32_t RandomDraws::next() { return static_cast<std::uint32_t>(lrand48()); }

void RandomDraws::seed(long value) { srand48(value); }

}  // namespace vomsg::detail
