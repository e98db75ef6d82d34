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
    const char* function = "ZqFtTriangulationFillHolesBaseOld::Compute";
    if (!m_triangulation || !m_holes)
        CB_THROW(CbExceptionPreconditionViolation, function, "no triangulation");
    for (const ZqPolylineTriangulation& hole : *m_holes)
        if (&hole.GetTriangulation() != m_triangulation)
            CB_THROW(CbExceptionPreconditionViolation, function, "a rim is bound to another triangulation");
}

void ZqFtTriangulationFillHolesBaseOld::compute()
{
    m_addedTriangles = m_addedVertices = m_loops = 0;
    ZqTriangulationBase& triangulation = *m_triangulation;
    if (!triangulation.HasVertexTriangleRelationship())
        triangulation.ComputeVertexTriangleRelationship();
    std::vector<std::vector<unsigned int>> loops;
    for (const ZqPolylineTriangulation& hole : *m_holes)
        for (std::vector<unsigned int>& loop : ZqHoleRims::FromRim(triangulation, hole))
            loops.push_back(std::move(loop));
    ZqHoleEdges edges;
    edges.Gather(triangulation, loops);
    ZqHoleFill fill(triangulation);
    // A hole listed twice is filled once: a loop whose first rim edge was filled is passed over.
    ZqHoleEdges filledRims;
    for (const std::vector<unsigned int>& loop : loops)
    {
        if (filledRims.Contains(loop[0], loop[1]))
            continue;
        for (std::size_t i = 0; i < loop.size(); ++i)
            filledRims.Insert(loop[i], loop[(i + 1) % loop.size()]);
        fillLoop(loop, edges, fill);
    }
    fill.ApplyTo(triangulation);
    m_addedTriangles = static_cast<unsigned int>(fill.GetTriangles().size());
    m_addedVertices = fill.GetAddedVertexCount();
    m_loops = static_cast<unsigned int>(loops.size());
}
