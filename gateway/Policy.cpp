// The policy file is read key by key through a Table, which knows every key that was asked for: what is left over in
// the end is a mistake too, for a misspelt condition would make a rule match everything.

#include "gateway/Policy.h"

#include <arpa/inet.h>

#include <toml++/toml.h>
#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

namespace gateway {

namespace {

struct Named {
  const char* name;
  VoErrorCode code;
};
constexpr Named kCodes[] = {{"malformed", kVoMalformed}, {"partial", kVoPartialMessage}, {"unreadable", kVoReadFailed},
                            {"memory", kVoNoMemory},     {"space", kVoWriteFailed},      {"tnef", kVoTnefMalformed}};

class Table {
 public:
  Table(const toml::table& table, std::vector<Mistake>& mistakes) : mTable(table), mMistakes(mistakes) {}
  ~Table() {
    for (const auto& [key, node] : mTable) {
      if (mAsked.count(std::string(key.str())) == 0) {
        complain(key.source(), "there is no \"" + std::string(key.str()) + "\" here");
      }
    }
  }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  void complain(const toml::source_region& where, const std::string& text) const {
    mMistakes.push_back({where.begin.line, where.begin.column, text});
  }
  void complain(const std::string& text) const { complain(mTable.source(), text); }
  const toml::node* find(const char* key) {
    mAsked.insert(key);
    return mTable.get(key);
  }
  bool has(const char* key) { return find(key) != nullptr; }

  std::string text(const char* key, const std::string& otherwise = {}) {
    const toml::node* const node = find(key);
    if (node == nullptr) return otherwise;
    if (const auto value = node->value_exact<std::string>()) return *value;
    complain(node->source(), std::string("\"") + key + "\" is a text");
    return otherwise;
  }
  bool flag(const char* key, bool otherwise) {
    const toml::node* const node = find(key);
    if (node == nullptr) return otherwise;
    if (const auto value = node->value_exact<bool>()) return *value;
    complain(node->source(), std::string("\"") + key + "\" is true or false");
    return otherwise;
  }
  std::int64_t number(const char* key, std::int64_t otherwise, std::int64_t most) {
    const toml::node* const node = find(key);
    if (node == nullptr) return otherwise;
    const auto value = node->value_exact<std::int64_t>();
    if (value && *value >= 0 && *value <= most) return *value;
    complain(node->source(), std::string("\"") + key + "\" is a number from 0 to " + std::to_string(most));
    return otherwise;
  }
  // A text or a list of texts.
  std::vector<std::string> texts(const char* key) {
    std::vector<std::string> all;
    const toml::node* const node = find(key);
    if (node == nullptr) return all;
    if (const auto value = node->value_exact<std::string>()) return {*value};
    const toml::array* const list = node->as_array();
    if (list != nullptr) {
      for (const toml::node& each : *list) {
        if (const auto value = each.value_exact<std::string>()) all.push_back(*value);
      }
    }
    if (list == nullptr || all.size() != list->size() || all.empty()) {
      complain(node->source(), std::string("\"") + key + "\" is a text or a list of texts");
    }
    return all;
  }
  const toml::table* table(const char* key) {
    const toml::node* const node = find(key);
    if (node != nullptr && !node->is_table()) complain(node->source(), std::string("\"") + key + "\" is a table");
    return node != nullptr ? node->as_table() : nullptr;
  }
  // One of some words; the first where nothing is said.
  std::string word(const char* key, const std::vector<std::string>& words) {
    const std::string value = text(key, words.front());
    if (std::find(words.begin(), words.end(), value) != words.end()) return value;
    std::string all;
    for (const std::string& each : words) all += (all.empty() ? "" : ", ") + each;
    complain(find(key)->source(), std::string("\"") + key + "\" is one of: " + all);
    return words.front();
  }

