// vomsg grep: looks for a pattern in what messages say, not in how it is encoded.

#include <regex.h>

#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace cli {

namespace {

struct Options {
  std::string pattern;
  std::vector<std::string> files;
  bool ignoreCase = false, fixed = false, namesOnly = false;
};

// An extended POSIX pattern, or a text that is meant as it stands.
class Pattern {
 public:
  explicit Pattern(const Options& options) {
    std::string pattern = options.pattern;
    if (options.fixed) {
      pattern.clear();
      for (const char c : options.pattern) {
        if (std::string_view(".[]{}()\\*+?^$|").find(c) != std::string_view::npos) pattern += '\\';
        pattern += c;
      }
    }
    const int error = regcomp(&mExpression, pattern.c_str(), REG_EXTENDED | (options.ignoreCase ? REG_ICASE : 0));
    if (error == 0) return;
    char words[200];
    regerror(error, &mExpression, words, sizeof words);
    throw Failure(kUsage, "\"" + options.pattern + "\": " + words);
  }
  ~Pattern() { regfree(&mExpression); }
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  // The first place in the line; false when there is none.
  bool find(const std::string& line, std::size_t& at, std::size_t& size) const {
    regmatch_t match;
    if (regexec(&mExpression, line.c_str(), 1, &match, 0) != 0) return false;
    at = static_cast<std::size_t>(match.rm_so);
    size = static_cast<std::size_t>(match.rm_eo) - at;
    return true;
  }

 private:
  regex_t mExpression;
};

// Prints the lines of a message that match.
class Search {
 public:
  Search(const Options& options, const Pattern& pattern, std::string place)
      : mOptions(options), mPattern(pattern), mPlace(std::move(place)) {}

  // False when nothing more needs to be looked at.
  bool tryLine(unsigned part, const std::string& line) {
    std::size_t at = 0, size = 0;
    if (!mPattern.find(line, at, size)) return true;
    mFound = true;
    if (mOptions.namesOnly) {
      print(inColour(Colour::name, printable(mPlace)) + "\n");
      return false;
    }
    print(inColour(Colour::name, printable(mPlace)) + ":" + inColour(Colour::number, std::to_string(part)) + ":" +
          printableLines(line.substr(0, at)) + inColour(Colour::found, printableLines(line.substr(at, size))) +
          printableLines(line.substr(at + size)) + "\n");
    return true;
  }

  bool tryText(unsigned part, const std::string& text) {
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = std::min(text.find('\n', begin), text.size());
      const bool hasReturn = end > begin && text[end - 1] == '\r';
      if (!tryLine(part, text.substr(begin, end - begin - (hasReturn ? 1 : 0)))) return false;
      begin = end + 1;
    }
    return true;
  }

  bool found() const { return mFound; }

 private:
  const Options& mOptions;
  const Pattern& mPattern;
  std::string mPlace;
  bool mFound = false;
};

// The fields of an entity and, of a text, the text, both in UTF-8.
bool searchEntity(Search& search, unsigned number, VoMsgEntity* entity, const std::string& file) {
  for (unsigned i = 0; i < entity->countHeaders(); ++i) {
    VoMsgHeaderField* const field = entity->getHeaderAt(i);
    if (field == nullptr || field->getName() == nullptr) continue;
    std::string line = field->getName();
    const char* const value = field->getFieldValue("utf-8");
    line.append(": ").append(value != nullptr ? value : "");
    for (unsigned p = 0; p < field->countParameter(); ++p) {
      const char* const name = field->getParameterNameAt(p);
      const char* const parameter = field->getParameterValueAt(p, "utf-8");
      line.append("; ").append(name != nullptr ? name : "").append("=").append(parameter != nullptr ? parameter : "");
    }
    if (!search.tryLine(number, line)) return false;
  }
  if (entity->getContentType() != nullptr && !entity->isContentType("text", nullptr)) return true;
  int code = 0;
  const VoMsgResourceLocator* const text = entity->getTextContent(code, nullptr, "utf-8");
  return text == nullptr || search.tryText(number, readAll(*text, file));
}

int grep(const Options& options, const Pattern& pattern, MessageInput& input) {
  const OpenedMessage opened = openMessage(input.place, std::move(input.source));
  Search search(options, pattern, input.place);
  EntityWalk walk(opened.message.get());
  while (walk.next()) {
    if (walk.isLeaf() || walk.entity()->countHeaders() > 0) {
      if (!searchEntity(search, walk.number(), walk.entity(), input.place)) break;
    }
  }
  checkReading(opened, input.place);
  return search.found() ? kOk : kDifferent;
}

const Command kGrep("grep", "Look for a pattern in decoded fields and texts", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("PATTERN", options->pattern, "An extended regular expression, in UTF-8")->required();
  app.add_option("FILE", options->files, "Messages, mailboxes, folders of them; - for the standard input")->required();
  app.add_flag("-i,--ignore-case", options->ignoreCase, "Take small and capital letters of ASCII as equal");
  app.add_flag("-F,--fixed", options->fixed, "PATTERN is a text, not an expression");
  app.add_flag("-l,--list", options->namesOnly, "Print only where something was found");
  return [options] {
    const Pattern pattern(*options);
    // What could not be read is told first, then whether there was a hit anywhere.
    bool found = false;
    int error = kOk;
    forEachMessage(
        options->files, [&](MessageInput& input) { return grep(*options, pattern, input); },
        [&](int result) {
          found = found || result == kOk;
          if (error == kOk && result != kDifferent) error = result;
        });
    return error != kOk ? error : found ? static_cast<int>(kOk) : static_cast<int>(kDifferent);
  };
});

}  // namespace

}  // namespace cli
