#include "zqinteraction/tools/cundoredomanager.h"

#include "basepool/cbexception.h"

namespace Tools
{
CUndoRedoManager::CUndoRedoManager() = default;
CUndoRedoManager::~CUndoRedoManager() = default;

void CUndoRedoManager::Record(CbSmartPointer<IOperation> operation, unsigned int interactionId)
{
    if (!operation)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CUndoRedoManager::Record", "no operation");
    m_redo.clear();
    if (m_undo.empty() || m_undo.back().interactionId != interactionId)
    {
        m_undo.push_back({interactionId, {}});
        if (m_limit != 0 && m_undo.size() > m_limit)
            m_undo.pop_front();
    }
    std::vector<CbSmartPointer<IOperation>>& operations = m_undo.back().operations;
    if (!operations.empty() && operations.back()->CanAccumulate(*operation))
        operations.back()->Accumulate(*operation);
    else
        operations.push_back(std::move(operation));
}

unsigned int CUndoRedoManager::GetUndoInteractionId() const
{
    if (m_undo.empty())
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CUndoRedoManager::GetUndoInteractionId",
                 "nothing to undo");
    return m_undo.back().interactionId;
}

std::size_t CUndoRedoManager::GetUndoOperationCount() const
{
    return m_undo.empty() ? 0 : m_undo.back().operations.size();
}

std::size_t CUndoRedoManager::Undo(CLockingManager& lockingManager)
{
    if (m_undo.empty())
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CUndoRedoManager::Undo", "nothing to undo");
    auto& operations = m_undo.back().operations;
    std::size_t remaining = operations.size();
    try
    {
        for (; remaining > 0; --remaining)
            operations[remaining - 1]->Undo(lockingManager);
    }
    catch (...)
    {
        // operations[remaining - 1] failed; those after it were taken back and are repeated.
        for (std::size_t i = remaining; i < operations.size(); ++i)
            operations[i]->Redo(lockingManager);
        throw;
    }
    m_redo.push_back(std::move(m_undo.back()));
    m_undo.pop_back();
    return m_redo.back().operations.size();
}

std::size_t CUndoRedoManager::Redo(CLockingManager& lockingManager)
{
    if (m_redo.empty())
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CUndoRedoManager::Redo", "nothing to redo");
    auto& operations = m_redo.back().operations;
    std::size_t done = 0;
    try
    {
        for (; done < operations.size(); ++done)
            operations[done]->Redo(lockingManager);
    }
    catch (...)
    {
        while (done > 0)
            operations[--done]->Undo(lockingManager);
        throw;
    }
    m_undo.push_back(std::move(m_redo.back()));
    m_redo.pop_back();
    return m_undo.back().operations.size();
}

void CUndoRedoManager::SetLimit(std::size_t steps)
{
    m_limit = steps;
    while (m_limit != 0 && m_undo.size() > m_limit)
        m_undo.pop_front();
}

void CUndoRedoManager::Clear()
{
    m_undo.clear();
    m_redo.clear();
}
} // namespace Tools
