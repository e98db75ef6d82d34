#include "zq3dbase/zqfttriangulationfillholesearcut.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqholeearcutter.h"
#include "zq3dbase/zqholeedges.h"
#include "zq3dbase/zqholefill.h"
#include "zq3dbase/zqholeflips.h"
#include "zq3dbase/zqholeplane.h"
#include "zq3dbase/zqholerims.h"

namespace
{
using Loops = std::vector<std::vector<unsigned int>>;

// The loops up to the cap.
Loops selectLoops(Loops found, unsigned int maxRimVertices, unsigned int& skipped)
{
    const std::size_t all = found.size();
    if (maxRimVertices != 0)
        std::erase_if(found,
                      [&](const std::vector<unsigned int>& loop) { return loop.size() > maxRimVertices; });
    skipped = static_cast<unsigned int>(all - found.size());
    return found;
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
    if (!m_triangulation)
        CB_THROW(CbExceptionPreconditionViolation, "ZqFtTriangulationFillHolesEarCut::Compute",
                 "no triangulation");
}

void ZqFtTriangulationFillHolesEarCut::compute()
{
    m_filled = m_skipped = m_addedTriangles = m_addedVertices = m_flips = 0;
    ZqTriangulationBase& triangulation = *m_triangulation;
    if (!triangulation.HasVertexTriangleRelationship())
        triangulation.ComputeVertexTriangleRelationship();
    const Loops loops = selectLoops(m_holes ? ZqHoleRims::FromRims(triangulation, *m_holes)
                                            : ZqHoleRims::FindAll(triangulation),
                                    m_maxRimVertices, m_skipped);
    ZqHoleRims::CheckFinite(triangulation, loops, "ZqFtTriangulationFillHolesEarCut::Compute");

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
