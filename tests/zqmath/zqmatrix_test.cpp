// The float matrices: shapes, element and row access, arithmetic, product and transpose.

#include "basepool/cbexception.h"
#include "zqmath/zqmatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

template <class T> class ZqMatrixTest : public ::testing::Test
{
};
using ZqMatrixScalars = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ZqMatrixTest, ZqMatrixScalars);

TYPED_TEST(ZqMatrixTest, StoresRowByRowAndGivesRowsAndColumns)
{
    using M = ZqMatrix<TypeParam>;
    M m(2, 3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(m.GetRows(), 2u);
    EXPECT_EQ(m.GetCols(), 3u);
    EXPECT_FALSE(m.IsVector());
    EXPECT_EQ(m(1, 0), TypeParam(4));
    EXPECT_EQ(m[4], TypeParam(5));
    EXPECT_EQ(m.GetRow(1)[2], TypeParam(6));
    EXPECT_EQ(m.GetColumn(1), M(2, 1, {2, 5}));
    m.SetColumn(2, M::Vector({7, 8}));
    EXPECT_EQ(m, M(2, 3, {1, 2, 7, 4, 5, 8}));
    EXPECT_EQ(m.Transpose(), M(3, 2, {1, 4, 2, 5, 7, 8}));

    const M row(1, 4);
    EXPECT_TRUE(row.IsVector());
    EXPECT_EQ(row.GetDimension(), 4u);
    EXPECT_EQ(M::Identity(3)(2, 2), TypeParam(1));
    EXPECT_EQ(M::Identity(3)(2, 1), TypeParam(0));
}

TYPED_TEST(ZqMatrixTest, ArithmeticAndProduct)
{
    using M = ZqMatrix<TypeParam>;
    const M a(2, 2, {1, 2, 3, 4});
    const M b(2, 2, {5, 6, 7, 8});
    EXPECT_EQ(a + b, M(2, 2, {6, 8, 10, 12}));
    EXPECT_EQ(b - a, M(2, 2, {4, 4, 4, 4}));
    EXPECT_EQ(TypeParam(2) * a, a * TypeParam(2));
    EXPECT_EQ(-a, M(2, 2, {-1, -2, -3, -4}));
    EXPECT_EQ(a * b, M(2, 2, {19, 22, 43, 50}));
    EXPECT_EQ(a * M::Identity(2), a);
    // (2 x 3) (3 x 1)
    EXPECT_EQ(M(2, 3, {1, 0, 2, 0, 1, -1}) * M::Vector({3, 4, 5}), M::Vector({13, -1}));
    EXPECT_EQ(a.GetSquaredLength(), TypeParam(30));
}

TYPED_TEST(ZqMatrixTest, MismatchedShapesAndIndicesThrowNamingTheOperation)
{
    using M = ZqMatrix<TypeParam>;
    const std::string type = std::is_same_v<TypeParam, float> ? "float" : "double";
    const auto thrown = [](auto call) -> std::string
    {
        try
        {
            call();
        }
        catch (const CbExceptionPreconditionViolation& e)
        {
            return e.GetFunction();
        }
        return "nothing thrown";
    };
    const M a(2, 2);
    const M column(2, 1);
    EXPECT_EQ(thrown([&] { return a + column; }), "ZqMatrix<" + type + ">::operator+");
    EXPECT_EQ(thrown([&] { return column * column; }), "ZqMatrix<" + type + ">::operator*");
    EXPECT_EQ(thrown([&] { return a.At(2, 0); }), "ZqMatrix<" + type + ">::At");
    EXPECT_EQ(thrown([&] { return M(2, 2, {1, 2, 3}); }), "ZqMatrix<" + type + ">::ZqMatrix");
    EXPECT_EQ(thrown([&] { M(a).SetColumn(0, M::Vector({1, 2, 3})); }), "ZqMatrix<" + type + ">::SetColumn");
}

TEST(ZqMatrixConversion, ConvertsElementwiseBetweenPrecisions)
{
    const ZqMatrix<double> d(1, 2, {0.1, 1e300});
    const ZqMatrix<float> f(d);
    EXPECT_EQ(f.GetCols(), 2u);
    EXPECT_EQ(f[0], 0.1f);
    EXPECT_TRUE(std::isinf(f[1]));
}
