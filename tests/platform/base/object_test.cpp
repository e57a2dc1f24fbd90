#include "platform/base/object.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/base/failure.h"
#include "platform/base/log.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// An object that notes when it goes, and may own another.
class Probe : public zObject {
  public:
    explicit Probe(bool& alive, const char* kind = "probe") : alive_(alive), kind_(kind) { alive_ = true; }
    ~Probe() override { alive_ = false; }
    const char* kind() const override { return kind_; }

    Ta::Object<zHandle> owned;

  private:
    bool& alive_;
    const char* kind_;
};

class Other : public zObject {
  public:
    const char* kind() const override { return "other"; }
};

class ObjectTest : public testing::Test {
  protected:
    Ta::Object<zHandle> make() {
        Ta::Object<zHandle> object;
        *object.out() = (new Probe(alive))->handle();
        return object;
    }

    bool alive = false;
};

TEST_F(ObjectTest, goesWithItsLastReference) {
    const zHandle handle = (new Probe(alive))->handle();
    EXPECT_EQ(zObject_Retain(handle), zStatus_Success);
    EXPECT_EQ(zObject_Destroy(handle), zStatus_Success);
    EXPECT_TRUE(alive);
    EXPECT_EQ(zObject_Destroy(handle), zStatus_Success);
    EXPECT_FALSE(alive);
}

TEST_F(ObjectTest, countsReferencesAtomically) {
    constexpr int threads = 4;
    constexpr int each = 20'000;
    const zHandle handle = (new Probe(alive))->handle();
    std::vector<std::thread> sharers;
    for (int i = 0; i < threads; ++i) {
        sharers.emplace_back([handle] {
            for (int j = 0; j < each; ++j) EXPECT_EQ(zObject_Retain(handle), zStatus_Success);
        });
    }
    for (std::thread& sharer : sharers) sharer.join();
    for (int i = 0; i < threads * each; ++i) ASSERT_EQ(zObject_Destroy(handle), zStatus_Success);
    EXPECT_TRUE(alive);
    EXPECT_EQ(zObject_Destroy(handle), zStatus_Success);
    EXPECT_FALSE(alive);
}

TEST_F(ObjectTest, takesWhatItOwnsWithIt) {
    bool ownedAlive = false;
    auto* owner = new Probe(alive);
    *owner->owned.out() = (new Probe(ownedAlive))->handle();
    EXPECT_EQ(zObject_Destroy(owner->handle()), zStatus_Success);
    EXPECT_FALSE(alive);
    EXPECT_FALSE(ownedAlive);
}

