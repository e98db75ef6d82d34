#pragma once

#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqunittestfilebased.h"

// A file-based test whose expected outputs can be made afresh: Recreate(i) reads case i's input,
// lets recreate() compute the output, and stores it through serializeUnitTestOutput under a
// temporary name that is renamed over the old reference only when writing succeeded. It reports
// the file and whether its content changed as an information message.
class ZQBASE_API ZqUnitTestFileBasedRecreate : public ZqUnitTestFileBased, public IUnitTestRecreate
{
    CB_DECLARE_RTTI(ZqUnitTestFileBasedRecreate)

public:
    ZqUnitTestFileBasedRecreate();
    ZqUnitTestFileBasedRecreate(const wchar_t* name, unsigned int count);

    bool CanRecreate(unsigned int index) const override;
    bool Recreate(unsigned int index) override;

protected:
    // Computes the output of the case whose input was just read; false when that failed.
    virtual bool recreate() = 0;
};
