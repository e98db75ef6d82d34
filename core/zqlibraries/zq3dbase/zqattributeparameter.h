#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cstring.h"
#include "zq3dbase/zq3dbase_export.h"

#include <string_view>

// Data that tells how the values of an attribute were made, attached to the attribute with
// ZqTriangulationBase::SetAttributeParameter (a planar parametrization for surface parameters, for
// example). Parameters are shared, never copied: copies of a triangulation hold the same object.
// The triangulation file stores a parameter under its kind, and Create makes an empty one of a
// kind again when the file is read.
class ZQ3DBASE_API ZqAttributeParameter : public virtual CbRefCounted
{
public:
    // The kind under which the file stores the parameter, e.g. "planar".
    virtual const char* GetKind() const = 0;
    virtual void Write(CbStreamWriteBinary& stream) const = 0;
    // Reads what Write wrote; throws CbExceptionWrongFileVersion for data that cannot be such a
    // parameter (the object may then be half-read and is thrown away by the caller).
    virtual void Read(CbStreamReadBinary& stream) = 0;
    // Same kind and every value within tolerance (absolute, per component).
    virtual bool IsEqual(const ZqAttributeParameter& other, float tolerance) const = 0;
    // One line for messages, e.g. "planar (origin (0, 0, 0), u (1, 0, 0), v (0, 1, 0))".
    virtual CString Describe() const = 0;

    // An empty parameter of the kind, or null for a kind this library does not know.
    static CbSmartPointer<ZqAttributeParameter> Create(std::string_view kind);

protected:
    ~ZqAttributeParameter() override;
};
