#pragma once

#include "basepool/inoncopyable.h"
#include "zqinteraction/zqinteraction_export.h"

#include <atomic>
#include <thread>

namespace Tools
{
class CLockingManager;

// The lock of one piece of data. Every data object has one (a member of a structure shares the
// structure's); the locking manager it belongs to hands it to one thread at a time. Only the
// manager changes it, under its own mutex; any thread may ask whether it holds it.
class ZQINTERACTION_API CLockable : private INonCopyable
{
public:
    explicit CLockable(CLockingManager& manager) : m_manager(&manager) {}

    CLockingManager& GetLockingManager() const { return *m_manager; }
    bool IsLockedByCurrentThread() const
    {
        return m_owner.load(std::memory_order_acquire) == std::this_thread::get_id();
    }
    bool IsLocked() const { return m_owner.load(std::memory_order_acquire) != std::thread::id(); }

private:
    friend class CLockingManager;

    CLockingManager* m_manager;
    std::atomic<std::thread::id> m_owner{};
    // How often the owner locked it; guarded by the manager's mutex.
    unsigned int m_depth = 0;
};
} // namespace Tools
