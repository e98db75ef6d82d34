#pragma once

#include "zqinteraction/tools/clockingmanager.h"
#include "zqinteraction/tools/itypeddata.h"

#include <string>
#include <utility>

namespace Tools
{
// A data object that stores its value itself, with its own lock and access interface: the common
// part of CDataSimple and CDataExclusiveSimple.
template <class T> class CDataValueHolder : public ITypedData<T>
{
public:
    CLockable& GetLockable() const override { return m_lockable; }
    ITypedDataAccess<T>& GetAccessInterface() override { return m_access; }

protected:
    CDataValueHolder(CFramework& framework, CLockingManager& lockingManager, std::string name, T initialValue)
        : ITypedData<T>(framework, std::move(name)), m_lockable(lockingManager),
          m_value(std::move(initialValue))
    {
    }

    // The value without a lock, for the unlocked interface of CDataSimple.
    T& storedValue() { return m_value; }

private:
    class CAccess final : public ITypedDataAccess<T>
    {
    public:
        explicit CAccess(CDataValueHolder& data) : m_data(data) {}
        CLockable& GetLockable() const override { return m_data.m_lockable; }
        IData& GetData() const override { return m_data; }

    protected:
        T& value() const override { return m_data.m_value; }

    private:
        CDataValueHolder& m_data;
    };

    mutable CLockable m_lockable;
    T m_value;
    CAccess m_access{*this};
};
} // namespace Tools
