#pragma once

#include "zqinteraction/tools/idata.h"
#include "zqinteraction/tools/itypeddataaccess.h"

#include <typeinfo>

namespace Tools
{
// A data object holding a T, read and written through its access interface.
template <class T> class ITypedData : public IData
{
public:
    using ValueType = T;

    const std::type_info& GetValueType() const override { return typeid(T); }
    virtual ITypedDataAccess<T>& GetAccessInterface() = 0;

protected:
    using IData::IData;
};
} // namespace Tools
