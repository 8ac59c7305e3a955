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
using vomsg::test::RememberingLog;
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
    EXPECT_EQ(contentOf(*resource, kNoPart), "(none)");
    EXPECT_FALSE(fill(*resource, kNoPart, ""));
    EXPECT_EQ(resource->getSize(kNoPart), 0u);
    EXPECT_EQ(resource->getFileType(), 0x3F3F3F3Fu);
  }
}

TEST(VoMsgMemoryResource, CopiesOrUsesTheCallersBlock) {
  std::vector<char> mine = {'a', 'b', 'c'};
  VoMsgMemoryResource inPlace(mine.data(), 3, nullptr, nullptr), copied(mine.data(), 3, 1, nullptr, nullptr);
  EXPECT_EQ(inPlace.getMemoryPointer(Locator::dataPart), mine.data());
  mine[0] = 'A';
  EXPECT_EQ(contentOf(inPlace), "Abc");
  EXPECT_EQ(contentOf(copied), "abc");
  EXPECT_TRUE(fill(inPlace, Locator::dataPart, "written"));
  EXPECT_EQ(contentOf(inPlace), "written");
  EXPECT_EQ(std::string(mine.data(), 3), "Abc");
  EXPECT_EQ(contentOf(VoMsgMemoryResource(nullptr, 7, nullptr, nullptr)), "");
}

TEST(VoMsgResource, SameDataIsEqual) {
  char text[] = "abc";
  VoMsgMemoryResource memory(text, 3, "a", nullptr), same(text, 3, "b", nullptr), shorter(text, 2, nullptr, nullptr);
  VoMsgMemoryResource copied(text, 3, 1, nullptr, nullptr);
  VoMsgFileResource file("x/y", "a", nullptr), alike("x/y", "b", nullptr), nowhere(nullptr, nullptr, nullptr);
  VoMsgFileResource nobody(nullptr, nullptr, nullptr);
  const std::pair<Locator*, int> all[] = {{&memory, 1}, {&same, 1},  {&shorter, 2}, {&copied, 3},
                                          {&file, 4},   {&alike, 4}, {&nowhere, 5}, {&nobody, 6}};
  for (const auto& [one, data] : all)
    for (const auto& [another, otherData] : all) EXPECT_EQ(one->equal(another), data == otherData) << data << otherData;
  EXPECT_FALSE(memory.equal(nullptr) || file.equal(nullptr));
  EXPECT_EQ(contentOf(nowhere), "(none)");
  EXPECT_FALSE(fill(nowhere, Locator::dataPart, ""));
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
  held.resize(1);
  for (int i = 0; i < 3; ++i) Manager::freeTmpResource(held[0].get());
  EXPECT_EQ(Manager::currentAllocateMemorySize(), 0u);  // never below
}

TEST(VoMsgResourceManager, TemporaryFileIsPrivateAndLivesAsLongAsItsResource) {
  const TempFolder folder;
  const mode_t mask = umask(0);
  {
    const Resource resource(Manager::createTmpFileResource());
    const std::string path = static_cast<VoMsgFileResource&>(*resource).getFilePath(Locator::dataPart);
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
    // What the caller calls temporary goes too, even what stood there before.
    VoMsgFileResource own(folder.write("own", "host's own").c_str(), 1, nullptr, nullptr);
    EXPECT_EQ(contentOf(own), "host's own");
    EXPECT_TRUE(fill(own, Locator::dataPart, "replaced"));
  }
  EXPECT_EQ(folder.count(), 0u);
  EXPECT_TRUE(fill(VoMsgFileResource(folder.file("kept").c_str(), nullptr, nullptr), Locator::dataPart, ""));
  umask(mask);
  EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(folder.file("kept")).permissions()), 0644u);
}

