#pragma once

#include "zq3dbase/zqdynamictriangle.h"
#include "zq3dbase/zqdynamicvertex.h"
#include "zq3dbase/zqtriangulationbase.h"

// A triangulation that grows element by element. The capacity given at construction is reserved
// for vertices and for triangles alike; beyond it the arrays double, so n additions cost O(n).
//
//     ZqTriangulationDynamic t(10000);
//     ZqDynamicVertex a = t.AddVertex({0, 0, 0}), b = t.AddVertex({1, 0, 0}), c = t.AddVertex({0, 1, 0});
//     t.AddTriangle(a, b, c);   // counter-clockwise seen from +z
class ZQ3DBASE_API ZqTriangulationDynamic : public ZqTriangulationBase
{
public:
    ZqTriangulationDynamic() = default;
    explicit ZqTriangulationDynamic(unsigned int capacity) { Reserve(capacity, capacity); }
    ZqTriangulationDynamic(const ZqTriangulationDynamic& other) = default;
    ZqTriangulationDynamic(ZqTriangulationDynamic&& other) noexcept = default;
    // A copy of any triangulation: positions, triangles, attributes with their switches and
    // (shared) parameters, and the relation when other has one.
    explicit ZqTriangulationDynamic(const ZqTriangulationBase& other) : ZqTriangulationBase(other) {}
    ZqTriangulationDynamic& operator=(const ZqTriangulationDynamic& other) = default;
    ZqTriangulationDynamic& operator=(ZqTriangulationDynamic&& other) noexcept = default;
    ZqTriangulationDynamic& operator=(const ZqTriangulationBase& other)
    {
        ZqTriangulationBase::operator=(other);
        return *this;
    }
    ~ZqTriangulationDynamic() override;

    ZqDynamicVertex AddVertex(const CbVector3f& position) { return ZqDynamicVertex(AppendVertex(position)); }
    // Throws CbExceptionPreconditionViolation for a corner that is not a vertex of this
    // triangulation or a vertex used twice.
    ZqDynamicTriangle AddTriangle(CbVertexRef a, CbVertexRef b, CbVertexRef c)
    {
        return ZqDynamicTriangle(AppendTriangle(a, b, c));
    }
    ZqDynamicTriangle AddTriangle(unsigned int a, unsigned int b, unsigned int c)
    {
        return AddTriangle(CbVertexRef(a), CbVertexRef(b), CbVertexRef(c));
    }
};
