#pragma once

#include "basepool/basepool_export.h"

class CbRTTI;

// Root interface of every object the factory creates. Destruction goes through the virtual
// destructor, so a std::unique_ptr<IObject> may own any of them.
class BASEPOOL_API IObject
{
public:
    virtual ~IObject();
    // The class's static type record.
    virtual const CbRTTI& GetRTTI() const = 0;
    // GetRTTI().GetName(), for every class.
    virtual const wchar_t* GetClassName() const;
};
