#pragma once

#include "zq3dbase/zqtriangulationbase.h"

// A triangulation whose counts are set first and whose elements are then filled in place, for
// builders that know the size in advance (readers, generators). The arrays have exactly the size
// asked for.
//
//     ZqTriangulationStatic t;
//     t.SetVertexCount(3);
//     t.SetVertex(0, {0, 0, 0}); t.SetVertex(1, {1, 0, 0}); t.SetVertex(2, {0, 1, 0});
//     t.SetTriangleCount(1);
//     t.SetConnectivity(0, 0, 1, 2);
//
// New vertices start at (0, 0, 0); new triangles are unset, and ComputeVertexTriangleRelationship
// refuses to run while one is. Index errors throw CbExceptionPreconditionViolation.
class ZQ3DBASE_API ZqTriangulationStatic : public ZqTriangulationBase
{
public:
    ZqTriangulationStatic() = default;
    ZqTriangulationStatic(const ZqTriangulationStatic& other) = default;
    ZqTriangulationStatic(ZqTriangulationStatic&& other) noexcept = default;
    explicit ZqTriangulationStatic(const ZqTriangulationBase& other) : ZqTriangulationBase(other) {}
    ZqTriangulationStatic& operator=(const ZqTriangulationStatic& other) = default;
    ZqTriangulationStatic& operator=(ZqTriangulationStatic&& other) noexcept = default;
    ZqTriangulationStatic& operator=(const ZqTriangulationBase& other)
    {
        ZqTriangulationBase::operator=(other);
        return *this;
    }
    ~ZqTriangulationStatic() override;

    // Keeps the first min(old, count) vertices; present attributes follow the count.
    void SetVertexCount(unsigned int count) { setVertexCount(count); }
    void SetVertex(unsigned int vertex, const CbVector3f& position);
    // Keeps the first min(old, count) triangles.
    void SetTriangleCount(unsigned int count) { setTriangleCount(count); }
    void SetConnectivity(unsigned int triangle, unsigned int v0, unsigned int v1, unsigned int v2)
    {
        setTriangle(triangle, CbVertexRef(v0), CbVertexRef(v1), CbVertexRef(v2),
                    "ZqTriangulationStatic::SetConnectivity");
    }
};
