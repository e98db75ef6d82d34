#include "zqbase/zqunittestcollection.h"

CB_IMPLEMENT_RTTI(ZqUnitTestCollection, ZqUnitTest::RTTI);

ZqUnitTestCollection::ZqUnitTestCollection(STestData* rows, unsigned int count) : m_rows(rows), m_count(count)
{
}

ZqUnitTestCollection::ZqUnitTestCollection(const ZqUnitTestCollection& other) = default;

ZqUnitTestCollection::ZqUnitTestCollection(ZqUnitTestCollection&& other) noexcept
    : ZqUnitTest(other), m_rows(other.m_rows), m_count(other.m_count)
{
}

ZqUnitTestCollection& ZqUnitTestCollection::operator=(const ZqUnitTestCollection& other) = default;

ZqUnitTestCollection& ZqUnitTestCollection::operator=(ZqUnitTestCollection&& other) noexcept
{
    ZqUnitTest::operator=(other);
    m_rows = other.m_rows;
    m_count = other.m_count;
    return *this;
}

ZqUnitTestCollection::~ZqUnitTestCollection() = default;

unsigned int ZqUnitTestCollection::getSubtestCount() const
{
    return m_count;
}

CString ZqUnitTestCollection::getSubtestName(unsigned int index)
{
    return CString(m_rows[index].name);
}

ZqUnitTest::EResult ZqUnitTestCollection::runUnitTest(unsigned int index)
{
    return m_rows[index].function(*this);
}
