#include "vomsg/foundation/VoMsgFileResource.h"

#include <unistd.h>

#include <memory>
#include <new>

#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgFileWriter.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgShortage.h"

namespace {

constexpr unsigned kBufferSize = 32768;

}  // namespace

VoMsgFileResource::VoMsgFileResource(const char* path, const char* name, const char* charset)
    : VoMsgFileResource(path, 0, name, charset) {}

VoMsgFileResource::VoMsgFileResource(const char* path, signed char temporary, const char* name, const char* charset)
    : VoMsgResourceLocator(name, charset), mPath(vomsg::detail::copyCStringOrNull(path)) {
  mIsTemporary = temporary;
}

VoMsgFileResource::~VoMsgFileResource() {
  freeTmpResource();
  if (!mIsTemporary) return;
  // What is still to be created is not there; a file of that name would be somebody else's.
  if (mPath && mParts[dataPart] != Part::toBeCreated) ::unlink(mPath.get());
  if (mForkPath && mParts[resourceForkPart] != Part::toBeCreated) ::unlink(mForkPath.get());
}

int VoMsgFileResource::getResourceType() const { return file; }

const char* VoMsgFileResource::getFilePath(VoMsgResourceDataType type) const {
  if (type == dataPart) return mPath.get();
  return type == resourceForkPart ? mForkPath.get() : nullptr;
}

VoMsgBufferedReader* VoMsgFileResource::getInputStream(VoMsgResourceDataType type) const {
  const char* const path = getFilePath(type);
  if (!path || mParts[type] == Part::toBeCreated) return nullptr;
  std::unique_ptr<VoMsgFileReader> reader(new (std::nothrow) VoMsgFileReader(path, kBufferSize));
  if (!reader) vomsg::detail::noteShortage(kVoNoMemory);
  return reader && reader->open() ? reader.release() : nullptr;
}

VoMsgBufferedWriter* VoMsgFileResource::getOutputStream(VoMsgResourceDataType type) const {
  if (type != dataPart && type != resourceForkPart) return nullptr;
  if (type == resourceForkPart && !mForkPath) {
    mForkPath.reset(VoMsgResourceManager::createTmpFilePath());
    mParts[type] = Part::toBeCreated;
  }
  const char* const path = getFilePath(type);
  if (!path) {
    if (type == resourceForkPart) vomsg::detail::noteShortage(kVoWriteFailed);
    return nullptr;
  }
  if (mParts[type] == Part::created && ::access(path, F_OK) != 0) mParts[type] = Part::toBeCreated;  // removed since
  std::unique_ptr<VoMsgFileWriter> writer(new (std::nothrow) VoMsgFileWriter(path, kBufferSize));
  if (!writer) {
    vomsg::detail::noteShortage(kVoNoMemory);
    return nullptr;
  }
  if (mParts[type] == Part::toBeCreated) writer->setCreation(VoMsgFileWriter::Creation::exclusive);
  if (mParts[type] == Part::created) writer->setCreation(VoMsgFileWriter::Creation::existing);
  if (!writer->open()) {
    // A fork without a file is none; the next attempt takes another name.
    if (type == resourceForkPart && mParts[type] == Part::toBeCreated) mForkPath.reset();
    return nullptr;
  }
  if (mParts[type] == Part::toBeCreated) mParts[type] = Part::created;
  return writer.release();
}

bool VoMsgFileResource::equal(VoMsgResourceLocator* other) const {
  if (other == this) return true;
  const auto* const fileResource = dynamic_cast<const VoMsgFileResource*>(other);
  return fileResource && mPath && fileResource->mPath &&
         std::string_view(mPath.get()) == std::string_view(fileResource->mPath.get());
}

unsigned VoMsgFileResource::getSize(VoMsgResourceDataType type) const {
  const std::unique_ptr<VoMsgBufferedReader> reader(getInputStream(type));
  return reader ? reader->getSize() : 0;
}

bool VoMsgFileResource::hasResourceFork() const { return mForkPath != nullptr; }
