#pragma once

#include "zq3dbase/cbtriangleref.h"

// The triangle that ZqTriangulationDynamic::AddTriangle made: a CbTriangleRef (it converts to one
// wherever a reference is expected).
class ZqDynamicTriangle : public CbTriangleRef
{
public:
    constexpr ZqDynamicTriangle() = default;
    constexpr explicit ZqDynamicTriangle(CbTriangleRef triangle) : CbTriangleRef(triangle) {}
};
