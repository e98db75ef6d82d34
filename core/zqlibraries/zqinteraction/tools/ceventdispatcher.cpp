#include "zqinteraction/tools/ceventdispatcher.h"

#include "basepool/cbexception.h"
#include "zqinteraction/tools/cframework.h"
#include "zqinteraction/tools/cport.h"
#include "zqinteraction/tools/cundoredomanager.h"
#include "zqinteraction/tools/idata.h"

namespace Tools
{
CEventDispatcher::CEventDispatcher(CFramework& framework)
    : m_framework(framework), m_thread(std::this_thread::get_id())
{
}

CEventDispatcher::~CEventDispatcher() = default;

unsigned int CEventDispatcher::NextInteraction()
{
    checkThread("Tools::CEventDispatcher::NextInteraction");
    return m_interactionId.fetch_add(1, std::memory_order_acq_rel) + 1;
}

CEventDispatcher::SReport CEventDispatcher::Execute(CbSmartPointer<IOperation> operation)
{
    checkThread("Tools::CEventDispatcher::Execute");
    checkInteraction("Tools::CEventDispatcher::Execute");
    if (!operation)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CEventDispatcher::Execute", "no operation");
    SReport report;
    runRounds({std::move(operation)}, report);
    return report;
}

CEventDispatcher::SReport CEventDispatcher::Undo()
{
    return undoOrRedo(false);
}

CEventDispatcher::SReport CEventDispatcher::Redo()
{
    return undoOrRedo(true);
}

CEventDispatcher::SReport CEventDispatcher::undoOrRedo(bool redo)
{
    checkThread(redo ? "Tools::CEventDispatcher::Redo" : "Tools::CEventDispatcher::Undo");
    CUndoRedoManager& undoRedo = m_framework.GetUndoRedoManager();
    CLockingManager& lockingManager = m_framework.GetLockingManager();
    SReport report;
    report.operations =
        static_cast<unsigned int>(redo ? undoRedo.Redo(lockingManager) : undoRedo.Undo(lockingManager));
    deliver(report, nullptr, true);
    return report;
}

void CEventDispatcher::Post(CbSmartPointer<IOperation> operation)
{
    if (!operation)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CEventDispatcher::Post", "no operation");
    std::lock_guard<std::mutex> lock(m_mutex);
    m_posted.push_back(std::move(operation));
}

CEventDispatcher::SReport CEventDispatcher::ProcessPosted()
{
    checkThread("Tools::CEventDispatcher::ProcessPosted");
    Operations posted;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        posted.swap(m_posted);
    }
    SReport report;
    if (posted.empty())
        return report;
    checkInteraction("Tools::CEventDispatcher::ProcessPosted");
    for (auto& operation : posted)
        runRounds({std::move(operation)}, report);
    return report;
}

CEventDispatcher::SReport CEventDispatcher::DeliverChanges()
{
    checkThread("Tools::CEventDispatcher::DeliverChanges");
    SReport report;
    Operations followUps;
    deliver(report, &followUps, false);
    if (!followUps.empty())
    {
        checkInteraction("Tools::CEventDispatcher::DeliverChanges");
        runRounds(std::move(followUps), report);
    }
    return report;
}

void CEventDispatcher::OnDataChanged(IData& data)
{
    // The queue holds a reference: data on the stack or in a std::unique_ptr would be deleted by it.
    if (data.GetReferenceCount() == 0)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CEventDispatcher::OnDataChanged",
                 "data '" + data.GetName() + "' is not held by a CbSmartPointer");
    CbSmartPointer<IData> reference(&data);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_changed.push_back(std::move(reference));
}

void CEventDispatcher::checkThread(const char* function) const
{
    if (!IsDispatcherThread())
        CB_THROW(CbExceptionPreconditionViolation, function, "called outside the dispatcher's thread");
}

void CEventDispatcher::checkInteraction(const char* function) const
{
    if (GetCurrentInteractionId() == 0)
        CB_THROW(CbExceptionPreconditionViolation, function, "no interaction started (NextInteraction)");
}

void CEventDispatcher::runRounds(Operations operations, SReport& report)
{
    CLockingManager& lockingManager = m_framework.GetLockingManager();
    CUndoRedoManager& undoRedo = m_framework.GetUndoRedoManager();
    const unsigned int interaction = GetCurrentInteractionId();
    for (unsigned int round = 0; !operations.empty(); ++round)
    {
        if (round == kMaximumRounds)
            CB_THROW(CbException, "Tools::CEventDispatcher::Execute",
                     "operations kept triggering operations for " + std::to_string(kMaximumRounds) +
                         " rounds");
        for (auto& operation : operations)
        {
            (*operation)(lockingManager);
            ++report.operations;
            undoRedo.Record(operation, interaction);
        }
        Operations next;
        deliver(report, &next, false);
        operations.swap(next);
    }
}

void CEventDispatcher::deliver(SReport& report, Operations* followUps, bool undoRedo)
{
    std::vector<CbSmartPointer<IData>> changed;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        changed.swap(m_changed);
    }
    // Cleared first, so that a write while the ports are told queues the data again.
    for (const auto& data : changed)
        data->m_changePending.store(false, std::memory_order_release);
    std::vector<IData*> affected;
    for (const auto& data : changed)
        data->CollectAffected(affected);

    const std::uint64_t delivery = ++m_delivery;
    CScene& scene = m_framework.GetScene();
    Operations returned;
    for (IData* data : affected)
    {
        if (data->m_delivery == delivery)
            continue;
        data->m_delivery = delivery;
        ++report.changes;
        const std::vector<CPort*>& observers = data->GetObservers();
        for (std::size_t i = 0; i < observers.size(); ++i)
        {
            const CSlot::SState state{GetCurrentInteractionId(), observers[i], undoRedo};
            report.handledEvents += observers[i]->Deliver(state, scene, returned);
        }
    }
    if (followUps)
        followUps->insert(followUps->end(), returned.begin(), returned.end());
}
} // namespace Tools
