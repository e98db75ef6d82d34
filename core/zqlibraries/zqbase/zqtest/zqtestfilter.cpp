#include "zqbase/zqtest/zqtestfilter.h"

namespace
{
// Splits at single ':'; "::" belongs to a name (a class in a namespace, "Tools::CToolFramework_UnitTest").
std::vector<std::string> splitPatterns(std::string_view text)
{
    std::vector<std::string> patterns;
    std::size_t start = 0;
    while (start <= text.size())
    {
        std::size_t end = text.find(':', start);
        while (end != std::string_view::npos && end + 1 < text.size() && text[end + 1] == ':')
            end = text.find(':', end + 2);
        if (end == std::string_view::npos)
            end = text.size();
        if (end > start)
            patterns.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return patterns;
}

// Length of the UTF-8 sequence that starts at text[i] (1 for stray continuation bytes).
std::size_t codePointLength(std::string_view text, std::size_t i)
{
    std::size_t length = 1;
    while (i + length < text.size() && (static_cast<unsigned char>(text[i + length]) & 0xC0) == 0x80)
        ++length;
    return length;
}
} // namespace

ZqTestFilter::ZqTestFilter(std::string_view filter) : m_text(filter)
{
    const std::size_t dash = filter.find('-');
    m_positive = splitPatterns(filter.substr(0, dash));
    if (dash != std::string_view::npos)
        m_negative = splitPatterns(filter.substr(dash + 1));
}

bool ZqTestFilter::Matches(std::string_view className, unsigned index, std::string_view subtestName) const
{
    SNames names{className, {}, {}, {}};
    const std::string number = std::to_string(index);
    names.fullName.append(className).append(".").append(subtestName);
    names.indexName.append(className).append(".#").append(number);
    names.fullIndexName.append(names.fullName).append("#").append(number);
    if (!m_positive.empty() && !anyMatches(m_positive, names))
        return false;
    return !anyMatches(m_negative, names);
}

bool ZqTestFilter::MatchesClass(std::string_view className) const
{
    const std::string prefix = std::string(className) + '.';
    auto any = [&](const std::vector<std::string>& patterns)
    {
        for (const std::string& pattern : patterns)
            if (Glob(pattern, className) || Glob(pattern, prefix))
                return true;
        return false;
    };
    return (m_positive.empty() || any(m_positive)) && !any(m_negative);
}

bool ZqTestFilter::anyMatches(const std::vector<std::string>& patterns, const SNames& names)
{
    for (const std::string& pattern : patterns)
        if (Glob(pattern, names.className) || Glob(pattern, names.fullName) ||
            Glob(pattern, names.indexName) || Glob(pattern, names.fullIndexName))
            return true;
    return false;
}

bool ZqTestFilter::Glob(std::string_view pattern, std::string_view text)
{
    // Greedy matching that falls back to the last '*' on a mismatch: linear in practice, no recursion.
    std::size_t p = 0, t = 0;
    std::size_t starP = std::string_view::npos, starT = 0;
    while (t < text.size())
    {
        if (p < pattern.size() && pattern[p] == '*')
        {
            starP = p++;
            starT = t;
        }
        else if (p < pattern.size() && pattern[p] == '?')
        {
            ++p;
            t += codePointLength(text, t);
        }
        else if (p < pattern.size() && pattern[p] == text[t])
        {
            ++p;
            ++t;
        }
        else if (starP != std::string_view::npos)
        {
            p = starP + 1;
            starT += codePointLength(text, starT);
            t = starT;
        }
        else
            return false;
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}
