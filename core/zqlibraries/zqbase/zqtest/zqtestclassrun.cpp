#include "zqbase/zqtest/zqtestclassrun.h"

#include "basepool/cstring.h"
#include "zqbase/zqtest/zqtestconsole.h"

namespace
{
// Keeps what a process printed valid UTF-8 for the reports; each invalid byte becomes U+FFFD.
std::string validUtf8(const std::string& text)
{
    return CbWideToUtf8(CbUtf8ToWide(text));
}

// Child output is kept up to this size per subtest; the end of it tells most.
constexpr std::size_t kMaxOutput = 256 * 1024;

void appendLimited(std::string& target, const std::string& text)
{
    target += text;
    if (target.size() > kMaxOutput)
        target = "[... output shortened ...]\n" + target.substr(target.size() - kMaxOutput / 2);
}
} // namespace

ZqTestClassRun::ZqTestClassRun(ZqClassRecord& record, ZqTestConsole& console)
    : m_record(record), m_console(console)
{
}

void ZqTestClassRun::OnPhase(EZqTestPhase phase)
{
    m_phase = phase;
    if (!m_started)
    {
        m_started = true;
        m_classTimer.Reset();
        m_console.ClassStart(m_record);
    }
}

ZqSubtestRecord* ZqTestClassRun::findPending(unsigned index)
{
    for (ZqSubtestRecord& subtest : m_record.subtests)
        if (subtest.index == index && subtest.status == EZqTestStatus::ePending)
            return &subtest;
    return nullptr;
}

void ZqTestClassRun::OnSubtestStart(unsigned index, const std::string& name)
{
    m_current = findPending(index);
    if (!m_current)
        return;
    m_current->name = name;
    m_subtestTimer.Reset();
    m_console.SubtestStart(m_record, *m_current);
}

void ZqTestClassRun::OnMessage(int type, const std::string& text)
{
    ZqTestMessage message{type, validUtf8(text)};
    m_console.Message(message);
    (m_current ? m_current->messages : m_record.messages).push_back(std::move(message));
}

void ZqTestClassRun::OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                                  const std::string& failure)
{
    ZqSubtestRecord* subtest = m_current && m_current->index == index ? m_current : findPending(index);
    m_current = nullptr;
    if (!subtest)
        return;
    subtest->status = status;
    subtest->outcome = outcome;
    subtest->seconds = seconds;
    subtest->failure = validUtf8(failure);
    m_console.SubtestEnd(m_record, *subtest);
}

void ZqTestClassRun::failPending(EZqTestStatus status, const std::string& why)
{
    for (ZqSubtestRecord& subtest : m_record.subtests)
        if (subtest.status == EZqTestStatus::ePending)
        {
            subtest.status = status;
            subtest.failure = why;
            m_console.SubtestEnd(m_record, subtest);
        }
}

void ZqTestClassRun::OnClassError(const std::string& text)
{
    if (m_phase == EZqTestPhase::eDestroy || GetPendingIndices().empty())
    {
        m_record.error += (m_record.error.empty() ? "" : "; ") + validUtf8(text);
        return;
    }
    failPending(EZqTestStatus::eFailed, validUtf8(text));
}

void ZqTestClassRun::OnClassEnd()
{
    m_ended = true;
}

bool ZqTestClassRun::Lost(EZqTestStatus status, const std::string& why)
{
    if (m_current)
    {
        m_current->status = status;
        m_current->failure = why;
        m_current->seconds = m_subtestTimer.GetElapsedSeconds();
        m_console.SubtestEnd(m_record, *m_current);
        m_current = nullptr;
        return !GetPendingIndices().empty();
    }
    if (m_ended || m_phase == EZqTestPhase::eDestroy || GetPendingIndices().empty())
    {
        m_record.error += (m_record.error.empty() ? "" : "; ") + why + " after the last subtest";
        return false;
    }
    // Before the first subtest, or between two: going on would most likely fail the same way.
    failPending(status, why + " in " + ZqTestPhaseName(m_phase));
    return false;
}

void ZqTestClassRun::Interrupted(const std::string& why)
{
    if (!m_current)
        return;
    m_current->status = EZqTestStatus::eInterrupted;
    m_current->failure = why;
    m_current->seconds = m_subtestTimer.GetElapsedSeconds();
    m_console.SubtestEnd(m_record, *m_current);
    m_current = nullptr;
}

void ZqTestClassRun::AppendOutput(const std::string& text)
{
    const std::string valid = validUtf8(text);
    m_console.Output(valid);
    appendLimited(m_current ? m_current->output : m_record.output, valid);
}

std::vector<unsigned> ZqTestClassRun::GetPendingIndices() const
{
    std::vector<unsigned> pending;
    for (const ZqSubtestRecord& subtest : m_record.subtests)
        if (subtest.status == EZqTestStatus::ePending)
            pending.push_back(subtest.index);
    return pending;
}

bool ZqTestClassRun::HasFailure() const
{
    if (!m_record.error.empty())
        return true;
    for (const ZqSubtestRecord& subtest : m_record.subtests)
        if (subtest.IsFailure())
            return true;
    return false;
}

void ZqTestClassRun::Finish()
{
    if (!m_started)
        m_console.ClassStart(m_record);
    for (ZqSubtestRecord& subtest : m_record.subtests)
        if (subtest.status == EZqTestStatus::ePending)
        {
            subtest.status = EZqTestStatus::eSkipped;
            m_console.SubtestEnd(m_record, subtest);
        }
    m_record.seconds = m_started ? m_classTimer.GetElapsedSeconds() : 0;
    m_console.ClassEnd(m_record);
}
