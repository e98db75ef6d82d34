#include "zqbase/zqalgorithm.h"

#include <exception>

ZqAlgorithm::ZqAlgorithm() = default;
ZqAlgorithm::~ZqAlgorithm() = default;

bool ZqAlgorithm::Compute(unsigned int flags)
{
    if (!(flags & (eCF_Compute | eCF_Force)))
        return m_calculated;
    if (m_calculated && !(flags & eCF_Force))
        return true;
    m_calculated = false;
    m_lastError.clear();
    try
    {
        checkPreConditionsInit();
        init();
        checkPostConditionsInit();
        compute();
        checkPostConditions();
        m_calculated = true;
    }
    catch (const std::exception& e)
    {
        m_lastError = e.what();
    }
    catch (...)
    {
        m_lastError = "unknown exception";
    }
    return m_calculated;
}

bool ZqAlgorithm::checkOutputData() const
{
    if (!m_calculated)
        return false;
    try
    {
        checkPostConditions();
        return true;
    }
    catch (...)
    {
        return false;
    }
}

void ZqAlgorithm::setFlagBits(unsigned long bits)
{
    if (bits == m_flags)
        return;
    m_flags = bits;
    m_calculated = false;
    onFlagsChanged();
}

void ZqAlgorithm::init() {}

void ZqAlgorithm::checkPreConditionsInit() const {}

void ZqAlgorithm::checkPostConditionsInit() const {}

void ZqAlgorithm::checkPostConditions() const {}

void ZqAlgorithm::onReadOldFlags(unsigned long flags)
{
    setFlagBits(flags);
}

void ZqAlgorithm::onFlagsChanged() {}

int ZqAlgorithm::getReferenceCounter() const
{
    return 0;
}

void* ZqAlgorithm::getExtension(const char*, bool)
{
    return nullptr;
}

void ZqAlgorithm::serializeUnitTestInput(CbStreamWriteBinary& stream) const
{
    stream.Write(static_cast<std::uint64_t>(m_flags));
}

void ZqAlgorithm::serializeUnitTestInput(CbStreamReadBinary& stream)
{
    std::uint64_t flags = 0;
    stream.Read(flags);
    setFlagBits(static_cast<unsigned long>(flags));
}

void ZqAlgorithm::serializeUnitTestOutput(CbStreamWriteBinary&) const {}

void ZqAlgorithm::serializeUnitTestOutput(CbStreamReadBinary&) {}

void ZqAlgorithm::releaseUnitTestInput() {}

void ZqAlgorithm::releaseUnitTestOutput() {}

bool ZqAlgorithm::compareUnitTestResult() const
{
    return true;
}

bool ZqAlgorithm::recreate()
{
    return Compute(eCF_Compute | eCF_Force);
}

ZqUnitTest::EResult ZqAlgorithm::runUnitTest()
{
    if (!Compute(eCF_Compute | eCF_Force))
        return ZqUnitTest::eAborted;
    return compareUnitTestResult() ? ZqUnitTest::ePassed : ZqUnitTest::eFailed;
}
