#pragma once

#include "zqinteraction/tools/cdatavalueholder.h"
#include "zqinteraction/tools/cframework.h"

namespace Tools
{
// A value of type T shared between components. Id tells apart data of one value type that mean
// different things (CDataSimple<float, 1> a radius, CDataSimple<float, 2> a height), so that
// ports can be typed by their meaning.
//
//     auto radius = CbMakeSmart<CDataSimple<float, 1>>(framework, "Radius", 1.0f);
//     CDataSimple<float, 1>::CDataAccessInterfaceNoLocking(*radius).Get() = 2.0f;   // set-up only
//
// Create it with CbMakeSmart: a change is queued with a reference to it.
template <class T, unsigned int Id = 0> class CDataSimple : public CDataValueHolder<T>
{
public:
    static constexpr unsigned int kId = Id;

    // Direct access without locking and without change notification, for set-up code that runs
    // before any other thread or port can see the data.
    class CDataAccessInterfaceNoLocking
    {
    public:
        explicit CDataAccessInterfaceNoLocking(CDataSimple& data) : m_data(data) {}
        T& Get() const { return m_data.storedValue(); }

    private:
        CDataSimple& m_data;
    };

    CDataSimple(CFramework& framework, std::string name, T initialValue = T())
        : CDataValueHolder<T>(framework, framework.GetLockingManager(), std::move(name),
                              std::move(initialValue))
    {
    }
};
} // namespace Tools
