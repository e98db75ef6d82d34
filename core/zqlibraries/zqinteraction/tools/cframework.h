#pragma once

#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/clockingmanager.h"
#include "zqinteraction/zqinteraction_export.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace Tools
{
class CEventDispatcher;
class CScene;
class CUndoRedoManager;

// What the tools of one application window share: the locking manager that guards their data, the
// event dispatcher with its undo/redo manager, the interactive scene, and the log. Made and used
// on one thread (the dispatcher's); it must outlive its data objects, components and serializers.
//
//     CFramework framework;
//     framework.GetScene().GetCamera().SetView({0, 0, 10}, {0, 0, 0});
//     config.LoadConfigForUnitTest(framework);
//     framework.GetDispatcher()->NextInteraction();
//     framework.GetDispatcher()->Execute(operation);
class ZQINTERACTION_API CFramework : private INonCopyable
{
public:
    CFramework();
    ~CFramework();

    // Makes the framework lock its data through manager (one manager shared by several frameworks
    // lets their data be locked together). Only while the framework has no data objects: throws
    // CbExceptionPreconditionViolation otherwise, or for a null manager.
    void RegisterLockingMechanism(CbSmartPointer<CLockingManager> manager);
    CLockingManager& GetLockingManager() const { return *m_lockingManager; }

    CEventDispatcher* GetDispatcher() const { return m_dispatcher.get(); }
    CUndoRedoManager& GetUndoRedoManager() const { return *m_undoRedo; }
    CScene& GetScene() const { return *m_scene; }

    // Where log lines go (the port serializers' "Write: ..." and the like); nowhere by default.
    void SetLogSink(std::function<void(const std::string&)> sink);
    void Log(const std::string& line) const;

    // Data objects made for this framework and still alive.
    unsigned int GetDataCount() const { return m_dataCount.load(std::memory_order_acquire); }

private:
    friend class IData;
    void dataCreated() { m_dataCount.fetch_add(1, std::memory_order_acq_rel); }
    void dataDestroyed() { m_dataCount.fetch_sub(1, std::memory_order_acq_rel); }

    CbSmartPointer<CLockingManager> m_lockingManager;
    std::unique_ptr<CScene> m_scene;
    std::unique_ptr<CUndoRedoManager> m_undoRedo;
    std::unique_ptr<CEventDispatcher> m_dispatcher;
    std::function<void(const std::string&)> m_logSink;
    std::atomic<unsigned int> m_dataCount{0};
};
} // namespace Tools
