#pragma once

#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqholeedges.h"
#include "zq3dbase/zqholefill.h"
#include "zq3dbase/zqholeplane.h"

#include <queue>
#include <vector>

// Cuts one hole loop into triangles, the best ear first.
//
// An ear is a corner whose triangle with its two neighbours may be cut off: convex in the rim's
// plane, no reflex corner of the loop inside it, and its diagonal no edge yet. Of all ears the one
// with the lowest cost goes first; the cost of ear (p, c, n) is
//     largest angle of the triangle / 180 degrees
//   + 3 (1 - cos f) / 2, f the larger of its dihedral angles with the triangles across p-c and c-n
// (surface triangles at the rim, triangles cut earlier inside), so that triangles are well shaped
// and follow the surface round the hole.
//
// Ears wait in a heap and only the two neighbours of a cut corner are weighed again; reflex corners
// are kept in a uniform grid over the plane, so an ear test looks at the few corners near it. A
// loop of n vertices takes O(n log n) when its reflex corners are spread out. When the heap holds no
// ear, every corner is weighed again (a corner that an earlier cut unblocked comes back); if there is
// still none (the projection folds over itself), the corner of lowest cost whose diagonal is free is
// cut, and when no diagonal is free the rest is closed by a fan round a new centre vertex.
class ZQ3DBASE_API ZqHoleEarCutter
{
public:
    // loop: vertex indices in fill orientation (at least three); plane: its ZqHolePlane.
    ZqHoleEarCutter(const std::vector<unsigned int>& loop, const ZqHolePlane& plane, ZqHoleFill& fill,
                    ZqHoleEdges& edges);

    // Adds the triangles to the fill and their edges to the edges.
    void Run();

private:
    struct SCorner
    {
        CbVector2d point;
        CbVector3d position;
        // The unit normal of the triangle across the edge to the next corner, or (0,0,0).
        CbVector3d outside;
        unsigned int prev;
        unsigned int next;
        unsigned int version = 0;
        bool alive = true;
        bool reflex = false;
        bool inGrid = false;
    };
    struct SEar
    {
        double cost;
        unsigned int corner;
        unsigned int version;
        bool operator<(const SEar& other) const { return cost > other.cost; }
    };

    bool isReflex(unsigned int c) const;
    bool isEar(unsigned int c) const;
    bool holdsReflexCorner(unsigned int c) const;
    double cost(unsigned int c) const;
    // Weighs corner c again (after its neighbours changed) and queues it when it is an ear.
    void update(unsigned int c);
    void cut(unsigned int c);
    void addToGrid(unsigned int c);
    unsigned int cell(double x, double y) const;
    // No ear in the heap: weigh all corners again; else cut the cheapest free corner or close by a fan.
    bool recover();

    const std::vector<unsigned int>& m_loop;
    ZqHoleFill& m_fill;
    ZqHoleEdges& m_edges;
    std::vector<SCorner> m_corners;
    unsigned int m_remaining;
    unsigned int m_start;
    std::priority_queue<SEar> m_ears;
    // Reflex corners by grid cell; a corner that stopped being reflex is skipped when met.
    std::vector<std::vector<unsigned int>> m_grid;
    CbVector2d m_gridOrigin;
    double m_cellSize = 1.0;
    unsigned int m_columns = 1;
    unsigned int m_rows = 1;
};
