// vomsg diff: which fields and parts of two messages differ.

#include <memory>
#include <optional>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "cli/TreeText.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace cli {

namespace {

struct Options {
  std::string a, b;
};

// What is compared of an entity: each field as it is meant, and its content.
struct Part {
  unsigned number;
  std::string kind;
  std::vector<std::string> fields;
  std::optional<std::string> content;  // of a leaf: size and checksum
};

std::vector<std::string> fieldsOf(VoMsgEntity* entity) {
  std::vector<std::string> fields;
  for (unsigned i = 0; i < entity->countHeaders(); ++i) {
    VoMsgHeaderField* const field = entity->getHeaderAt(i);
    if (field == nullptr) continue;
    const auto shown = [](const char* text) { return text != nullptr ? printable(text) : std::string(); };
    std::string line = shown(field->getName()) + ": " + shown(field->getFieldValue("utf-8"));
    for (unsigned p = 0; p < field->countParameter(); ++p)
      line += "; " + shown(field->getParameterNameAt(p)) + "=" + shown(field->getParameterValueAt(p, "utf-8"));
    fields.push_back(std::move(line));
  }
  return fields;
}

std::vector<Part> partsOf(VoMsgEntity* root) {
  std::vector<Part> parts;
  EntityWalk walk(root);
  while (walk.next()) {
    VoMsgEntity* const entity = walk.entity();
    const char* const type = entity->getContentType();
    const char* const name = entity->getFileName("utf-8");
    Part part{walk.number(),
              std::string(kindOf(entity->getEntityTypeID())) + " " + (type != nullptr ? printable(type) : "-") +
                  (name != nullptr ? " " + printable(name) : ""),
              fieldsOf(entity),
              {}};
    if (walk.isLeaf()) part.content = std::to_string(entity->getContentSize()) + " bytes, crc=" + crcOf(entity);
    parts.push_back(std::move(part));
  }
  return parts;
}

// The longest common subsequence would take time with the product of both lengths; what stands at the front and at the
// end of both is found in one pass, and edits mostly leave just that.
template <class Item, class Equal>
void trim(const std::vector<Item>& a, const std::vector<Item>& b, Equal equal, std::size_t& front, std::size_t& back) {
  const std::size_t shorter = std::min(a.size(), b.size());
  front = back = 0;
  while (front < shorter && equal(a[front], b[front])) ++front;
  while (back < shorter - front && equal(a[a.size() - 1 - back], b[b.size() - 1 - back])) ++back;
}

class Comparison {
 public:
  void compareParts(const std::vector<Part>& a, const std::vector<Part>& b) {
    std::size_t front = 0, back = 0;
    if (a.size() != b.size()) {
      const auto same = [](const Part& x, const Part& y) { return x.kind == y.kind && x.content == y.content; };
      trim(a, b, same, front, back);
    } else {
      front = a.size();
    }
    for (std::size_t i = 0; i < front; ++i) comparePart(a[i], b[i]);
    for (std::size_t i = front; i + back < a.size(); ++i) tell('-', a[i], a[i].kind);
    for (std::size_t i = front; i + back < b.size(); ++i) tell('+', b[i], b[i].kind);
    for (std::size_t i = back; i > 0; --i) comparePart(a[a.size() - i], b[b.size() - i]);
  }
  unsigned differences() const { return mDifferences; }

 private:
  void tell(char sign, const Part& part, const std::string& what) {
    const std::string line = std::string(1, sign) + " part " + std::to_string(part.number) + ": " + what;
    print(inColour(sign == '-' ? Colour::removed : Colour::added, line) + "\n");
    ++mDifferences;
  }

  void comparePart(const Part& a, const Part& b) {
    std::size_t front = 0, back = 0;
    trim(a.fields, b.fields, std::equal_to<std::string>(), front, back);
    for (std::size_t i = front; i + back < a.fields.size(); ++i) tell('-', a, a.fields[i]);
    for (std::size_t i = front; i + back < b.fields.size(); ++i) tell('+', b, b.fields[i]);
    if (a.kind != b.kind && a.fields == b.fields) {
      tell('-', a, a.kind);
      tell('+', b, b.kind);
    }
    if (a.content == b.content) return;
    tell('-', a, "content of " + a.content.value_or("its parts"));
    tell('+', b, "content of " + b.content.value_or("its parts"));
  }

  unsigned mDifferences = 0;
};

int diff(const Options& options) {
  std::unique_ptr<VoMsgResourceLocator> sources[] = {openOne(options.a), openOne(options.b)};
  const bool isIdentical = readAll(*sources[0], options.a) == readAll(*sources[1], options.b);
  const OpenedMessage a = openMessage(options.a, std::move(sources[0]));
  const OpenedMessage b = openMessage(options.b, std::move(sources[1]));
  Comparison comparison;
  comparison.compareParts(partsOf(a.message.get()), partsOf(b.message.get()));
  if (isIdentical)
    print("the messages are identical\n");
  else if (comparison.differences() == 0)
    print("fields and parts are the same; the bytes differ\n");
  else
    print("all else is the same\n");
  checkReading(a, options.a);
  checkReading(b, options.b);
  return isIdentical ? kOk : kDifferent;
}

const Command kDiff("diff", "Tell which fields and parts of two messages differ", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("A", options->a, "A message")->required();
  app.add_option("B", options->b, "Another one; - for the standard input")->required();
  return [options] { return diff(*options); };
});

}  // namespace

}  // namespace cli
