#include "zq3dbase/zqfttriangulationfillholesbaseold.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqholerims.h"

ZqFtTriangulationFillHolesBaseOld::ZqFtTriangulationFillHolesBaseOld() = default;
ZqFtTriangulationFillHolesBaseOld::~ZqFtTriangulationFillHolesBaseOld() = default;

void ZqFtTriangulationFillHolesBaseOld::SetInput(ZqTriangulationBase& triangulation,
                                                 const ZqPolylineTriangulationList& holes)
{
    m_triangulation = &triangulation;
    m_holes = &holes;
    setInputChanged();
}

void ZqFtTriangulationFillHolesBaseOld::checkPreConditionsInit() const
{
    if (!m_triangulation || !m_holes)
        CB_THROW(CbExceptionPreconditionViolation, "ZqFtTriangulationFillHolesBaseOld::Compute",
                 "no triangulation");
}

void ZqFtTriangulationFillHolesBaseOld::compute()
{
    m_addedTriangles = m_addedVertices = m_loops = 0;
    ZqTriangulationBase& triangulation = *m_triangulation;
    if (!triangulation.HasVertexTriangleRelationship())
        triangulation.ComputeVertexTriangleRelationship();
    const std::vector<std::vector<unsigned int>> loops = ZqHoleRims::FromRims(triangulation, *m_holes);
    ZqHoleRims::CheckFinite(triangulation, loops, "ZqFtTriangulationFillHolesBaseOld::Compute");
    ZqHoleEdges edges;
    edges.Gather(triangulation, loops);
    ZqHoleFill fill(triangulation);
    for (const std::vector<unsigned int>& loop : loops)
        fillLoop(loop, edges, fill);
    fill.ApplyTo(triangulation);
    m_addedTriangles = static_cast<unsigned int>(fill.GetTriangles().size());
    m_addedVertices = fill.GetAddedVertexCount();
    m_loops = static_cast<unsigned int>(loops.size());
}
