// Typed handles of the six attribute types on both domains and their refusal of names without an
// attribute of their domain and type; the raw and flag stores with their SetAccurate kinds.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/cattributehandle.h"
#include "zq3dbase/geometry/cflagtriangulation.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Geometry;
using GeometryFixtures::thrown;

namespace
{
// A value of T that differs for every i, and T as the exception texts spell it.
template <class T> T sample(unsigned int i)
{
    const float f = float(i);
    if constexpr (std::is_same_v<T, CbVector3f>)
        return {f, -f, 0.5f};
    else if constexpr (std::is_same_v<T, ZqColorRGBA>)
        return {f / 64, 1, 0, 0.5f};
    else if constexpr (std::is_same_v<T, CbVector2f>)
        return {f, 0.5f};
    else
        return T(0x80000000u + i);
}
template <class T> const char* spelled()
{
    if constexpr (std::is_same_v<T, CbVector3f>)
        return "class CbVector3f";
    else if constexpr (std::is_same_v<T, ZqColorRGBA>)
        return "class ZqColorRGBA";
    else if constexpr (std::is_same_v<T, CbVector2f>)
        return "class CbVector2f";
    else
        return std::is_same_v<T, float> ? "float" : std::is_same_v<T, double> ? "double" : "unsigned int";
}

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
        vertexValues.Set(CVertexRef(i), sample<T>(i));
    for (unsigned int i = 0; i < 8; ++i)
        triangleValues[CTriangleRef(i)] = sample<T>(100 + i);

    // A second handle sees the same values; the raw store holds them packed.
    const CAttributeHandle<CVertexRef, T> again(t, L"v");
    const auto* raw = t.FindAttribute<CVertexRef>(L"v", SAttributeTypeOf<T>::value);
    ASSERT_NE(raw, nullptr);
    for (unsigned int i = 0; i < 9; ++i)
    {
        ASSERT_TRUE(again.Get(CVertexRef(i)) == sample<T>(i)) << i;
        ASSERT_EQ(std::memcmp(raw->GetData() + i * sizeof(T), &again[CVertexRef(i)], sizeof(T)), 0);
    }
    for (unsigned int i = 0; i < 8; ++i)
        ASSERT_TRUE(triangleValues.GetValues()[i] == sample<T>(100 + i)) << i;
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
                                 spelled<T>() + ">::CAttributeHandle";
    for (const wchar_t* name : {L"missing", L"onTriangles", L"other"})
    {
        std::string kind;
        EXPECT_EQ(thrown([&] { CAttributeHandle<CVertexRef, T> handle(t, name); }, &kind), expected);
        EXPECT_EQ(kind, "CbExceptionPreconditionViolation");
    }
}

TEST(TriangulationStores, SetAccurateCoversTheElementsOfEachKindAndThrowsOutsideThem)
{
    CTriangulation t = GeometryFixtures::Grid(3);
    CAttributeTriangulationRaw<CVertexRef> raw(t, 3, eEK_None);
    CFlagTriangulation<CVertexRef> flags(t, eEK_None);
    const unsigned int expected[] = {0, 9, 8, 33, 24};
    for (unsigned int kind = 0; kind < 5; ++kind)
    {
        raw.SetAccurate(kind);
        flags.SetAccurate(kind);
        EXPECT_EQ(raw.GetCount(), expected[kind]) << kind;
        EXPECT_EQ(raw.GetByteCount(), 3u * expected[kind]) << kind;
        EXPECT_EQ(flags.GetCount(), expected[kind]) << kind;
    }
    std::string kind;
    EXPECT_EQ(thrown([&] { raw.SetAccurate(5); }, &kind),
              "Geometry::CAttributeTriangulationRaw<class Geometry::CVertexRef>::SetAccurate");
    EXPECT_EQ(kind, "CbException");
    EXPECT_EQ(raw.GetKind(), 4u);
    EXPECT_EQ(thrown([&] { flags.SetAccurate(5); }, &kind),
              "Geometry::CFlagTriangulation<class Geometry::CVertexRef>::SetAccurate");
    EXPECT_EQ(kind, "CbException");
}

TEST(TriangulationStores, FlagsOfElementsThatStayAreKeptAndNewOnesAreClear)
{
    // 130 vertices: flags in three words, the last one partly used.
    CTriangulation t;
    t.SetVertexCount(130);
    CFlagTriangulation<CVertexRef> marks(t);
    EXPECT_FALSE(marks.TestAndSet(CVertexRef(64)));
    EXPECT_TRUE(marks.TestAndSet(CVertexRef(64)));
    marks.Set(129);
    marks.Set(65);
    marks.Set(65, false);
    EXPECT_EQ(marks.CountSet(), 2u);
    // Shrinking drops the flags past the new end; growing again brings them back clear.
    t.SetVertexCount(100);
    marks.SetAccurate();
    t.SetVertexCount(130);
    marks.SetAccurate();
    EXPECT_EQ(marks.CountSet(), 1u);
    EXPECT_FALSE(marks.IsSet(129));
    marks.SetAll(true);
    EXPECT_EQ(marks.CountSet(), 130u);
    t.SetVertexCount(140);
    marks.SetAccurate();
    EXPECT_EQ(marks.CountSet(), 130u);
    EXPECT_FALSE(marks.IsSet(135));
}
