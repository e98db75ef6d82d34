#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/zqinteraction_export.h"

namespace Tools
{
class CLockingManager;

// A change of data that can be undone: the only way tools change data in an interaction. The
// event dispatcher runs it (operator()), the undo/redo manager keeps it and calls Undo and Redo;
// each locks the data it touches through the locking manager it is given.
//
// Operations are shared through CbSmartPointer and are not copied.
class ZQINTERACTION_API IOperation : public virtual CbRefCounted, public INonCopyable
{
public:
    ~IOperation() override;

    virtual void operator()(CLockingManager& lockingManager) = 0;
    // Restores the state before operator().
    virtual void Undo(CLockingManager& lockingManager) = 0;
    // Repeats the operation after Undo; runs operator() again unless overridden.
    virtual void Redo(CLockingManager& lockingManager);

    // Whether next (run later in the same interaction) can be merged into this operation, so that
    // both are undone as one (a drag of many small moves). No by default.
    virtual bool CanAccumulate(const IOperation& next) const;
    // Merges next into this operation. Optional: operations that never say CanAccumulate need not
    // implement it; the default throws CbException ("Tools::IOperation::Accumulate").
    virtual void Accumulate(const IOperation& next);
};
} // namespace Tools
