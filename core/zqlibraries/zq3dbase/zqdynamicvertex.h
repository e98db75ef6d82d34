#pragma once

#include "zq3dbase/cbvertexref.h"

// The vertex that ZqTriangulationDynamic::AddVertex made: a CbVertexRef (it converts to one
// wherever a reference is expected, e.g. in AddTriangle).
class ZqDynamicVertex : public CbVertexRef
{
public:
    constexpr ZqDynamicVertex() = default;
    constexpr explicit ZqDynamicVertex(CbVertexRef vertex) : CbVertexRef(vertex) {}
};
