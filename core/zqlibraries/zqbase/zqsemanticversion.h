#pragma once

#include "zqbase/zqbase_export.h"

#include <compare>
#include <cstdint>
#include <string>

// A version major.minor.patch with an optional label, e.g. 2.1.0-02438-1804.
//
// Text has the form major[.minor[.patch[.further]]][-label]:
// - each of major, minor and patch is one or more decimal digits (leading zeros allowed) with a value
//   below 2^32; missing minor or patch are 0;
// - a fourth dotted component is skipped whatever it holds, up to the first "-": "1.2.3.4" and
//   "1.2.3.c" are both 1.2.3;
// - the label is everything after the first "-", verbatim, and must not be empty: "2.1.0-02438-1804"
//   has the label "02438-1804";
// - nothing else is accepted: no blanks, no signs, no empty components.
// Text that breaks a rule makes the constructor or assignment throw CbExceptionPreconditionViolation
// (function "ZqSemanticVersion::ZqSemanticVersion" or "ZqSemanticVersion::operator=") with the
// reason as its detail; a number of 2^32 or more is rejected the same way, never truncated. Wide
// text is converted to UTF-8 first; labels are kept as UTF-8.
//
// ToString writes the numbers back with the label: "1.2-beta-5" reads as 1.2.0 and writes
// "1.2.0-beta-5". Whatever the parser accepts, ToString writes text that parses to the same version
// with the same label.
//
// The comparisons order by major, then minor, then patch; the label takes no part in any of them,
// so 1.2.3 == 1.2.3-beta-1, and neither is below the other.
class ZQBASE_API ZqSemanticVersion
{
public:
    ZqSemanticVersion() = default;
    ZqSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch);
    // A null label is an empty one.
    ZqSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const char* label);
    ZqSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const wchar_t* label);
    explicit ZqSemanticVersion(const char* text);
    explicit ZqSemanticVersion(const wchar_t* text);
    ZqSemanticVersion(const ZqSemanticVersion& other) = default;
    // Leaves other as 0.0.0 without a label.
    ZqSemanticVersion(ZqSemanticVersion&& other) noexcept;
    virtual ~ZqSemanticVersion();

    ZqSemanticVersion& operator=(const ZqSemanticVersion& other) = default;
    // Leaves other as 0.0.0 without a label.
    ZqSemanticVersion& operator=(ZqSemanticVersion&& other) noexcept;
    // Parses text; on an error the version keeps its value.
    ZqSemanticVersion& operator=(const char* text);
    ZqSemanticVersion& operator=(const wchar_t* text);

    const std::string& GetLabel() const { return m_label; }
    bool HasLabel() const { return !m_label.empty(); }
    // Any text, kept verbatim; null or "" removes the label.
    void SetLabel(const char* label);

    // "major.minor.patch" and, with a label, "-label".
    std::string ToString() const;

    friend bool operator==(const ZqSemanticVersion& a, const ZqSemanticVersion& b)
    {
        return a.major == b.major && a.minor == b.minor && a.patch == b.patch;
    }
    friend std::weak_ordering operator<=>(const ZqSemanticVersion& a, const ZqSemanticVersion& b)
    {
        if (a.major != b.major)
            return a.major <=> b.major;
        if (a.minor != b.minor)
            return a.minor <=> b.minor;
        return a.patch <=> b.patch;
    }

    // The C library's <sys/sysmacros.h> defines major() and minor() as function-like macros: never
    // write one of these names directly before a parenthesis (initialise with braces).
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t patch = 0;

private:
    std::string m_label;
};
