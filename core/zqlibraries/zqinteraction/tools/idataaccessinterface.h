#pragma once

#include "zqinteraction/tools/clockable.h"
#include "zqinteraction/zqinteraction_export.h"

namespace Tools
{
class IData;
class CSceneObject;

// The way into one data object: the lock that guards it and, through the typed interface
// (ITypedDataAccess<T>), its value. The locking manager locks data by their access interfaces.
class ZQINTERACTION_API IDataAccessInterface
{
public:
    virtual ~IDataAccessInterface();

    virtual CLockable& GetLockable() const = 0;
    virtual IData& GetData() const = 0;
    // The scene object the data belongs to (CDataExclusiveSimple, and a member of one), else null.
    CSceneObject* GetSceneObject() const;
    bool IsLockedByCurrentThread() const { return GetLockable().IsLockedByCurrentThread(); }
};
} // namespace Tools
