// The polyline comparison: it must find every kind of difference, honour its tolerance, and write
// exactly what its debugging options ask for into the stream of the test it was pointed at.

#include "zq3dbase/zqmpcomparepolylines.h"
#include "zq3dbase/zqpolyline3d.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace
{
// A test object whose stream the comparison writes into.
class CTarget : public ZqUnitTest
{
protected:
    EResult runUnitTest(unsigned int) override { return ePassed; }
};

struct SResult
{
    bool computed;
    bool equal;
    unsigned int differences;
    std::vector<ZqMessageStream::SMessage> messages;
};

SResult compare(const ZqPolyline3D& a, const ZqPolyline3D& b, float tolerance,
                std::initializer_list<unsigned int> options)
{
    CTarget target;
    ZqMpComparePolylines comparison;
    comparison.SetMessageStream(target);
    for (unsigned int option : options)
        comparison.SetDebuggingOption(option);
    comparison.SetInput(a, b);
    comparison.SetParameters(tolerance);
    const bool computed = comparison.Compute();
    return {computed, comparison.GetOutput(), comparison.GetDifferenceCount(),
            target.GetMessageStream().Take()};
}

std::string text(const ZqMessageStream::SMessage& message)
{
    return CbWideToUtf8(message.text.Std());
}

const ZqPolyline3D s_square({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, true);
} // namespace

TEST(ZqMpComparePolylines, EqualPolylinesAreEqualAndSayNothing)
{
    const ZqPolyline3D copy(s_square);
    const SResult result = compare(s_square, copy, 0.0f, {0, 1, 2});
    EXPECT_TRUE(result.computed && result.equal);
    EXPECT_EQ(result.differences, 0u);
    EXPECT_TRUE(result.messages.empty());
    const ZqPolyline3D empty;
    EXPECT_TRUE(compare(empty, ZqPolyline3D(), 0.0f, {}).equal);
}

TEST(ZqMpComparePolylines, ClosedFlagCountAndStartingVertexMatter)
{
    ZqPolyline3D open(s_square);
    open.SetClosed(false);
    EXPECT_FALSE(compare(s_square, open, 0.0f, {}).equal);

    ZqPolyline3D shorter(s_square);
    shorter.RemoveVertex(shorter.GetTailVertex());
    const SResult count = compare(s_square, shorter, 10.0f, {0});
    EXPECT_FALSE(count.equal);
    ASSERT_EQ(count.messages.size(), 1u);
    EXPECT_EQ(text(count.messages[0]), "Polylinien unterscheiden sich: 4 / 3 Punkte\n");

    // The same closed square starting at another corner is another polyline.
    const ZqPolyline3D rotated({{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 0}}, true);
    EXPECT_EQ(compare(s_square, rotated, 0.0f, {}).differences, 4u);
}

TEST(ZqMpComparePolylines, ToleranceIsTheLargestDistanceThatStillCounts)
{
    const ZqPolyline3D moved({{0, 0, 0}, {1, 0, 0}, {1, 1, 0.5f}, {0, 1, 0}}, true);
    EXPECT_FALSE(compare(s_square, moved, 0.49f, {}).equal);
    EXPECT_TRUE(compare(s_square, moved, 0.5f, {}).equal);
    const ZqPolyline3D nan({{0, 0, 0}, {1, 0, 0}, {1, 1, std::numeric_limits<float>::quiet_NaN()}, {0, 1, 0}},
                           true);
    EXPECT_FALSE(compare(nan, nan, 1e30f, {}).equal) << "NaN equals nothing";
}

TEST(ZqMpComparePolylines, DebuggingOptionsChooseTheMessages)
{
    const ZqPolyline3D twoOff({{0, 0, 0}, {1, 0, 3}, {1, 1, 0}, {0, 5, 0}}, true);
    EXPECT_TRUE(compare(s_square, twoOff, 0.0f, {}).messages.empty()) << "silent without option 0";
    EXPECT_TRUE(compare(s_square, twoOff, 0.0f, {2}).messages.empty()) << "option 2 refines option 0";

    const SResult first = compare(s_square, twoOff, 0.0f, {0});
    EXPECT_EQ(first.differences, 2u);
    ASSERT_EQ(first.messages.size(), 1u);
    EXPECT_EQ(first.messages[0].type, ZqUnitTest::eError);
    EXPECT_EQ(text(first.messages[0]),
              "Polylinien unterscheiden sich in Punkt 1: (1, 0, 0) / (1, 0, 3), Abstand 3\n");

    const SResult all = compare(s_square, twoOff, 0.0f, {0, 2});
    ASSERT_EQ(all.messages.size(), 2u);
    EXPECT_EQ(text(all.messages[1]),
              "Polylinien unterscheiden sich in Punkt 3: (0, 1, 0) / (0, 5, 0), Abstand 4\n");

    const SResult dump = compare(s_square, twoOff, 0.0f, {1});
    ASSERT_EQ(dump.messages.size(), 10u) << "a head line and four vertices for each polyline";
    EXPECT_EQ(dump.messages[0].type, ZqUnitTest::eInfo);
    EXPECT_EQ(text(dump.messages[5]), "Zweite Polylinie, geschlossen, 4 Punkte:\n");
    EXPECT_EQ(text(dump.messages[9]), "  3: (0, 5, 0)\n");
}

TEST(ZqMpComparePolylines, OptionsSwitchOffAndOutOfRangeOptionsAreRejected)
{
    ZqMpComparePolylines comparison;
    comparison.SetDebuggingOption(ZqMpComparePolylines::eDO_WriteDifferences);
    comparison.SetDebuggingOption(31);
    EXPECT_TRUE(comparison.IsDebuggingOption(0) && comparison.IsDebuggingOption(31));
    comparison.SetDebuggingOption(0, false);
    EXPECT_FALSE(comparison.IsDebuggingOption(0));
    EXPECT_FALSE(comparison.IsDebuggingOption(40));
    EXPECT_THROW(comparison.SetDebuggingOption(32), CbExceptionPreconditionViolation);
}

TEST(ZqMpComparePolylines, MissingInputOrBadToleranceFailsTheComputation)
{
    ZqMpComparePolylines comparison;
    EXPECT_FALSE(comparison.Compute());
    comparison.SetInput(s_square, s_square);
    comparison.SetParameters(-1.0f);
    EXPECT_FALSE(comparison.Compute());
    comparison.SetParameters(0.0f);
    EXPECT_TRUE(comparison.Compute() && comparison.GetOutput());
    comparison.SetParameters(-1.0f);
    EXPECT_FALSE(comparison.Compute());
    EXPECT_FALSE(comparison.GetOutput()) << "a failed computation leaves no stale result";
}

TEST(ZqMpComparePolylines, ItsTestPartPassesOnlyForEqualPolylines)
{
    ZqPolyline3D other(s_square);
    other.GetHeadVertex()->SetPosition({0, 0, 1});
    ZqMpComparePolylines comparison;
    comparison.SetInput(s_square, s_square);
    EXPECT_EQ(comparison.RunUnitTest(0), ZqUnitTest::ePassed);
    comparison.SetInput(s_square, other);
    EXPECT_EQ(comparison.RunUnitTest(0), ZqUnitTest::eFailed);
    EXPECT_THROW(comparison.RunUnitTest(1), CbException);
}
