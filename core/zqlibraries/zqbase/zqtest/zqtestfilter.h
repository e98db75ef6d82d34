#pragma once

#include "zqbase/zqbase_export.h"

#include <string>
#include <string_view>
#include <vector>

// Selects subtests with GoogleTest's filter syntax, POS[:POS...][-NEG[:NEG...]]. Each pattern is a
// glob ('*' any run of characters, '?' one character) over the class name, over the full name
// "Class.Subtest name", over "Class.#N" for subtest N, or over "Class.Subtest name#N", the form
// GoogleTest's listing uses for a name that alone would select more than its subtest. A subtest is
// selected when a positive pattern matches it (an empty positive part selects everything) and no
// negative one does.
//
//     ZqTestFilter("CbArray_UnitTest:ZqFt*.#0-*Benchmark*")
//
// The first '-' starts the negative part, so a '-' inside a name is written '?'. A single ':'
// separates patterns; "::" stays in the pattern, so "Tools::CToolFramework_UnitTest.*" selects a
// class in a namespace.
class ZQBASE_API ZqTestFilter
{
public:
    ZqTestFilter() = default;
    explicit ZqTestFilter(std::string_view filter);

    bool Matches(std::string_view className, unsigned index, std::string_view subtestName) const;
    // Whether the filter selects the class as a whole, by its name or as "Class." (which "Class.*"
    // matches); decides for a class that has no subtests to match.
    bool MatchesClass(std::string_view className) const;
    // The filter as given ("*" when none was).
    const std::string& GetText() const { return m_text; }

    // Glob match of UTF-8 text; '?' stands for one code point.
    static bool Glob(std::string_view pattern, std::string_view text);

private:
    struct SNames
    {
        std::string_view className;
        std::string fullName;
        std::string indexName;
        std::string fullIndexName;
    };
    static bool anyMatches(const std::vector<std::string>& patterns, const SNames& names);

    std::string m_text = "*";
    std::vector<std::string> m_positive;
    std::vector<std::string> m_negative;
};
