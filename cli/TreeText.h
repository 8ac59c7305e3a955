// An entity in words.
#pragma once

#include <string>

#include "cli/EntityWalk.h"

namespace cli {

// The kind of an entity, from its type id: "message", "part", "container", ...
const char* kindOf(std::uint32_t typeId);

// The CRC-32 of a leaf's decoded content in eight hexadecimal digits; "none" when there is no content.
std::string crcOf(VoMsgEntity* entity);

// The line for the walk's present entity, without indent and line end:
//   2 part image/png encoding=base64 name="a.png" header=350+80 body=430+200 size=146 level=0
// Ranges are offset+size within the resource that the entity is read from. With `checksum`, a leaf ends in the CRC-32
// of its decoded content.
std::string treeLine(const EntityWalk& walk, bool checksum);
// The lines of a whole tree, indented by two blanks a level; levels beyond the 40th are not indented further.
std::string treeText(VoMsgEntity* root, bool checksum);

}  // namespace cli
