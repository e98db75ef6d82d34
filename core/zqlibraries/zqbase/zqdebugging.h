#pragma once

#include "zqbase/zqbase_export.h"

// Debugging switches of an object: bit flags that make it leave evidence of what it did (images
// of failed comparisons, intermediate results). A test base derives from it, so each test object
// has switches of its own, and the run's switch (ZqTestEnvironment::SetDebugOutputEnabled, the
// runner's --debug-images) sets flag eDF_WriteImages for every object at once.
class ZQBASE_API ZqDebugging
{
public:
    enum EDebugFlags : unsigned int
    {
        eDF_None = 0,
        // A failed image comparison writes the render and a difference picture beside the reference.
        eDF_WriteImages = 1,
    };

    // This object's own flags; the run's flags are added on top (GetDebugFlags).
    void SetDebugFlags(unsigned int flags) { m_flags = flags; }
    // The object's flags together with those the run sets.
    unsigned int GetDebugFlags() const;
    // True when every bit of flags is set.
    bool IsDebugFlagSet(unsigned int flags) const { return (GetDebugFlags() & flags) == flags; }

protected:
    ZqDebugging() = default;
    ZqDebugging(const ZqDebugging&) = default;
    ZqDebugging& operator=(const ZqDebugging&) = default;
    ~ZqDebugging() = default;

private:
    unsigned int m_flags = eDF_None;
};
