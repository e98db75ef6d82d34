#include "zqinteraction/tools/cport.h"

#include "zqinteraction/tools/ccomponent.h"

#include <algorithm>

namespace Tools
{
CPort::CPort(CComponent& component, std::string name, EDirection direction, const std::type_info& valueType)
    : m_component(&component), m_name(std::move(name)), m_direction(direction), m_valueType(&valueType)
{
}

CPort::~CPort()
{
    if (m_data)
        m_data->RemoveObserver(*this);
}

std::string CPort::GetFullName() const
{
    return m_component->GetName() + "." + m_name;
}

void CPort::Bind(CbSmartPointer<IData> data)
{
    if (data && data->GetValueType() != *m_valueType)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CPort::Bind",
                 "data '" + data->GetName() + "' has another type than port '" + GetFullName() + "'");
    if (m_data)
        m_data->RemoveObserver(*this);
    m_data = std::move(data);
    if (m_data)
        m_data->AddObserver(*this);
}

void CPort::AddSlot(CSlot slot)
{
    m_slots.push_back(std::move(slot));
}

void CPort::RemoveSlots(const CComponent& owner)
{
    m_slots.erase(std::remove_if(m_slots.begin(), m_slots.end(),
                                 [&owner](const CSlot& slot) { return slot.GetOwner() == &owner; }),
                  m_slots.end());
}

unsigned int CPort::Deliver(const CSlot::SState& state, CScene& scene,
                            std::vector<CbSmartPointer<IOperation>>& operations)
{
    unsigned int handled = 0;
    for (const CSlot& slot : m_slots)
    {
        if (!slot.IsEnabled())
            continue;
        CSlot::SResult result = slot(state, scene);
        if (result.eventState == CSlot::eEventHandled)
            ++handled;
        if (result.operation)
            operations.push_back(std::move(result.operation));
    }
    return handled;
}
} // namespace Tools
