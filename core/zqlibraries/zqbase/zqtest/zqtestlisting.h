#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestcatalog.h"

#include <string>
#include <vector>

// The three listings of the selected subtests: our own text ("Class (N subtests)" and "  #N   name"
// lines), GoogleTest's ("Class." and "  Subtest" lines, read back by tools that run each name) and
// JSON. A class whose test has no subtests still appears in our own two forms, with a count of 0.
class ZQBASE_API ZqTestListing
{
public:
    static std::string ToText(const std::vector<ZqTestSelection>& selection);
    static std::string ToGoogleTest(const std::vector<ZqTestSelection>& selection);
    static std::string ToJson(const std::vector<ZqTestSelection>& selection);

    // The names under which GoogleTest's listing shows the subtests of one class, index for index.
    // Each is a filter that selects its subtest alone when given as "Class.<listed name>", and none
    // holds a character that CMake's test discovery, CTest or the filter syntax would take apart:
    // those become '?'. Where that leaves a name that selects other subtests too (two names that
    // differ only there, duplicates, wildcards) or an empty one, the index is appended, "name#N",
    // which the filter takes as subtest N of that name; "#N" alone where even that is ambiguous.
    static std::vector<std::string> GoogleTestNames(const std::string& className,
                                                    const std::vector<std::string>& names);
};
