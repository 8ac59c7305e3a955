// Every operation while memory or descriptors run out, at one request after the other: it answers with a code or with
// the whole result, leaks nothing, and a message whose operation failed is what it was before and can still be written.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <new>

#include "tests/support/MessageFixture.h"
#include "tests/sweep/Shortage.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"

namespace vomsg::test {
namespace {

// Requests tried of each operation on each message, and in each of the two ways to fail.
constexpr long kTries = 10;

enum class Target { root, firstLeaf, lastLeaf, lastInside };  // inside: of a TNEF stream, or of a text

bool isInside(const VoMsgEntity& entity) {
  return entity.getEntityTypeID() == kVoEntityTnef || entity.getEntityTypeID() == kVoEntityEmbeded;
}

// What a call said, as it said it: copies are made when memory is there again.
struct Answer {
  bool failed = false;
  const char* text = nullptr;
  const VoMsgResourceLocator* resource = nullptr;
  std::string value() const { return (text ? text : "") + bytesOf(resource); }
};

// The arguments are made before the shortage begins.
struct Arguments {
  Arguments()
      : content(const_cast<char*>("new\r\ncontent \xC3\xA4"), 15, 1, "n\xC3\xA4me.txt", "utf-8"),
        disclaimer(new VoMsgMemoryResource(const_cast<char*>("disclaim \xC3\xA4\r\n"), 13, 1, nullptr, nullptr)),
        target(0u, nullptr, nullptr),
        part(new VoMsgMimeEntity),
        field(new VoMsgHeaderField("X-Field", "value")) {
    part->setContent(&content, "text/plain", "base64");
  }
  VoMsgMemoryResource content;
  std::unique_ptr<VoMsgMemoryResource> disclaimer;
  VoMsgMemoryResource target;
  std::unique_ptr<VoMsgMimeEntity> part;
  std::unique_ptr<VoMsgHeaderField> field;
};

Answer content(VoMsgEntity& entity, const VoMsgResourceLocator* (*get)(VoMsgEntity&, int&)) {
  int result = 0;
  const VoMsgResourceLocator* const resource = get(entity, result);
  return {resource == nullptr || voFailed(static_cast<VoErrorCode>(result)), nullptr, resource};
}

struct Operation {
  const char* name;
  Target target;
  Answer (*run)(VoMsgMailMessage& message, VoMsgEntity& entity, Arguments& with);
};

const Operation kOperations[] = {
    {"getRawContent", Target::firstLeaf,
     [](auto&, auto& e, auto&) {
       return content(e, [](VoMsgEntity& of, int& result) { return of.getRawContent(result, nullptr); });
     }},
    {"setFileName inside", Target::lastInside,
     [](auto&, auto& e, auto&) { return Answer{!isInside(e) || voFailed(e.setFileName("another name.txt"))}; }},
    {"setContentType inside", Target::lastInside,
     [](auto&, auto& e, auto&) { return Answer{!isInside(e) || voFailed(e.setContentType("text/x-new"))}; }},
    {"setContent inside", Target::lastInside,
     [](auto&, auto& e, auto& with) {
       return Answer{!isInside(e) || voFailed(e.setContent(&with.content, "text/x-new", nullptr))};
     }},
    {"setTextContent in a stream", Target::lastInside,
     [](auto&, auto& e, auto& with) {
       return Answer{e.getEntityTypeID() != kVoEntityTnef ||
                     voFailed(e.setTextContent(&with.content, "text/x-new", nullptr))};
     }},
    {"replaceTextContent in a stream", Target::lastInside,
     [](auto&, auto& e, auto& with) {
       return Answer{e.getEntityTypeID() != kVoEntityTnef ||
                     voFailed(e.replaceTextContent(&with.content, nullptr, VoMsgReplaceOption{}))};
     }},
    {"removeChildEntityAt inside", Target::lastInside,
     [](auto&, auto& e, auto&) {
       return Answer{!isInside(e) || voFailed(e.getParentEntity()->removeChildEntityAt(0))};
     }},
    {"split", Target::root,
     [](auto& m, auto&, auto&) {
       const std::unique_ptr<VoMsgMailMessage> copy(m.split());
       return Answer{copy == nullptr};
     }},
    {"writeTo", Target::root,
     [](auto& m, auto&, auto& with) {
       return Answer{voFailed(m.writeTo(&with.target)), nullptr, &with.target};
     }},
};

constexpr const char* kMessages[] = {
    "alternative.eml",      "embedded_behind_parts.eml",
    "embedded_blocks.eml",  "encoded_word_names.eml",
    "group_addresses.eml",  "lf_only.eml",
    "mixed_base64.eml",     "nested_base64.eml",
    "nested_eml.eml",       "nested_plain.eml",
    "quoted_printable.eml", "rfc2231_names.eml",
    "signed.eml",           "winmail.eml",
};

std::vector<std::pair<std::string, std::string>> messages() {
  const auto samples = sampleMessages();
  const std::map<std::string, std::string> all(samples.begin(), samples.end());
  std::vector<std::pair<std::string, std::string>> chosen;
  for (const char* name : kMessages) chosen.emplace_back(name, all.at(name));
  std::ifstream stream(VOMSG_TEST_DATA "/../../fuzz/seeds/tnef/nested", std::ios::binary);
  chosen.emplace_back("bare TNEF stream", std::string(std::istreambuf_iterator<char>(stream), {}));
  return chosen;
}

// A message over `bytes`, or over the file at `path` when there is one.
struct Sample {
  std::string name, bytes, path;

