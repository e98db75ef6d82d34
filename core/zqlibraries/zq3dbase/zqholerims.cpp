#include "zq3dbase/zqholerims.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace
{
struct SHalfEdge
{
    unsigned int from;
    unsigned int to;
};

// How many triangles use the edge between a and b (the relation lists the triangles around a).
unsigned int edgeUses(const ZqTriangulationBase& triangulation, unsigned int a, unsigned int b)
{
    const ZqVertexTriangleRelation& relation = triangulation.GetVertexTriangleRelationship();
    const auto triangles = triangulation.GetTriangles();
    unsigned int uses = 0;
    for (unsigned int i = 0; i < relation.GetTriangleCount(a); ++i)
    {
        const ZqTriangleCorners& corners = triangles[relation.GetTriangle(a, i)];
        uses += std::find(corners.begin(), corners.end(), b) != corners.end() ? 1 : 0;
    }
    return uses;
}

// The edges of triangle that no other triangle uses, in the triangle's orientation.
std::vector<SHalfEdge> borderEdges(const ZqTriangulationBase& triangulation, unsigned int triangle)
{
    const ZqTriangleCorners& corners = triangulation.GetTriangles()[triangle];
    std::vector<SHalfEdge> edges;
    for (unsigned int k = 0; k < 3; ++k)
    {
        const SHalfEdge edge{corners[k], corners[(k + 1) % 3]};
        if (edgeUses(triangulation, edge.from, edge.to) == 1)
            edges.push_back(edge);
    }
    return edges;
}

// One border edge per step such that each meets the next: forward, the rim runs along the edges
// (an edge ends where the next begins); backward, against them. Each vertex begins exactly one edge
// of a triangle, so the first step's choice fixes all others. The fill loop, or nothing.
std::optional<ZqHoleRims::Loop> chain(const std::vector<std::vector<SHalfEdge>>& steps,
                                      const SHalfEdge& first, bool forward)
{
    std::vector<SHalfEdge> chosen{first};
    for (std::size_t i = 1; i < steps.size(); ++i)
    {
        const SHalfEdge& last = chosen.back();
        const auto next = std::find_if(steps[i].begin(), steps[i].end(),
                                       [&](const SHalfEdge& edge)
                                       { return forward ? edge.from == last.to : edge.to == last.from; });
        if (next == steps[i].end())
            return std::nullopt;
        chosen.push_back(*next);
    }
    if (forward ? chosen.back().to != first.from : chosen.back().from != first.to)
        return std::nullopt;
    // The fill runs each edge a -> b as b -> a.
    ZqHoleRims::Loop loop;
    if (forward)
        for (auto edge = chosen.rbegin(); edge != chosen.rend(); ++edge)
            loop.push_back(edge->from);
    else
        for (const SHalfEdge& edge : chosen)
            loop.push_back(edge.to);
    return loop;
}

void keepLoops(std::vector<ZqHoleRims::Loop>& loops, const ZqHoleRims::Loop& walk)
{
    for (ZqHoleRims::Loop& loop : ZqHoleRims::SplitAtRepeatedVertices(walk))
        if (loop.size() >= 3)
            loops.push_back(std::move(loop));
}
} // namespace

std::vector<ZqHoleRims::Loop> ZqHoleRims::FromRim(const ZqTriangulationBase& triangulation,
                                                  const ZqPolylineTriangulation& rim)
{
    const char* function = "ZqHoleRims::FromRim";
    if (!triangulation.HasVertexTriangleRelationship())
        CB_THROW(CbExceptionPreconditionViolation, function, "no vertex-triangle relation");
    std::vector<std::vector<SHalfEdge>> steps;
    for (const ZqPolylineTriangulationVertex& step : rim)
    {
        if (step.GetTriangle().GetIndex() >= triangulation.GetTriangleCount())
            CB_THROW(CbExceptionPreconditionViolation, function,
                     "a rim step names no triangle of the triangulation");
        steps.push_back(borderEdges(triangulation, step.GetTriangle().GetIndex()));
    }
    if (steps.empty())
        return {};
    for (bool forward : {true, false})
        for (const SHalfEdge& first : steps.front())
            if (const std::optional<Loop> walk = chain(steps, first, forward))
            {
                std::vector<Loop> loops;
                keepLoops(loops, *walk);
                return loops;
            }
    CB_THROW(CbExceptionPreconditionViolation, function, "the rim's triangles do not run round a hole");
}

