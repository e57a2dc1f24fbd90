#include "platform/archive/container.h"

#include <filesystem>
#include <functional>

#include "tests/platform/archive/zip_fixture.h"

// What a container keeps over edits, saves and loads.

namespace {

using namespace testing;

class ContainerTest : public ZipTest {
  protected:
    void SetUp() override { load(ZipImage{.members = loaded}); }
    void load(const ZipImage& image) {
        ASSERT_EQ(zArchive_Load(archive.get(), write(image).c_str()), zStatus_Success);
    }
    void add(const std::string& name, const std::string& content) {
        ASSERT_EQ(zArchive_AddData(archive.get(), content.data(), content.size(), name.c_str(), 0),
                  zStatus_Success);
    }
    void remove(const std::string& name) {
        ASSERT_EQ(zArchive_DeleteFile(archive.get(), name.c_str()), zStatus_Success);
    }
    std::int64_t indexOf(const std::string& name) {
        std::int64_t index = -1;
        EXPECT_EQ(zArchive_Find(archive.get(), name.c_str(), &index), zStatus_Success) << name;
        return index;
    }
    zStatus save(const std::string& name) { return zArchive_Save(archive.get(), scratch.path(name).c_str()); }
    std::string saved() {
        EXPECT_EQ(save("saved.zip"), zStatus_Success) << failure::detailOf(zStatus_Malformed);
        return scratch.read("saved.zip");
    }

    /// What an added member looks like.
    static ZipMember added(const std::string& name, const std::string& content) {
        ZipMember member = stored(name, content);
        member.madeBy = 0x032D;
        return member.both([](ZipFields& fields) { fields.time = 0x00210000; });
    }

