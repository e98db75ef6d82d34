#pragma once

#include "zqbase/cbtimer.h"
#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestexecutor.h"
#include "zqbase/zqtest/zqtestrecord.h"

#include <string>
#include <vector>

class ZqTestConsole;

// The runner's account of one test class in one iteration: receives the class's events (directly,
// or decoded from a child process), fills its ZqClassRecord and shows progress on the console. The
// record comes with its selected subtests in run order, all pending.
class ZQBASE_API ZqTestClassRun : public IZqTestEvents
{
public:
    ZqTestClassRun(ZqClassRecord& record, ZqTestConsole& console);

    void OnPhase(EZqTestPhase phase) override;
    void OnSubtestStart(unsigned index, const std::string& name) override;
    void OnMessage(int type, const std::string& text) override;
    void OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                      const std::string& failure) override;
    void OnClassError(const std::string& text) override;
    void OnClassEnd() override;

    // The process running the class is gone (status eCrashed or eTimeout, why: what happened). The
    // subtest that was running gets the blame; returns true when the class should go on with its
    // pending subtests in a new process. Lost outside a subtest fails every pending subtest (setup)
    // or the class itself (destruction), and the class does not go on.
    bool Lost(EZqTestStatus status, const std::string& why);
    // A signal stopped the run: the subtest running gets the blame (eInterrupted, why); the class does
    // not go on.
    void Interrupted(const std::string& why);
    // Output of the process, attributed to the running subtest or else to the class.
    void AppendOutput(const std::string& text);

    std::vector<unsigned> GetPendingIndices() const;
    bool HasEnded() const { return m_ended; }
    bool HasFailure() const;
    // Marks every subtest still pending as skipped, completes the record and prints the class.
    void Finish();
    const ZqClassRecord& GetRecord() const { return m_record; }

private:
    ZqSubtestRecord* findPending(unsigned index);
    void failPending(EZqTestStatus status, const std::string& why);

    ZqClassRecord& m_record;
    ZqTestConsole& m_console;
    EZqTestPhase m_phase = EZqTestPhase::eCreate;
    ZqSubtestRecord* m_current = nullptr;
    CbTimer m_subtestTimer;
    CbTimer m_classTimer;
    bool m_started = false;
    bool m_ended = false;
};
