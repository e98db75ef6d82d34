#include "zq3dbase/zqholeflips.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace
{
double angle(const CbVector3d& u, const CbVector3d& v)
{
    return std::atan2(Cross(u, v).Length(), u.Dot(v));
}

constexpr double kFoldAllowance = 15.0 * std::numbers::pi / 180.0;

unsigned int third(const ZqTriangleCorners& corners, unsigned int a, unsigned int b)
{
    for (unsigned int corner : corners)
        if (corner != a && corner != b)
            return corner;
    return a;
}
} // namespace

ZqHoleFlips::ZqHoleFlips(ZqHoleFill& fill, std::size_t first, const std::vector<unsigned int>& loop,
                         const ZqHolePlane& plane, ZqHoleEdges& edges)
    : m_fill(fill), m_first(first), m_edges(edges)
{
    for (std::size_t t = first; t < fill.GetTriangles().size(); ++t)
        link(t);
    for (std::size_t i = 0; i < loop.size(); ++i)
        m_outside.emplace(key(loop[i], loop[(i + 1) % loop.size()]), plane.GetOutsideNormals()[i]);
}

void ZqHoleFlips::link(std::size_t t)
{
    const ZqTriangleCorners& c = m_fill.GetTriangles()[t];
    for (unsigned int k = 0; k < 3; ++k)
        m_byEdge[key(c[k], c[(k + 1) % 3])] = t;
}

void ZqHoleFlips::unlink(std::size_t t)
{
    const ZqTriangleCorners& c = m_fill.GetTriangles()[t];
    for (unsigned int k = 0; k < 3; ++k)
        m_byEdge.erase(key(c[k], c[(k + 1) % 3]));
}

CbVector3d ZqHoleFlips::normal(unsigned int a, unsigned int b, unsigned int c) const
{
    return Cross(position(b) - position(a), position(c) - position(a)).Normalized();
}

CbVector3d ZqHoleFlips::across(unsigned int from, unsigned int to, std::size_t t1, std::size_t t2) const
{
    const auto other = m_byEdge.find(key(to, from));
    if (other != m_byEdge.end() && other->second != t1 && other->second != t2)
    {
        const ZqTriangleCorners& c = m_fill.GetTriangles()[other->second];
        return normal(c[0], c[1], c[2]);
    }
    const auto outside = m_outside.find(key(from, to));
    return outside != m_outside.end() ? outside->second : CbVector3d();
}

double ZqHoleFlips::smallestAngle(unsigned int a, unsigned int b, unsigned int c) const
{
    const CbVector3d p = position(a), q = position(b), r = position(c);
    return std::min({angle(q - p, r - p), angle(p - q, r - q), angle(p - r, q - r)});
}

double ZqHoleFlips::largestFold(unsigned int a, unsigned int b, unsigned int c, unsigned int d,
                                std::size_t t1, std::size_t t2) const
{
    const CbVector3d first = normal(a, b, c), second = normal(b, a, d);
    double fold = angle(first, second);
    const std::pair<unsigned int, unsigned int> firstEdges[] = {{b, c}, {c, a}};
    const std::pair<unsigned int, unsigned int> secondEdges[] = {{a, d}, {d, b}};
    for (const auto& [from, to] : firstEdges)
        if (const CbVector3d n = across(from, to, t1, t2); n.SquaredLength() > 0.0)
            fold = std::max(fold, angle(first, n));
    for (const auto& [from, to] : secondEdges)
        if (const CbVector3d n = across(from, to, t1, t2); n.SquaredLength() > 0.0)
            fold = std::max(fold, angle(second, n));
    return fold;
}

bool ZqHoleFlips::tryFlip(unsigned int a, unsigned int b, unsigned int& c, unsigned int& d)
{
    const auto first = m_byEdge.find(key(a, b)), second = m_byEdge.find(key(b, a));
    if (first == m_byEdge.end() || second == m_byEdge.end())
        return false;
    const std::size_t t1 = first->second, t2 = second->second;
    auto& triangles = m_fill.GetTriangles();
    c = third(triangles[t1], a, b);
    d = third(triangles[t2], a, b);
    if (c == d || m_edges.Contains(c, d))
        return false;
    const CbVector3d facing = normal(a, b, c) + normal(b, a, d);
    const CbVector3d n1 = normal(c, a, d), n2 = normal(d, b, c);
    if (!(n1.Dot(facing) > 0.0) || !(n2.Dot(facing) > 0.0))
        return false;
    const double before = std::min(smallestAngle(a, b, c), smallestAngle(b, a, d));
    const double after = std::min(smallestAngle(c, a, d), smallestAngle(d, b, c));
    if (!(after > before + 1e-9))
        return false;
    const double foldBefore = largestFold(a, b, c, d, t1, t2);
    if (largestFold(d, c, a, b, t1, t2) > std::max(foldBefore, kFoldAllowance))
        return false;
    unlink(t1);
    unlink(t2);
    triangles[t1] = {c, a, d};
    triangles[t2] = {d, b, c};
    link(t1);
    link(t2);
    m_edges.Remove(a, b);
    m_edges.Insert(c, d);
    return true;
}

unsigned int ZqHoleFlips::Run()
{
    std::vector<std::pair<unsigned int, unsigned int>> pending;
    for (const auto& [edge, triangle] : m_byEdge)
    {
        const unsigned int from = static_cast<unsigned int>(edge >> 32), to = static_cast<unsigned int>(edge);
        if (from < to && m_byEdge.contains(key(to, from)))
            pending.emplace_back(from, to);
    }
    // The map's order depends on the library; the flips should not.
    std::sort(pending.begin(), pending.end());
    const std::size_t cap = 20 * (m_fill.GetTriangles().size() - m_first);
    unsigned int flips = 0;
    while (!pending.empty() && flips < cap)
    {
        const auto [a, b] = pending.back();
        pending.pop_back();
        unsigned int c = 0, d = 0;
        if (!tryFlip(a, b, c, d))
            continue;
        ++flips;
        // The pair is now (c, a, d) and (d, b, c); its outer edges may flip in turn.
        pending.insert(pending.end(), {{c, a}, {a, d}, {d, b}, {b, c}});
    }
    return flips;
}
