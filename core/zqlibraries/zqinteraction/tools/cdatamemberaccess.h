#pragma once

#include "basepool/cbsmartpointer.h"
#include "zqinteraction/tools/itypeddata.h"

#include <string>
#include <utility>

namespace Tools
{
// One member (of type T) of a structure S held by another data object, as a data object of its
// own that ports can be bound to:
//
//     auto probe = CbMakeSmart<CDataExclusiveSimple<SProbe>>(framework, probeObject, "Probe");
//     auto centre = CbMakeSmart<CDataMemberAccess<CbVector3f, 0, SProbe>>(probe, &SProbe::centre,
//     "Probe.centre");
//
// It shares the structure's lock (locking the member locks the whole structure) and its scene
// object. Writing the member tells the ports of the member and of the structure; writing the whole
// structure tells the ports of every member. Made and destroyed on the dispatcher's thread.
template <class T, unsigned int Id, class S> class CDataMemberAccess : public ITypedData<T>
{
public:
    static constexpr unsigned int kId = Id;

    CDataMemberAccess(CbSmartPointer<ITypedData<S>> structure, T S::*member, std::string name)
        : ITypedData<T>(structure->GetFramework(), std::move(name)), m_structure(std::move(structure)),
          m_member(member)
    {
        m_structure->AddDependent(*this);
    }
    ~CDataMemberAccess() override { m_structure->RemoveDependent(*this); }

    CLockable& GetLockable() const override { return m_structure->GetLockable(); }
    CSceneObject* GetSceneObject() const override { return m_structure->GetSceneObject(); }
    ITypedDataAccess<T>& GetAccessInterface() override { return m_access; }
    ITypedData<S>& GetStructure() const { return *m_structure; }

    // The member and its structure; not the structure's other members.
    void CollectAffected(std::vector<IData*>& affected) override
    {
        affected.push_back(this);
        affected.push_back(m_structure.Get());
    }

private:
    class CAccess final : public ITypedDataAccess<T>
    {
    public:
        explicit CAccess(CDataMemberAccess& data) : m_data(data) {}
        CLockable& GetLockable() const override { return m_data.GetLockable(); }
        IData& GetData() const override { return m_data; }

    protected:
        T& value() const override
        {
            return m_data.m_structure->GetAccessInterface().value().*m_data.m_member;
        }

    private:
        CDataMemberAccess& m_data;
    };

    CbSmartPointer<ITypedData<S>> m_structure;
    T S::*m_member;
    CAccess m_access{*this};
};
} // namespace Tools
