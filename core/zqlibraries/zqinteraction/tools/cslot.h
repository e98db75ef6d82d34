#pragma once

#include "basepool/cbsmartpointer.h"
#include "zqinteraction/tools/ioperation.h"
#include "zqinteraction/zqinteraction_export.h"

#include <functional>

namespace Tools
{
class CComponent;
class CPort;
class CScene;

// A reaction to a change of a port's data: a function that the dispatcher calls (on its thread,
// after the operation that made the change has unlocked the data) with the slot state and the
// scene. It answers with an event state and, when the change calls for more changes, an operation
// that the dispatcher runs next in the same interaction and records for undo:
//
//     port.AddSlot(CSlot([](const CSlot::SState& state, CScene&) {
//         return CSlot::Operation(CbMakeSmart<COperationReplace<float>>(area, ...));
//     }, this));
//
// A slot with an owner is called only while its owner component is active.
class ZQINTERACTION_API CSlot
{
public:
    enum EEventState : unsigned int
    {
        eEventIgnored = 0,
        eEventHandled = 1,
    };

    struct SState
    {
        // The interaction the change belongs to.
        unsigned int interactionId;
        // The port whose data changed.
        CPort* port;
        // True while an undo or redo is delivered: operations returned then are not run, since the
        // operations they would repeat are undone and redone with the rest.
        bool undoRedo;
    };

    struct SResult
    {
        CbSmartPointer<IOperation> operation;
        unsigned int eventState;
    };

    using Handler = std::function<SResult(const SState& state, CScene& scene)>;

    explicit CSlot(Handler handler, const CComponent* owner = nullptr);

    // "Nothing further to do" with the event state given.
    static SResult NoOperation(unsigned int eventState);
    static SResult Operation(CbSmartPointer<IOperation> operation, unsigned int eventState = eEventHandled);

    const CComponent* GetOwner() const { return m_owner; }
    // False while the owner is inactive.
    bool IsEnabled() const;
    SResult operator()(const SState& state, CScene& scene) const { return m_handler(state, scene); }

private:
    Handler m_handler;
    const CComponent* m_owner;
};
} // namespace Tools
