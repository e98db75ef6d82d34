#pragma once

#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/ioperation.h"
#include "zqinteraction/zqinteraction_export.h"

#include <cstddef>
#include <deque>
#include <vector>

namespace Tools
{
class CLockingManager;

// Keeps the operations the dispatcher ran, one step per interaction: Undo takes back every
// operation of the newest interaction (newest first), Redo repeats them in their order, and a new
// operation after an undo drops what could have been redone. An operation that says it can absorb
// the next one of its interaction (IOperation::CanAccumulate) takes it in with Accumulate.
//
// When an operation fails in the middle of an undo or redo, the operations of that step already
// taken back (or repeated) are restored, the step stays where it was and the exception goes on.
class ZQINTERACTION_API CUndoRedoManager : private INonCopyable
{
public:
    CUndoRedoManager();
    ~CUndoRedoManager();

    // Adds operation, already run, to the step of interactionId.
    void Record(CbSmartPointer<IOperation> operation, unsigned int interactionId);

    bool CanUndo() const { return !m_undo.empty(); }
    bool CanRedo() const { return !m_redo.empty(); }
    std::size_t GetUndoCount() const { return m_undo.size(); }
    std::size_t GetRedoCount() const { return m_redo.size(); }
    // The interaction of the step Undo would take back; throws CbExceptionPreconditionViolation
    // when there is none.
    unsigned int GetUndoInteractionId() const;
    // Operations in the step Undo would take back (after accumulation).
    std::size_t GetUndoOperationCount() const;

    // Each returns the number of operations undone or redone; throws
    // CbExceptionPreconditionViolation when there is nothing to undo or redo.
    std::size_t Undo(CLockingManager& lockingManager);
    std::size_t Redo(CLockingManager& lockingManager);

    // The most steps kept; the oldest go first. 0 (the default) keeps all.
    void SetLimit(std::size_t steps);
    void Clear();

private:
    struct SStep
    {
        unsigned int interactionId;
        std::vector<CbSmartPointer<IOperation>> operations;
    };

    std::deque<SStep> m_undo;
    std::vector<SStep> m_redo;
    std::size_t m_limit = 0;
};
} // namespace Tools
