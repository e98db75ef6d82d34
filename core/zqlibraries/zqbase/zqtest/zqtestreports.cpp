#include "zqbase/zqtest/zqtestreports.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace
{
std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", value);
    return text;
}

// ISO 8601 in UTC, with milliseconds.
std::string timestamp(std::int64_t milliseconds, bool zone)
{
    const std::time_t seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[48];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    char result[64];
    std::snprintf(result, sizeof result, "%s.%03d%s", text, static_cast<int>(milliseconds % 1000),
                  zone ? "Z" : "");
    return result;
}

// The text of a failure: the error messages, then the runner's note.
std::string failureText(const ZqSubtestRecord& subtest)
{
    std::string text;
    for (const ZqTestMessage& message : subtest.messages)
        if (message.type != 0)
            text += message.text + (message.text.empty() || message.text.back() != '\n' ? "\n" : "");
    if (!subtest.failure.empty())
        text += subtest.failure + "\n";
    if (text.empty())
        text = subtest.GetResultName() + "\n";
    return text;
}

std::string infoText(const ZqSubtestRecord& subtest)
{
    std::string text;
    for (const ZqTestMessage& message : subtest.messages)
        if (message.type == 0 || !subtest.IsFailure())
            text += message.text + (message.text.empty() || message.text.back() != '\n' ? "\n" : "");
    return text;
}

std::string messagesJson(const std::vector<ZqTestMessage>& messages)
{
    std::string out = "[";
    for (std::size_t i = 0; i < messages.size(); ++i)
        out += std::string(i ? ", " : "") + "{\"type\": " + std::to_string(messages[i].type) +
               ", \"text\": " + ZqTestReports::JsonString(messages[i].text) + "}";
    return out + "]";
}

unsigned classFailures(const ZqClassRecord& record)
{
    unsigned failures = record.error.empty() ? 0 : 1;
    for (const ZqSubtestRecord& subtest : record.subtests)
        failures += subtest.IsFailure() ? 1 : 0;
    return failures;
}

unsigned classSkipped(const ZqClassRecord& record)
{
    unsigned skipped = 0;
    for (const ZqSubtestRecord& subtest : record.subtests)
        skipped += subtest.status == EZqTestStatus::eSkipped ? 1 : 0;
    return skipped;
}

// Whether the subtest returned an outcome (also one outside EResult).
bool returned(const ZqSubtestRecord& subtest)
{
    return subtest.status == EZqTestStatus::ePassed || subtest.status == EZqTestStatus::eFailed;
}

// A failure of the class outside its subtests appears as a test case of this name.
const char kClassCase[] = "(class)";
} // namespace

std::string ZqTestReports::JsonString(const std::string& text)
{
    std::string out = "\"";
    for (char c : text)
    {
        const auto u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            out += std::string("\\") + c;
        else if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else if (c == '\r')
            out += "\\r";
        else if (u < 0x20 || u == 0x7F)
        {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", u);
            out += escaped;
        }
        else
            out += c;
    }
    return out + "\"";
}

std::string ZqTestReports::XmlEscape(const std::string& text)
{
    std::string out;
    for (char c : text)
    {
        const auto u = static_cast<unsigned char>(c);
        switch (c)
        {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
            // XML 1.0 has no way to write the other control characters at all.
            if (u < 0x20 && c != '\n' && c != '\t' && c != '\r')
                out += "&#xFFFD;";
            else if (c == '\n' || c == '\r' || c == '\t')
            {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "&#x%X;", u);
                out += escaped;
            }
            else
                out += c;
        }
    }
    return out;
}

