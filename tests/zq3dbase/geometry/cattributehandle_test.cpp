// Typed handles of the six attribute types on both domains, their refusal of names that have no
// attribute of their domain and type, and the raw and flag stores with their SetAccurate kinds.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/cattributehandle.h"
#include "zq3dbase/geometry/cflagtriangulation.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Geometry;
using GeometryFixtures::thrown;

namespace
{
template <class T> struct SSample;
template <> struct SSample<float>
{
    static float Get(unsigned int i) { return 0.25f * float(i) - 1.0f; }
    static constexpr const char* text = "float";
};
template <> struct SSample<double>
{
    static double Get(unsigned int i) { return 1e-300 * double(i + 1); }
    static constexpr const char* text = "double";
};
template <> struct SSample<CbVector3f>
{
    static CbVector3f Get(unsigned int i) { return {float(i), -float(i), 0.5f}; }
    static constexpr const char* text = "class CbVector3f";
};
template <> struct SSample<ZqColorRGBA>
{
    static ZqColorRGBA Get(unsigned int i)
    {
        return ZqColorRGBA::FromHSL(30.0f * float(i), 1.0f, 0.5f, 0.5f);
    }
    static constexpr const char* text = "class ZqColorRGBA";
};
template <> struct SSample<CbVector2f>
{
    static CbVector2f Get(unsigned int i) { return {float(i), 0.5f}; }
    static constexpr const char* text = "class CbVector2f";
};
template <> struct SSample<unsigned int>
{
    static unsigned int Get(unsigned int i) { return 0x80000000u | i; }
    static constexpr const char* text = "unsigned int";
};

template <class T> class AttributeHandle : public ::testing::Test
{
};
using AttributeTypes = ::testing::Types<float, double, CbVector3f, ZqColorRGBA, CbVector2f, unsigned int>;
TYPED_TEST_SUITE(AttributeHandle, AttributeTypes);
} // namespace

TYPED_TEST(AttributeHandle, ValuesOfVerticesAndTrianglesAreKeptApart)
{
    using T = TypeParam;
    CTriangulation t = GeometryFixtures::Grid(3);
    t.AddAttribute<CVertexRef, T>(L"v");
    t.AddAttribute<CTriangleRef, T>(L"t");
    CAttributeHandle<CVertexRef, T> vertexValues(t, L"v");
    CAttributeHandle<CTriangleRef, T> triangleValues(t, L"t");
    for (unsigned int i = 0; i < 9; ++i)
        vertexValues.Set(CVertexRef(i), SSample<T>::Get(i));
    for (unsigned int i = 0; i < 8; ++i)
        triangleValues[CTriangleRef(i)] = SSample<T>::Get(100 + i);

    // A second handle sees the same values; the raw store holds them packed.
    const CAttributeHandle<CVertexRef, T> again(t, L"v");
    const auto* raw = t.FindAttribute<CVertexRef>(L"v", SAttributeTypeOf<T>::value);
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(raw->GetElementSize(), sizeof(T));
    for (unsigned int i = 0; i < 9; ++i)
    {
        ASSERT_TRUE(again.Get(CVertexRef(i)) == SSample<T>::Get(i)) << i;
        ASSERT_EQ(std::memcmp(raw->GetElement(CVertexRef(i)), &again[CVertexRef(i)], sizeof(T)), 0);
    }
    for (unsigned int i = 0; i < 8; ++i)
        ASSERT_TRUE(triangleValues.GetValues()[i] == SSample<T>::Get(100 + i)) << i;
}

TYPED_TEST(AttributeHandle, AMissingNameOrAnotherTypeOrDomainThrowsNamingTheHandle)
{
    using T = TypeParam;
    CTriangulation t = GeometryFixtures::Grid(2);
    t.AddAttribute<CTriangleRef, T>(L"onTriangles");
    // Another type of the same size would read the bytes wrongly: float and unsigned int, say.
    if constexpr (std::is_same_v<T, unsigned int>)
        t.AddAttribute<CVertexRef, double>(L"other");
    else
        t.AddAttribute<CVertexRef, unsigned int>(L"other");
    const std::string expected = std::string("Geometry::CAttributeHandle<class Geometry::CVertexRef,") +
                                 SSample<T>::text + ">::CAttributeHandle";
    for (const wchar_t* name : {L"missing", L"onTriangles", L"other"})
    {
        std::string kind;
        EXPECT_EQ(thrown([&] { CAttributeHandle<CVertexRef, T> handle(t, name); }, &kind), expected);
        EXPECT_EQ(kind, "CbExceptionPreconditionViolation");
    }
}

