#include "zqinteraction/tools/cdatalock.h"

#include "basepool/cbexception.h"
#include "zqinteraction/tools/idataaccessinterface.h"

namespace Tools
{
CDataLock::CDataLock(const IDataAccessInterface& access) : m_lockable(access.GetLockable())
{
    m_lockable.GetLockingManager().requestLock(m_lockable);
}

CDataLock::~CDataLock()
{
    if (m_state == eLocked)
        m_lockable.GetLockingManager().unlock(m_lockable);
    else if (m_state == eRequested)
        m_lockable.GetLockingManager().WithdrawRequest(m_lockable);
}

bool CDataLock::Wait(CLockingManager& manager, unsigned int timeoutMilliseconds)
{
    if (m_state != eRequested)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CDataLock::Wait", "waited twice");
    if (&manager != &m_lockable.GetLockingManager())
    {
        m_lockable.GetLockingManager().WithdrawRequest(m_lockable);
        m_state = eDone;
        return false;
    }
    m_state = manager.TryLockAndWait(timeoutMilliseconds) ? eLocked : eDone;
    return m_state == eLocked;
}
} // namespace Tools