std::string ZqTestReports::ToJson(const ZqRunRecord& run)
{
    std::string out = "{\"tests\": [";
    for (std::size_t c = 0; c < run.classes.size(); ++c)
    {
        const ZqClassRecord& record = run.classes[c];
        out +=
            std::string(c ? ",\n  " : "\n  ") + "{\"class\": " + JsonString(record.name) + ", \"parents\": [";
        for (std::size_t p = 0; p < record.parents.size(); ++p)
            out += std::string(p ? ", " : "") + JsonString(record.parents[p]);
        out += "]";
        if (run.iterations > 1)
            out += ", \"iteration\": " + std::to_string(record.iteration);
        out += ", \"seconds\": " + number(record.seconds);
        if (!record.error.empty())
            out += ", \"error\": " + JsonString(record.error);
        if (!record.messages.empty())
            out += ", \"messages\": " + messagesJson(record.messages);
        if (!record.output.empty())
            out += ", \"output\": " + JsonString(record.output);
        out += ", \"subtests\": [";
        for (std::size_t s = 0; s < record.subtests.size(); ++s)
        {
            const ZqSubtestRecord& subtest = record.subtests[s];
            out += std::string(s ? ",\n    " : "\n    ") + "{\"index\": " + std::to_string(subtest.index) +
                   ", \"name\": " + JsonString(subtest.name) +
                   ", \"outcome\": " + (returned(subtest) ? std::to_string(subtest.outcome) : "null") +
                   ", \"result\": " + JsonString(subtest.GetResultName()) +
                   ", \"seconds\": " + number(subtest.seconds) +
                   ", \"messages\": " + messagesJson(subtest.messages);
            if (!subtest.failure.empty())
                out += ", \"failure\": " + JsonString(subtest.failure);
            if (!subtest.output.empty())
                out += ", \"output\": " + JsonString(subtest.output);
            out += "}";
        }
        out += "]}";
    }
    const ZqRunRecord::SCounts counts = run.Count();
    out += "],\n \"passed\": " + std::to_string(counts.passed) +
           ", \"failed\": " + std::to_string(counts.failed) +
           ", \"skipped\": " + std::to_string(counts.skipped) + ", \"seed\": " + std::to_string(run.seed) +
           ", \"seconds\": " + number(run.seconds) +
           ", \"timestamp\": " + JsonString(timestamp(run.startMilliseconds, true)) + "}\n";
    return out;
}

std::string ZqTestReports::ToGoogleTestJson(const ZqRunRecord& run)
{
    const ZqRunRecord::SCounts counts = run.Count();
    const std::string stamp = JsonString(timestamp(run.startMilliseconds, true));
    auto seconds = [](double value) { return std::string(1, '"').append(number(value)).append("s\""); };
    std::string out = "{\n  \"tests\": " + std::to_string(counts.passed + counts.failed + counts.skipped) +
                      ",\n  \"failures\": " + std::to_string(counts.failed) +
                      ",\n  \"disabled\": 0,\n  \"errors\": 0,\n  \"timestamp\": " + stamp +
                      ",\n  \"time\": " + seconds(run.seconds) +
                      ",\n  \"name\": \"AllTests\",\n  \"random_seed\": " + std::to_string(run.seed) +
                      ",\n  \"testsuites\": [";
    for (std::size_t c = 0; c < run.classes.size(); ++c)
    {
        const ZqClassRecord& record = run.classes[c];
        const std::size_t cases = record.subtests.size() + (record.error.empty() ? 0 : 1);
        out += std::string(c ? "," : "") + "\n    {\"name\": " + JsonString(record.name) +
               ", \"tests\": " + std::to_string(cases) +
               ", \"failures\": " + std::to_string(classFailures(record)) +
               ", \"disabled\": 0, \"errors\": 0, \"timestamp\": " + stamp +
               ", \"time\": " + seconds(record.seconds) + ",\n     \"testsuite\": [";
        bool first = true;
        auto testcase =
            [&](const std::string& name, const std::string& result, double time, const std::string* failure)
        {
            out += std::string(first ? "" : ",") + "\n       {\"name\": " + JsonString(name) +
                   ", \"status\": \"RUN\", \"result\": " + JsonString(result) + ", \"timestamp\": " + stamp +
                   ", \"time\": " + seconds(time) + ", \"classname\": " + JsonString(record.name);
            if (failure)
                out += ", \"failures\": [{\"failure\": " + JsonString(*failure) + ", \"type\": \"\"}]";
            out += "}";
            first = false;
        };
        for (const ZqSubtestRecord& subtest : record.subtests)
        {
            const std::string failure = subtest.IsFailure() ? failureText(subtest) : "";
            testcase(subtest.name, subtest.status == EZqTestStatus::eSkipped ? "SKIPPED" : "COMPLETED",
                     subtest.seconds, subtest.IsFailure() ? &failure : nullptr);
        }
        if (!record.error.empty())
            testcase(kClassCase, "COMPLETED", 0, &record.error);
        out += "\n     ]}";
    }
    return out + "\n  ]\n}\n";
}

