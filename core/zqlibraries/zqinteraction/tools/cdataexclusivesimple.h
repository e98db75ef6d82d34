#pragma once

#include "zqinteraction/tools/cdatavalueholder.h"
#include "zqinteraction/tools/cframework.h"

namespace Tools
{
class CSceneObject;

// A value of type T that belongs to a scene object (a probe's position, a clipping plane) and is
// only ever touched under its lock: unlike CDataSimple it has no unlocked access. Its access
// interface answers GetSceneObject. The scene object must outlive the data.
template <class T, unsigned int Id = 0> class CDataExclusiveSimple : public CDataValueHolder<T>
{
public:
    static constexpr unsigned int kId = Id;

    CDataExclusiveSimple(CFramework& framework, CSceneObject& owner, std::string name, T initialValue = T())
        : CDataValueHolder<T>(framework, framework.GetLockingManager(), std::move(name),
                              std::move(initialValue)),
          m_owner(&owner)
    {
    }

    CSceneObject* GetSceneObject() const override { return m_owner; }

private:
    CSceneObject* m_owner;
};
} // namespace Tools
