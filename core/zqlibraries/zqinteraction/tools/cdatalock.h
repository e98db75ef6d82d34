#pragma once

#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/clockingmanager.h"
#include "zqinteraction/zqinteraction_export.h"

namespace Tools
{
class IDataAccessInterface;

// Holds the lock of one data object for a scope, in the framework's locking discipline: the lock
// is requested from the data's own locking manager on construction, taken by Wait on the
// component's or the dispatcher's locking manager, and given back on destruction whatever happens:
//
//     CDataLock lock(access);
//     if (!lock.Wait(lockingManager))
//         CB_THROW(CbException, "Tools::CMyTool::onDataChanged");
//     ... access.Get() ...
//
// Between its construction and Wait the thread requests no other lock of that manager.
class ZQINTERACTION_API CDataLock : private INonCopyable
{
public:
    explicit CDataLock(const IDataAccessInterface& access);
    ~CDataLock();

    // TryLockAndWait on manager. True when the lock is held; false when it could not be had in
    // time, when waiting would deadlock, or when manager is not the one the data belongs to.
    bool Wait(CLockingManager& manager,
              unsigned int timeoutMilliseconds = CLockingManager::kWaitWithoutLimit);
    bool IsLocked() const { return m_state == eLocked; }

private:
    enum EState
    {
        eRequested,
        eLocked,
        eDone,
    };

    CLockable& m_lockable;
    EState m_state = eRequested;
};
} // namespace Tools