 private:
  const toml::table& mTable;
  std::vector<Mistake>& mMistakes;
  std::set<std::string> mAsked;
};

OnFailure onFailure(const std::string& word) {
  return word == "open" ? OnFailure::open : word == "closed" ? OnFailure::closed : OnFailure::reject;
}

std::string fromHex(const std::string& hex, bool& isHex) {
  std::string bytes;
  isHex = !hex.empty() && hex.size() % 2 == 0 && hex.find_first_not_of("0123456789abcdefABCDEF") == hex.npos;
  for (std::size_t i = 0; isHex && i < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

class Reader {
 public:
  Reader(std::vector<Mistake>& mistakes, std::string folder) : mMistakes(mistakes), mFolder(std::move(folder)) {}

  Policy read(const toml::table& root) {
    Policy policy;
    Table top(root, mMistakes);
    if (const toml::table* const node = top.table("limits")) limits(*node, policy);
    if (const toml::table* const node = top.table("failure")) failure(*node, policy);
    if (const toml::table* const node = top.table("inside")) {
      Table inside(*node, mMistakes);
      policy.insideNetworks = inside.texts("networks");
      policy.insideDomains = inside.texts("domains");
    }
    if (const toml::table* const node = top.table("report")) policy.counters = Table(*node, mMistakes).text("counters");
    const toml::node* const rules = top.find("rule");
    const toml::array* const list = rules != nullptr ? rules->as_array() : nullptr;
    if (rules != nullptr && list == nullptr) top.complain(rules->source(), "rules are written [[rule]]");
    for (std::size_t i = 0; list != nullptr && i < list->size(); ++i) {
      if (const toml::table* const node = list->get(i)->as_table()) policy.rules.push_back(rule(*node));
    }
    return policy;
  }

 private:
  void limits(const toml::table& node, Policy& policy) {
    constexpr int kMost = 1000000;
    Table table(node, mMistakes);
    vomsg::Settings& settings = policy.settings;
    settings.maxFields = static_cast<int>(table.number("fields", 1000, kMost));
    settings.maxAddresses = static_cast<int>(table.number("addresses", 10000, kMost));
    settings.maxParameters = static_cast<int>(table.number("parameters", 100, kMost));
    settings.maxNesting = static_cast<int>(table.number("nesting", 20, 1000));
    settings.maxMemory = static_cast<unsigned>(table.number("memory_mib", 32, 2047)) << 20;
    settings.temporaryFolder = table.text("temporary_folder");
    policy.maxMessage = static_cast<std::uint64_t>(table.number("message_mib", 0, 2047)) << 20;
  }

  void failure(const toml::table& node, Policy& policy) {
    Table table(node, mMistakes);
    policy.onDamage = onFailure(table.word("damage", {"open", "closed", "reject"}));
    policy.onDangerous = onFailure(table.word("dangerous", {"closed", "open", "reject"}));
    policy.onEdit = onFailure(table.word("edit", {"closed", "open", "reject"}));
    for (const Named& each : kCodes) {
      if (table.has(each.name))
        policy.onCode[each.code] = onFailure(table.word(each.name, {"open", "closed", "reject"}));
    }
  }

  Rule rule(const toml::table& node) {
    Rule made;
    Table table(node, mMistakes);
    made.name = table.text("name");
    if (made.name.empty()) table.complain("a rule has a name");
    made.goesOn = table.flag("continue", false);
    if (const toml::table* const when = table.table("when")) made.when = conditions(*when);
    const toml::node* const actions = table.find("do");
    const toml::array* const list = actions != nullptr ? actions->as_array() : nullptr;
    for (std::size_t i = 0; list != nullptr && i < list->size(); ++i) {
      if (const toml::table* const each = list->get(i)->as_table()) {
        made.actions.push_back(action(*each, made));
      } else {
        table.complain(list->get(i)->source(), "an action is a table");
      }
    }
    if (made.actions.empty()) table.complain("a rule does something: do = [{ action = \"...\" }]");
    return made;
  }

  Conditions conditions(const toml::table& node) {
    Conditions made;
    Table table(node, mMistakes);
    made.direction = table.word("direction", {"", "in", "out", "inside"});
    made.senders = table.texts("sender");
    made.recipients = table.texts("recipient");
    made.anyRecipient = table.word("recipients", {"every", "any"}) == "any";
    made.largerThan = static_cast<std::uint64_t>(table.number("larger_than", 0, 0x7FFFFFFF));
    if (table.has("smaller_than")) {
      made.smallerThan = static_cast<std::uint64_t>(table.number("smaller_than", 0, 0x7FFFFFFF));
    }
    made.field = table.text("field");
    made.fieldValues = table.texts("value");
    if (made.field.empty() && !made.fieldValues.empty()) table.complain("\"value\" needs \"field\"");
    const std::string level = table.word("anomaly", {"", "note", "ambiguous", "dangerous"});
    if (level == "note") made.anomaly = kVoAnomalyNote;
    if (level == "ambiguous") made.anomaly = kVoAnomalyAmbiguous;
    if (level == "dangerous") made.anomaly = kVoAnomalyDangerous;
    for (const std::string& word : table.texts("code")) {
      const auto* const found =
          std::find_if(std::begin(kCodes), std::end(kCodes), [&](const Named& each) { return word == each.name; });
      if (found == std::end(kCodes)) {
        table.complain(table.find("code")->source(), "there is no code \"" + word + "\"");
      } else {
        made.codes.push_back(found->code);
      }
    }
    if (const toml::table* const attachment = table.table("attachment")) {
      Table inner(*attachment, mMistakes);
      made.attachment.isAsked = true;
      made.attachment.names = inner.texts("name");
      made.attachment.types = inner.texts("type");
      for (const std::string& hex : inner.texts("begins_with")) {
        bool isHex = false;
        made.attachment.firstBytes.push_back(fromHex(hex, isHex));
        if (!isHex)
          inner.complain(inner.find("begins_with")->source(), "\"begins_with\" is bytes in hex, such as \"4D5A\"");
      }
    }
    return made;
  }

  Action action(const toml::table& node, const Rule& rule) {
    struct Kind {
      const char* word;
      Do what;
      const char* name;  // the key that goes into Action::name, or null
      const char* text;
    };
    static constexpr Kind kKinds[] = {
        {"add_field", Do::addField, "name", "value"},
        {"set_field", Do::setField, "name", "value"},
        {"remove_field", Do::removeField, "name", nullptr},
        {"disclaimer", Do::disclaimer, nullptr, "text"},
        {"remove_attachments", Do::removeAttachments, nullptr, nullptr},
        {"replace_attachments", Do::replaceAttachments, nullptr, "notice"},
        {"open_winmail", Do::openWinmail, nullptr, nullptr},
        {"strip_signatures", Do::stripSignatures, nullptr, nullptr},
        {"tag", Do::tag, nullptr, "text"},
        {"quarantine", Do::quarantine, "folder", nullptr},
        {"reject", Do::reject, nullptr, "reason"},
        {"pass", Do::pass, nullptr, nullptr},
    };
    Action made;
    Table table(node, mMistakes);
    const std::string word = table.text("action");
    const Kind* kind = nullptr;
    for (const Kind& each : kKinds) {
      if (word == each.word) kind = &each;
    }
    if (kind == nullptr) {
      table.complain("there is no action \"" + word + "\"");
      return made;
    }
    made.what = kind->what;
    if (kind->name != nullptr) made.name = required(table, kind->name);
    if (kind->text != nullptr) made.text = required(table, kind->text);
    const bool isField = made.what == Do::addField || made.what == Do::setField || made.what == Do::removeField;
    if (isField && !vomsg::inner::isFieldName(made.name)) table.complain("\"" + made.name + "\" is no field name");
    const bool needsAttachment = made.what == Do::removeAttachments || made.what == Do::replaceAttachments;
    if (needsAttachment && !rule.when.attachment.isAsked) {
      table.complain("\"" + word + "\" treats what the rule's \"attachment\" condition finds, and there is none");
    }
    if (made.what == Do::disclaimer) {
      made.disclaimer.text = made.text + "\r\n";
      if (table.word("position", {"bottom", "top"}) == "top") made.disclaimer.position = kVoDisclaimerTop;
      const std::string mode = table.word("mode", {"body", "part", "wrap"});
      const int bits = mode == "body"   ? kVoDisclaimerBody
                       : mode == "part" ? kVoDisclaimerNewBody
                                        : kVoDisclaimerWrapNew;
      made.disclaimer.option = (made.disclaimer.option & ~kVoDisclaimerModeMask) | bits;
    }
    return made;
  }

  static std::string required(Table& table, const char* key) {
    const std::string value = table.text(key);
    if (value.empty()) table.complain(std::string("this action needs \"") + key + "\"");
    return value;
  }

  std::vector<Mistake>& mMistakes;
  std::string mFolder;
};

}  // namespace

Policy loadPolicy(const std::string& path, std::vector<Mistake>& mistakes) {
  std::ifstream file(path);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file) {
    mistakes.push_back({1, 1, "the file cannot be read"});
    return {};
  }
  try {
    const toml::table root = toml::parse(bytes, path);
    Policy policy = Reader(mistakes, path).read(root);
    std::stable_sort(mistakes.begin(), mistakes.end(),
                     [](const Mistake& a, const Mistake& b) { return a.line < b.line; });
    // Mail should read as its sender meant it, and nothing be written anew but what a rule changes: 128 keeps untouched
    // fields as they stand, 256 reads fields by the standards, 512 reads texts patiently, 1024 reads past damage.
    policy.settings.options = 128 | 256 | 512 | 1024;
    return policy;
  } catch (const toml::parse_error& error) {
    mistakes.push_back({error.source().begin.line, error.source().begin.column, std::string(error.description())});
    return {};
  }
}

bool matches(const std::string& pattern, const std::string& text) {
  std::size_t p = 0, t = 0, star = pattern.npos, from = 0;
  const auto lower = [](char c) { return vomsg::inner::lower(c); };
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      from = t;
    } else if (p < pattern.size() && (pattern[p] == '?' || lower(pattern[p]) == lower(text[t]))) {
      ++p;
      ++t;
    } else if (star != pattern.npos) {
      p = star + 1;
      t = ++from;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

bool matchesOne(const std::vector<std::string>& patterns, const std::string& text) {
  return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& each) { return matches(each, text); });
}

bool liesInOne(const std::vector<std::string>& networks, const std::string& address) {
  unsigned char own[16], network[16];
  for (const std::string& each : networks) {
    const auto slash = each.find('/');
    const std::string base = each.substr(0, slash);
    const int family = base.find(':') == base.npos ? AF_INET : AF_INET6;
    const unsigned all = family == AF_INET ? 32 : 128;
    const unsigned bits = slash == each.npos ? all : static_cast<unsigned>(std::atoi(each.c_str() + slash + 1));
    if (bits > all || inet_pton(family, base.c_str(), network) != 1 || inet_pton(family, address.c_str(), own) != 1)
      continue;
    const unsigned rest = bits % 8;
    const bool isSame = std::memcmp(own, network, bits / 8) == 0;
    if (isSame && (rest == 0 || ((own[bits / 8] ^ network[bits / 8]) >> (8 - rest)) == 0)) return true;
  }
  return false;
}

}  // namespace gateway
