#pragma once

#include "zqbase/zqunittest.h"

// A test that runs a caller-supplied table of rows. The table is borrowed: it must outlive the
// collection, and two collections over one table run the same rows. Indices are not checked; the
// runner keeps to 0 .. count - 1.
class ZQBASE_API ZqUnitTestCollection : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqUnitTestCollection)

public:
    struct STestData
    {
        const wchar_t* name;
        EResult (*function)(ZqUnitTestCollection& test);
    };

    ZqUnitTestCollection(STestData* rows, unsigned int count);
    ZqUnitTestCollection(const ZqUnitTestCollection& other);
    ZqUnitTestCollection(ZqUnitTestCollection&& other) noexcept;
    ZqUnitTestCollection& operator=(const ZqUnitTestCollection& other);
    ZqUnitTestCollection& operator=(ZqUnitTestCollection&& other) noexcept;
    ~ZqUnitTestCollection() override;

protected:
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    STestData* m_rows;
    unsigned int m_count;
};
