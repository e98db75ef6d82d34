#include "zqbase/zqtest/zqtestlisting.h"

#include "zqbase/zqtest/zqtestfilter.h"
#include "zqbase/zqtest/zqtestreports.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace
{
// Tools read GoogleTest's listing back and pass each name to --gtest_filter; CMake's test discovery
// also writes it into a script. What would not survive that trip is written '?', which the filter
// matches: ':' '-' '*' (filter syntax), '[' ']' ';' '\' (brackets, lists and escapes of CMake), '#'
// (a comment for the discovery), control characters, surrounding blanks (trimmed), a "DISABLED_"
// prefix (a disabled test) and the '.' of "gtest_main.cc" (a line the discovery skips).
std::string substitute(const std::string& name)
{
    std::string safe = name;
    for (char& c : safe)
        if (std::string_view(":-*[];\\#").find(c) != std::string_view::npos ||
            static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = '?';
    if (!safe.empty() && safe.front() == ' ')
        safe.front() = '?';
    if (!safe.empty() && safe.back() == ' ')
        safe.back() = '?';
    if (safe.rfind("DISABLED_", 0) == 0)
        safe.front() = '?';
    for (std::size_t at = safe.find("gtest_main.cc"); at != std::string::npos;
         at = safe.find("gtest_main.cc", at + 1))
        safe[at + 10] = '?';
    return safe;
}

// Whether "Class.<listed>" as a filter selects subtest index of names and no other.
bool selectsOnly(const std::string& className, const std::vector<std::string>& names, unsigned index,
                 const std::string& listed)
{
    const ZqTestFilter filter(className + "." + listed);
    for (unsigned i = 0; i < names.size(); ++i)
        if (filter.Matches(className, i, names[i]) != (i == index))
            return false;
    return true;
}
} // namespace

std::vector<std::string> ZqTestListing::GoogleTestNames(const std::string& className,
                                                        const std::vector<std::string>& names)
{
    std::vector<std::string> listed;
    std::unordered_map<std::string, unsigned> uses;
    for (const std::string& name : names)
        ++uses[listed.emplace_back(substitute(name))];
    for (unsigned i = 0; i < names.size(); ++i)
    {
        // A name without '?' selects exactly the subtests of that very name, so counting is enough.
        const bool unique = listed[i].find('?') == std::string::npos
                                ? uses[listed[i]] == 1
                                : selectsOnly(className, names, i, listed[i]);
        if (unique && !listed[i].empty())
            continue;
        const std::string number = std::string(1, '#').append(std::to_string(i));
        listed[i] += number;
        if (!selectsOnly(className, names, i, listed[i]))
            listed[i] = number;
    }
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
        const std::vector<std::string> names = GoogleTestNames(entry.info->name, entry.info->subtests);
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