TEST(AttributeTriangulationRaw, SetAccurateCoversTheElementsOfEachKind)
{
    CTriangulation t = GeometryFixtures::Grid(3);
    CAttributeTriangulationRaw<CVertexRef> store(t, 3, eEK_None);
    const unsigned int expected[] = {0, 9, 8, 33, 24};
    for (unsigned int kind = 0; kind < 5; ++kind)
    {
        store.SetAccurate(kind);
        EXPECT_EQ(store.GetKind(), kind);
        EXPECT_EQ(store.GetCount(), expected[kind]) << kind;
        EXPECT_EQ(store.GetByteCount(), 3u * expected[kind]);
    }
    std::string kind;
    EXPECT_EQ(thrown([&] { store.SetAccurate(5); }, &kind),
              "Geometry::CAttributeTriangulationRaw<class Geometry::CVertexRef>::SetAccurate");
    EXPECT_EQ(kind, "CbException");
    EXPECT_EQ(store.GetKind(), 4u);
    EXPECT_EQ(thrown([&] { CAttributeTriangulationRaw<CVertexRef>(t, 4, 17); }),
              "Geometry::CAttributeTriangulationRaw<class Geometry::CVertexRef>::SetAccurate");
}

TEST(AttributeTriangulationRaw, ElementsKeepTheirBytesAndNewOnesAreZero)
{
    CTriangulation t = GeometryFixtures::Grid(2);
    CAttributeTriangulationRaw<CTriangleRef> store(t, 5, eEK_Corners);
    std::memset(store.GetData(), 0xAB, store.GetByteCount());
    t.AddTriangle(1, 2, 3);
    store.SetAccurate();
    ASSERT_EQ(store.GetCount(), 9u);
    const auto* bytes = static_cast<const unsigned char*>(store.GetElement(CTriangleRef(0)));
    EXPECT_EQ(bytes[6 * 5 - 1], 0xAB);
    for (unsigned int i = 6 * 5; i < 9 * 5; ++i)
        ASSERT_EQ(bytes[i], 0) << i;
}

TEST(FlagTriangulation, SetAccurateCountsAndTheFlagsOfElementsThatStay)
{
    CTriangulation t = GeometryFixtures::Grid(3);
    CFlagTriangulation<CVertexRef> flags(t, eEK_None);
    const unsigned int expected[] = {0, 9, 8, 33, 24};
    for (unsigned int kind = 0; kind < 5; ++kind)
    {
        flags.SetAccurate(kind);
        EXPECT_EQ(flags.GetCount(), expected[kind]) << kind;
    }
    std::string kind;
    EXPECT_EQ(thrown([&] { flags.SetAccurate(5); }, &kind),
              "Geometry::CFlagTriangulation<class Geometry::CVertexRef>::SetAccurate");
    EXPECT_EQ(kind, "CbException");

    // 130 vertices: flags in three words, the last one partly used.
    CTriangulation many;
    many.SetVertexCount(130);
    CFlagTriangulation<CVertexRef> marks(many);
    EXPECT_FALSE(marks.TestAndSet(CVertexRef(64)));
    EXPECT_TRUE(marks.TestAndSet(CVertexRef(64)));
    marks.Set(129);
    marks.Set(65);
    marks.Set(65, false);
    EXPECT_EQ(marks.CountSet(), 2u);
    // Shrinking drops the flags past the new end; growing again brings them back clear.
    many.SetVertexCount(100);
    marks.SetAccurate();
    many.SetVertexCount(130);
    marks.SetAccurate();
    EXPECT_EQ(marks.CountSet(), 1u);
    EXPECT_FALSE(marks.IsSet(129));
    marks.SetAll(true);
    EXPECT_EQ(marks.CountSet(), 130u);
    many.SetVertexCount(140);
    marks.SetAccurate();
    EXPECT_EQ(marks.CountSet(), 130u);
    EXPECT_FALSE(marks.IsSet(135));
}
