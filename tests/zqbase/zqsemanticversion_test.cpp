// ZqSemanticVersion: what the parser accepts and rejects, the limits of the numbers, label-blind
// comparison and the states that assignment leaves behind.

// First, so that the macros major() and minor() of the C library are defined when the fields of the
// same names are declared and initialised.
#include <sys/sysmacros.h>

#include "basepool/cbexception.h"
#include "basepool/cstring.h"
#include "zqbase/zqsemanticversion.h"

#include <gtest/gtest.h>
#include <string>

namespace
{
struct SAccepted
{
    const char* text;
    std::uint32_t major, minor, patch;
    const char* label;
    const char* written;
};

void PrintTo(const SAccepted& row, std::ostream* out)
{
    *out << '"' << row.text << '"';
}

class ZqSemanticVersionAccepts : public ::testing::TestWithParam<SAccepted>
{
};

class ZqSemanticVersionRejects : public ::testing::TestWithParam<const char*>
{
};
} // namespace

TEST_P(ZqSemanticVersionAccepts, NarrowAndWideText)
{
    const SAccepted& row = GetParam();
    const ZqSemanticVersion narrow(row.text);
    const ZqSemanticVersion wide(CbUtf8ToWide(row.text).c_str());
    for (const ZqSemanticVersion* version : {&narrow, &wide})
    {
        EXPECT_EQ(version->major, row.major);
        EXPECT_EQ(version->minor, row.minor);
        EXPECT_EQ(version->patch, row.patch);
        EXPECT_EQ(version->GetLabel(), row.label);
        EXPECT_EQ(version->ToString(), row.written);
    }
    // What ToString writes reads back as the same version with the same label.
    const ZqSemanticVersion reread(narrow.ToString().c_str());
    EXPECT_EQ(reread.ToString(), narrow.ToString());
    EXPECT_EQ(reread.GetLabel(), narrow.GetLabel());
}

INSTANTIATE_TEST_SUITE_P(, ZqSemanticVersionAccepts,
                         ::testing::Values(SAccepted{"0", 0, 0, 0, "", "0.0.0"},
                                           SAccepted{"007.08.0009", 7, 8, 9, "", "7.8.9"},
                                           SAccepted{"4294967295.4294967295.4294967295", 4294967295u,
                                                     4294967295u, 4294967295u, "",
                                                     "4294967295.4294967295.4294967295"},
                                           SAccepted{"00000000000000000000001.2.3", 1, 2, 3, "", "1.2.3"},
                                           SAccepted{"1.2.3.", 1, 2, 3, "", "1.2.3"},
                                           SAccepted{"1.2.3.4.5.6", 1, 2, 3, "", "1.2.3"},
                                           SAccepted{"1.2.3.x y-z", 1, 2, 3, "z", "1.2.3-z"},
                                           SAccepted{"1.2.3--", 1, 2, 3, "-", "1.2.3--"},
                                           SAccepted{"1-a.b.c-1", 1, 0, 0, "a.b.c-1", "1.0.0-a.b.c-1"},
                                           SAccepted{"2.0-Größe 1", 2, 0, 0, "Größe 1", "2.0.0-Größe 1"}));

TEST_P(ZqSemanticVersionRejects, WithTheReasonAndTheFunction)
{
    try
    {
        ZqSemanticVersion version(GetParam());
        FAIL() << "accepted as " << version.ToString();
    }
    catch (const CbExceptionPreconditionViolation& exception)
    {
        EXPECT_STREQ(exception.GetFunction(), "ZqSemanticVersion::ZqSemanticVersion");
        EXPECT_NE(std::string(exception.GetDetail()).find(GetParam()), std::string::npos) << exception.what();
    }
    EXPECT_THROW(ZqSemanticVersion(CbUtf8ToWide(GetParam()).c_str()), CbExceptionPreconditionViolation);
}

INSTANTIATE_TEST_SUITE_P(, ZqSemanticVersionRejects,
                         ::testing::Values("", "a", "1.b", "1.2.c", "1.", "1..2", ".1", "-beta", "1-",
                                           "1.2.3-", "1.2.3x", "1.2x.3", " 1.2.3", "1.2.3 ", "+1.2.3",
                                           "1,2,3", "0x10", "4294967296", "1.4294967296",
                                           "1.2.99999999999999999999", "18446744073709551617.0.0"));

TEST(ZqSemanticVersion, FailedAssignmentKeepsTheValue)
{
    ZqSemanticVersion version(1, 2, 3, "rc");
    try
    {
        version = "1.2.x";
        FAIL() << "accepted";
    }
    catch (const CbExceptionPreconditionViolation& exception)
    {
        EXPECT_STREQ(exception.GetFunction(), "ZqSemanticVersion::operator=");
    }
    EXPECT_THROW(version = L"", CbExceptionPreconditionViolation);
    EXPECT_THROW(version = static_cast<const char*>(nullptr), CbExceptionPreconditionViolation);
    EXPECT_EQ(version.ToString(), "1.2.3-rc");
}

TEST(ZqSemanticVersion, ComparisonIsNumericAndIgnoresTheLabel)
{
    // Numbers compare as numbers, not as text, and in the order major, minor, patch.
    EXPECT_LT(ZqSemanticVersion("1.9.9"), ZqSemanticVersion("1.10.0"));
    EXPECT_LT(ZqSemanticVersion("1.99.99"), ZqSemanticVersion("2.0.0"));
    EXPECT_LT(ZqSemanticVersion("1.2.3"), ZqSemanticVersion("1.2.4"));
    EXPECT_GT(ZqSemanticVersion("4294967295.0.0"), ZqSemanticVersion("4294967294.4294967295.4294967295"));

    const ZqSemanticVersion alpha("1.2.3-alpha");
    const ZqSemanticVersion beta("1.2.3-beta");
    EXPECT_TRUE(alpha == beta);
    EXPECT_FALSE(alpha != beta);
    EXPECT_FALSE(alpha < beta || beta < alpha || alpha > beta || beta > alpha);
    EXPECT_TRUE(alpha <= beta && alpha >= beta);
}

TEST(ZqSemanticVersion, MovingLeavesAnEmptyVersion)
{
    ZqSemanticVersion source(4, 5, 6, "label");
    ZqSemanticVersion target(std::move(source));
    EXPECT_EQ(target.ToString(), "4.5.6-label");
    EXPECT_EQ(source.ToString(), "0.0.0");

    ZqSemanticVersion& alias = target;
    target = std::move(alias);
    EXPECT_EQ(target.ToString(), "4.5.6-label") << "moving onto itself";
}

TEST(ZqSemanticVersion, LabelsAreKeptVerbatim)
{
    ZqSemanticVersion version(1, 0, 0, L"Größe");
    EXPECT_EQ(version.GetLabel(), "Größe");
    version.SetLabel("a-b-c");
    EXPECT_EQ(ZqSemanticVersion(version.ToString().c_str()).GetLabel(), "a-b-c");
    version.SetLabel(nullptr);
    EXPECT_FALSE(version.HasLabel());
    EXPECT_EQ(version.ToString(), "1.0.0");
    EXPECT_EQ(ZqSemanticVersion(1, 2, 3, static_cast<const char*>(nullptr)).ToString(), "1.2.3");
}
