// Resources in files and in memory, their names and their temporary kind.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <vector>

#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoObjectStub.h"

namespace {

using Locator = VoMsgResourceLocator;
using Manager = VoMsgResourceManager;
using Resource = std::unique_ptr<Locator>;
using vomsg::test::readFile;
using vomsg::test::ScratchDirectory;

constexpr auto kNoPart = static_cast<Locator::VoMsgResourceDataType>(2);

bool fill(const Locator& resource, Locator::VoMsgResourceDataType part, std::string_view text) {
  const std::unique_ptr<VoMsgBufferedWriter> writer(resource.getOutputStream(part));
  return writer && writer->write(text.data(), static_cast<unsigned>(text.size()));
}

std::string contentOf(const Locator& resource, Locator::VoMsgResourceDataType part = Locator::dataPart) {
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(part));
  if (!reader) return "(none)";
  std::string text(reader->getSize(), '\0');
  text.resize(reader->read(text.data(), static_cast<unsigned>(text.size())));
  return text;
}

// Sets the folder for temporary files for one test.
struct TempFolder : ScratchDirectory {
  TempFolder() { Manager::setTmpDirPath(path.c_str()); }
  ~TempFolder() { Manager::setTmpDirPath(nullptr); }
};

TEST(VoMsgResource, BothKindsHoldTwoPartsThatAreReplacedByWriting) {
  const TempFolder folder;
  VoMsgFileResource file(folder.file("data").c_str(), nullptr, nullptr);
  VoMsgMemoryResource memory(3u, nullptr, nullptr);
  EXPECT_EQ(file.getResourceType(), 1);
  EXPECT_EQ(memory.getResourceType(), 2);
  EXPECT_EQ(contentOf(memory), std::string(3, '\0'));
  for (Locator* const resource : {static_cast<Locator*>(&file), static_cast<Locator*>(&memory)}) {
    SCOPED_TRACE(resource->getResourceType());
    EXPECT_FALSE(resource->hasResourceFork());
    EXPECT_EQ(resource->getSize(Locator::resourceForkPart), 0u);
    for (const std::string& text : {std::string("first content"), std::string("second\0one", 10), std::string()}) {
      ASSERT_TRUE(fill(*resource, Locator::dataPart, text));
      EXPECT_EQ(contentOf(*resource), text);
      EXPECT_EQ(resource->getSize(Locator::dataPart), text.size());
    }
    ASSERT_TRUE(fill(*resource, Locator::resourceForkPart, "fork"));
    EXPECT_TRUE(resource->hasResourceFork());
    EXPECT_EQ(contentOf(*resource, Locator::resourceForkPart), "fork");
    EXPECT_EQ(resource->getInputStream(kNoPart), nullptr);
    EXPECT_EQ(resource->getOutputStream(kNoPart), nullptr);
    EXPECT_EQ(resource->getSize(kNoPart), 0u);
    EXPECT_EQ(resource->getFileType(), 0x3F3F3F3Fu);
    EXPECT_TRUE(resource->equal(resource));
    EXPECT_FALSE(resource->equal(nullptr));
  }
  EXPECT_FALSE(file.equal(&memory));
  EXPECT_FALSE(memory.equal(&file));
}

TEST(VoMsgMemoryResource, CopiesOrUsesTheCallersBlock) {
  std::vector<char> mine = {'a', 'b', 'c'};
  VoMsgMemoryResource inPlace(mine.data(), 3, nullptr, nullptr), copied(mine.data(), 3, 1, nullptr, nullptr);
  EXPECT_EQ(inPlace.getMemoryPointer(Locator::dataPart), mine.data());
  EXPECT_NE(copied.getMemoryPointer(Locator::dataPart), mine.data());
  mine[0] = 'A';
  EXPECT_EQ(contentOf(inPlace), "Abc");
  EXPECT_EQ(contentOf(copied), "abc");
  VoMsgMemoryResource shorter(mine.data(), 2, nullptr, nullptr), same(mine.data(), 3, nullptr, nullptr);
  EXPECT_TRUE(inPlace.equal(&same));
  EXPECT_FALSE(inPlace.equal(&shorter));
  EXPECT_FALSE(inPlace.equal(&copied));
  EXPECT_TRUE(fill(inPlace, Locator::dataPart, "written"));
  EXPECT_EQ(contentOf(inPlace), "written");
  EXPECT_EQ(std::string(mine.data(), 3), "Abc");
  VoMsgMemoryResource nothing(nullptr, 7, nullptr, nullptr);
  EXPECT_EQ(contentOf(nothing), "");
}

