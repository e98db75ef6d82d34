#pragma once

#include "basepool/cbflags.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"
#include "zqbase/zqunittest.h"

#include <string>

// Base of the libraries' algorithm objects (filters ZqFt..., processors ZqMp..., minimizers). The
// protocol: set flags and inputs, setInputChanged(), Compute(eCF_Compute), checkOutputData(), read
// the outputs. Compute returns true on success; an exception inside the algorithm becomes a false
// result whose reason GetLastError() tells. While the inputs are unchanged a second Compute does
// nothing. checkOutputData() tells a caller that the outputs are there and hold what the algorithm
// promises (it asks checkPostConditions() again, without throwing).
//
// Flags are the bits of any enumeration the derived algorithm declares:
//
//     fit.SetFlags(CbFlags<ZqMpFitBase::EFlags>(ZqMpFitBase::eF_Robust));
//
// The unit-test hooks let file-based tests store an algorithm's input and output and compare a
// fresh result with a stored one.
class ZQBASE_API ZqAlgorithm
{
public:
    enum EComputeFlags : unsigned int
    {
        eCF_None = 0,
        eCF_Compute = 1,
        eCF_Force = 2, // compute even when the inputs did not change
    };

    ZqAlgorithm();
    ZqAlgorithm(const ZqAlgorithm&) = default;
    ZqAlgorithm& operator=(const ZqAlgorithm&) = default;
    virtual ~ZqAlgorithm();

    bool Compute(unsigned int flags = eCF_Compute);
    bool IsCalculated() const { return m_calculated; }
    void setInputChanged() { m_calculated = false; }
    bool checkOutputData() const;
    const std::string& GetLastError() const { return m_lastError; }

    template <class E> void SetFlags(CbFlags<E> flags) { setFlagBits(flags.GetBits()); }
    template <class E> void AddFlags(CbFlags<E> flags) { setFlagBits(m_flags | flags.GetBits()); }
    template <class E> void RemoveFlags(CbFlags<E> flags)
    {
        setFlagBits(m_flags & ~static_cast<unsigned long>(flags.GetBits()));
    }
    template <class E> bool IsFlagSet(E flag) const
    {
        const auto bit = static_cast<unsigned long>(flag);
        return (m_flags & bit) == bit;
    }
    unsigned long GetFlagBits() const { return m_flags; }

    // Unit-test hooks.
    void SerializeUnitTestInput(CbStreamWriteBinary& stream) const { serializeUnitTestInput(stream); }
    void SerializeUnitTestInput(CbStreamReadBinary& stream) { serializeUnitTestInput(stream); }
    void SerializeUnitTestOutput(CbStreamWriteBinary& stream) const { serializeUnitTestOutput(stream); }
    void SerializeUnitTestOutput(CbStreamReadBinary& stream) { serializeUnitTestOutput(stream); }
    void ReleaseUnitTestInput() { releaseUnitTestInput(); }
    void ReleaseUnitTestOutput() { releaseUnitTestOutput(); }
    bool CompareResult() const { return compareUnitTestResult(); }
    bool Recreate() { return recreate(); }
    ZqUnitTest::EResult RunUnitTest() { return runUnitTest(); }

    void* GetExtension(const char* name, bool create) { return getExtension(name, create); }
    const void* GetExtension(const char* name, bool create) const
    {
        return const_cast<ZqAlgorithm*>(this)->getExtension(name, create);
    }

protected:
    // The computation itself; throws on failure.
    virtual void compute() = 0;
    virtual void init();
    // Throw CbExceptionPreconditionViolation when the inputs do not allow a computation.
    virtual void checkPreConditionsInit() const;
    virtual void checkPostConditionsInit() const;
    virtual void checkPostConditions() const;
    // Flags read from data of an older format.
    virtual void onReadOldFlags(unsigned long flags);
    virtual void onFlagsChanged();
    virtual int getReferenceCounter() const;
    virtual void* getExtension(const char* name, bool create);

    virtual void serializeUnitTestInput(CbStreamWriteBinary& stream) const;
    virtual void serializeUnitTestInput(CbStreamReadBinary& stream);
    virtual void serializeUnitTestOutput(CbStreamWriteBinary& stream) const;
    virtual void serializeUnitTestOutput(CbStreamReadBinary& stream);
    virtual void releaseUnitTestInput();
    virtual void releaseUnitTestOutput();
    // Compares the fresh result with the stored output; true when they agree.
    virtual bool compareUnitTestResult() const;
    // Computes the output afresh for storing it as the new reference.
    virtual bool recreate();
    // Computes and compares: ePassed when the result agrees with the stored output.
    virtual ZqUnitTest::EResult runUnitTest();

private:
    void setFlagBits(unsigned long bits);

    unsigned long m_flags = 0;
    bool m_calculated = false;
    std::string m_lastError;
};
