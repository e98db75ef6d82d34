#include "zqinteraction/tools/cslot.h"

#include "basepool/cbexception.h"
#include "zqinteraction/tools/ccomponent.h"

namespace Tools
{
CSlot::CSlot(Handler handler, const CComponent* owner) : m_handler(std::move(handler)), m_owner(owner)
{
    if (!m_handler)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CSlot::CSlot", "no handler");
}

CSlot::SResult CSlot::NoOperation(unsigned int eventState)
{
    return {nullptr, eventState};
}

CSlot::SResult CSlot::Operation(CbSmartPointer<IOperation> operation, unsigned int eventState)
{
    return {std::move(operation), eventState};
}

bool CSlot::IsEnabled() const
{
    return !m_owner || m_owner->IsActive();
}
} // namespace Tools
