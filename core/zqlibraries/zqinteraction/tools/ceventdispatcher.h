#pragma once

#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/ioperation.h"
#include "zqinteraction/zqinteraction_export.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace Tools
{
class CFramework;
class IData;

// Runs the operations of the tools interaction by interaction. An interaction is one user action
// (a click, a drag, a key); NextInteraction starts the next one, with an id one greater. Every
// operation run in it is recorded for undo as part of that interaction's step.
//
// After an operation the dispatcher tells the ports of every data it changed (once per data,
// however often it was written); operations that their slots return run next, in the same
// interaction, until nothing more changes.
//
// The dispatcher belongs to the thread that made its framework: Execute, Undo, Redo,
// NextInteraction and the deliveries run there (CbExceptionPreconditionViolation elsewhere). Other
// threads hand over operations with Post, and may write data under their locks; ProcessPosted and
// DeliverChanges bring both in on the dispatcher's thread.
class ZQINTERACTION_API CEventDispatcher : private INonCopyable
{
public:
    // What a call delivered: operations run, data whose ports were told, slots that handled them.
    struct SReport
    {
        unsigned int operations = 0;
        unsigned int changes = 0;
        unsigned int handledEvents = 0;
    };

    // Rounds of operations triggering operations after which Execute gives up (CbException).
    static constexpr unsigned int kMaximumRounds = 64;

    explicit CEventDispatcher(CFramework& framework);
    ~CEventDispatcher();

    // 0 before the first interaction; any thread.
    unsigned int GetCurrentInteractionId() const { return m_interactionId.load(std::memory_order_acquire); }
    // Starts the next interaction and returns its id.
    unsigned int NextInteraction();

    // Runs operation in the current interaction, records it for undo and delivers the changes.
    // Throws CbExceptionPreconditionViolation before the first interaction; an exception of the
    // operation or of a slot goes on to the caller (the ports not yet told of that delivery are
    // not told).
    SReport Execute(CbSmartPointer<IOperation> operation);
    // Undo or redo the newest step through the undo/redo manager and deliver the changes; the
    // slots hear of them with SState::undoRedo set, and operations they return are not run.
    SReport Undo();
    SReport Redo();

    // Queues operation from any thread for ProcessPosted.
    void Post(CbSmartPointer<IOperation> operation);
    // Executes the posted operations in the order they came, in the current interaction.
    SReport ProcessPosted();
    // Delivers changes made outside operations (data written by other threads).
    SReport DeliverChanges();

    // Queues the delivery of data's change; any thread (IData::MarkChanged).
    void OnDataChanged(IData& data);
    bool IsDispatcherThread() const { return std::this_thread::get_id() == m_thread; }

private:
    using Operations = std::vector<CbSmartPointer<IOperation>>;

    void checkThread(const char* function) const;
    void checkInteraction(const char* function) const;
    SReport undoOrRedo(bool redo);
    void runRounds(Operations operations, SReport& report);
    void deliver(SReport& report, Operations* followUps, bool undoRedo);

    CFramework& m_framework;
    std::thread::id m_thread;
    std::atomic<unsigned int> m_interactionId{0};
    std::uint64_t m_delivery = 0;
    std::mutex m_mutex;
    std::vector<CbSmartPointer<IData>> m_changed;
    Operations m_posted;
};
} // namespace Tools
