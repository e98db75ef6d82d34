#pragma once

#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/ccomponent.h"
#include "zqinteraction/zqinteraction_export.h"

#include <string>
#include <vector>

namespace Tools
{
class CFramework;

// The components of a tool and how their ports are wired, found by name:
//
//     CConfiguration config;
//     const CConfiguration::HComponent hArea = config.AddComponent(CbMakeSmart<CAreaTool>());
//     config.AddComponent(CbMakeSmart<CRadiusTool>());
//     config.Connect("Radius", "Radius", "Area", "Radius");     // output port -> input port
//     config.LoadConfigForUnitTest(framework);
//     config.GetComponentByRef(hArea)->IsActive();             // true
//
// Loading sets the components up in an order that depends only on the wiring and the names, never
// on the order they were added in: a component comes after every component that feeds one of its
// input ports or that it names in GetDependencies; among components free to go next, the smallest
// name goes first.
class ZQINTERACTION_API CConfiguration : private INonCopyable
{
public:
    // A component's handle, valid for the configuration that gave it out.
    struct HComponent
    {
        unsigned int index = 0xFFFFFFFFu;
    };

    CConfiguration();
    // Unloads when still loaded.
    ~CConfiguration();

    // Throws CbExceptionPreconditionViolation when the name is taken or the configuration is loaded.
    HComponent AddComponent(CbSmartPointer<CComponent> component);
    // Wires the output port source.sourcePort to the input port target.targetPort: on loading, the
    // input port is bound to the output port's data. Throws CbExceptionPreconditionViolation naming
    // what is wrong: an unknown component or port, a wrong direction, another value type, an input
    // port that is fed already.
    void Connect(const std::string& source, const std::string& sourcePort, const std::string& target,
                 const std::string& targetPort);

    // Throws CbExceptionPreconditionViolation for a handle this configuration did not give out.
    CComponent* GetComponentByRef(HComponent handle) const;
    // The component of that name, or null.
    CComponent* GetComponent(const std::string& name) const;
    // Throws CbExceptionPreconditionViolation naming the missing component or port.
    CPort& GetPort(const std::string& component, const std::string& port) const;
    unsigned int GetComponentCount() const { return static_cast<unsigned int>(m_components.size()); }

    // Loads the configuration built in code (unit tests, small tools) into framework: in set-up
    // order, binds each component's fed input ports, sets it up, checks that every output port is
    // bound, and activates it. Throws CbException naming the components when they depend on each
    // other in a cycle, and CbExceptionPreconditionViolation for an output port left unbound or a
    // second load; what was set up before a failure is torn down again.
    void LoadConfigForUnitTest(CFramework& framework);
    // Deactivates and tears down every component, in the reverse set-up order.
    void Unload();
    bool IsLoaded() const { return m_loaded; }
    // Names of the components in the order they were set up.
    std::vector<std::string> GetSetupOrder() const;

private:
    struct SConnection
    {
        CPort* source;
        CPort* target;
        unsigned int sourceComponent;
        unsigned int targetComponent;
    };

    unsigned int indexOf(const std::string& name) const;
    std::vector<unsigned int> computeSetupOrder() const;
    void setUpComponent(unsigned int index, CFramework& framework);

    std::vector<CbSmartPointer<CComponent>> m_components;
    std::vector<SConnection> m_connections;
    std::vector<unsigned int> m_setUp;
    bool m_loaded = false;
};
} // namespace Tools
