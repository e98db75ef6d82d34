#pragma once

#include "basepool/cbtypename.h"
#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"

#include <sstream>
#include <string>
#include <type_traits>

namespace Tools
{
// A value as text for messages: numbers, bool and the vectors of basepool as such, types with an
// operator<< for std::ostream through it, anything else by its type name.
template <class T> std::string ValueText(const T& value)
{
    if constexpr (std::is_same_v<T, bool>)
        return value ? "true" : "false";
    else if constexpr (std::is_same_v<T, CbVector2f>)
        return "(" + ValueText(value.x) + ", " + ValueText(value.y) + ")";
    else if constexpr (std::is_same_v<T, CbVector3f>)
        return "(" + ValueText(value.x) + ", " + ValueText(value.y) + ", " + ValueText(value.z) + ")";
    else if constexpr (requires(std::ostream & stream) { stream << value; })
    {
        std::ostringstream text;
        text << value;
        return text.str();
    }
    else
        return "a value of " + CbTypeName<T>::Get();
}
} // namespace Tools
