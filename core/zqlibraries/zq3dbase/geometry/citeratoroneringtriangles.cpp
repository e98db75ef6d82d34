#include "zq3dbase/geometry/citeratoroneringtriangles.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <string>

namespace Geometry
{
namespace
{
// Below this many triangles a linear search finds the continuation faster than a sorted index.
constexpr std::size_t kLinearLinkLimit = 16;
} // namespace

CIteratorOneRingTriangles::CIteratorOneRingTriangles(const CTriangulation& triangulation)
    : m_triangulation(&triangulation)
{
}

CIteratorOneRingTriangles::CIteratorOneRingTriangles(const CTriangulation& triangulation, CVertexRef centre)
    : m_triangulation(&triangulation)
{
    SetCentre(centre);
}

unsigned int CIteratorOneRingTriangles::getCornerIndex(CTriangleRef triangle) const
{
    const unsigned int corner =
        CTriangulation::FindCorner(m_triangulation->GetCorners(triangle), m_centre.GetIndex());
    if (corner == 3)
        CB_THROW(CbException, "Geometry::CIteratorOneRingTriangles::getCornerIndex",
                 "triangle " + std::to_string(triangle.GetIndex()) + " does not use vertex " +
                     std::to_string(m_centre.GetIndex()));
    return corner;
}

void CIteratorOneRingTriangles::SetCentre(CVertexRef centre)
{
    m_centre = centre;
    m_steps.clear();
    m_position = 0;
    m_fanCount = 0;
    m_openFanCount = 0;
    gatherLinks();
    linkFans();

    // Fans in the order of their lowest triangle: the links are in ascending triangle order, and a
    // fan is appended whole when its first link in that order comes up.
    for (unsigned int i = 0; i < m_links.size(); ++i)
    {
        if (m_links[i].corner == kVisited)
            continue;
        unsigned int start = i;
        while (m_links[start].previous != kNone && m_links[start].previous != i)
            start = m_links[start].previous;
        const bool open = m_links[start].previous == kNone;
        appendFan(open ? start : i, open);
    }
}

void CIteratorOneRingTriangles::gatherLinks()
{
    const std::span<const unsigned int> triangles =
        m_triangulation->GetVertexTriangleRelation().GetTriangles(m_centre.GetIndex());
    m_links.resize(triangles.size());
    for (std::size_t i = 0; i < triangles.size(); ++i)
    {
        const CTriangleRef triangle(triangles[i]);
        const unsigned int corner = getCornerIndex(triangle);
        const CTriangulation::SCorners& corners = m_triangulation->GetCorners(triangle);
        m_links[i] = {triangles[i], corners[(corner + 1) % 3],         corners[(corner + 2) % 3], kNone,
                      kNone,        static_cast<unsigned char>(corner)};
    }
}

void CIteratorOneRingTriangles::linkFans()
{
    // Triangle j continues triangle i when j starts (after the centre) with the vertex at which i
    // ends: i = (centre, a, b), j = (centre, b, c). Each triangle takes the lowest free candidate.
    const std::size_t n = m_links.size();
    auto tryLink = [&](std::size_t i, std::size_t j)
    {
        if (j == i || m_links[j].previous != kNone || m_links[j].after != m_links[i].before)
            return false;
        m_links[i].next = static_cast<unsigned int>(j);
        m_links[j].previous = static_cast<unsigned int>(i);
        return true;
    };
    if (n <= kLinearLinkLimit)
    {
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n && !tryLink(i, j); ++j)
            {
            }
        return;
    }
    m_byAfter.resize(n);
    for (std::size_t i = 0; i < n; ++i)
        m_byAfter[i] = static_cast<unsigned int>(i);
    // Stable by construction: ties are ordered by index, so the lowest candidate comes first.
    std::sort(m_byAfter.begin(), m_byAfter.end(),
              [&](unsigned int x, unsigned int y) {
                  return m_links[x].after < m_links[y].after ||
                         (m_links[x].after == m_links[y].after && x < y);
              });
    for (std::size_t i = 0; i < n; ++i)
    {
        auto candidate =
            std::lower_bound(m_byAfter.begin(), m_byAfter.end(), m_links[i].before,
                             [&](unsigned int x, unsigned int value) { return m_links[x].after < value; });
        for (; candidate != m_byAfter.end() && m_links[*candidate].after == m_links[i].before; ++candidate)
            if (tryLink(i, *candidate))
                break;
    }
}

void CIteratorOneRingTriangles::appendFan(unsigned int start, bool open)
{
    const std::size_t first = m_steps.size();
    unsigned int link = start;
    do
    {
        SLink& current = m_links[link];
        m_steps.push_back({current.triangle, current.corner, false, false});
        current.corner = kVisited;
        link = current.next;
    } while (link != kNone && link != start);
    m_steps[first].fanStart = true;
    if (open)
    {
        m_steps.back().border = true;
        ++m_openFanCount;
    }
    ++m_fanCount;
}
} // namespace Geometry
