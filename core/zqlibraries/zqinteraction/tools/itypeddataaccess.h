#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "zqinteraction/tools/idata.h"
#include "zqinteraction/tools/idataaccessinterface.h"

#include <string>

namespace Tools
{
template <class T, unsigned int Id, class S> class CDataMemberAccess;

// Reads and writes the value of one data object. Both need the calling thread to hold the data's
// lock (CDataLock, or CLockingManager directly); otherwise they throw
// CbExceptionPreconditionViolation, so unguarded access shows up at once instead of as a rare race.
template <class T> class ITypedDataAccess : public IDataAccessInterface
{
public:
    const T& Get() const
    {
        if (!IsLockedByCurrentThread())
            throwNotLocked("Get");
        return value();
    }
    // Writes newValue and marks the data changed: its ports hear of it when the dispatcher delivers.
    void Set(const T& newValue)
    {
        if (!IsLockedByCurrentThread())
            throwNotLocked("Set");
        value() = newValue;
        GetData().MarkChanged();
    }

protected:
    template <class, unsigned int, class> friend class CDataMemberAccess;

    // The stored value, without any check.
    virtual T& value() const = 0;

private:
    [[noreturn]] static void throwNotLocked(const char* function)
    {
        const std::string text = "Tools::ITypedDataAccess<" + CbTypeName<T>::Get() + ">::" + function;
        CB_THROW(CbExceptionPreconditionViolation, text.c_str(),
                 "the calling thread does not hold the data's lock");
    }
};
} // namespace Tools
