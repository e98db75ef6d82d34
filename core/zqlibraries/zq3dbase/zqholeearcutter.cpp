#include "zq3dbase/zqholeearcutter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace
{
double orientation(const CbVector2d& a, const CbVector2d& b, const CbVector2d& c)
{
    return Cross(b - a, c - a);
}

double angle(const CbVector3d& u, const CbVector3d& v)
{
    return std::atan2(Cross(u, v).Length(), u.Dot(v));
}

// With weight 1, holes whose rim waves strongly got fills that fold back on themselves (129 degrees
// between neighbours in the module test's wavy hole); with 3 the folds are those of CGAL's
// triangulate_hole on the same holes, and planar holes are filled as before.
constexpr double kFoldWeight = 3.0;
} // namespace

ZqHoleEarCutter::ZqHoleEarCutter(const std::vector<unsigned int>& loop, const ZqHolePlane& plane,
                                 ZqHoleFill& fill, ZqHoleEdges& edges)
    : m_loop(loop), m_fill(fill), m_edges(edges), m_remaining(static_cast<unsigned int>(loop.size()))
{
    const unsigned int n = m_remaining;
    m_corners.resize(n);
    CbVector2d low(std::numeric_limits<double>::max(), std::numeric_limits<double>::max());
    CbVector2d high = -low;
    for (unsigned int i = 0; i < n; ++i)
    {
        SCorner& corner = m_corners[i];
        corner.position = CbVector3d(fill.GetPosition(loop[i]));
        corner.point = plane.Project(fill.GetPosition(loop[i]));
        corner.outside = plane.GetOutsideNormals()[i];
        corner.prev = (i + n - 1) % n;
        corner.next = (i + 1) % n;
        low = {std::min(low.x, corner.point.x), std::min(low.y, corner.point.y)};
        high = {std::max(high.x, corner.point.x), std::max(high.y, corner.point.y)};
    }
    m_start = static_cast<unsigned int>(std::min_element(loop.begin(), loop.end()) - loop.begin());
    // About one cell per corner.
    const CbVector2d extent = high - low;
    m_cellSize = std::max({std::sqrt(extent.x * extent.y / n), extent.x / n, extent.y / n, 1e-300});
    m_columns = std::min(n, static_cast<unsigned int>(extent.x / m_cellSize) + 1);
    m_rows = std::min(n, static_cast<unsigned int>(extent.y / m_cellSize) + 1);
    m_gridOrigin = low;
    m_grid.resize(std::size_t(m_columns) * m_rows);
}

unsigned int ZqHoleEarCutter::cell(double x, double y) const
{
    const auto clamp = [this](double value, unsigned int count)
    {
        const double index = std::floor(value / m_cellSize);
        return index < 0.0 ? 0u : std::min(count - 1, static_cast<unsigned int>(std::min(index, 4e9)));
    };
    return clamp(y - m_gridOrigin.y, m_rows) * m_columns + clamp(x - m_gridOrigin.x, m_columns);
}

bool ZqHoleEarCutter::isReflex(unsigned int c) const
{
    const SCorner& corner = m_corners[c];
    return orientation(m_corners[corner.prev].point, corner.point, m_corners[corner.next].point) <= 0.0;
}

void ZqHoleEarCutter::addToGrid(unsigned int c)
{
    SCorner& corner = m_corners[c];
    corner.reflex = isReflex(c);
    if (corner.reflex && !corner.inGrid)
    {
        corner.inGrid = true;
        m_grid[cell(corner.point.x, corner.point.y)].push_back(c);
    }
}

bool ZqHoleEarCutter::holdsReflexCorner(unsigned int c) const
{
    const unsigned int p = m_corners[c].prev, n = m_corners[c].next;
    const CbVector2d &a = m_corners[p].point, &b = m_corners[c].point, &d = m_corners[n].point;
    const unsigned int first = cell(std::min({a.x, b.x, d.x}), std::min({a.y, b.y, d.y}));
    const unsigned int last = cell(std::max({a.x, b.x, d.x}), std::max({a.y, b.y, d.y}));
    for (unsigned int row = first / m_columns; row <= last / m_columns; ++row)
        for (unsigned int column = first % m_columns; column <= last % m_columns; ++column)
            for (unsigned int r : m_grid[row * m_columns + column])
            {
                const SCorner& corner = m_corners[r];
                if (!corner.alive || !corner.reflex || r == p || r == c || r == n)
                    continue;
                const CbVector2d& q = corner.point;
                if (q == a || q == b || q == d)
                    continue;
                if (orientation(a, b, q) >= 0.0 && orientation(b, d, q) >= 0.0 && orientation(d, a, q) >= 0.0)
                    return true;
            }
    return false;
}

