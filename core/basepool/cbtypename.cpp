#include "basepool/cbtypename.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

std::string CbDemangledTypeName(const std::type_info& type)
{
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 && demangled ? std::string(demangled.get()) : std::string(type.name());
}
