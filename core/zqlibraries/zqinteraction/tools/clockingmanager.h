#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/clockable.h"
#include "zqinteraction/zqinteraction_export.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace Tools
{
class IDataAccessInterface;

// Hands the locks of data objects to threads. A thread first names every lock it needs with
// requestLock (this blocks nothing), then takes them all with TryLockAndWait and gives each back
// with unlock:
//
//     manager.requestLock(position.GetAccessInterface());
//     manager.requestLock(radius.GetAccessInterface());
//     if (!manager.TryLockAndWait(CLockingManager::kWaitWithoutLimit))
//         ...;                                   // could not be had: nothing is locked
//     ...                                        // read and write both
//     manager.unlock(radius.GetAccessInterface());
//     manager.unlock(position.GetAccessInterface());
//
// Why it never deadlocks, even when two threads name the same data in different orders:
// - TryLockAndWait takes the requested locks all at once or none of them. A thread that holds no
//   lock of this manager while it waits cannot be part of a cycle, whatever its order of requests.
// - A thread that already holds locks (nested locking) and would have to wait is checked first:
//   when the thread owning a wanted lock waits itself, directly or through others, for a lock of
//   the asking thread, waiting would close a cycle. TryLockAndWait then returns false at once (the
//   caller throws and releases what it holds, so the others proceed). A cycle can only be closed by
//   a thread that starts (or resumes) waiting, so checking then finds every one.
// A lock is recursive: the owner may lock it again and must unlock it as often.
//
// Requests are kept per thread. The time-out is in milliseconds; kWaitWithoutLimit waits as long
// as it takes (unless waiting would deadlock), 0 only tries.
class ZQINTERACTION_API CLockingManager : public virtual CbRefCounted, private INonCopyable
{
public:
    static constexpr unsigned int kWaitWithoutLimit = 0xFFFFFFFFu;

    CLockingManager();
    ~CLockingManager() override;

    // Adds the lock of access (or lockable) to the calling thread's requests. Throws
    // CbExceptionPreconditionViolation for the lock of another manager.
    void requestLock(const IDataAccessInterface& access);
    void requestLock(CLockable& lockable);
    // Takes every lock the calling thread requested from this manager, waiting up to timeout ms
    // for all of them to be free. True when the thread holds them all; false (nothing taken, the
    // requests dropped) when the time ran out or waiting would deadlock.
    bool TryLockAndWait(unsigned int timeoutMilliseconds);
    // Gives one lock back. Throws CbExceptionPreconditionViolation when the calling thread does not
    // hold it.
    void unlock(const IDataAccessInterface& access);
    void unlock(CLockable& lockable);
    // Drops one request of lockable that the calling thread has not waited for yet.
    void WithdrawRequest(CLockable& lockable);

    // Locks the calling thread holds from this manager, counting repeated ones.
    unsigned int GetHeldCount() const;
    // Threads waiting in TryLockAndWait right now.
    unsigned int GetWaitingCount() const;
    // Waits that TryLockAndWait refused because they would have closed a cycle.
    std::uint64_t GetDeadlocksAvoided() const;

private:
    struct SWaiter
    {
        std::thread::id thread;
        const std::vector<CLockable*>* wanted;
    };

    bool tryAcquire(const std::vector<CLockable*>& wanted, std::thread::id self);
    bool wouldDeadlock(const std::vector<CLockable*>& wanted, std::thread::id self) const;
    bool waitForLocks(std::unique_lock<std::mutex>& lock, const std::vector<CLockable*>& wanted,
                      unsigned int timeoutMilliseconds);

    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    std::vector<SWaiter> m_waiters;
    std::uint64_t m_deadlocksAvoided = 0;
};
} // namespace Tools
