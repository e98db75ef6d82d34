// GoogleTest's listing: every listed name, fed back through the filter, selects its own subtest and
// nothing else, and holds nothing that CMake's discovery, CTest or the filter syntax would take apart.

#include "zqbase/zqtest/zqtestfilter.h"
#include "zqbase/zqtest/zqtestlisting.h"

#include <gtest/gtest.h>
#include <random>

namespace
{
// What a listed name may not hold; '#' only as the "#N" that ends it.
::testing::AssertionResult IsSafe(const std::string& listed)
{
    const std::size_t hash = listed.find('#');
    if (hash != std::string::npos &&
        (hash + 1 == listed.size() || listed.find_first_not_of("0123456789", hash + 1) != std::string::npos))
        return ::testing::AssertionFailure() << "'#' not as #N at the end";
    for (char c : listed.substr(0, hash))
        if (std::string_view(":-*[];\\").find(c) != std::string_view::npos ||
            static_cast<unsigned char>(c) < 0x20)
            return ::testing::AssertionFailure() << "holds '" << c << "'";
    if (listed.empty() || listed.front() == ' ' || listed.back() == ' ')
        return ::testing::AssertionFailure() << "empty or blank at an end";
    if (listed.rfind("DISABLED_", 0) == 0 || listed.find("gtest_main.cc") != std::string::npos)
        return ::testing::AssertionFailure() << "a name the discovery treats specially";
    return ::testing::AssertionSuccess();
}

void ExpectEachSelectsItsOwnSubtest(const std::string& className, const std::vector<std::string>& names)
{
    const std::vector<std::string> listed = ZqTestListing::GoogleTestNames(className, names);
    ASSERT_EQ(listed.size(), names.size());
    for (unsigned i = 0; i < names.size(); ++i)
    {
        SCOPED_TRACE("'" + names[i] + "' listed as '" + listed[i] + "'");
        EXPECT_TRUE(IsSafe(listed[i]));
        const ZqTestFilter filter(className + "." + listed[i]);
        for (unsigned j = 0; j < names.size(); ++j)
            EXPECT_EQ(filter.Matches(className, j, names[j]), i == j) << "subtest " << j;
    }
}
} // namespace

TEST(ZqTestListing, AwkwardNamesStayReadableUniqueAndRunnable)
{
    const std::vector<std::string> names = {"GetAt / operator []",
                                            "a;b",
                                            "a:b",
                                            "a-b",
                                            "gleich",
                                            "gleich",
                                            "",
                                            "x*",
                                            "xy",
                                            "[=[ Klammer ]=]",
                                            "back\\slash\\",
                                            "  Leerzeichen  ",
                                            "Kommentar #1",
                                            "-3",
                                            "DISABLED_nicht",
                                            "Tab\tund\nZeile",
                                            "über äöü ß",
                                            "gtest_main.cc",
                                            "#5",
                                            "a?b"};
    ExpectEachSelectsItsOwnSubtest("C_UnitTest", names);
    const std::vector<std::string> listed = ZqTestListing::GoogleTestNames("C_UnitTest", names);
    // Only where the name alone is ambiguous does the index come in.
    EXPECT_EQ(listed[0], "GetAt / operator ??");
    EXPECT_EQ(listed[2], "a?b#2");
    EXPECT_EQ(listed[4], "gleich#4");
    EXPECT_EQ(listed[6], "#6");
    EXPECT_EQ(listed[8], "xy");
    EXPECT_EQ(listed[16], "über äöü ß");
}

TEST(ZqTestListing, RandomNamesOfSpecialCharactersAreAlwaysSelectable)
{
    const std::string alphabet = "ab:-*?#[];\\ .\t";
    std::mt19937 generator(20240611);
    for (int round = 0; round < 300; ++round)
    {
        std::vector<std::string> names(std::uniform_int_distribution<int>(1, 8)(generator));
        for (std::string& name : names)
            for (int length = std::uniform_int_distribution<int>(0, 4)(generator); length > 0; --length)
                name +=
                    alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(generator)];
        ExpectEachSelectsItsOwnSubtest("R_UnitTest", names);
        if (::testing::Test::HasFailure())
            return;
    }
}

TEST(ZqTestListing, FilterTakesANameWithItsIndex)
{
    const ZqTestFilter filter("C_UnitTest.gleich#5");
    EXPECT_TRUE(filter.Matches("C_UnitTest", 5, "gleich"));
    EXPECT_FALSE(filter.Matches("C_UnitTest", 4, "gleich"));
    EXPECT_FALSE(filter.Matches("C_UnitTest", 5, "anders"));
    // A name that really ends in "#5" is still matched by itself.
    EXPECT_TRUE(ZqTestFilter("C_UnitTest.x#5").Matches("C_UnitTest", 0, "x#5"));
}
