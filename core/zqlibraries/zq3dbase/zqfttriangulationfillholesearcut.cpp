#include "zq3dbase/zqfttriangulationfillholesearcut.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqholeearcutter.h"
#include "zq3dbase/zqholeedges.h"
#include "zq3dbase/zqholefill.h"
#include "zq3dbase/zqholeflips.h"
#include "zq3dbase/zqholeplane.h"
#include "zq3dbase/zqholerims.h"

#include <cmath>

namespace
{
using Loops = std::vector<std::vector<unsigned int>>;

// The loops to fill, without loops listed twice and without loops above the cap.
Loops selectLoops(const Loops& found, unsigned int maxRimVertices, unsigned int& skipped)
{
    Loops loops;
    ZqHoleEdges taken;
    for (const std::vector<unsigned int>& loop : found)
    {
        if (maxRimVertices != 0 && loop.size() > maxRimVertices)
        {
            ++skipped;
            continue;
        }
        if (taken.Contains(loop[0], loop[1]))
            continue;
        for (std::size_t i = 0; i < loop.size(); ++i)
            taken.Insert(loop[i], loop[(i + 1) % loop.size()]);
        loops.push_back(loop);
    }
    return loops;
}

void checkFinite(const ZqTriangulationBase& triangulation, const Loops& loops)
{
    const auto positions = triangulation.GetPositions();
    for (const std::vector<unsigned int>& loop : loops)
        for (unsigned int vertex : loop)
        {
            const CbVector3f& p = positions[vertex];
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
                CB_THROW(CbExceptionPreconditionViolation, "ZqFtTriangulationFillHolesEarCut::Compute",
                         "a rim vertex has a coordinate that is not finite");
        }
}
} // namespace

ZqFtTriangulationFillHolesEarCut::ZqFtTriangulationFillHolesEarCut()
{
    SetFlags(CbFlags<EFlags>(eF_Flips));
}

ZqFtTriangulationFillHolesEarCut::~ZqFtTriangulationFillHolesEarCut() = default;

void ZqFtTriangulationFillHolesEarCut::SetInput(ZqTriangulationBase& triangulation)
{
    m_triangulation = &triangulation;
    m_holes = nullptr;
    setInputChanged();
}

void ZqFtTriangulationFillHolesEarCut::SetInput(ZqTriangulationBase& triangulation,
                                                const ZqPolylineTriangulationList& holes)
{
    m_triangulation = &triangulation;
    m_holes = &holes;
    setInputChanged();
}

void ZqFtTriangulationFillHolesEarCut::SetMaxRimVertexCount(unsigned int count)
{
    m_maxRimVertices = count;
    setInputChanged();
}

void ZqFtTriangulationFillHolesEarCut::checkPreConditionsInit() const
{
    const char* function = "ZqFtTriangulationFillHolesEarCut::Compute";
    if (!m_triangulation)
        CB_THROW(CbExceptionPreconditionViolation, function, "no triangulation");
    if (m_holes)
        for (const ZqPolylineTriangulation& hole : *m_holes)
            if (&hole.GetTriangulation() != m_triangulation)
                CB_THROW(CbExceptionPreconditionViolation, function,
                         "a rim is bound to another triangulation");
}

void ZqFtTriangulationFillHolesEarCut::compute()
{
    m_filled = m_skipped = m_addedTriangles = m_addedVertices = m_flips = 0;
    ZqTriangulationBase& triangulation = *m_triangulation;
    if (!triangulation.HasVertexTriangleRelationship())
        triangulation.ComputeVertexTriangleRelationship();
    Loops found;
    if (m_holes)
        for (const ZqPolylineTriangulation& hole : *m_holes)
            for (std::vector<unsigned int>& loop : ZqHoleRims::FromRim(triangulation, hole))
                found.push_back(std::move(loop));
    else
        found = ZqHoleRims::FindAll(triangulation);
    const Loops loops = selectLoops(found, m_maxRimVertices, m_skipped);
    checkFinite(triangulation, loops);

    ZqHoleEdges edges;
    edges.Gather(triangulation, loops);
    ZqHoleFill fill(triangulation);
    for (const std::vector<unsigned int>& loop : loops)
    {
        const ZqHolePlane plane(triangulation, loop);
        const std::size_t first = fill.GetTriangles().size();
        ZqHoleEarCutter(loop, plane, fill, edges).Run();
        if (IsFlagSet(eF_Flips))
            m_flips += ZqHoleFlips(fill, first, loop, plane, edges).Run();
    }
    fill.ApplyTo(triangulation);
    m_filled = static_cast<unsigned int>(loops.size());
    m_addedTriangles = static_cast<unsigned int>(fill.GetTriangles().size());
    m_addedVertices = fill.GetAddedVertexCount();
}