  VoMsgResourceLocator* resource() const {
    if (!path.empty()) return new VoMsgFileResource(path.c_str(), nullptr, nullptr);
    return new VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), nullptr,
                                   nullptr);
  }
  std::unique_ptr<VoMsgMailMessage> make() const {
    if (bytes.compare(0, 4, "\x78\x9F\x3E\x22") == 0) return std::make_unique<VoMsgTnefMessage>();
    return std::make_unique<VoMsgRfc822Message>();
  }
  std::unique_ptr<VoMsgMailMessage> read() const {
    auto message = make();
    message->readFrom(resource());
    return message;
  }
};

VoMsgEntity& targetOf(VoMsgMailMessage& message, Target target) {
  VoMsgEntity* found = &message;
  for (VoMsgEntity* entity : entitiesOf(message)) {
    if (target == Target::root) break;
    if (entity->hasChildEntity() || entity->isMultipartEntity()) continue;
    if (target == Target::lastInside && !isInside(*entity)) continue;
    found = entity;
    if (target == Target::firstLeaf) break;
  }
  return *found;
}

const char* orNone(const char* text) { return text ? text : "(none)"; }

// Everything that can be seen of a message.
std::string stateOf(VoMsgMailMessage& message) {
  std::string state = written(message) + "\n";
  for (VoMsgEntity* entity : entitiesOf(message)) {
    state += std::to_string(entity->getEntityTypeID()) + ' ' + std::to_string(entity->isModified());
    for (unsigned i = 0; i < entity->countHeaders(); ++i) {
      const VoMsgHeaderField* const field = entity->getHeaderAt(i);
      state += std::string("\n ") + orNone(field->getName()) + ": " + orNone(field->getRawFieldValue());
    }
    state += '\n' + (entity->hasChildEntity() || entity->isMultipartEntity() ? "" : contentOf(*entity)) + '\n';
  }
  return state;
}

// The numbers of the requests that are tried: the first ones, then evenly spread.
std::vector<long> requestsTried(long count) {
  std::vector<long> numbers;
  for (long i = 0; i < std::min(count, kTries); ++i) numbers.push_back(count <= kTries ? i : i * count / kTries);
  return numbers;
}

// Everything drawn at random comes out the same in each run.
void drawAlike() { srand48(4711); }

class Sweep {
 public:
  Sweep(const Sample& sample, Scarce what) : mSample(sample), mWhat(what), mBefore(stateOf(*sample.read())) {}

