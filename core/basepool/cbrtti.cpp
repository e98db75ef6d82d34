#include "basepool/cbrtti.h"

#include <algorithm>
#include <cwchar>
#include <mutex>

namespace
{
struct SRegistry
{
    std::mutex mutex;
    std::vector<const CbRTTI*> records;
};

// Never destroyed: modules unloaded during process exit still unregister their records after the
// static objects of this library may already be gone.
SRegistry& registry()
{
    static SRegistry* instance = new SRegistry;
    return *instance;
}

void enter(const CbRTTI* record)
{
    SRegistry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.records.push_back(record);
}

const CbRTTI* findLocked(SRegistry& r, const wchar_t* name)
{
    if (!name)
        return nullptr;
    auto it =
        std::find_if(r.records.rbegin(), r.records.rend(),
                     [name](const CbRTTI* record) { return std::wcscmp(record->GetName(), name) == 0; });
    return it == r.records.rend() ? nullptr : *it;
}
} // namespace

IObject::~IObject() = default;

const wchar_t* IObject::GetClassName() const
{
    return GetRTTI().GetName();
}

CbRTTI::CbRTTI(const wchar_t* name, CreateFunction create, CloneFunction clone)
    : m_name(name), m_bases{0, {nullptr, nullptr}}, m_create(create), m_clone(clone)
{
    enter(this);
}

CbRTTI::CbRTTI(const wchar_t* name, const CbRTTI& parent, CreateFunction create, CloneFunction clone)
    : m_name(name), m_bases{1, {&parent, nullptr}}, m_create(create), m_clone(clone)
{
    enter(this);
}

CbRTTI::CbRTTI(const wchar_t* name, const CbRTTI& parent1, const CbRTTI& parent2, CreateFunction create,
               CloneFunction clone)
    : m_name(name), m_bases{2, {&parent1, &parent2}}, m_create(create), m_clone(clone)
{
    enter(this);
}

CbRTTI::~CbRTTI()
{
    SRegistry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = std::find(r.records.rbegin(), r.records.rend(), this);
    if (it != r.records.rend())
        r.records.erase(std::next(it).base());
}

bool CbRTTI::IsKindOf(const CbRTTI& other) const
{
    if (this == &other)
        return true;
    for (std::size_t i = 0; i < m_bases.count; ++i)
        if (m_bases.parents[i]->IsKindOf(other))
            return true;
    return false;
}

const CbRTTI* CbRTTI::Find(const wchar_t* name)
{
    SRegistry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return findLocked(r, name);
}

std::vector<const CbRTTI*> CbRTTI::GetRegistered()
{
    SRegistry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return r.records;
}

CbRTTI::CreateFunction CbRTTI::getCreate(const wchar_t* name)
{
    const CbRTTI* record = Find(name);
    return record ? record->m_create : nullptr;
}

CbRTTI::CloneFunction CbRTTI::getClone(const wchar_t* name)
{
    const CbRTTI* record = Find(name);
    return record ? record->m_clone : nullptr;
}
