#include "zqbase/zqunittest.h"

CB_IMPLEMENT_RTTI(ZqUnitTest);

namespace
{
thread_local const ZqUnitTest* t_running = nullptr;

class CRunningScope
{
public:
    explicit CRunningScope(const ZqUnitTest* test) : m_previous(t_running) { t_running = test; }
    ~CRunningScope() { t_running = m_previous; }

private:
    const ZqUnitTest* m_previous;
};
} // namespace

ZqUnitTest::ZqUnitTest() : m_stream(std::make_shared<ZqMessageStream>()) {}

ZqUnitTest::ZqUnitTest(const ZqUnitTest& other) = default;
ZqUnitTest& ZqUnitTest::operator=(const ZqUnitTest& other) = default;
ZqUnitTest::~ZqUnitTest() = default;

void ZqUnitTest::PreallocateStaticData() {}

void ZqUnitTest::WriteMessage(EMessageType type, const CString& text) const
{
    m_stream->Write(type, text);
}

void ZqUnitTest::SetMessageStream(const ZqUnitTest& other) const
{
    m_stream = other.m_stream;
}

ZqUnitTest::EResult ZqUnitTest::RunUnitTest(unsigned int index)
{
    CRunningScope scope(this);
    return runUnitTest(index);
}

const ZqUnitTest* ZqUnitTest::GetRunning()
{
    return t_running;
}

void ZqUnitTest::initSubtests() {}

unsigned int ZqUnitTest::getSubtestCount() const
{
    return 1;
}

CString ZqUnitTest::getSubtestName(unsigned int)
{
    return L"Unit-Test";
}

void ZqMessageStream::Write(ZqUnitTest::EMessageType type, const CString& text)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.push_back({type, text});
    if (m_sink)
        m_sink(m_messages.back());
}

std::vector<ZqMessageStream::SMessage> ZqMessageStream::Take()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<SMessage> taken;
    taken.swap(m_messages);
    return taken;
}

void ZqMessageStream::SetSink(Sink sink)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_sink = std::move(sink);
}

ZqUnitTest::EResult ZqFailText(const CString& text)
{
    if (const ZqUnitTest* test = ZqUnitTest::GetRunning())
        test->WriteMessage(ZqUnitTest::eError, text);
    return ZqUnitTest::eFailed;
}
