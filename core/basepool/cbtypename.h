#pragma once

#include "basepool/basepool_export.h"
#include "basepool/cstring.h"

#include <cstdint>
#include <string>
#include <type_traits>
#include <typeinfo>

// Spells a type the way the exception texts of the containers name their template arguments:
// "int", "unsigned int", "unsigned __int64", "class CbVector3f",
// "struct CbMapTypes::SAssociation<int,unsigned __int64>". Template arguments are joined by ","
// without a blank, and a ">" that closes right after another ">" gets a blank before it.
//
// Class templates of the libraries specialise CbTypeName for themselves (see CbTypeNameTemplate);
// a plain class declares its spelling with CB_DECLARE_TYPENAME. Any other class falls back to its
// demangled name with "class " in front.
BASEPOOL_API std::string CbDemangledTypeName(const std::type_info& type);

template <class T, class Enable = void> struct CbTypeName
{
    static std::string Get()
    {
        if constexpr (std::is_enum_v<T>)
            return "enum " + CbDemangledTypeName(typeid(T));
        else if constexpr (std::is_class_v<T> || std::is_union_v<T>)
            return "class " + CbDemangledTypeName(typeid(T));
        else
            return CbDemangledTypeName(typeid(T));
    }
};

// "prefix<arg1,arg2>" with the blank between two closing brackets.
template <class... Args> std::string CbTypeNameTemplate(const char* prefix, const Args&... arguments)
{
    std::string text = prefix;
    text += '<';
    bool first = true;
    ((text += (first ? "" : ","), text += arguments, first = false), ...);
    if (!text.empty() && text.back() == '>')
        text += ' ';
    text += '>';
    return text;
}

#define CB_DECLARE_TYPENAME(Type, Text)                                                                      \
    template <> struct CbTypeName<Type>                                                                      \
    {                                                                                                        \
        static std::string Get() { return Text; }                                                            \
    }

CB_DECLARE_TYPENAME(bool, "bool");
CB_DECLARE_TYPENAME(char, "char");
CB_DECLARE_TYPENAME(signed char, "signed char");
CB_DECLARE_TYPENAME(unsigned char, "unsigned char");
CB_DECLARE_TYPENAME(wchar_t, "wchar_t");
CB_DECLARE_TYPENAME(char16_t, "char16_t");
CB_DECLARE_TYPENAME(char32_t, "char32_t");
CB_DECLARE_TYPENAME(short, "short");
CB_DECLARE_TYPENAME(unsigned short, "unsigned short");
CB_DECLARE_TYPENAME(int, "int");
CB_DECLARE_TYPENAME(unsigned int, "unsigned int");
// long is 64 bits wide here; the 64-bit integers keep the name they have in the exception texts.
CB_DECLARE_TYPENAME(long, "__int64");
CB_DECLARE_TYPENAME(unsigned long, "unsigned __int64");
CB_DECLARE_TYPENAME(long long, "__int64");
CB_DECLARE_TYPENAME(unsigned long long, "unsigned __int64");
CB_DECLARE_TYPENAME(float, "float");
CB_DECLARE_TYPENAME(double, "double");
CB_DECLARE_TYPENAME(long double, "long double");
CB_DECLARE_TYPENAME(CString, "class ATL::CStringT<wchar_t,class StrTraitMFC_DLL<wchar_t,class "
                             "ATL::ChTraitsCRT<wchar_t> > >");
CB_DECLARE_TYPENAME(CStringA, "class ATL::CStringT<char,class StrTraitMFC_DLL<char,class "
                              "ATL::ChTraitsCRT<char> > >");

template <class T> struct CbTypeName<T*>
{
    static std::string Get() { return CbTypeName<T>::Get() + " *"; }
};

template <class T> struct CbTypeName<const T>
{
    static std::string Get() { return "const " + CbTypeName<T>::Get(); }
};
