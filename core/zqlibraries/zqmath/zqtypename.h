#pragma once

#include <cstdlib>
#include <cxxabi.h>
#include <initializer_list>
#include <memory>
#include <string>
#include <typeinfo>

// Names of template arguments as the exception texts of the numerics templates write them:
// "float", "double", "class ZqPowell_UnitTest", and for templates of this library
// "class ZqLineMinimization<float,class ZqPowell_UnitTest>". Only used when an exception is thrown.
//
//     ZqTemplateText("ZqBrent", {ZqTypeName<float>::Get(), ZqTypeName<Fn>::Get()}) + "::compute"
//     // "ZqBrent<float,class ZqLineMinimization<float,class ZqLineMinimization_UnitTest> >::compute"
//
// Class templates of the library specialise ZqTypeName next to their declaration; any other class
// is written as "class " followed by its demangled name.
template <class T> struct ZqTypeName
{
    static std::string Get()
    {
        int status = 0;
        std::unique_ptr<char, void (*)(void*)> demangled(
            abi::__cxa_demangle(typeid(T).name(), nullptr, nullptr, &status), std::free);
        return std::string("class ") + (status == 0 && demangled ? demangled.get() : typeid(T).name());
    }
};

template <> struct ZqTypeName<float>
{
    static std::string Get() { return "float"; }
};
template <> struct ZqTypeName<double>
{
    static std::string Get() { return "double"; }
};

// "name<arg1,arg2>", with a blank before the closing bracket when the last argument ends in one
// ("> >"), the way the texts were always written.
inline std::string ZqTemplateText(const char* name, std::initializer_list<std::string> arguments)
{
    std::string text = std::string(name) + "<";
    bool first = true;
    for (const std::string& argument : arguments)
    {
        if (!first)
            text += ",";
        text += argument;
        first = false;
    }
    if (!text.empty() && text.back() == '>')
        text += " ";
    return text + ">";
}
