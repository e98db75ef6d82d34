#pragma once

#include "basepool/cbvector3.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqholeedges.h"
#include "zq3dbase/zqholefill.h"
#include "zq3dbase/zqholeplane.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

// Improves the triangles that closed one hole loop by flipping the diagonal between two of them.
//
// The diagonal a-b of the triangles (a, b, c) and (b, a, d) becomes c-d when
// - c-d is no edge yet,
// - both new triangles face the way the old pair faced (no fold-over),
// - the smallest of the six angles grows, and
// - the largest dihedral angle of the pair, between each other and with their four neighbours
//   (fill triangles, or the surface across the rim), stays within max(its old value, 15 degrees).
// In a plane this is Lawson's flip towards the Delaunay triangulation: every flip raises the sorted
// angles, so flipping ends; a cap of 20 flips per triangle bounds it in any case.
class ZQ3DBASE_API ZqHoleFlips
{
public:
    // The triangles of fill from index first on closed loop (fill orientation; plane gives the
    // normals of the surface across its edges).
    ZqHoleFlips(ZqHoleFill& fill, std::size_t first, const std::vector<unsigned int>& loop,
                const ZqHolePlane& plane, ZqHoleEdges& edges);

    // Flips until no diagonal improves; returns the number of flips.
    unsigned int Run();

private:
    struct SSides
    {
        int left = -1;
        int right = -1;
    };

    static std::uint64_t key(unsigned int from, unsigned int to) { return std::uint64_t(from) << 32 | to; }
    CbVector3d position(unsigned int vertex) const { return CbVector3d(m_fill.GetPosition(vertex)); }
    CbVector3d normal(unsigned int a, unsigned int b, unsigned int c) const;
    // The unit normal of what lies across the directed edge from -> to outside the pair of triangles
    // being flipped, or (0,0,0) when nothing does.
    CbVector3d across(unsigned int from, unsigned int to, std::size_t t1, std::size_t t2) const;
    double smallestAngle(unsigned int a, unsigned int b, unsigned int c) const;
    // The largest dihedral angle of triangles (a, b, c) and (b, a, d) with each other and across their
    // outer edges, t1 and t2 being the triangles they replace or are.
    double largestFold(unsigned int a, unsigned int b, unsigned int c, unsigned int d, std::size_t t1,
                       std::size_t t2) const;
    // Flips a-b when that improves the pair; c and d are then the ends of the new diagonal.
    bool tryFlip(unsigned int a, unsigned int b, unsigned int& c, unsigned int& d);
    void link(std::size_t t);
    void unlink(std::size_t t);

    ZqHoleFill& m_fill;
    std::size_t m_first;
    ZqHoleEdges& m_edges;
    // Triangle of the fill by each of its directed edges.
    std::unordered_map<std::uint64_t, std::size_t> m_byEdge;
    // Surface normal across each rim edge, by the edge in fill orientation.
    std::unordered_map<std::uint64_t, CbVector3d> m_outside;
};
