// vomsg tree: the entity tree, as text or as JSON.

#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Json.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "cli/TreeText.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace cli {

namespace {

Json range(unsigned offset, unsigned size) { return {{"offset", offset}, {"size", size}}; }

// A field's parameters by name, decoded; null without the field.
Json parametersOf(VoMsgEntity* entity, const char* name) {
  VoMsgHeaderField* const field = entity->getHeader(name);
  if (field == nullptr) return nullptr;
  Json parameters = Json::object();
  for (unsigned i = 0; i < field->countParameter(); ++i) {
    const char* const parameter = field->getParameterNameAt(i);
    if (parameter != nullptr) parameters[parameter] = jsonText(field->getParameterValueAt(i, "utf-8"));
  }
  return parameters;
}

// The object of the walk's present entity, open for its children: `{...,"children":[`. docs/json.md tells the keys.
std::string openObject(const EntityWalk& walk, bool checksum) {
  VoMsgEntity* const entity = walk.entity();
  const auto* mime = dynamic_cast<const VoMsgRfc822Entity*>(entity);
  Json flags = Json::array();
  if (walk.isSigned()) flags.push_back("signed");
  if (walk.isEncrypted()) flags.push_back("encrypted");
  if (walk.isModified()) flags.push_back("modified");
  Json headers = Json::array();
  for (unsigned i = 0; i < entity->countHeaders(); ++i) {
    VoMsgHeaderField* field = entity->getHeaderAt(i);
    if (field != nullptr)
      headers.push_back(Json::array({jsonText(field->getName()), jsonText(field->getFieldValue("utf-8"))}));
  }
  Json object = {
      {"number", walk.number()},
      {"kind", kindOf(entity->getEntityTypeID())},
      {"type", hexCode(entity->getEntityTypeID())},
      {"contentType", jsonText(entity->getContentType())},
      {"contentTypeParameters", parametersOf(entity, "Content-Type")},
      {"disposition", jsonText(entity->getHeaderValue("Content-Disposition", "utf-8"))},
      {"dispositionParameters", parametersOf(entity, "Content-Disposition")},
      {"charset", jsonText(entity->getCharset())},
      {"encoding", jsonText(entity->getEncoding())},
      {"fileName", jsonText(entity->getFileName("utf-8"))},
      {"header", mime != nullptr ? range(mime->getHeaderOffset(), mime->getHeaderSize()) : Json(nullptr)},
      {"body", mime != nullptr ? range(mime->getBodyOffset(), mime->getBodySize()) : Json(nullptr)},
      {"contentSize", entity->isMultipartEntity() ? Json(nullptr) : Json(entity->getContentSize())},
      {"level", walk.level()},
      {"flags", std::move(flags)},
      {"headers", std::move(headers)},
  };
  if (checksum && walk.isLeaf()) object["crc32"] = crcOf(entity);
  std::string opened = jsonLine(object);
  opened.back() = ',';
  return opened + "\"children\":[";
}

// Written entity by entity: a document of a hundred thousand levels is nothing to build as one object.
void printJson(const std::string& file, const OpenedMessage& opened, bool checksum) {
  std::string out =
      "{\"schema\":1,\"file\":" + jsonLine(file) + ",\"code\":" + jsonLine(hexCode(opened.code)) + ",\"root\":";
  EntityWalk walk(opened.message.get());
  unsigned open = 0;  // objects whose children are being written
  while (walk.next()) {
    if (walk.number() != 0 && open > walk.depth()) {
      for (; open > walk.depth(); --open) out += "]}";
      out += ',';
    }
    out += openObject(walk, checksum);
    ++open;
    if (out.size() > 65536) {
      print(out);
      out.clear();
    }
  }
  for (; open > 0; --open) out += "]}";
  print(out + "}\n");
}

struct Options {
  std::vector<std::string> files;
  bool json = false;
  bool checksum = false;
};

int showMessage(const Options& options, MessageInput& input) {
  const std::string& file = input.place;
  const OpenedMessage opened = openMessage(file, std::move(input.source));
  if (options.json) {
    printJson(file, opened, options.checksum);
  } else {
    print(titleOf(input) + treeText(opened.message.get(), options.checksum));
  }
  checkReading(opened, file);
  return kOk;
}

const Command kTree("tree", "Print the entity tree of messages", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "Messages; a folder stands for all files in it, - for the standard input")
      ->required();
  app.add_flag("--json", options->json, "One JSON object a line and file");
  app.add_flag("--checksum", options->checksum, "Add the CRC-32 of each part's decoded content");
  return [options] {
    return forEachMessage(options->files, [&](MessageInput& input) { return showMessage(*options, input); });
  };
});

}  // namespace

}  // namespace cli
