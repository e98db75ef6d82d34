#include "zq3dbase/zqfttriangulationfillholesearcutold.h"

#include "zq3dbase/zqholeplane.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace
{
double orientation(const CbVector2d& a, const CbVector2d& b, const CbVector2d& c)
{
    return Cross(b - a, c - a);
}

// The loop while it is cut: corners linked in a ring, their projected points.
struct SPolygon
{
    const std::vector<unsigned int>& loop;
    std::vector<CbVector2d> points;
    std::vector<std::size_t> prev, next;
    std::size_t remaining;

    bool isReflex(std::size_t c) const
    {
        return orientation(points[prev[c]], points[c], points[next[c]]) <= 0.0;
    }

    // Convex in the plane, and no reflex corner of the rest of the loop inside or on the triangle
    // (a corner at the position of one of its own corners does not count).
    bool isEar(std::size_t c) const
    {
        const std::size_t p = prev[c], n = next[c];
        const CbVector2d &a = points[p], &b = points[c], &d = points[n];
        if (orientation(a, b, d) <= 0.0)
            return false;
        for (std::size_t r = next[n]; r != p; r = next[r])
        {
            const CbVector2d& q = points[r];
            if (q == a || q == b || q == d || !isReflex(r))
                continue;
            if (orientation(a, b, q) >= 0.0 && orientation(b, d, q) >= 0.0 && orientation(d, a, q) >= 0.0)
                return false;
        }
        return true;
    }

    void cut(std::size_t c, ZqHoleEdges& edges, ZqHoleFill& fill)
    {
        const std::size_t p = prev[c], n = next[c];
        fill.AddTriangle(loop[p], loop[c], loop[n], edges);
        next[p] = n;
        prev[n] = p;
        --remaining;
    }

    // The corner with the smallest angle in space whose diagonal is free, or none.
    std::optional<std::size_t> sharpestFreeCorner(std::size_t start, const ZqHoleEdges& edges,
                                                  const ZqHoleFill& fill) const
    {
        std::optional<std::size_t> best;
        double bestCosine = -std::numeric_limits<double>::infinity();
        std::size_t c = start;
        do
        {
            if (!edges.Contains(loop[prev[c]], loop[next[c]]))
            {
                const CbVector3d at(fill.GetPosition(loop[c]));
                const CbVector3d u = (CbVector3d(fill.GetPosition(loop[prev[c]])) - at).Normalized();
                const CbVector3d v = (CbVector3d(fill.GetPosition(loop[next[c]])) - at).Normalized();
                if (u.Dot(v) > bestCosine)
                {
                    bestCosine = u.Dot(v);
                    best = c;
                }
            }
            c = next[c];
        } while (c != start);
        return best;
    }

    std::vector<unsigned int> rest(std::size_t start) const
    {
        std::vector<unsigned int> polygon;
        std::size_t c = start;
        do
        {
            polygon.push_back(loop[c]);
            c = next[c];
        } while (c != start);
        return polygon;
    }
};
} // namespace

ZqFtTriangulationFillHolesEarcutOld::ZqFtTriangulationFillHolesEarcutOld() = default;
ZqFtTriangulationFillHolesEarcutOld::~ZqFtTriangulationFillHolesEarcutOld() = default;

void ZqFtTriangulationFillHolesEarcutOld::fillLoop(const std::vector<unsigned int>& loop, ZqHoleEdges& edges,
                                                   ZqHoleFill& fill)
{
    const std::size_t n = loop.size();
    const ZqHolePlane plane(getTriangulation(), loop);
    SPolygon polygon{loop, {}, std::vector<std::size_t>(n), std::vector<std::size_t>(n), n};
    for (std::size_t i = 0; i < n; ++i)
    {
        polygon.points.push_back(plane.Project(fill.GetPosition(loop[i])));
        polygon.prev[i] = (i + n - 1) % n;
        polygon.next[i] = (i + 1) % n;
    }
    std::size_t corner = std::size_t(std::min_element(loop.begin(), loop.end()) - loop.begin());
    std::size_t withoutCut = 0;
    while (polygon.remaining > 3)
    {
        if (polygon.isEar(corner) && !edges.Contains(loop[polygon.prev[corner]], loop[polygon.next[corner]]))
        {
            const std::size_t after = polygon.next[corner];
            polygon.cut(corner, edges, fill);
            corner = polygon.next[after];
            withoutCut = 0;
            continue;
        }
        corner = polygon.next[corner];
        if (++withoutCut < polygon.remaining)
            continue;
        const std::optional<std::size_t> forced = polygon.sharpestFreeCorner(corner, edges, fill);
        if (!forced)
        {
            fill.AddFan(polygon.rest(corner), edges);
            return;
        }
        corner = polygon.next[*forced];
        polygon.cut(*forced, edges, fill);
        withoutCut = 0;
    }
    polygon.cut(corner, edges, fill);
}
