#include "zqinteraction/tools/cframework.h"

#include "basepool/cbexception.h"
#include "zqinteraction/tools/ceventdispatcher.h"
#include "zqinteraction/tools/cscene.h"
#include "zqinteraction/tools/cundoredomanager.h"

namespace Tools
{
CFramework::CFramework()
    : m_lockingManager(CbMakeSmart<CLockingManager>()), m_scene(std::make_unique<CScene>()),
      m_undoRedo(std::make_unique<CUndoRedoManager>()),
      m_dispatcher(std::make_unique<CEventDispatcher>(*this))
{
}

// Queued deliveries and recorded operations hold data; they go first, while the count they
// report to is still there.
CFramework::~CFramework()
{
    m_dispatcher.reset();
    m_undoRedo.reset();
    m_scene.reset();
}

void CFramework::RegisterLockingMechanism(CbSmartPointer<CLockingManager> manager)
{
    if (!manager || GetDataCount() != 0)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CFramework::RegisterLockingMechanism",
                 manager ? std::to_string(GetDataCount()) + " data objects use the current locking manager"
                         : std::string("no locking manager"));
    m_lockingManager = std::move(manager);
}

void CFramework::SetLogSink(std::function<void(const std::string&)> sink)
{
    m_logSink = std::move(sink);
}

void CFramework::Log(const std::string& line) const
{
    if (m_logSink)
        m_logSink(line);
}
} // namespace Tools