std::string ZqTestReports::ToJUnitXml(const ZqRunRecord& run)
{
    const ZqRunRecord::SCounts counts = run.Count();
    const std::string stamp = timestamp(run.startMilliseconds, false);
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites tests=\"" +
                      std::to_string(counts.passed + counts.failed + counts.skipped) + "\" failures=\"" +
                      std::to_string(counts.failed) + "\" disabled=\"0\" errors=\"0\" skipped=\"" +
                      std::to_string(counts.skipped) + "\" time=\"" + number(run.seconds) +
                      "\" timestamp=\"" + stamp + "\" name=\"AllTests\" random_seed=\"" +
                      std::to_string(run.seed) + "\">\n";
    for (const ZqClassRecord& record : run.classes)
    {
        const std::size_t cases = record.subtests.size() + (record.error.empty() ? 0 : 1);
        out += "  <testsuite name=\"" + XmlEscape(record.name) + "\" tests=\"" + std::to_string(cases) +
               "\" failures=\"" + std::to_string(classFailures(record)) + "\" disabled=\"0\" skipped=\"" +
               std::to_string(classSkipped(record)) + "\" errors=\"0\" time=\"" + number(record.seconds) +
               "\" timestamp=\"" + stamp + "\">\n";
        for (const ZqSubtestRecord& subtest : record.subtests)
        {
            const bool skipped = subtest.status == EZqTestStatus::eSkipped;
            out += "    <testcase name=\"" + XmlEscape(subtest.name) + "\" status=\"run\" result=\"" +
                   (skipped ? "skipped" : "completed") + "\" time=\"" + number(subtest.seconds) +
                   "\" classname=\"" + XmlEscape(record.name) + "\">\n";
            if (subtest.IsFailure())
            {
                const std::string text = failureText(subtest);
                out += "      <failure message=\"" + XmlEscape(text.substr(0, text.find('\n'))) +
                       "\" type=\"" + XmlEscape(subtest.GetResultName()) + "\">" + XmlEscape(text) +
                       "</failure>\n";
            }
            if (skipped)
                out += "      <skipped message=\"" + XmlEscape(subtest.failure) + "\"/>\n";
            if (const std::string info = infoText(subtest); !info.empty())
                out += "      <system-out>" + XmlEscape(info) + "</system-out>\n";
            if (!subtest.output.empty())
                out += "      <system-err>" + XmlEscape(subtest.output) + "</system-err>\n";
            out += "    </testcase>\n";
        }
        if (!record.error.empty())
            out += "    <testcase name=\"" + std::string(kClassCase) +
                   "\" status=\"run\" result=\"completed\" time=\"0\" classname=\"" + XmlEscape(record.name) +
                   "\">\n      <failure message=\"" + XmlEscape(record.error) + "\" type=\"\">" +
                   XmlEscape(record.error + "\n" + record.output) + "</failure>\n    </testcase>\n";
        out += "  </testsuite>\n";
    }
    return out + "</testsuites>\n";
}

void ZqTestReports::WriteFileAtomically(const std::string& path, const std::string& content)
{
    // Like GoogleTest, make the report's folder; tools name report files after the tests.
    std::error_code ignored;
    if (const std::filesystem::path parent = std::filesystem::path(path).parent_path(); !parent.empty())
        std::filesystem::create_directories(parent, ignored);
    const std::string temporary = path + ".tmp" + std::to_string(getpid());
    std::FILE* file = std::fopen(temporary.c_str(), "wb");
    if (!file)
        throw std::runtime_error("cannot write '" + path + "': " + std::strerror(errno));
    const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed || std::rename(temporary.c_str(), path.c_str()) != 0)
    {
        const int error = errno;
        std::remove(temporary.c_str());
        throw std::runtime_error("cannot write '" + path + "': " + std::strerror(error));
    }
}
