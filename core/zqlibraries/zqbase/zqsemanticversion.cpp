#include "zqbase/zqsemanticversion.h"

#include "basepool/cbexception.h"
#include "basepool/cstring.h"

#include <string_view>
#include <utility>

namespace
{
struct SParsed
{
    std::uint32_t numbers[3] = {0, 0, 0};
    std::string label;
};

[[noreturn]] void reject(const char* function, std::string_view text, const std::string& reason)
{
    CB_THROW(CbExceptionPreconditionViolation, function,
             "not a version: \"" + std::string(text) + "\" (" + reason + ")");
}

// Reads the digits at the front of rest into value and removes them; false when there are none or
// the value does not fit into 32 bits.
bool readNumber(std::string_view& rest, std::uint32_t& value, bool& overflow)
{
    std::size_t digits = 0;
    std::uint64_t accumulated = 0;
    while (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9')
    {
        accumulated = accumulated * 10 + static_cast<unsigned>(rest[digits] - '0');
        if (accumulated > 0xFFFFFFFFull)
        {
            overflow = true;
            return false;
        }
        ++digits;
    }
    if (digits == 0)
        return false;
    value = static_cast<std::uint32_t>(accumulated);
    rest.remove_prefix(digits);
    return true;
}

SParsed parse(const char* text, const char* function)
{
    if (!text)
        CB_THROW(CbExceptionPreconditionViolation, function, "null version text");
    const std::string_view whole(text);
    const std::size_t dash = whole.find('-');
    std::string_view rest = whole.substr(0, dash);

    SParsed parsed;
    static const char* const names[3] = {"major", "minor", "patch"};
    for (int i = 0; i < 3; ++i)
    {
        bool overflow = false;
        if (!readNumber(rest, parsed.numbers[i], overflow))
            reject(function, whole,
                   std::string(names[i]) + (overflow ? " is 2^32 or more" : " is not a number"));
        if (rest.empty())
            break;
        if (rest.front() != '.')
            reject(function, whole,
                   std::string(names[i]) + " is followed by something other than '.' or '-'");
        rest.remove_prefix(1);
        // Whatever follows the patch number's dot is a fourth component, which is skipped.
    }

    if (dash != std::string_view::npos)
    {
        if (dash + 1 == whole.size())
            reject(function, whole, "empty label after '-'");
        parsed.label.assign(whole.substr(dash + 1));
    }
    return parsed;
}
} // namespace

ZqSemanticVersion::ZqSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch)
    : major{major}, minor{minor}, patch{patch}
{
}

ZqSemanticVersion::ZqSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch,
                                     const char* label)
    : major{major}, minor{minor}, patch{patch}, m_label{label ? label : ""}
{
}

ZqSemanticVersion::ZqSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch,
                                     const wchar_t* label)
    : major{major}, minor{minor}, patch{patch}, m_label{label ? CbWideToUtf8(label) : std::string()}
{
}

ZqSemanticVersion::ZqSemanticVersion(const char* text)
{
    SParsed parsed = parse(text, "ZqSemanticVersion::ZqSemanticVersion");
    major = parsed.numbers[0];
    minor = parsed.numbers[1];
    patch = parsed.numbers[2];
    m_label = std::move(parsed.label);
}

ZqSemanticVersion::ZqSemanticVersion(const wchar_t* text)
    : ZqSemanticVersion(text ? CbWideToUtf8(text).c_str() : nullptr)
{
}

ZqSemanticVersion::ZqSemanticVersion(ZqSemanticVersion&& other) noexcept
    : major{std::exchange(other.major, 0)}, minor{std::exchange(other.minor, 0)},
      patch{std::exchange(other.patch, 0)}, m_label{std::move(other.m_label)}
{
    other.m_label.clear();
}

ZqSemanticVersion::~ZqSemanticVersion() = default;

ZqSemanticVersion& ZqSemanticVersion::operator=(ZqSemanticVersion&& other) noexcept
{
    if (this != &other)
    {
        major = std::exchange(other.major, 0);
        minor = std::exchange(other.minor, 0);
        patch = std::exchange(other.patch, 0);
        m_label = std::move(other.m_label);
        other.m_label.clear();
    }
    return *this;
}

ZqSemanticVersion& ZqSemanticVersion::operator=(const char* text)
{
    SParsed parsed = parse(text, "ZqSemanticVersion::operator=");
    major = parsed.numbers[0];
    minor = parsed.numbers[1];
    patch = parsed.numbers[2];
    m_label = std::move(parsed.label);
    return *this;
}

ZqSemanticVersion& ZqSemanticVersion::operator=(const wchar_t* text)
{
    if (!text)
        return *this = static_cast<const char*>(nullptr);
    return *this = CbWideToUtf8(text).c_str();
}

void ZqSemanticVersion::SetLabel(const char* label)
{
    m_label = label ? label : "";
}

std::string ZqSemanticVersion::ToString() const
{
    std::string text = std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
    if (!m_label.empty())
        text += '-' + m_label;
    return text;
}
