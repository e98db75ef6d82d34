#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/clockable.h"
#include "zqinteraction/zqinteraction_export.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <vector>

namespace Tools
{
class CFramework;
class CLockingManager;
class CPort;
class CSceneObject;

// A data object of the framework: a named value guarded by a lock, watched by the ports bound to
// it. A write through its access interface marks it changed; the framework's dispatcher then tells
// its ports (on the dispatcher's thread), once per delivery however often it was written.
//
// Data objects are shared through CbSmartPointer. The framework they were made for must outlive them.
class ZQINTERACTION_API IData : public virtual CbRefCounted, private INonCopyable
{
public:
    const std::string& GetName() const { return m_name; }
    CFramework& GetFramework() const { return *m_framework; }
    CLockingManager& GetLockingManager() const { return GetLockable().GetLockingManager(); }

    virtual CLockable& GetLockable() const = 0;
    virtual const std::type_info& GetValueType() const = 0;
    virtual CSceneObject* GetSceneObject() const { return nullptr; }

    // Queues a delivery of this data's change with the dispatcher; any thread.
    void MarkChanged();

    // The ports bound to this data; dispatcher thread only.
    void AddObserver(CPort& port);
    void RemoveObserver(CPort& port);
    const std::vector<CPort*>& GetObservers() const { return m_observers; }

    // Data whose ports also hear of a change of this one (the members of a structure). Added and
    // removed on the dispatcher's thread, while no delivery runs.
    void AddDependent(IData& dependent);
    void RemoveDependent(IData& dependent);
    // Appends this data and those whose ports hear of its change.
    virtual void CollectAffected(std::vector<IData*>& affected);

protected:
    IData(CFramework& framework, std::string name);
    ~IData() override;

private:
    friend class CEventDispatcher;

    CFramework* m_framework;
    std::string m_name;
    std::vector<CPort*> m_observers;
    std::vector<IData*> m_dependents;
    // Set while a delivery of this data is queued, so that many writes queue it once.
    std::atomic<bool> m_changePending{false};
    // The dispatcher's delivery that last told this data's ports; dispatcher thread only.
    std::uint64_t m_delivery = 0;
};
} // namespace Tools