  void run(const Operation& operation) {
    SCOPED_TRACE(mSample.name + ", " + operation.name);
    std::string after;
    long requests = 0;
    Answer whole;
    std::string value;
    {
      const auto message = mSample.read();
      VoMsgEntity& entity = targetOf(*message, operation.target);
      Arguments with;
      drawAlike();
      {
        const Demand demand(mWhat);
        whole = operation.run(*message, entity, with);
        requests = demand.count();
      }
      value = whole.value();
      after = stateOf(*message);
    }
    if (whole.failed) return;  // it does not fit this message
    forEachTry(requests, [&](long number, bool lasting) {
      const auto message = mSample.read();
      VoMsgEntity& entity = targetOf(*message, operation.target);
      Arguments with;
      drawAlike();
      Answer answer;
      {
        const Shortage shortage(mWhat, number, lasting);
        answer = operation.run(*message, entity, with);
      }
      if (answer.failed) {
        expect(stateOf(*message), mBefore, "what failed has changed nothing");
      } else {
        expect(answer.value(), value, "what succeeded is whole");
        expect(stateOf(*message), after, "what succeeded is whole");
      }
    });
  }

 private:
  // The first thing that goes wrong with an operation is told, and then the next operation has its turn.
  template <class Value>
  void expect(const Value& is, const Value& wanted, const char* what) {
    EXPECT_EQ(is, wanted) << what;
    mHasFailed = mHasFailed || is != wanted;
  }

  template <class Try>
  void forEachTry(long requests, Try attempt) {
    mHasFailed = false;
    attempt(requests, false);  // beyond the last: all goes well, and what is made once and kept is made
    for (const long number : requestsTried(requests)) {
      for (const bool lasting : {false, true}) {
        SCOPED_TRACE("request " + std::to_string(number) + " of " + std::to_string(requests) +
                     (lasting ? " and all after it" : " alone"));
        const std::size_t alive = blocksAlive();
        attempt(number, lasting);
        if (!mHasFailed) expect(blocksAlive(), alive, "nothing leaks");
        if (mHasFailed) return;
      }
    }
  }

  const Sample& mSample;
  Scarce mWhat;
  std::string mBefore;
  bool mHasFailed = false;
};

// Boundaries are pushed while a message is read: a push that fails leaves a table that still knows the others.
TEST(Shortage, ABoundaryThatFindsNoRoom) {
  for (int there = 0; there < 70; ++there) {
    for (long number = 0; number < 4; ++number) {
      vomsg::detail::BoundaryTable table;
      const auto name = [](int i) { return "boundary number " + std::to_string(i); };
      for (int i = 0; i < there; ++i) table.push(name(i));
      bool failed = false;
      {
        const std::string last = name(there);
        const Shortage shortage(Scarce::memory, number, true);
        try {
          table.push(last);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
      }
      ASSERT_EQ(table.size(), static_cast<std::size_t>(there + !failed));
      for (int i = 0; i <= there; ++i) {
        const auto match = table.match("--" + name(i));
        const bool isKnown = i < there || !failed;
        ASSERT_EQ(match.type, isKnown ? kVoBoundaryDelimiter : kVoBoundaryNone) << there << ' ' << i;
        ASSERT_TRUE(!isKnown || match.depth == static_cast<std::size_t>(i));
      }
      table.push("after");
      EXPECT_EQ(table.match("--after").depth, table.size() - 1);
    }
  }
}

class ShortageSweep : public ::testing::TestWithParam<int> {};

TEST_P(ShortageSweep, MemoryRunsOut) {
  const auto [name, bytes] = messages()[static_cast<std::size_t>(GetParam())];
  const Sample sample{name, bytes, {}};
  Sweep sweep(sample, Scarce::memory);
  for (const Operation& operation : kOperations) sweep.run(operation);
}

TEST_P(ShortageSweep, DescriptorsRunOut) {
  const auto [name, bytes] = messages()[static_cast<std::size_t>(GetParam())];
  const std::string path = ::testing::TempDir() + "vomsg-sweep-" + std::to_string(GetParam());
  std::ofstream(path, std::ios::binary) << bytes;
  const Sample sample{name, bytes, path};
  Sweep sweep(sample, Scarce::descriptors);
  for (const Operation& operation : kOperations) sweep.run(operation);
  std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(Messages, ShortageSweep, ::testing::Range(0, 15), [](const auto& info) {
  std::string name = messages()[static_cast<std::size_t>(info.param)].first;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == ' ' || c == '.'; }, '_');
  return name;
});

}  // namespace
}  // namespace vomsg::test