std::vector<ZqHoleRims::Loop> ZqHoleRims::FromRims(const ZqTriangulationBase& triangulation,
                                                   const ZqPolylineTriangulationList& rims)
{
    std::vector<Loop> loops;
    // Directed rim edges of the loops taken so far: a loop that begins with one was listed before.
    std::unordered_set<std::uint64_t> taken;
    const auto key = [](unsigned int from, unsigned int to) { return std::uint64_t(from) << 32 | to; };
    for (const ZqPolylineTriangulation& rim : rims)
    {
        if (&rim.GetTriangulation() != &triangulation)
            CB_THROW(CbExceptionPreconditionViolation, "ZqHoleRims::FromRims",
                     "a rim is bound to another triangulation");
        for (Loop& loop : FromRim(triangulation, rim))
        {
            if (taken.contains(key(loop[0], loop[1])))
                continue;
            for (std::size_t i = 0; i < loop.size(); ++i)
                taken.insert(key(loop[i], loop[(i + 1) % loop.size()]));
            loops.push_back(std::move(loop));
        }
    }
    return loops;
}

std::vector<ZqHoleRims::Loop> ZqHoleRims::FindAll(const ZqTriangulationBase& triangulation)
{
    if (!triangulation.HasVertexTriangleRelationship())
        CB_THROW(CbExceptionPreconditionViolation, "ZqHoleRims::FindAll", "no vertex-triangle relation");
    // The fill edges (border edges turned round) by the vertex they leave: where they go, and the
    // triangle whose border edge they are.
    std::unordered_multimap<unsigned int, std::pair<unsigned int, unsigned int>> outgoing;
    for (unsigned int t = 0; t < triangulation.GetTriangleCount(); ++t)
        for (const SHalfEdge& edge : borderEdges(triangulation, t))
            outgoing.emplace(edge.to, std::make_pair(edge.from, t));
    std::vector<Loop> loops;
    while (!outgoing.empty())
    {
        auto edge = outgoing.begin();
        const unsigned int start = edge->first;
        Loop walk{start};
        bool closed = false;
        while (true)
        {
            const auto [to, triangle] = edge->second;
            outgoing.erase(edge);
            if (to == start)
            {
                closed = true;
                break;
            }
            const auto [first, last] = outgoing.equal_range(to);
            if (first == last)
                break;
            // Where several border edges leave a vertex (holes touching there), go on along another
            // triangle: turning along the same one would circle that triangle alone.
            edge = first;
            for (auto candidate = first; candidate != last; ++candidate)
                if (candidate->second.second != triangle)
                {
                    edge = candidate;
                    break;
                }
            walk.push_back(to);
        }
        if (closed)
            keepLoops(loops, walk);
    }
    return loops;
}

void ZqHoleRims::CheckFinite(const ZqTriangulationBase& triangulation, const std::vector<Loop>& loops,
                             const char* function)
{
    const auto positions = triangulation.GetPositions();
    for (const Loop& loop : loops)
        for (unsigned int vertex : loop)
        {
            const CbVector3f& p = positions[vertex];
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
                CB_THROW(CbExceptionPreconditionViolation, function,
                         "a rim vertex has a coordinate that is not finite");
        }
}

std::vector<ZqHoleRims::Loop> ZqHoleRims::SplitAtRepeatedVertices(const Loop& walk)
{
    std::vector<Loop> loops;
    Loop open;
    std::unordered_map<unsigned int, std::size_t> position;
    for (unsigned int vertex : walk)
    {
        const auto seen = position.find(vertex);
        if (seen == position.end())
        {
            position.emplace(vertex, open.size());
            open.push_back(vertex);
            continue;
        }
        // The stretch since the vertex's first visit closes a loop; the vertex stays on the walk.
        Loop closed(open.begin() + std::ptrdiff_t(seen->second), open.end());
        for (std::size_t i = seen->second + 1; i < open.size(); ++i)
            position.erase(open[i]);
        open.resize(seen->second + 1);
        loops.push_back(std::move(closed));
    }
    loops.push_back(std::move(open));
    return loops;
}
