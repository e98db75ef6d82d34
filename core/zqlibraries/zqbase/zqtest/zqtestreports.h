#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestrecord.h"

#include <string>

// The run's report files. Each is written to a temporary name beside its target and renamed into
// place, so a reader never sees half a report; missing folders are made. They throw
// std::runtime_error when that fails.
class ZQBASE_API ZqTestReports
{
public:
    // Our own results: {"tests": [{"class", "parents", "subtests": [{"index", "name", "outcome",
    // "result", "seconds", "messages": [{"type", "text"}]}]}], "passed", "failed", "skipped", "seed"}.
    static std::string ToJson(const ZqRunRecord& run);
    // GoogleTest's JSON shape: testsuites / testsuite / failures.
    static std::string ToGoogleTestJson(const ZqRunRecord& run);
    // GoogleTest's XML shape, which JUnit readers take: testsuites / testsuite / testcase with
    // failure (the error messages), skipped, system-out (information messages) and system-err (output).
    static std::string ToJUnitXml(const ZqRunRecord& run);

    static void WriteFileAtomically(const std::string& path, const std::string& content);

    static std::string JsonString(const std::string& text);
    static std::string XmlEscape(const std::string& text);
};
