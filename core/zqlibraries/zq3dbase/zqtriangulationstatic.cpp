#include "zq3dbase/zqtriangulationstatic.h"

ZqTriangulationStatic::~ZqTriangulationStatic() = default;

void ZqTriangulationStatic::SetVertex(unsigned int vertex, const CbVector3f& position)
{
    if (vertex >= GetVertexCount())
        CB_THROW(CbExceptionPreconditionViolation, "ZqTriangulationStatic::SetVertex",
                 "vertex " + std::to_string(vertex) + " of " + std::to_string(GetVertexCount()));
    GetPositions()[vertex] = position;
}