bool ZqHoleEarCutter::isEar(unsigned int c) const
{
    const SCorner& corner = m_corners[c];
    return !corner.reflex && !m_edges.Contains(m_loop[corner.prev], m_loop[corner.next]) &&
           !holdsReflexCorner(c);
}

double ZqHoleEarCutter::cost(unsigned int c) const
{
    const SCorner& corner = m_corners[c];
    const SCorner &before = m_corners[corner.prev], &after = m_corners[corner.next];
    const CbVector3d a = before.position, b = corner.position, d = after.position;
    const CbVector3d normal = Cross(b - a, d - a).Normalized();
    if (normal.SquaredLength() == 0.0)
        return std::numeric_limits<double>::max();
    const double largest = std::max({angle(b - a, d - a), angle(a - b, d - b), angle(a - d, b - d)});
    double fold = 0.0;
    for (const CbVector3d& outside : {before.outside, corner.outside})
        if (outside.SquaredLength() > 0.0)
            fold = std::max(fold, (1.0 - normal.Dot(outside)) / 2.0);
    return largest / std::numbers::pi + kFoldWeight * fold;
}

void ZqHoleEarCutter::update(unsigned int c)
{
    SCorner& corner = m_corners[c];
    ++corner.version;
    addToGrid(c);
    if (isEar(c))
        m_ears.push({cost(c), c, corner.version});
}

void ZqHoleEarCutter::cut(unsigned int c)
{
    SCorner& corner = m_corners[c];
    const unsigned int p = corner.prev, n = corner.next;
    m_fill.AddTriangle(m_loop[p], m_loop[c], m_loop[n], m_edges);
    corner.alive = false;
    m_corners[p].next = n;
    m_corners[n].prev = p;
    // The new rim edge p-n has the cut triangle across it.
    m_corners[p].outside =
        Cross(corner.position - m_corners[p].position, m_corners[n].position - m_corners[p].position)
            .Normalized();
    --m_remaining;
    if (c == m_start)
        m_start = n;
}

bool ZqHoleEarCutter::recover()
{
    unsigned int c = m_start;
    do
    {
        update(c);
        c = m_corners[c].next;
    } while (c != m_start);
    if (!m_ears.empty())
        return true;
    // The projection folds: the cheapest corner with a free diagonal, whatever the plane says.
    double best = std::numeric_limits<double>::infinity();
    unsigned int chosen = m_start;
    bool found = false;
    c = m_start;
    do
    {
        const SCorner& corner = m_corners[c];
        if (!m_edges.Contains(m_loop[corner.prev], m_loop[corner.next]) && cost(c) < best)
        {
            best = cost(c);
            chosen = c;
            found = true;
        }
        c = corner.next;
    } while (c != m_start);
    if (found)
    {
        m_ears.push({best, chosen, m_corners[chosen].version});
        return true;
    }
    std::vector<unsigned int> rest;
    c = m_start;
    do
    {
        rest.push_back(m_loop[c]);
        c = m_corners[c].next;
    } while (c != m_start);
    m_fill.AddFan(rest, m_edges);
    return false;
}

void ZqHoleEarCutter::Run()
{
    for (unsigned int c = 0; c < m_corners.size(); ++c)
        addToGrid(c);
    for (unsigned int c = 0; c < m_corners.size(); ++c)
        if (isEar(c))
            m_ears.push({cost(c), c, m_corners[c].version});
    while (m_remaining > 3)
    {
        if (m_ears.empty() && !recover())
            return;
        const SEar ear = m_ears.top();
        m_ears.pop();
        const SCorner& corner = m_corners[ear.corner];
        if (!corner.alive || corner.version != ear.version ||
            m_edges.Contains(m_loop[corner.prev], m_loop[corner.next]))
            continue;
        const unsigned int p = corner.prev, n = corner.next;
        cut(ear.corner);
        update(p);
        update(n);
    }
    cut(m_start);
}
