#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbrtti.h"
#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"

#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <vector>

class ZqMessageStream;

// The base of every test. The runner creates a test through its type record and then calls, in this
// order: PreallocateStaticData(), InitSubtests(), GetSubtestCount(), and for each index
// GetSubtestName(i) and RunUnitTest(i). A subtest reports through its EResult and through messages
// written with WriteMessage.
class ZQBASE_API ZqUnitTest : public IObject
{
    CB_DECLARE_RTTI(ZqUnitTest)

public:
    enum EResult
    {
        ePassed = 1,
        eFailed = 2,
        eException = 3,
        eAborted = 4,
    };

    enum EMessageType
    {
        eInfo = 0,
        eError = 1,
    };

    ZqUnitTest();
    ZqUnitTest(const ZqUnitTest& other);
    ZqUnitTest& operator=(const ZqUnitTest& other);
    ~ZqUnitTest() override;

    // One-time allocations of the code under test, so that they do not count against the first subtest.
    virtual void PreallocateStaticData();

    // Appends a message to this test's message stream (or to the stream it was pointed at).
    void WriteMessage(EMessageType type, const CString& text) const;
    // WriteMessage(type, CbFormat(format, ...)); CString arguments pass their text.
    template <class... Args>
    void WriteMessageFormat(EMessageType type, const wchar_t* format, const Args&... args) const
    {
        WriteMessage(type, CbFormat(format, args...));
    }
    // Makes this object write into the message stream of other, e.g. a comparison algorithm's test
    // part writing under the running test.
    void SetMessageStream(const ZqUnitTest& other) const;
    ZqMessageStream& GetMessageStream() const { return *m_stream; }

    // The runner's entry points; they call the protected hooks.
    void InitSubtests() { initSubtests(); }
    unsigned int GetSubtestCount() const { return getSubtestCount(); }
    CString GetSubtestName(unsigned int index) { return getSubtestName(index); }
    EResult RunUnitTest(unsigned int index);

    // The test whose subtest runs on this thread right now, or null. Lets helpers without a test
    // object of their own (table rows, free functions) report under the running test.
    static const ZqUnitTest* GetRunning();

protected:
    virtual void initSubtests();
    // One subtest by default, named "Unit-Test".
    virtual unsigned int getSubtestCount() const;
    virtual CString getSubtestName(unsigned int index);
    virtual EResult runUnitTest(unsigned int index) = 0;

private:
    mutable std::shared_ptr<ZqMessageStream> m_stream;
};

// The messages of a test, in the order written. The runner attaches a sink to see each message as
// it is written (a subtest that crashes later keeps what it said before).
class ZQBASE_API ZqMessageStream
{
public:
    struct SMessage
    {
        ZqUnitTest::EMessageType type;
        CString text;
    };
    using Sink = std::function<void(const SMessage&)>;

    void Write(ZqUnitTest::EMessageType type, const CString& text);
    // Takes every message written so far and empties the stream.
    std::vector<SMessage> Take();
    void SetSink(Sink sink);

private:
    std::mutex m_mutex;
    std::vector<SMessage> m_messages;
    Sink m_sink;
};

// One row of a static subtest table: the subtest's name and what runs it. A class whose subtests are a
// list keeps them as a table of its own member functions (or lambdas taking the test), so that adding a
// subtest is adding a row; two macros supply the table's declaration and the three hooks over it:
//
//     class CbFoo_UnitTest : public ZqUnitTest
//     {
//         CB_DECLARE_RTTI(CbFoo_UnitTest)
//         ZQ_DECLARE_SUBTEST_TABLE(CbFoo_UnitTest)   // getSubtestCount, getSubtestName, runUnitTest
//
//     private:
//         EResult runSmall();
//         EResult runRandomized(bool integer);
//     };
//     CB_IMPLEMENT_RTTI(CbFoo_UnitTest, ZqUnitTest::RTTI);
//
//     const ZqSubtestRowOf<CbFoo_UnitTest> CbFoo_UnitTest::s_subtests[] = {
//         {"Kleine Eingaben", &CbFoo_UnitTest::runSmall},
//         {"Zufällige Eingaben", [](CbFoo_UnitTest& test) { return test.runRandomized(false); }},
//     };
//     ZQ_IMPLEMENT_SUBTEST_TABLE(CbFoo_UnitTest)
//
// An index past the table throws CbException from the class's own file, naming the hook
// ("CbFoo_UnitTest::getSubtestName", "CbFoo_UnitTest::runUnitTest"). Names are UTF-8. Rows that need no
// test object (free functions reporting through ZqFail) are ZqSubtestRow, whose function takes no
// argument.
template <class Test = void> struct ZqSubtestRowOf
{
    const char* name;
    std::function<ZqUnitTest::EResult(Test&)> function;
};

template <> struct ZqSubtestRowOf<void>
{
    const char* name;
    std::function<ZqUnitTest::EResult()> function;
};

using ZqSubtestRow = ZqSubtestRowOf<void>;

// Writes text as an error under the test whose subtest runs on this thread, if any, and returns
// eFailed; for table rows and helpers.
ZQBASE_API ZqUnitTest::EResult ZqFailText(const CString& text);

// ZqFailText(CbFormat(format, ...)).
template <class... Args> ZqUnitTest::EResult ZqFail(const wchar_t* format, const Args&... args)
{
    return ZqFailText(CbFormat(format, args...));
}

// In a test class: declares the three hooks (protected) and the class's subtest table s_subtests; leaves
// the access at private.
#define ZQ_DECLARE_SUBTEST_TABLE(Class)                                                                      \
protected:                                                                                                   \
    unsigned int getSubtestCount() const override;                                                           \
    CString getSubtestName(unsigned int index) override;                                                     \
    EResult runUnitTest(unsigned int index) override;                                                        \
                                                                                                             \
private:                                                                                                     \
    static const ZqSubtestRowOf<Class> s_subtests[];

// After the definition of Class::s_subtests: defines the three hooks over it.
#define ZQ_IMPLEMENT_SUBTEST_TABLE(Class)                                                                    \
    unsigned int Class::getSubtestCount() const                                                              \
    {                                                                                                        \
        return static_cast<unsigned int>(std::size(s_subtests));                                             \
    }                                                                                                        \
    CString Class::getSubtestName(unsigned int index)                                                        \
    {                                                                                                        \
        if (index >= std::size(s_subtests))                                                                  \
            CB_THROW(CbException, #Class "::getSubtestName");                                                \
        return CString(s_subtests[index].name);                                                              \
    }                                                                                                        \
    ZqUnitTest::EResult Class::runUnitTest(unsigned int index)                                               \
    {                                                                                                        \
        if (index >= std::size(s_subtests))                                                                  \
            CB_THROW(CbException, #Class "::runUnitTest");                                                   \
        return s_subtests[index].function(*this);                                                            \
    }
