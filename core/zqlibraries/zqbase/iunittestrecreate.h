#pragma once

// Implemented by tests whose references (expected outputs, reference images) can be made afresh.
// The runner's --recreate calls Recreate on the selected subtests for which CanRecreate is true.
class IUnitTestRecreate
{
public:
    virtual ~IUnitTestRecreate() = default;
    virtual bool CanRecreate(unsigned int index) const = 0;
    // Computes subtest index's reference again and stores it; false when that failed.
    virtual bool Recreate(unsigned int index) = 0;
};