TEST(VoMsgResourceManager, SomebodyElsesFileIsNeitherReadNorWrittenNorDeleted) {
  const TempFolder folder;
  const RememberingLog log;
  const std::string target = folder.write("target", "kept");
  std::vector<std::string> planted;
  for (const bool isLink : {false, true}) {
    const Resource resource(Manager::createTmpFileResource());
    planted.emplace_back(static_cast<VoMsgFileResource&>(*resource).getFilePath(Locator::dataPart));
    if (isLink)
      ASSERT_EQ(symlink(target.c_str(), planted.back().c_str()), 0);
    else
      vomsg::test::writeFile(planted.back(), "planted");
    EXPECT_EQ(contentOf(*resource), "(none)");
    EXPECT_FALSE(fill(*resource, Locator::dataPart, "secret"));
  }
  EXPECT_EQ(readFile(planted[0]), "planted");
  EXPECT_EQ(readFile(planted[1]), "kept");
  // Nor is a file followed elsewhere that was the resource's own once.
  const Resource resource(Manager::createTmpFileResource());
  const char* const path = static_cast<VoMsgFileResource&>(*resource).getFilePath(Locator::dataPart);
  ASSERT_TRUE(fill(*resource, Locator::dataPart, "own"));
  ASSERT_TRUE(::unlink(path) == 0 && symlink(target.c_str(), path) == 0);
  EXPECT_FALSE(fill(*resource, Locator::dataPart, "secret"));
  EXPECT_EQ(readFile(target), "kept");
}

TEST(VoMsgResourceManager, NamesAreFreshAndTakeNothingFromSeedOrEnvironment) {
  setenv("TMPDIR", "/nonexistent", 1);
  std::set<std::string> names;
  srand48(1);
  const long first = lrand48();
  for (int i = 0; i < 200; ++i) {
    srand48(1);
    const vomsg::detail::CString path(Manager::createTmpFilePath());
    ASSERT_TRUE(path);
    EXPECT_EQ(names.insert(path.get()).first->rfind(P_tmpdir "/VOMSG_", 0), 0u);
    EXPECT_EQ(lrand48(), first);  // the sequence of the UUIDs is left alone
  }
  EXPECT_EQ(names.size(), 200u);
  unsetenv("TMPDIR");

  const TempFolder folder;
  const RememberingLog log;
  Manager::setTmpDirPath(folder.file("missing").c_str());
  const vomsg::detail::CString instead(Manager::createTmpFilePath());
  ASSERT_TRUE(instead);
  EXPECT_EQ(std::string(instead.get()).rfind(P_tmpdir "/VOMSG_", 0), 0u);
  ASSERT_EQ(log.warnError.size(), 1u);
  EXPECT_EQ(log.warnError[0].level, 0u);
  EXPECT_NE(log.warnError[0].text.find("missing"), std::string::npos);
  const std::unique_ptr<Locator> resource(Manager::createTmpResource(0));
  ASSERT_TRUE(resource && fill(*resource, Locator::dataPart, "x"));
  const char* const path = static_cast<VoMsgFileResource&>(*resource).getFilePath(Locator::dataPart);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
}

TEST(VoObjectStub, TheLastHandleDeletes) {
  using Shared = std::shared_ptr<int>;
  const Shared watched = std::make_shared<int>(0);  // each shared object holds a copy
  {
    VoObjectStub<Shared> a(new Shared(watched));
    const std::unique_ptr<VoObjectStub<Shared>> b(a.copy());
    VoObjectStub<Shared> c(*b);
    EXPECT_EQ(a.countReference(), 3);
    c.setNewObject(new Shared(watched));
    EXPECT_EQ(watched.use_count(), 3);
    c = *&c;
    c = a;
    EXPECT_EQ(watched.use_count(), 2);
    c.free();
    c.free();
    EXPECT_EQ(c.getObject(), nullptr);
    EXPECT_EQ(a.countReference(), 2);
    c = VoObjectStub<Shared>();
    EXPECT_EQ(c.countReference(), 0);
  }
  EXPECT_EQ(watched.use_count(), 1);
}

}  // namespace
