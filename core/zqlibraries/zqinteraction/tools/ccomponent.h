#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/cport.h"
#include "zqinteraction/zqinteraction_export.h"

#include <atomic>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

namespace Tools
{
class CFramework;
class CLockingManager;

// A building block of an interactive tool: named, with typed ports, set up by the configuration
// once the components it depends on are. A component derives from this class, adds its ports in
// its constructor, and in setUp binds the data of its output ports and adds its slots:
//
//     class CAreaTool : public CComponent {
//     public:
//         CAreaTool() : CComponent("Area") { AddPort<float>("Radius", CPort::eIn); AddPort<float>("Area",
//         CPort::eOut); }
//     protected:
//         void setUp(CFramework& framework) override { ... GetPort("Area")->Bind(...); ... }
//     };
//
// Only active components (set up and not switched off) have their slots called. A component that
// adds slots to ports of other components removes them in tearDown (CPort::RemoveSlots).
class ZQINTERACTION_API CComponent : public virtual CbRefCounted, private INonCopyable
{
public:
    explicit CComponent(std::string name);
    ~CComponent() override;

    const std::string& GetName() const { return m_name; }

    template <class T> CPort& AddPort(std::string name, CPort::EDirection direction)
    {
        return addPort(std::make_unique<CPort>(*this, std::move(name), direction, typeid(T)));
    }
    // The port of that name, or null.
    CPort* GetPort(const std::string& name) const;
    const std::vector<std::unique_ptr<CPort>>& GetPorts() const { return m_ports; }

    bool IsActive() const { return m_active.load(std::memory_order_acquire); }
    void SetActive(bool active) { m_active.store(active, std::memory_order_release); }

    // Names of components to be set up before this one, beyond those feeding its input ports.
    virtual std::vector<std::string> GetDependencies() const;

    // Called by the configuration, in dependency order; TearDown in the reverse order.
    void SetUp(CFramework& framework);
    void TearDown();
    // The framework this component was set up in; throws CbExceptionPreconditionViolation before.
    CFramework& GetFramework() const;
    // The component's locking manager (its framework's).
    CLockingManager& GetLockingManager() const;

protected:
    virtual void setUp(CFramework& framework);
    virtual void tearDown();

private:
    CPort& addPort(std::unique_ptr<CPort> port);

    std::string m_name;
    std::vector<std::unique_ptr<CPort>> m_ports;
    std::atomic<bool> m_active{false};
    CFramework* m_framework = nullptr;
};
} // namespace Tools
