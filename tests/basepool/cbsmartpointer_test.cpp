#include "basepool/cbrefcounted.h"
#include "basepool/cbsmartpointer.h"

#include <gtest/gtest.h>

namespace
{
int g_alive = 0;

struct IShape : virtual CbRefCounted
{
    virtual int Corners() const = 0;
};

struct INamed : virtual CbRefCounted
{
    virtual const char* Name() const = 0;
};

struct Triangle : IShape, INamed
{
    Triangle() { ++g_alive; }
    Triangle(const Triangle& other) : CbRefCounted(other), IShape(other), INamed(other) { ++g_alive; }
    ~Triangle() override { --g_alive; }
    int Corners() const override { return 3; }
    const char* Name() const override { return "triangle"; }
};
} // namespace

TEST(CbSmartPointer, DeletesWithTheLastReferenceAcrossInterfaces)
{
    g_alive = 0;
    {
        CbSmartPointer<Triangle> triangle = CbMakeSmart<Triangle>();
        CbSmartPointer<IShape> shape = triangle;
        CbSmartPointer<INamed> named = CbDynamicPointerCast<INamed>(shape);
        ASSERT_TRUE(named);
        EXPECT_STREQ(named->Name(), "triangle");
        EXPECT_EQ(triangle->GetReferenceCount(), 3u);

        // Wrapping the raw pointer again shares the one count.
        CbSmartPointer<IShape> again(shape.Get());
        EXPECT_EQ(triangle->GetReferenceCount(), 4u);
        triangle.Reset();
        shape = nullptr;
        again = CbSmartPointer<IShape>();
        EXPECT_EQ(g_alive, 1);
        EXPECT_EQ(named->GetReferenceCount(), 1u);
    }
    EXPECT_EQ(g_alive, 0);
}

TEST(CbSmartPointer, MovesAndSelfAssignmentKeepTheCount)
{
    g_alive = 0;
    CbSmartPointer<Triangle> a = CbMakeSmart<Triangle>();
    CbSmartPointer<Triangle> b = std::move(a);
    EXPECT_TRUE(a.IsNull());
    EXPECT_EQ(b->GetReferenceCount(), 1u);
    b = b;
    EXPECT_EQ(b->GetReferenceCount(), 1u);
    CbSmartPointer<IShape> moved = std::move(b);
    EXPECT_EQ(moved->GetReferenceCount(), 1u);
    EXPECT_EQ(g_alive, 1);

    // A copy of the object is a new object with a count of its own.
    CbSmartPointer<Triangle> copy = CbMakeSmart<Triangle>(*static_cast<Triangle*>(moved.Get()));
    EXPECT_EQ(copy->GetReferenceCount(), 1u);
    EXPECT_FALSE(copy == moved);
    EXPECT_EQ(g_alive, 2);
    moved.Reset();
    copy.Reset();
    EXPECT_EQ(g_alive, 0);
}