    const std::vector<ZipMember> loaded{stored("a", "first"), deflated("b", "second"),
                                        streamed(deflated("c", "third"))};
    const ArchiveHandle archive;
};

// ---- Order and bytes ------------------------------------------------------------------------------------

TEST_F(ContainerTest, savesUntouchedMembersAsTheyWere) {
    EXPECT_EQ(saved(), (ZipImage{.members = loaded}.bytes()));
}

TEST_F(ContainerTest, putsAddedMembersLast) {
    add("z", "1");
    add("A", "2");
    EXPECT_EQ(
        saved(),
        (ZipImage{.members = {loaded[0], loaded[1], loaded[2], added("z", "1"), added("A", "2")}}.bytes()));
}

TEST_F(ContainerTest, putsAReplacedMemberLast) {
    remove("a");
    add("a", "new");
    EXPECT_EQ(saved(), (ZipImage{.members = {loaded[1], loaded[2], added("a", "new")}}.bytes()));
    EXPECT_EQ(contentOf(archive.get(), "a"), "new");
}

TEST_F(ContainerTest, keepsTheArchiveCommentOverEdits) {
    load({.members = loaded, .comment = "the comment"});
    remove("b");
    EXPECT_EQ(saved(), (ZipImage{.members = {loaded[0], loaded[2]}, .comment = "the comment"}.bytes()));
}

TEST_F(ContainerTest, forgetsTheCommentWithTheArchiveItWasIn) {
    load({.members = loaded, .comment = "the comment"});
    load({.members = loaded});
    EXPECT_EQ(saved(), (ZipImage{.members = loaded}.bytes()));
}

TEST_F(ContainerTest, ofNothingIsAnArchive) {
    for (const ZipMember& member : loaded) remove(member.central.name);
    EXPECT_EQ(saved(), ZipImage{}.bytes());
    load({});
    add("only", "one");
    EXPECT_EQ(saved(), (ZipImage{.members = {added("only", "one")}}.bytes()));
}

TEST_F(ContainerTest, givesEqualBytesForEqualInputs) {
    std::vector<std::string> results;
    for (int i = 0; i < 3; ++i) {
        const ArchiveHandle other;
        ASSERT_EQ(zArchive_Load(other.get(), scratch.path("a.zip").c_str()), zStatus_Success);
        ASSERT_EQ(zArchive_AddData(other.get(), "x", 1, "added", 0), zStatus_Success);
        if (i == 1) {
            EXPECT_EQ(contentOf(other.get(), "b"), "second");  // looking changes nothing
        }
        ASSERT_EQ(zArchive_Save(other.get(), scratch.path("saved.zip").c_str()), zStatus_Success);
        results.push_back(scratch.read("saved.zip"));
    }
    EXPECT_THAT(results, Each(results[0]));
}

// ---- Indices and pointers -------------------------------------------------------------------------------

TEST_F(ContainerTest, numbersMembersInTheirOrder) {
    EXPECT_EQ(indexOf("a"), 0);
    EXPECT_EQ(indexOf("c"), 2);
    add("d", "");
    EXPECT_EQ(indexOf("d"), 3);
}

TEST_F(ContainerTest, keepsSeveralFoundMembersReadyUntilItIsChanged) {
    const std::int64_t a = indexOf("a");
    const void* first = zArchive_FileData(archive.get(), a);
    const std::int64_t b = indexOf("b");
    EXPECT_EQ(indexOf("a"), a);
    EXPECT_EQ(zArchive_FileData(archive.get(), a), first);
    EXPECT_NE(zArchive_FileData(archive.get(), b), nullptr);
    add("d", "");
    EXPECT_EQ(zArchive_FileData(archive.get(), a), nullptr);
    EXPECT_EQ(zArchive_FileSize(archive.get(), b), 0u);
    EXPECT_EQ(contentOf(archive.get(), "a"), "first");
    remove("d");
    EXPECT_EQ(zArchive_FileData(archive.get(), a), nullptr);
}

TEST_F(ContainerTest, keepsFoundMembersReadyOverASave) {
    const std::int64_t a = indexOf("a");
    const void* first = zArchive_FileData(archive.get(), a);
    ASSERT_EQ(save("a.zip"), zStatus_Success);
    EXPECT_EQ(zArchive_FileData(archive.get(), a), first);
}

// ---- Saving over the loaded file ------------------------------------------------------------------------

TEST_F(ContainerTest, goesOnWithTheFileItHasReplaced) {
    remove("a");
    add("d", "fourth");
    ASSERT_EQ(save("a.zip"), zStatus_Success);
    const std::string once = scratch.read("a.zip");
    EXPECT_EQ(once, (ZipImage{.members = {loaded[1], loaded[2], added("d", "fourth")}}.bytes()));
    EXPECT_EQ(contentOf(archive.get(), "b"), "second");
    EXPECT_EQ(contentOf(archive.get(), "c"), "third");
    EXPECT_EQ(contentOf(archive.get(), "d"), "fourth");
    ASSERT_EQ(save("a.zip"), zStatus_Success);
    EXPECT_EQ(scratch.read("a.zip"), once);
    remove("b");
    ASSERT_EQ(save("a.zip"), zStatus_Success);
    EXPECT_EQ(scratch.read("a.zip"), (ZipImage{.members = {loaded[2], added("d", "fourth")}}.bytes()));
    EXPECT_THAT(scratch.entries(), ElementsAre("a.zip"));
}

TEST_F(ContainerTest, knowsTheLoadedFileByAnyName) {
    std::filesystem::create_directory(std::filesystem::path(scratch.path("sub")));
    remove("b");
    ASSERT_EQ(save("sub/../a.zip"), zStatus_Success);
    EXPECT_EQ(contentOf(archive.get(), "c"), "third");
    EXPECT_EQ(scratch.read("a.zip"), (ZipImage{.members = {loaded[0], loaded[2]}}.bytes()));
}

TEST_F(ContainerTest, staysWithTheLoadedFileWhenItIsSavedElsewhere) {
    remove("b");
    add("d", "fourth");
    ASSERT_EQ(save("elsewhere.zip"), zStatus_Success);
    EXPECT_EQ(scratch.read("a.zip"), (ZipImage{.members = loaded}.bytes()));
    std::filesystem::remove(std::filesystem::path(scratch.path("elsewhere.zip")));
    EXPECT_EQ(contentOf(archive.get(), "c"), "third");
}

TEST_F(ContainerTest, isWholeAfterASaveThatFailed) {
    add("d", "fourth");
    EXPECT_EQ(save("absent/saved.zip"), zStatus_NotFound);
    EXPECT_EQ(saved(),
              (ZipImage{.members = {loaded[0], loaded[1], loaded[2], added("d", "fourth")}}.bytes()));
}

// ---- A file that is changed by others -------------------------------------------------------------------

TEST_F(ContainerTest, refusesToSaveFromAFileWhoseDataChanged) {
    std::vector<ZipMember> changed = loaded;
    changed[0].data = "FIRST";
    write({.members = changed});
    EXPECT_EQ(save("saved.zip"), zStatus_Malformed);
    EXPECT_EQ(detail(zStatus_Malformed), "member a: checksum mismatch");
    EXPECT_FALSE(scratch.exists("saved.zip"));
}

TEST_F(ContainerTest, refusesToGoOnWithAFileOfOtherMembers) {
    std::vector<ZipMember> changed = loaded;
    changed[0].both([](ZipFields& fields) { fields.name = "x"; });
    write({.members = changed});
    EXPECT_EQ(save("saved.zip"), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), "the file was changed while it was read");
    std::int64_t index = 0;
    EXPECT_EQ(zArchive_Find(archive.get(), "a", &index), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), "the file was changed while it was read");
}

TEST_F(ContainerTest, refusesToGoOnWithAFileThatWasCut) {
    scratch.write("a.zip", scratch.read("a.zip").substr(0, 20));
    EXPECT_EQ(save("saved.zip"), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), "the file became shorter while it was read");
    EXPECT_THAT(scratch.entries(), ElementsAre("a.zip"));
}

