#include "zqinteraction/tools/ccompportserializerbase.h"

#include "zqinteraction/tools/ccomponentserializer.h"

namespace Tools
{
CCompPortSerializerBase::CCompPortSerializerBase(CComponentSerializer& serializer, CPort& port,
                                                 unsigned int compareMode)
    : CComponent("Serializer:" + port.GetFullName()), m_serializer(&serializer),
      m_watched(&port.GetComponent()), m_port(&port), m_portName(port.GetFullName()),
      m_compareMode(compareMode)
{
    serializer.add(*this);
}

CCompPortSerializerBase::~CCompPortSerializerBase()
{
    m_port->RemoveSlots(*this);
    m_serializer->remove(*this);
}

std::vector<std::string> CCompPortSerializerBase::GetDependencies() const
{
    return {m_watched->GetName()};
}

void CCompPortSerializerBase::setUp(CFramework&)
{
    m_port->AddSlot(
        CSlot([this](const CSlot::SState& state, CScene& scene) { return onSlot(state, scene); }, this));
}

void CCompPortSerializerBase::tearDown()
{
    m_port->RemoveSlots(*this);
}

// In a replay each change reads its record: before the comparison for ports compared at once,
// after the serializer has seen the change for deferred ones.
CSlot::SResult CCompPortSerializerBase::onSlot(const CSlot::SState& state, CScene& scene)
{
    if (!m_serializer->GetInputStream())
        return onDataChanged(state, scene);
    const bool readAfter = m_compareMode == eCompareDeferred;
    if (!readAfter)
        m_serializer->ReadRecord(*this);
    CSlot::SResult result = onDataChanged(state, scene);
    if (readAfter)
        m_serializer->ReadRecord(*this);
    return result;
}
} // namespace Tools