TEST(VoMsgFileResource, ComparesPathsAndDeletesOnlyWhatIsTemporary) {
  const ScratchDirectory dir;
  const std::string kept = dir.write("kept", "x"), gone = dir.write("gone", "host's own");
  {
    VoMsgFileResource a(kept.c_str(), nullptr, nullptr), b(kept.c_str(), nullptr, nullptr);
    VoMsgFileResource temporary(gone.c_str(), 1, nullptr, nullptr), nowhere(nullptr, nullptr, nullptr);
    EXPECT_TRUE(a.equal(&b));
    EXPECT_FALSE(a.equal(&temporary));
    EXPECT_FALSE(nowhere.equal(&a));
    EXPECT_EQ(nowhere.getInputStream(Locator::dataPart), nullptr);
    EXPECT_EQ(nowhere.getOutputStream(Locator::dataPart), nullptr);
    EXPECT_EQ(contentOf(temporary), "host's own");
    EXPECT_TRUE(fill(temporary, Locator::dataPart, "replaced"));
    EXPECT_EQ(contentOf(temporary), "replaced");
  }
  EXPECT_TRUE(std::filesystem::exists(kept));
  EXPECT_FALSE(std::filesystem::exists(gone));
}

TEST(VoMsgResourceLocator, NamesAreConvertedAndRemembered) {
  VoMsgMemoryResource resource(0u, "caf\xe9", "iso-8859-1");
  EXPECT_STREQ(resource.getResourceName(nullptr), "caf\xe9");
  const char* const converted = resource.getResourceName("utf-8");
  EXPECT_STREQ(converted, "caf\xc3\xa9");
  EXPECT_EQ(resource.getResourceName("UTF-8"), converted);
  EXPECT_STREQ(resource.getResourceName("us-ascii"), "caf?");
  EXPECT_STREQ(resource.getResourceName("no-such-charset"), "");
  resource.setResourceName("\xc3\xa9", "utf-8");
  EXPECT_STREQ(resource.getResourceName("iso-8859-1"), "\xe9");
  resource.setResourceName(resource.getResourceName(nullptr), nullptr);  // keeps the charset it had
  EXPECT_STREQ(resource.getResourceName("iso-8859-1"), "\xe9");
  resource.setResourceName(nullptr, nullptr);
  EXPECT_STREQ(resource.getResourceName("utf-8"), "");
}

TEST(VoMsgResourceManager, SettingsHaveFloorsAndTheFolderASlash) {
  for (const unsigned size : {10u, 0x200000u, 0xFFFFFFFFu, 0u}) {
    Manager::setMaxMemoryResourceSize(size);
    EXPECT_EQ(Manager::getMaxMemoryResourceSize(), std::max(size, 0x100000u));
    Manager::setTotalAllocateMemoryLimit(size);
    EXPECT_EQ(Manager::getTotalAllocateMemoryLimit(), std::max(size, 0x2000000u));
  }
  for (const char* const path : {"/tmp/x", "/tmp/x/", Manager::getTmpDirPath()}) {
    Manager::setTmpDirPath(path);
    EXPECT_STREQ(Manager::getTmpDirPath(), path ? "/tmp/x/" : nullptr);
  }
}

TEST(VoMsgResourceManager, ChoosesMemoryWithinTheBudget) {
  const TempFolder folder;
  ASSERT_EQ(Manager::currentAllocateMemorySize(), 0u);
  const auto kindOf = [](unsigned size) { return Resource(Manager::createTmpResource(size))->getResourceType(); };
  EXPECT_EQ(kindOf(0), Locator::file);
  EXPECT_EQ(kindOf(0x100000), Locator::memory);
  EXPECT_EQ(kindOf(0x100001), Locator::file);
  std::vector<Resource> held;
  for (int i = 0; i < 32; ++i) held.emplace_back(Manager::createTmpResource(0x100000));
  EXPECT_EQ(Manager::currentAllocateMemorySize(), 0x2000000u);
  EXPECT_EQ(kindOf(1), Locator::file);
  held.pop_back();
  EXPECT_EQ(kindOf(0x100000), Locator::memory);
  held.clear();
  EXPECT_EQ(Manager::currentAllocateMemorySize(), 0u);
  const Resource small(Manager::createTmpResource(5)), large(Manager::createTmpResource(7));
  for (int i = 0; i < 3; ++i) Manager::freeTmpResource(large.get());
  EXPECT_EQ(Manager::currentAllocateMemorySize(), 0u);  // never below
}

