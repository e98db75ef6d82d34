#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <cstdint>
#include <span>
#include <unordered_set>
#include <vector>

// The edges a hole filler must not create a second time: the edges of the triangulation between
// two rim vertices, and the edges the filler has made so far. Undirected.
class ZQ3DBASE_API ZqHoleEdges
{
public:
    // The edges of triangulation whose ends both lie on one of the loops (needs the
    // vertex-triangle relation).
    void Gather(const ZqTriangulationBase& triangulation, std::span<const std::vector<unsigned int>> loops);

    void Insert(unsigned int a, unsigned int b) { m_edges.insert(key(a, b)); }
    void Remove(unsigned int a, unsigned int b) { m_edges.erase(key(a, b)); }
    bool Contains(unsigned int a, unsigned int b) const { return m_edges.contains(key(a, b)); }

private:
    static std::uint64_t key(unsigned int a, unsigned int b)
    {
        return a < b ? (std::uint64_t(a) << 32 | b) : (std::uint64_t(b) << 32 | a);
    }

    std::unordered_set<std::uint64_t> m_edges;
};
