#pragma once

#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqbase/zqunittest.h"

#include <string>

// A test whose cases are files. Case i of a test constructed with (name, count) is stored as
//
//     <data root>/<class name>/Cases/<name>-<iii>.in    the input, written by serializeUnitTestInput
//     <data root>/<class name>/Cases/<name>-<iii>.out   the expected output, if the test keeps one
//
// with iii the index in three or more digits. Subtest i is named "<name> #iii". Running it reads the
// input (and the output, when the file exists) into the derived class, calls runUnitTest(), and
// releases both again, also when something throws. A case whose input is missing or unreadable fails
// with a message naming the file.
class ZQBASE_API ZqUnitTestFileBased : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqUnitTestFileBased)

public:
    ZqUnitTestFileBased();
    ZqUnitTestFileBased(const wchar_t* name, unsigned int count);

    std::string GetInputPath(unsigned int index) const;
    std::string GetOutputPath(unsigned int index) const;

protected:
    void initSubtests() override;
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    virtual void serializeUnitTestInput(CbStreamWriteBinary& stream) const = 0;
    virtual void serializeUnitTestInput(CbStreamReadBinary& stream) = 0;
    virtual void serializeUnitTestOutput(CbStreamWriteBinary& stream) const;
    virtual void serializeUnitTestOutput(CbStreamReadBinary& stream);
    // Runs the case whose input (and expected output) was just read.
    virtual EResult runUnitTest() = 0;
    virtual void releaseUnitTestInput();
    virtual void releaseUnitTestOutput();

    // Stores the input currently held as case index (used to build the cases).
    void WriteUnitTestInput(unsigned int index) const;

    const CString& GetCaseName() const { return m_name; }

private:
    std::string casePath(unsigned int index, const char* extension) const;
    void checkIndex(unsigned int index, const char* function) const;

    CString m_name;
    unsigned int m_count = 0;
};