TEST_F(ObjectTest, thatIsDeadOrNoneIsRefused) {
    const zHandle handle = (new Probe(alive))->handle();
    EXPECT_EQ(zObject_Destroy(handle), zStatus_Success);
    EXPECT_EQ(zObject_Destroy(handle), zStatus_BadArgument);
    EXPECT_EQ(zObject_Retain(handle), zStatus_BadArgument);
    EXPECT_EQ(zObject_Destroy(nullptr), zStatus_BadArgument);
    EXPECT_EQ(zObject_Retain(nullptr), zStatus_BadArgument);
    int none = 0;
    EXPECT_EQ(zObject_Destroy(&none), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the handle is that of no living object");
}

TEST_F(ObjectTest, isKnownByItsType) {
    const Ta::Object<zHandle> object = make();
    EXPECT_NE(zObject::as<Probe>(object.get()), nullptr);
    EXPECT_EQ(zObject::as<Other>(object.get()), nullptr);
    EXPECT_EQ(zObject::as<Probe>(nullptr), nullptr);
}

TEST_F(ObjectTest, livesAsLongAsAHolder) {
    {
        const Ta::Object<zHandle> first = make();
        {
            const Ta::Object<zHandle> copy = first;
            EXPECT_EQ(copy.get(), first.get());
        }
        EXPECT_TRUE(alive);
    }
    EXPECT_FALSE(alive);
}

TEST_F(ObjectTest, isReleasedByAssignment) {
    Ta::Object<zHandle> holder = make();
    const Ta::Object<zHandle> copy = holder;
    holder = nullptr;
    EXPECT_EQ(holder.get(), nullptr);
    EXPECT_TRUE(alive);

    bool secondAlive = false;
    Ta::Object<zHandle> second;
    *second.out() = (new Probe(secondAlive))->handle();
    second = copy;
    EXPECT_FALSE(secondAlive);
    EXPECT_EQ(second.get(), copy.get());
}

TEST_F(ObjectTest, isMovedWithoutAnotherReference) {
    Ta::Object<zHandle> holder = make();
    Ta::Object<zHandle> moved = std::move(holder);
    Ta::Object<zHandle> assigned;
    assigned = std::move(moved);
    EXPECT_TRUE(alive);
    assigned = nullptr;
    EXPECT_FALSE(alive);
}

TEST_F(ObjectTest, survivesAssignmentToItself) {
    Ta::Object<zHandle> holder = make();
    const Ta::Object<zHandle>& same = holder;
    holder = same;
    EXPECT_TRUE(alive);
    EXPECT_NE(holder.get(), nullptr);
}

TEST_F(ObjectTest, givesWayToTheNextOne) {
    Ta::Object<zHandle> holder = make();
    EXPECT_EQ(*holder.out(), nullptr);
    EXPECT_FALSE(alive);
}

TEST_F(ObjectTest, raisesWhenAReleaseFails) {
    Ta::Object<zHandle> holder = make();
    ASSERT_EQ(zObject_Destroy(holder.get()), zStatus_Success);
    try {
        holder = nullptr;
        FAIL();
    } catch (const Ta::Exception& exception) {
        EXPECT_EQ(exception.operation(), "Ta::Object<void *>::operator =");
        EXPECT_EQ(exception.status(), zStatus_BadArgument);
    }
}

TEST_F(ObjectTest, thatIsDeadIsNotShared) {
    const Ta::Object<zHandle> holder = make();
    ASSERT_EQ(zObject_Destroy(holder.get()), zStatus_Success);
    try {
        const Ta::Object<zHandle> copy(holder);
        FAIL();
    } catch (const Ta::Exception& exception) {
        EXPECT_EQ(exception.operation(), "Ta::Object<void *>::Object");
        EXPECT_EQ(exception.status(), zStatus_BadArgument);
    }
}

TEST_F(ObjectTest, isNoTroubleWhenItWentBeforeItsHolder) {
    const Ta::Object<zHandle> holder = make();
    EXPECT_EQ(zObject_Destroy(holder.get()), zStatus_Success);
}

std::vector<std::string> reported() {
    static std::vector<std::string> entries;
    entries.clear();
    const zLogHandler handler = [](void*, const zLogEntry* entry) {
        entries.emplace_back(entry->message);
        return zStatus_Success;
    };
    EXPECT_EQ(zApiLib_AddLogHandler(handler, nullptr), zStatus_Success);
    zObject_ReportLeaks();
    EXPECT_EQ(zApiLib_RemoveLogHandler(handler, nullptr), zStatus_Success);
    return entries;
}

TEST(LeakReport, namesEveryLivingObjectInOrder) {
    EXPECT_THAT(reported(), IsEmpty());
    bool alive[3];
    const zHandle handles[] = {(new Probe(alive[0], "XML document"))->handle(),
                               (new Probe(alive[1], "archive"))->handle(),
                               (new Probe(alive[2], "XML document"))->handle()};
    EXPECT_THAT(reported(), ElementsAre("leaked object: XML document", "leaked object: XML document",
                                        "leaked object: archive"));
    for (const zHandle handle : handles) EXPECT_EQ(zObject_Destroy(handle), zStatus_Success);
    EXPECT_THAT(reported(), IsEmpty());
}

}  // namespace
