#include "zqbase/zqtest/zqtestlisting.h"

#include "zqbase/zqtest/zqtestreports.h"

#include <algorithm>

namespace
{
// Tools read GoogleTest's listing back and pass each name to --gtest_filter. Characters that would
// not survive that trip (':' and '-' split filters, " #" starts a comment for CMake's test discovery,
// surrounding blanks are trimmed) are written '?', which the filter matches.
std::string googleTestName(const std::string& name)
{
    std::string safe = name;
    for (char& c : safe)
        if (c == ':' || c == '-' || c == '#' || (static_cast<unsigned char>(c) < 0x20))
            c = '?';
    if (!safe.empty() && safe.front() == ' ')
        safe.front() = '?';
    if (!safe.empty() && safe.back() == ' ')
        safe.back() = '?';
    return safe.empty() ? "?" : safe;
}
} // namespace

std::vector<std::string> ZqTestListing::GoogleTestNames(const std::vector<std::string>& names)
{
    std::vector<std::string> listed;
    for (const std::string& name : names)
        listed.push_back(googleTestName(name));
    return listed;
}

std::string ZqTestListing::ToText(const std::vector<ZqTestSelection>& selection)
{
    std::string out;
    for (const ZqTestSelection& entry : selection)
    {
        const std::size_t count = entry.indices.size();
        out +=
            entry.info->name + " (" + std::to_string(count) + (count == 1 ? " subtest)\n" : " subtests)\n");
        for (unsigned index : entry.indices)
        {
            const std::string number = std::string(1, '#').append(std::to_string(index));
            out.append("  ").append(number).append(number.size() < 4 ? 4 - number.size() : 0, ' ');
            out.append(" ").append(entry.info->subtests[index]).append("\n");
        }
    }
    return out;
}

std::string ZqTestListing::ToGoogleTest(const std::vector<ZqTestSelection>& selection)
{
    std::string out;
    for (const ZqTestSelection& entry : selection)
    {
        // A suite without tests is no suite to GoogleTest's readers.
        if (entry.indices.empty())
            continue;
        const std::vector<std::string> names = GoogleTestNames(entry.info->subtests);
        out += entry.info->name + ".\n";
        for (unsigned index : entry.indices)
            out += "  " + names[index] + "\n";
    }
    return out;
}

std::string ZqTestListing::ToJson(const std::vector<ZqTestSelection>& selection)
{
    std::string out = "{\"tests\": [";
    for (std::size_t p = 0; p < selection.size(); ++p)
    {
        const ZqTestClassInfo& info = *selection[p].info;
        out += std::string(p ? ",\n  " : "\n  ") + "{\"class\": " + ZqTestReports::JsonString(info.name) +
               ", \"parents\": [";
        for (std::size_t i = 0; i < info.parents.size(); ++i)
            out += std::string(i ? ", " : "") + ZqTestReports::JsonString(info.parents[i]);
        out += "],\n   \"subtests\": [";
        for (std::size_t i = 0; i < selection[p].indices.size(); ++i)
        {
            const unsigned index = selection[p].indices[i];
            out += std::string(i ? ", " : "") + "{\"index\": " + std::to_string(index) +
                   ", \"name\": " + ZqTestReports::JsonString(info.subtests[index]) + "}";
        }
        out += "]";
        if (!info.error.empty())
            out += ", \"error\": " + ZqTestReports::JsonString(info.error);
        out += "}";
    }
    return out + "]}\n";
}