TEST(VoMsgResourceManager, TemporaryFileIsPrivateAndLivesAsLongAsItsResource) {
  const TempFolder folder;
  const mode_t mask = umask(0);
  std::string path;
  {
    const Resource resource(Manager::createTmpFileResource());
    path = static_cast<VoMsgFileResource&>(*resource).getFilePath(Locator::dataPart);
    EXPECT_EQ(path.rfind(folder.file("VOMSG_"), 0), 0u) << path;
    EXPECT_EQ(contentOf(*resource), "(none)");
    EXPECT_EQ(folder.count(), 0u);  // made by the first stream only
    EXPECT_TRUE(fill(*resource, Locator::dataPart, "long content"));
    ::unlink(path.c_str());  // by a cleaner of old files, for one
    EXPECT_TRUE(fill(*resource, Locator::dataPart, "medium long"));
    EXPECT_TRUE(fill(*resource, Locator::dataPart, "short"));
    EXPECT_EQ(readFile(path), "short");
    EXPECT_TRUE(fill(*resource, Locator::resourceForkPart, "fork"));
    EXPECT_EQ(folder.count(), 2u);
    for (const auto& entry : std::filesystem::directory_iterator(folder.path))
      EXPECT_EQ(static_cast<unsigned>(entry.status().permissions()), 0600u);
  }
  umask(mask);
  EXPECT_EQ(folder.count(), 0u);
}

TEST(VoMsgResourceManager, SomebodyElsesFileIsNeitherReadNorWrittenNorDeleted) {
  const TempFolder folder;
  vomsg::test::RememberingLog log;
  std::string path;
  {
    const Resource resource(Manager::createTmpFileResource());
    path = static_cast<VoMsgFileResource&>(*resource).getFilePath(Locator::dataPart);
    folder.write(path.substr(path.rfind('/') + 1), "planted");
    EXPECT_EQ(contentOf(*resource), "(none)");
    EXPECT_FALSE(fill(*resource, Locator::dataPart, "secret"));
  }
  EXPECT_EQ(readFile(path), "planted");
}

TEST(VoMsgResourceManager, NamesAreFreshAndTakeNothingFromSeedOrEnvironment) {
  const TempFolder folder;
  setenv("TMPDIR", "/nonexistent", 1);
  std::set<std::string> names;
  srand48(1);
  const long first = lrand48();
  for (int i = 0; i < 200; ++i) {
    srand48(1);
    const vomsg::detail::CString path(Manager::createTmpFilePath());
    ASSERT_TRUE(path);
    names.insert(path.get());
    EXPECT_EQ(lrand48(), first);  // the sequence of the UUIDs is left alone
  }
  EXPECT_EQ(names.size(), 200u);
  Manager::setTmpDirPath(nullptr);
  const vomsg::detail::CString path(Manager::createTmpFilePath());
  EXPECT_EQ(std::string(path.get()).rfind(P_tmpdir "/VOMSG_", 0), 0u);
  unsetenv("TMPDIR");
}

TEST(VoMsgResourceManager, UnusableFolderIsLogged) {
  const TempFolder folder;
  vomsg::test::RememberingLog log;
  Manager::setTmpDirPath(folder.file("missing").c_str());
  EXPECT_EQ(Manager::createTmpResource(0), nullptr);
  EXPECT_EQ(log.count("********* GetTempFileName error ********"), 1);
  EXPECT_EQ(log.debug.back().level, 9u);
  VoMsgFileResource file(folder.file("data").c_str(), nullptr, nullptr);
  EXPECT_EQ(file.getOutputStream(Locator::resourceForkPart), nullptr);
  EXPECT_FALSE(file.hasResourceFork());
}

TEST(VoObjectStub, TheLastHandleDeletes) {
  struct Counted {
    explicit Counted(int& alive) : mAlive(alive) { ++mAlive; }
    ~Counted() { --mAlive; }
    int& mAlive;
  };
  int alive = 0;
  {
    VoObjectStub<Counted> a(new Counted(alive)), empty;
    const std::unique_ptr<VoObjectStub<Counted>> b(a.copy());
    VoObjectStub<Counted> c(*b);
    EXPECT_EQ(a.countReference(), 3);
    c.setNewObject(new Counted(alive));
    EXPECT_EQ(alive, 2);
    EXPECT_EQ(a.countReference(), 2);
    c = *&c;
    c = a;
    EXPECT_EQ(alive, 1);
    c.free();
    c.free();
    EXPECT_EQ(c.getObject(), nullptr);
    EXPECT_EQ(a.countReference(), 2);
    c = empty;
    EXPECT_EQ(c.countReference(), 0);
  }
  EXPECT_EQ(alive, 0);
}

}  // namespace