/// Writes the archive anew while it is being saved.
class Meddler : public LiveContent {
  public:
    explicit Meddler(std::function<void()> meddle) : meddle_(std::move(meddle)) {}
    zStatus serialise(std::string& bytes) const override {
        meddle_();
        bytes = "meddled";
        return zStatus_Success;
    }

  private:
    std::function<void()> meddle_;
};

TEST_F(ContainerTest, refusesADirectoryThatChangesWhileItIsSaved) {
    // Long enough that it is read from the file both times, for the members and for the new directory.
    ZipImage image;
    for (int i = 0; i < 4000; ++i) {
        image.members.push_back(stored(std::to_string(i), ""));
        image.members.back().comment = std::string(100, 'c');
    }
    load(image);
    image.members[0].comment[50] = 'C';
    const auto meddler = std::make_shared<Meddler>([&] { write(image); });
    ASSERT_EQ(zArchive_AddLive(archive.get(), meddler, "live"), zStatus_Success);
    EXPECT_EQ(save("saved.zip"), zStatus_IoError);
    EXPECT_EQ(detail(zStatus_IoError), "the file was changed while it was read");
    EXPECT_THAT(scratch.entries(), ElementsAre("a.zip"));
}

// ---- Live members ---------------------------------------------------------------------------------------

/// Counts how often it is asked for its bytes.
class Counted : public LiveContent {
  public:
    zStatus serialise(std::string& bytes) const override {
        ++asked;
        if (status != zStatus_Success) return failure::record(status, "cannot be written down");
        bytes = text;
        return zStatus_Success;
    }
    std::string text;
    zStatus status = zStatus_Success;
    mutable int asked = 0;
};

class LiveMember : public ContainerTest {
  protected:
    void SetUp() override {
        ContainerTest::SetUp();
        ASSERT_EQ(zArchive_AddLive(archive.get(), live, "live"), zStatus_Success);
    }
    const std::shared_ptr<Counted> live = std::make_shared<Counted>();
};

TEST_F(LiveMember, isAskedForItsBytesWhenSomebodyLooks) {
    for (int edit = 0; edit < 1000; ++edit) live->text += 'x';
    EXPECT_EQ(live->asked, 0);
    EXPECT_EQ(contentOf(archive.get(), "live"), std::string(1000, 'x'));
    EXPECT_EQ(live->asked, 1);
    live->text = "changed";
    EXPECT_EQ(contentOf(archive.get(), "live"), "changed");
    const std::int64_t index = indexOf("live");
    EXPECT_EQ(static_cast<const char*>(zArchive_FileData(archive.get(), index))[7], 0);
}

TEST_F(LiveMember, isSavedLikeAnAddedOne) {
    live->text = "as it is now";
    EXPECT_EQ(
        saved(),
        (ZipImage{.members = {loaded[0], loaded[1], loaded[2], added("live", "as it is now")}}.bytes()));
    EXPECT_EQ(live->asked, 1);
}

TEST_F(LiveMember, isHandedOutByItsNameAlone) {
    EXPECT_EQ(zArchive_Live(archive.get(), "live"), live);
    EXPECT_EQ(zArchive_Live(archive.get(), "a"), nullptr);
    EXPECT_EQ(zArchive_Live(archive.get(), "absent"), nullptr);
    add("plain", "");
    EXPECT_EQ(zArchive_Live(archive.get(), "plain"), nullptr);
}

TEST_F(LiveMember, goesWhenItIsRemoved) {
    std::weak_ptr<LiveContent> watched;
    {
        const auto other = std::make_shared<Counted>();
        watched = other;
        ASSERT_EQ(zArchive_AddLive(archive.get(), other, "other"), zStatus_Success);
    }
    EXPECT_FALSE(watched.expired());
    remove("other");
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(zArchive_Live(archive.get(), "other"), nullptr);
}

TEST_F(LiveMember, passesItsFailureOn) {
    live->status = zStatus_Unsupported;
    std::int64_t index = 0;
    EXPECT_EQ(zArchive_Find(archive.get(), "live", &index), zStatus_Unsupported);
    EXPECT_EQ(failure::detailOf(zStatus_Unsupported), "cannot be written down");
    EXPECT_EQ(save("saved.zip"), zStatus_Unsupported);
    EXPECT_THAT(scratch.entries(), ElementsAre("a.zip"));
}

TEST_F(LiveMember, hasANameLikeAnyOther) {
    const auto other = std::make_shared<Counted>();
    EXPECT_EQ(zArchive_AddLive(archive.get(), other, "live"), zStatus_BadArgument);
    EXPECT_EQ(detail(zStatus_BadArgument), "there is a member live already");
    EXPECT_EQ(zArchive_AddLive(archive.get(), other, "a"), zStatus_BadArgument);
    EXPECT_EQ(zArchive_AddLive(archive.get(), other, ""), zStatus_BadArgument);
}

}  // namespace
