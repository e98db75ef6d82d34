#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cbtypename.h"
#include "zqinteraction/tools/cdatalock.h"
#include "zqinteraction/tools/ioperation.h"
#include "zqinteraction/tools/itypeddata.h"

#include <string>
#include <utility>

namespace Tools
{
// Replaces the value of one data object and puts the old one back on Undo:
//
//     dispatcher.Execute(CbMakeSmart<COperationReplace<CbVector3f>>(centre, CbVector3f(1, 2, 3)));
//
// Each step locks the data (request on the data's locking manager, wait without limit on the one
// given, unlock at the end whatever happens). When the lock cannot be had (waiting would deadlock,
// or the manager given is not the data's) it throws CbException naming its function, e.g.
// "Tools::COperationReplace<unsigned int>::operator ()", and changes nothing.
template <class T> class COperationReplace : public IOperation
{
public:
    COperationReplace(CbSmartPointer<ITypedData<T>> data, T newValue)
        : m_data(std::move(data)), m_newValue(std::move(newValue)), m_oldValue()
    {
    }

    void operator()(CLockingManager& lockingManager) override
    {
        ITypedDataAccess<T>& access = m_data->GetAccessInterface();
        CDataLock lock(access);
        if (!lock.Wait(lockingManager, CLockingManager::kWaitWithoutLimit))
            CB_THROW(CbException, functionText("operator ()").c_str());
        m_oldValue = access.Get();
        access.Set(m_newValue);
    }

    void Undo(CLockingManager& lockingManager) override
    {
        ITypedDataAccess<T>& access = m_data->GetAccessInterface();
        CDataLock lock(access);
        if (!lock.Wait(lockingManager, CLockingManager::kWaitWithoutLimit))
            CB_THROW(CbException, functionText("Undo").c_str());
        access.Set(m_oldValue);
    }

    ITypedData<T>& GetData() const { return *m_data; }
    const T& GetNewValue() const { return m_newValue; }
    // The value before the last run; T() before the first.
    const T& GetOldValue() const { return m_oldValue; }

private:
    static std::string functionText(const char* function)
    {
        return "Tools::COperationReplace<" + CbTypeName<T>::Get() + ">::" + function;
    }

    CbSmartPointer<ITypedData<T>> m_data;
    T m_newValue;
    T m_oldValue;
};
} // namespace Tools
