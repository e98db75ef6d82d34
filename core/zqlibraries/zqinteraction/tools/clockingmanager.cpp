#include "zqinteraction/tools/clockingmanager.h"

#include "basepool/cbexception.h"
#include "zqinteraction/tools/idataaccessinterface.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace Tools
{
namespace
{
// What one thread has requested and holds, per manager. Kept per thread so that requesting and
// counting need no shared state.
struct SThreadLocks
{
    std::vector<std::pair<const CLockingManager*, CLockable*>> requested;
    std::vector<std::pair<const CLockingManager*, unsigned int>> held;
    // The requests TryLockAndWait is taking; a waiting thread's entry points at it.
    std::vector<CLockable*> wanted;
};

SThreadLocks& threadLocks()
{
    thread_local SThreadLocks locks;
    return locks;
}

unsigned int& heldCount(const CLockingManager* manager)
{
    auto& held = threadLocks().held;
    for (auto& entry : held)
        if (entry.first == manager)
            return entry.second;
    held.emplace_back(manager, 0u);
    return held.back().second;
}
} // namespace

CLockingManager::CLockingManager() = default;
CLockingManager::~CLockingManager() = default;

void CLockingManager::requestLock(const IDataAccessInterface& access)
{
    requestLock(access.GetLockable());
}

void CLockingManager::requestLock(CLockable& lockable)
{
    if (lockable.m_manager != this)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CLockingManager::requestLock",
                 "the data belongs to another locking manager");
    threadLocks().requested.emplace_back(this, &lockable);
}

void CLockingManager::WithdrawRequest(CLockable& lockable)
{
    auto& requested = threadLocks().requested;
    const auto it = std::find(requested.rbegin(), requested.rend(),
                              std::make_pair(static_cast<const CLockingManager*>(this), &lockable));
    if (it != requested.rend())
        requested.erase(std::next(it).base());
}

bool CLockingManager::TryLockAndWait(unsigned int timeoutMilliseconds)
{
    SThreadLocks& mine = threadLocks();
    std::vector<CLockable*>& wanted = mine.wanted;
    wanted.clear();
    auto keep = mine.requested.begin();
    for (const auto& request : mine.requested)
        if (request.first == this)
            wanted.push_back(request.second);
        else
            *keep++ = request;
    mine.requested.erase(keep, mine.requested.end());
    if (wanted.empty())
        return true;

    std::unique_lock<std::mutex> lock(m_mutex);
    if (!tryAcquire(wanted, std::this_thread::get_id()) && !waitForLocks(lock, wanted, timeoutMilliseconds))
        return false;
    heldCount(this) += static_cast<unsigned int>(wanted.size());
    return true;
}

bool CLockingManager::waitForLocks(std::unique_lock<std::mutex>& lock, const std::vector<CLockable*>& wanted,
                                   unsigned int timeoutMilliseconds)
{
    if (timeoutMilliseconds == 0)
        return false;
    const std::thread::id self = std::this_thread::get_id();
    // Only a thread that holds locks can close a cycle by waiting.
    const bool holdsLocks = heldCount(this) > 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMilliseconds);
    m_waiters.push_back({self, &wanted});
    bool acquired = false;
    for (;;)
    {
        if (holdsLocks && wouldDeadlock(wanted, self))
        {
            ++m_deadlocksAvoided;
            break;
        }
        if (timeoutMilliseconds == kWaitWithoutLimit)
            m_released.wait(lock);
        else if (m_released.wait_until(lock, deadline) == std::cv_status::timeout)
        {
            acquired = tryAcquire(wanted, self);
            break;
        }
        if (tryAcquire(wanted, self))
        {
            acquired = true;
            break;
        }
    }
    m_waiters.erase(std::find_if(m_waiters.begin(), m_waiters.end(),
                                 [self](const SWaiter& waiter) { return waiter.thread == self; }));
    return acquired;
}

bool CLockingManager::tryAcquire(const std::vector<CLockable*>& wanted, std::thread::id self)
{
    for (const CLockable* lockable : wanted)
    {
        const std::thread::id owner = lockable->m_owner.load(std::memory_order_relaxed);
        if (owner != std::thread::id() && owner != self)
            return false;
    }
    for (CLockable* lockable : wanted)
        if (lockable->m_depth++ == 0)
            lockable->m_owner.store(self, std::memory_order_release);
    return true;
}

// Follows "waits for a lock owned by" from the asking thread; reaching it again is a cycle.
bool CLockingManager::wouldDeadlock(const std::vector<CLockable*>& wanted, std::thread::id self) const
{
    std::vector<std::thread::id> pending;
    std::vector<std::thread::id> visited;
    const auto addOwners = [&pending](const std::vector<CLockable*>& locks, std::thread::id waiter)
    {
        for (const CLockable* lockable : locks)
        {
            const std::thread::id owner = lockable->m_owner.load(std::memory_order_relaxed);
            if (owner != std::thread::id() && owner != waiter)
                pending.push_back(owner);
        }
    };
    addOwners(wanted, self);
    while (!pending.empty())
    {
        const std::thread::id thread = pending.back();
        pending.pop_back();
        if (thread == self)
            return true;
        if (std::find(visited.begin(), visited.end(), thread) != visited.end())
            continue;
        visited.push_back(thread);
        for (const SWaiter& waiter : m_waiters)
            if (waiter.thread == thread)
                addOwners(*waiter.wanted, thread);
    }
    return false;
}

void CLockingManager::unlock(const IDataAccessInterface& access)
{
    unlock(access.GetLockable());
}

void CLockingManager::unlock(CLockable& lockable)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (lockable.m_owner.load(std::memory_order_relaxed) != std::this_thread::get_id())
            CB_THROW(CbExceptionPreconditionViolation, "Tools::CLockingManager::unlock",
                     "the calling thread does not hold the lock");
        if (--lockable.m_depth == 0)
        {
            lockable.m_owner.store(std::thread::id(), std::memory_order_release);
            if (!m_waiters.empty())
                m_released.notify_all();
        }
    }
    --heldCount(this);
}

unsigned int CLockingManager::GetHeldCount() const
{
    return heldCount(this);
}

unsigned int CLockingManager::GetWaitingCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<unsigned int>(m_waiters.size());
}

std::uint64_t CLockingManager::GetDeadlocksAvoided() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_deadlocksAvoided;
}
} // namespace Tools
