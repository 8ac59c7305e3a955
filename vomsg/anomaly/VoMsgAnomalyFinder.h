// Looks through a whole tree for what is odd. It reads the sources again, part by part, and leaves no decoded copy
// behind; what was edited since has no source and is passed over.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "vomsg/anomaly/VoMsgAnomalySink.h"
#include "vomsg/anomaly/VoMsgBoundaryAnomalies.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"

class VoMsgEntity;
class VoMsgMailMessage;
class VoMsgMultiEmbededEntity;
class VoMsgRfc822Entity;

namespace vomsg::detail {

class AnomalyFinder {
 public:
  using OpenReader = std::function<std::unique_ptr<VoMsgBufferedReader>(const VoMsgMailMessage&)>;
  // `open` gives a new reader on the source of a message.
  AnomalyFinder(VoMsgAnomalyList& list, OpenReader open);
  // False when a source could not be read or room for decoding was refused: then the list is not whole.
  bool run(VoMsgEntity* root);

 private:
  struct Level {
    VoMsgEntity* entity;
    VoMsgMailMessage* message;  // whose source the entity is read from
    AnomalySource source;
    bool hasBoundary;  // its boundary is the last one of mOpen.back()
    bool hasOwnScope;  // boundaries outside are not in force in decoded content
    bool isInTnef;
  };

  void enter(VoMsgEntity* entity);
  bool leave();  // steps to the next entity; false behind the last
  void examineMime(VoMsgRfc822Entity& entity, Level& level);
  void examineBlock(VoMsgRfc822Entity& entity);
  void examineMultipart(VoMsgRfc822Entity& entity, Level& level);
  void examineLeaf(VoMsgRfc822Entity& entity);
  void examineNesting(VoMsgRfc822Entity& entity);
  void examineBody(VoMsgRfc822Entity& entity);
  void examineContent(VoMsgRfc822Entity& entity);
  void examineTnef(Level& level);
  void examineEmbedded(Level& level);
  VoMsgBufferedReader* reader();

  AnomalySink mSink;
  OpenReader mOpenReader;
  const VoMsgMailMessage* mpReaderOf = nullptr;
  std::unique_ptr<VoMsgBufferedReader> mReader;
  std::vector<Level> mLevels;
  std::vector<OpenBoundaries> mOpen;
  unsigned mPart = 0;
  bool mIsWhole = true;
};

}  // namespace vomsg::detail
