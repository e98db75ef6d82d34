#pragma once

#include "basepool/cbrtti.h"

#include <memory>

// Creates registered objects by class name.
class CbFactory
{
public:
    // A new object of the class registered under name; empty for an unknown name or a class
    // registered without a creation function.
    static std::unique_ptr<IObject> Create(const wchar_t* name)
    {
        CbRTTI::CreateFunction create = CbRTTI::getCreate(name);
        return create ? create() : nullptr;
    }

    // Create(name) seen as interface T. An object of another interface is destroyed at once and the
    // result is empty.
    template <class T> static std::unique_ptr<T> CreateAs(const wchar_t* name)
    {
        std::unique_ptr<IObject> object = Create(name);
        T* cast = dynamic_cast<T*>(object.get());
        if (!cast)
            return nullptr;
        object.release();
        return std::unique_ptr<T>(cast);
    }

    // A copy of source made by the cloning function of its class; empty when it has none.
    static std::unique_ptr<IObject> Clone(const IObject& source)
    {
        CbRTTI::CloneFunction clone = CbRTTI::getClone(source.GetRTTI().GetName());
        return clone ? clone(source) : nullptr;
    }
};
