#include "zqinteraction/tools/ioperation.h"

#include "basepool/cbexception.h"

namespace Tools
{
IOperation::~IOperation() = default;

void IOperation::Redo(CLockingManager& lockingManager)
{
    (*this)(lockingManager);
}

bool IOperation::CanAccumulate(const IOperation&) const
{
    return false;
}

void IOperation::Accumulate(const IOperation&)
{
    CB_THROW(CbException, "Tools::IOperation::Accumulate");
}
} // namespace Tools
