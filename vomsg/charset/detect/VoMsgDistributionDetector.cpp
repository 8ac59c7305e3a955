// A chunk is run through the machine in strips. The two-byte characters that a strip completes are put side by side and
// then counted all at once, so neither loop has a branch that depends on the text.
//
// A machine's step is short, but each waits for the one before: packed tables cost some 20 cycles a byte. All machines
// that come with the library have at most six states, and then the next states for one byte value fit into one word,
// five bits each, which is found without knowing the state; the step itself is a shift.
#include "vomsg/charset/detect/VoMsgDistributionDetector.h"

#include <algorithm>
#include <array>
#include <new>

#include "vomsg/charset/detect/VoMsgFrequenceTables.h"

namespace vomsg::detail {

class MachineSteps {
 public:
  explicit MachineSteps(const SMModel& model) : mIsShift(largestState(model) < kShiftable) {
    for (unsigned byte = 0; mIsShift && byte < mWords.size(); ++byte) {
      const std::uint32_t byteClass = model.classTable.at(byte);
      std::uint32_t word = model.charLenTable[byteClass] == 2 ? kIsOfTwo : 0;
      for (unsigned state = 0; state <= largestState(model); ++state)
        word |= (model.stateTable.at(state * model.classFactor + byteClass) * kBits) << (state * kBits);
      mWords[byte] = word;
    }
  }

  // Runs `machine` over the bytes; the one before them is `last`. The last two bytes of every two-byte character that
  // is completed go to `chars`, which has room for `length` of them; returns how many. Error and its-me are never left.
  unsigned run(VoMsgCodingStateMachine& machine, char last, const char* data, unsigned length, char* chars) const {
    return mIsShift ? runShifts(machine, last, data, length, chars) : runTables(machine, last, data, length, chars);
  }

 private:
  static constexpr std::uint32_t kBits = 5;
  static constexpr std::uint32_t kShiftable = 6;       // states that fit
  static constexpr std::uint32_t kIsOfTwo = 1u << 30;  // the byte announces a character of two

  // The greatest state that the start leads to; a model's tables end there.
  static std::uint32_t largestState(const SMModel& model) {
    std::uint32_t reached = 1u << VoMsgCodingStateMachine::kStart;
    std::uint32_t largest = VoMsgCodingStateMachine::kItsMe;
    for (std::uint32_t before = 0; before != reached;) {
      before = reached;
      for (std::uint32_t state = 0; state < 16; ++state) {
        if ((reached >> state & 1) == 0) continue;
        largest = std::max(largest, state);
        for (std::uint32_t byteClass = 0; byteClass < model.classFactor; ++byteClass)
          reached |= 1u << model.stateTable.at(state * model.classFactor + byteClass);
      }
    }
    return largest;
  }

  unsigned runShifts(VoMsgCodingStateMachine& machine, char last, const char* data, unsigned length,
                     char* chars) const {
    std::uint32_t state = machine.currentState * kBits;
    std::uint32_t first = machine.currentCharLen == 2 ? kIsOfTwo : 0;  // the word of the character's first byte
    unsigned count = 0;
    for (unsigned i = 0; i < length; ++i) {
      const std::uint32_t word = mWords[static_cast<unsigned char>(data[i])];
      first = state == 0 ? word : first;
      state = (word >> state) & 31;
      chars[2 * count] = last;  // written in any case, kept where a character ends
      chars[2 * count + 1] = data[i];
      count += (state == 0) & ((first & kIsOfTwo) != 0);
      last = data[i];
    }
    machine.currentState = state / kBits;
    machine.currentCharLen = (first & kIsOfTwo) != 0 ? 2 : 0;  // what other length it was matters to nobody
    return count;
  }

  static unsigned runTables(VoMsgCodingStateMachine& machine, char last, const char* data, unsigned length,
                            char* chars) {
    unsigned count = 0;
    for (unsigned i = 0; i < length; ++i) {
      const std::uint32_t state = machine.nextState(static_cast<unsigned char>(data[i]));
      chars[2 * count] = last;
      chars[2 * count + 1] = data[i];
      count += state == VoMsgCodingStateMachine::kStart && machine.currentCharLen == 2;
      last = data[i];
    }
    return count;
  }

  bool mIsShift;
  std::array<std::uint32_t, 256> mWords;
};

}  // namespace vomsg::detail

namespace {
constexpr unsigned kStrip = 1024;
constexpr int kMostCounted = 1 << 30;  // a text of 2 GiB must not overflow the counters
}  // namespace

VoMsgDistributionDetectorSession::VoMsgDistributionDetectorSession(VoMsgCharSetDetector* detector,
                                                                   const VoMsgCodingStateMachine& start)
    : VoMsgDetectorSession(detector), machine(start) {}

VoMsgDistributionDetector::VoMsgDistributionDetector(VoMsgFrequenceTable* frequenceTable,
                                                     const VoMsgCodingStateMachine& machine)
    : machineTemplate(machine.model),
      mSteps(std::make_unique<vomsg::detail::MachineSteps>(*machine.model)),
      table(frequenceTable) {}

VoMsgDistributionDetector::~VoMsgDistributionDetector() = default;

VoMsgDetectorSession* VoMsgDistributionDetector::handleData(const char* data, unsigned length,
                                                            VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto& counted = *static_cast<VoMsgDistributionDetectorSession*>(session);
  VoMsgCodingStateMachine& machine = counted.machine;
  char chars[2 * (kStrip + 1)];  // room for what is written and not kept, too
  while (length > 0) {
    const unsigned strip = std::min(length, kStrip);
    const unsigned number = mSteps->run(machine, counted.lastChar, data, strip, chars);
    counted.lastChar = data[strip - 1];
    if (counted.totalChars < kMostCounted) {
      const VoMsgCharCounts counts = table->countChars(chars, number);
      counted.totalChars += static_cast<int>(counts.total);
      counted.freqChars += static_cast<int>(counts.frequent);
    }
    if (machine.currentState == VoMsgCodingStateMachine::kFailed) {
      session->setState(VoMsgDetectorSession::kNotMe);
      break;
    }
    if (machine.currentState == VoMsgCodingStateMachine::kItsMe) {
      session->setState(VoMsgDetectorSession::kFound);
      break;
    }
    data += strip;
    length -= strip;
  }
  calculateState(counted);
  return session;
}

void VoMsgDistributionDetector::calculateState(VoMsgDistributionDetectorSession& counted) {
  if (counted.getState() == VoMsgDetectorSession::kDetecting && counted.totalChars >= kEnough &&
      getConfidence(&counted) >= kSureThing)
    counted.setState(VoMsgDetectorSession::kFound);
}

const char* VoMsgDistributionDetector::getCharSetName(VoMsgDetectorSession*) { return machineTemplate.model->name; }

VoMsgDetectorSession* VoMsgDistributionDetector::createSession() {
  return new (std::nothrow) VoMsgDistributionDetectorSession(this, machineTemplate);
}

// Without any rare character the ratio is infinite, which is above every typical one. Single precision throughout: the
// decision must be the same on every build.
float VoMsgDistributionDetector::getConfidence(VoMsgDetectorSession* session) {
  if (!session) return 0.0f;
  const auto& counted = *static_cast<VoMsgDistributionDetectorSession*>(session);
  if (counted.totalChars <= 0) return 0.0f;
  if (counted.freqChars == counted.totalChars) return 0.99f;
  float ratio = static_cast<float>(counted.freqChars) / static_cast<float>(counted.totalChars - counted.freqChars);
  ratio = ratio / table->typicalRatio;
  return ratio >= 1.0f ? 0.99f : 0.01f;
}
