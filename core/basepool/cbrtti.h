#pragma once

#include "basepool/basepool_export.h"
#include "basepool/iobject.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

class CbFactory;

// Run-time type record of a class: its name, up to two parents, and the functions that create and
// clone objects of it. Constructing a record enters it into the process-wide registry, destroying it
// takes it out again, so a module's records live exactly as long as the module is loaded.
//
// Records compare by identity. When two live records share a name, Find returns the one registered
// last; destroying it uncovers the earlier one again.
class BASEPOOL_API CbRTTI
{
public:
    using CreateFunction = std::unique_ptr<IObject> (*)();
    using CloneFunction = std::unique_ptr<IObject> (*)(const IObject&);

    // Layout returned by GetBaseClassRTTI: a pointer-sized count followed by that many parents.
    struct SBaseClassList
    {
        std::size_t count;
        const CbRTTI* parents[2];
    };

    CbRTTI(const wchar_t* name, CreateFunction create, CloneFunction clone);
    CbRTTI(const wchar_t* name, const CbRTTI& parent, CreateFunction create, CloneFunction clone);
    CbRTTI(const wchar_t* name, const CbRTTI& parent1, const CbRTTI& parent2, CreateFunction create,
           CloneFunction clone);
    ~CbRTTI();
    CbRTTI(const CbRTTI&) = delete;
    CbRTTI& operator=(const CbRTTI&) = delete;

    const wchar_t* GetName() const { return m_name; }
    // Null for a record without parents.
    const SBaseClassList* GetBaseClassRTTI() const { return m_bases.count ? &m_bases : nullptr; }
    bool CanCreate() const { return m_create != nullptr; }

    bool operator==(const CbRTTI& other) const { return this == &other; }
    bool operator!=(const CbRTTI& other) const { return this != &other; }
    // True only for this very record.
    bool Is(const CbRTTI& other) const { return this == &other; }
    // True for this record and every ancestor through any parent.
    bool IsKindOf(const CbRTTI& other) const;

    // The live record registered under name, or null.
    static const CbRTTI* Find(const wchar_t* name);
    // A snapshot of every live record, in order of registration.
    static std::vector<const CbRTTI*> GetRegistered();

private:
    friend class CbFactory;
    static CreateFunction getCreate(const wchar_t* name);
    static CloneFunction getClone(const wchar_t* name);

    const wchar_t* m_name;
    SBaseClassList m_bases;
    CreateFunction m_create;
    CloneFunction m_clone;
};

// Helpers of the registration macros: a creation function exists only for classes that can be
// default-constructed (not for abstract bases, nor for the collection, which needs a table).
template <class T>
inline constexpr bool CbIsCreatable = !std::is_abstract_v<T> && std::is_default_constructible_v<T>;

template <class T> std::unique_ptr<IObject> CbCreateByFactory()
{
    if constexpr (CbIsCreatable<T>)
        return std::unique_ptr<IObject>(new T());
    else
        return nullptr;
}

// Declares the per-class members of a registered class. Put it first in the class body:
//
//     class CbArray_UnitTest : public ZqUnitTest, public IUnitTestRecreate, public ZqBenchmark
//     {
//         CB_DECLARE_RTTI(CbArray_UnitTest)
//     ...
//     CB_IMPLEMENT_RTTI(CbArray_UnitTest, ZqUnitTest::RTTI, ZqBenchmark::RTTI)   // in the .cpp
//
// It leaves the class body in private access.
#define CB_DECLARE_RTTI(Class)                                                                               \
public:                                                                                                      \
    static const CbRTTI RTTI;                                                                                \
    const CbRTTI& GetRTTI() const override                                                                   \
    {                                                                                                        \
        return RTTI;                                                                                         \
    }                                                                                                        \
    bool Is(const CbRTTI& other) const                                                                       \
    {                                                                                                        \
        return GetRTTI().Is(other);                                                                          \
    }                                                                                                        \
    bool IsKindOf(const CbRTTI& other) const                                                                 \
    {                                                                                                        \
        return GetRTTI().IsKindOf(other);                                                                    \
    }                                                                                                        \
                                                                                                             \
private:                                                                                                     \
    static std::unique_ptr<IObject> CreateByFactory()                                                        \
    {                                                                                                        \
        return CbCreateByFactory<Class>();                                                                   \
    }

// Defines the record of Class with its parents' records (none, one or two) and, when Class can be
// default-constructed, its creation function. The record's name is the class's name.
#define CB_IMPLEMENT_RTTI(Class, ...)                                                                        \
    const CbRTTI Class::RTTI(                                                                                \
        L"" #Class, __VA_ARGS__ __VA_OPT__(, ) CbIsCreatable<Class> ? &Class::CreateByFactory : nullptr,     \
        nullptr)

// The same for a class in a namespace, with its registered name spelled out.
#define CB_IMPLEMENT_RTTI_NAMED(Class, Name, ...)                                                            \
    const CbRTTI Class::RTTI(                                                                                \
        Name, __VA_ARGS__ __VA_OPT__(, ) CbIsCreatable<Class> ? &Class::CreateByFactory : nullptr, nullptr)
