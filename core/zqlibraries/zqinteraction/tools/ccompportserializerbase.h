#pragma once

#include "basepool/cbsmartpointer.h"
#include "zqinteraction/tools/ccomponent.h"
#include "zqinteraction/tools/cslot.h"
#include "zqinteraction/zqinteraction_export.h"

#include <string>
#include <vector>

namespace Tools
{
class CComponentSerializer;
class CScene;

// A component attached to one port of another component: it records the port's changes into its
// component serializer's stream, or checks them against the replayed stream. Made by
// CComponentSerializer::Watch; the typed work is CCompPortSerializer<T>'s.
//
// It is set up after the component whose port it watches, and then adds its slot to that port.
class ZQINTERACTION_API CCompPortSerializerBase : public CComponent
{
public:
    // Compare modes: 0 compares nothing, 2 compares deferred, any other value compares at once.
    enum ECompareMode : unsigned int
    {
        eCompareNone = 0,
        eCompareImmediate = 1,
        eCompareDeferred = 2,
    };

    ~CCompPortSerializerBase() override;

    // The watched port's full name, "Component.Port": in every record and log line.
    const std::string& GetPortName() const { return m_portName; }
    unsigned int GetCompareMode() const { return m_compareMode; }
    CComponentSerializer& GetSerializer() const { return *m_serializer; }
    CPort& GetPort() const { return *m_port; }

    // The component whose port is watched.
    std::vector<std::string> GetDependencies() const override;

    // Replay: reads the recorded value of the port's next change from the stream.
    virtual void Deserialize() = 0;

protected:
    CCompPortSerializerBase(CComponentSerializer& serializer, CPort& port, unsigned int compareMode);

    // Records or checks one change of the port's data.
    virtual CSlot::SResult onDataChanged(const CSlot::SState& state, CScene& scene) = 0;

    void setUp(CFramework& framework) override;
    void tearDown() override;

private:
    CSlot::SResult onSlot(const CSlot::SState& state, CScene& scene);

    CbSmartPointer<CComponentSerializer> m_serializer;
    // Keeps the watched port alive.
    CbSmartPointer<CComponent> m_watched;
    CPort* m_port;
    std::string m_portName;
    unsigned int m_compareMode;
};
} // namespace Tools
