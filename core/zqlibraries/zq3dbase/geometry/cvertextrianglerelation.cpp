#include "zq3dbase/geometry/cvertextrianglerelation.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

namespace Geometry
{
namespace
{
using SCorners = std::array<unsigned int, 3>;

// Calls visit(vertex) for each distinct vertex of corners.
template <class TVisit> inline void forDistinctCorners(const SCorners& corners, TVisit visit)
{
    visit(corners[0]);
    if (corners[1] != corners[0])
        visit(corners[1]);
    if (corners[2] != corners[0] && corners[2] != corners[1])
        visit(corners[2]);
}

// Sorts the entries of one vertex (ascending triangle indices on entry) into fans and sets their
// flags. Keeps its scratch from vertex to vertex, so a whole build allocates only for the largest
// valence seen.
class CFanSorter
{
public:
    void Sort(unsigned int* entries, unsigned int count, unsigned int vertex, const SCorners* triangles)
    {
        gather(entries, count, vertex, triangles);
        if (count <= kLinearLinkLimit)
            linkByScanning();
        else
            linkBySorting();
        unsigned int written = 0;
        // The links are in ascending triangle order, so each fan is written when its lowest
        // triangle comes up.
        for (unsigned int i = 0; i < count; ++i)
        {
            if (m_links[i].visited)
                continue;
            unsigned int start = i;
            while (m_links[start].previous != kNone && m_links[start].previous != i)
                start = m_links[start].previous;
            const bool open = m_links[start].previous == kNone;
            written = writeFan(entries, written, open ? start : i, open);
        }
    }

private:
    // Below this many triangles a scan finds the continuation faster than a sorted index.
    static constexpr unsigned int kLinearLinkLimit = 16;
    static constexpr unsigned int kNone = ~0u;

    // A triangle around the vertex: the corners after and before the vertex, and the triangles
    // linked before and after it.
    struct SLink
    {
        unsigned int triangle;
        unsigned int after;
        unsigned int before;
        unsigned int next;
        unsigned int previous;
        bool visited;
    };

    void gather(const unsigned int* entries, unsigned int count, unsigned int vertex,
                const SCorners* triangles)
    {
        m_links.resize(count);
        for (unsigned int i = 0; i < count; ++i)
        {
            const SCorners& c = triangles[entries[i]];
            const unsigned int corner = c[0] == vertex ? 0 : c[1] == vertex ? 1 : 2;
            m_links[i] = {entries[i], c[(corner + 1) % 3], c[(corner + 2) % 3], kNone, kNone, false};
        }
    }

    // Triangle j continues triangle i when j starts (after the vertex) where i ends:
    // i = (v, a, b), j = (v, b, c).
    bool tryLink(unsigned int i, unsigned int j)
    {
        if (j == i || m_links[j].previous != kNone || m_links[j].after != m_links[i].before)
            return false;
        m_links[i].next = j;
        m_links[j].previous = i;
        return true;
    }

    void linkByScanning()
    {
        const auto count = static_cast<unsigned int>(m_links.size());
        for (unsigned int i = 0; i < count; ++i)
            for (unsigned int j = 0; j < count; ++j)
                if (tryLink(i, j))
                    break;
    }

    void linkBySorting()
    {
        const auto count = static_cast<unsigned int>(m_links.size());
        m_byAfter.resize(count);
        for (unsigned int i = 0; i < count; ++i)
            m_byAfter[i] = i;
        // Ties ordered by index, so that the lowest candidate comes first.
        std::sort(m_byAfter.begin(), m_byAfter.end(),
                  [&](unsigned int x, unsigned int y) {
                      return m_links[x].after < m_links[y].after ||
                             (m_links[x].after == m_links[y].after && x < y);
                  });
        for (unsigned int i = 0; i < count; ++i)
        {
            const unsigned int key = m_links[i].before;
            auto candidate = std::lower_bound(m_byAfter.begin(), m_byAfter.end(), key,
                                              [&](unsigned int x, unsigned int value)
                                              { return m_links[x].after < value; });
            for (; candidate != m_byAfter.end() && m_links[*candidate].after == key; ++candidate)
                if (tryLink(i, *candidate))
                    break;
        }
    }

    unsigned int writeFan(unsigned int* entries, unsigned int written, unsigned int start, bool open)
    {
        unsigned int flags = CVertexTriangleRelation::kFanStart;
        unsigned int link = start;
        do
        {
            entries[written++] = m_links[link].triangle | flags;
            flags = 0;
            m_links[link].visited = true;
            link = m_links[link].next;
        } while (link != kNone && link != start);
        if (open)
            entries[written - 1] |= CVertexTriangleRelation::kOpenFanEnd;
        return written;
    }

    std::vector<SLink> m_links;
    std::vector<unsigned int> m_byAfter;
};
} // namespace

void CVertexTriangleRelation::Build(unsigned int vertexCount, std::span<const SCorners> triangles)
{
    if (vertexCount == UINT_MAX || triangles.size() > kMaxTriangles)
        CB_THROW(CbExceptionMemory, "Geometry::CVertexTriangleRelation::Build",
                 std::to_string(vertexCount) + " vertices, " + std::to_string(triangles.size()) +
                     " triangles");
    SMemoryBlock<unsigned int> offsets;
    offsets.SetCount(vertexCount + 1);
    std::fill(offsets.begin(), offsets.end(), 0u);

    // Count into offsets[v + 1], so that the prefix sum leaves offsets[v] at the first slot of v.
    for (std::size_t t = 0; t < triangles.size(); ++t)
    {
        const SCorners& corners = triangles[t];
        if (corners[0] >= vertexCount || corners[1] >= vertexCount || corners[2] >= vertexCount)
            CB_THROW(CbExceptionPreconditionViolation, "Geometry::CVertexTriangleRelation::Build",
                     "triangle " + std::to_string(t) + " names a vertex past " + std::to_string(vertexCount));
        forDistinctCorners(corners, [&](unsigned int v) { ++offsets[v + 1]; });
    }
    for (unsigned int v = 0; v < vertexCount; ++v)
        offsets[v + 1] += offsets[v];

    // Place the triangles in ascending order (next[v] is the next free slot of v), then sort each
    // vertex's triangles into fans.
    SMemoryBlock<unsigned int> next(offsets);
    SMemoryBlock<unsigned int> entries;
    entries.SetCount(offsets[vertexCount]);
    for (std::size_t t = 0; t < triangles.size(); ++t)
        forDistinctCorners(triangles[t],
                           [&](unsigned int v) { entries[next[v]++] = static_cast<unsigned int>(t); });
    CFanSorter sorter;
    for (unsigned int v = 0; v < vertexCount; ++v)
        if (offsets[v + 1] > offsets[v])
            sorter.Sort(entries.GetData() + offsets[v], offsets[v + 1] - offsets[v], v, triangles.data());

    m_offsets.Swap(offsets);
    m_entries.Swap(entries);
}

void CVertexTriangleRelation::Clear()
{
    m_offsets.RemoveAll();
    m_entries.RemoveAll();
}
} // namespace Geometry
