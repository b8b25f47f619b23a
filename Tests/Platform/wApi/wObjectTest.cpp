#include "wApi/wObject.h"
#include "Support/CountedObject.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{

using ZuTest::CountedObject;

wClass const DERIVED_CLASS{"Derived", &CountedObject::CLASS, &CountedObject::Destroy};
wClass const OTHER_CLASS{"Other", nullptr, nullptr};

class wObjectTest : public testing::Test
{
protected:
    std::atomic<int> destroyed{0};
};

/// A block with a part inside.
struct Whole : wObject
{
    struct Part : wObject
    {
        explicit Part(Whole& whole) : wObject(OTHER_CLASS, whole)
        {
        }
    };

    explicit Whole(std::atomic<int>& destroyedObjects) : wObject(CLASS), destroyed(destroyedObjects)
    {
    }

    static void Destroy(wObject* object)
    {
        ++static_cast<Whole*>(object)->destroyed;
        delete static_cast<Whole*>(object);
    }

    static wClass const CLASS;

    std::atomic<int>& destroyed;
    Part part{*this};
};

wClass const Whole::CLASS{"Whole", nullptr, &Whole::Destroy};

} // namespace

TEST_F(wObjectTest, HasOneReferenceWhenItIsNew)
{
    void* const object = new CountedObject(destroyed);

    EXPECT_EQ(wObject_RefCount(object), 1u);

    wObject_Release(object);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(wObjectTest, EndsWithItsLastReference)
{
    void* const object = new CountedObject(destroyed);
    wObject_Share(object);
    wObject_ShareMany(object, 3);
    ASSERT_EQ(wObject_RefCount(object), 5u);

    for (int i = 0; i < 4; ++i)
    {
        wObject_Release(object);
    }
    EXPECT_EQ(destroyed, 0);
    wObject_Release(object);

    EXPECT_EQ(destroyed, 1);
}

TEST_F(wObjectTest, TakesNullAsNothing)
{
    wObject_Share(nullptr);
    wObject_ShareMany(nullptr, 7);
    wObject_Release(nullptr);

    EXPECT_EQ(wObject_RefCount(nullptr), 0u);
    EXPECT_FALSE(wObject_Is(nullptr, CountedObject::CLASS));
}

TEST_F(wObjectTest, IsOfItsClassAndOfThoseItDerivesFrom)
{
    wHandle<CountedObject> const base(new CountedObject(destroyed));
    wHandle<CountedObject> const derived(new CountedObject(destroyed, DERIVED_CLASS));

    EXPECT_TRUE(wObject_Is(base.get(), CountedObject::CLASS));
    EXPECT_FALSE(wObject_Is(base.get(), DERIVED_CLASS));
    EXPECT_TRUE(wObject_Is(derived.get(), DERIVED_CLASS));
    EXPECT_TRUE(wObject_Is(derived.get(), CountedObject::CLASS));
    EXPECT_FALSE(wObject_Is(derived.get(), OTHER_CLASS));
}

TEST_F(wObjectTest, KeepsTheWholeAliveThroughItsPart)
{
    auto* const whole = new Whole(destroyed);
    void* const part = &whole->part;

    wObject_Share(part);
    EXPECT_EQ(wObject_RefCount(whole), 2u);
    EXPECT_EQ(wObject_RefCount(part), 2u);
    EXPECT_TRUE(wObject_Is(part, OTHER_CLASS));
    wObject_Release(whole);
    EXPECT_EQ(destroyed, 0);
    wObject_Release(part);

    EXPECT_EQ(destroyed, 1);
}

TEST_F(wObjectTest, HasOneReferenceAgainWhenItsClassKeepsIt)
{
    static int kept;
    kept = 0;
    static wClass const KEEPING{"Keeping", nullptr, [](wObject* object) {
                                    wObject_Revive(object);
                                    ++kept;
                                }};
    CountedObject object(destroyed, KEEPING);

    wObject_Release(&object);
    wObject_Release(&object);

    EXPECT_EQ(kept, 2);
    EXPECT_EQ(wObject_RefCount(&object), 1u);
}

TEST_F(wObjectTest, CountsFromManyThreads)
{
    void* const object = new CountedObject(destroyed);
    std::vector<std::thread> threads;

    for (int i = 0; i < 4; ++i)
    {
        wObject_Share(object);
        threads.emplace_back([object] {
            for (int pass = 0; pass < 1000; ++pass)
            {
                wObject_Share(object);
                wObject_Release(object);
            }
            wObject_Release(object);
        });
    }
    wObject_Release(object); // the last release destroys the object, on any thread
    for (auto& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ(destroyed, 1);
}

TEST_F(wObjectTest, IsHeldByAHandle)
{
    wHandle<CountedObject> first(new CountedObject(destroyed));
    wHandle<CountedObject> const second = wHandle_Share(first.get());

    first.reset();

    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(wObject_RefCount(second.get()), 1u);
    EXPECT_EQ(wHandle_Share<CountedObject>(nullptr), nullptr);
}
