#include "zq3dbase/zqvertextrianglerelation.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace
{
constexpr unsigned int kNone = 0xFFFFFFFFu;
// Up to this many triangles around a vertex, successors are found by scanning; above it through
// sorted keys, so that a vertex of very high valence costs O(k log k) rather than O(k^2).
constexpr unsigned int kScanLimit = 16;

// Orders the k entries of one vertex into fans (see the class comment). The scratch arrays are
// reused from vertex to vertex, so the pass allocates only for the largest valence seen.
class CFanSorter
{
public:
    void Sort(unsigned int* entries, unsigned int k, unsigned int vertex, const ZqTriangleCorners* triangles)
    {
        prepare(entries, k, vertex, triangles);
        unsigned int written = 0;
        // Open fans first. At a non-manifold edge a triangle's predecessor may already belong to
        // another fan; such a triangle starts a fan of its own before any triangle that follows it,
        // so that its run is not cut in two. Whatever is left are closed fans.
        for (bool progress = true; progress;)
        {
            progress = false;
            for (unsigned int s = 0; s < k; ++s)
                if (!m_visited[s] && !hasUnvisitedPredecessor(s))
                {
                    written = chain(s, written);
                    progress = true;
                }
        }
        for (unsigned int s = 0; s < k; ++s)
            if (!m_visited[s])
                written = chain(s, written);
        std::memcpy(entries, m_out.data(), k * sizeof(unsigned int));
    }

private:
    void prepare(const unsigned int* entries, unsigned int k, unsigned int vertex,
                 const ZqTriangleCorners* triangles)
    {
        m_k = k;
        if (m_triangle.size() < k)
        {
            m_triangle.resize(k);
            m_next.resize(k);
            m_previous.resize(k);
            m_visited.resize(k);
            m_out.resize(k);
        }
        for (unsigned int i = 0; i < k; ++i)
        {
            const ZqTriangleCorners& t = triangles[entries[i]];
            const unsigned int corner = t[0] == vertex ? 0u : (t[1] == vertex ? 1u : 2u);
            m_triangle[i] = entries[i];
            m_next[i] = t[corner == 2 ? 0 : corner + 1];
            m_previous[i] = t[corner == 0 ? 2 : corner - 1];
            m_visited[i] = 0;
        }
        m_indexed = k > kScanLimit;
        if (!m_indexed)
            return;
        m_byNext.resize(k);
        m_byPrevious.resize(k);
        for (unsigned int i = 0; i < k; ++i)
        {
            m_byNext[i] = {m_next[i], i};
            m_byPrevious[i] = {m_previous[i], i};
        }
        std::sort(m_byNext.begin(), m_byNext.end());
        std::sort(m_byPrevious.begin(), m_byPrevious.end());
    }

    // Some triangle not yet in a fan ends where triangle i starts (its previous corner is i's next
    // corner).
    bool hasUnvisitedPredecessor(unsigned int i) const
    {
        const unsigned int key = m_next[i];
        if (!m_indexed)
        {
            for (unsigned int j = 0; j < m_k; ++j)
                if (!m_visited[j] && m_previous[j] == key)
                    return true;
            return false;
        }
        for (auto it = std::lower_bound(m_byPrevious.begin(), m_byPrevious.end(), std::make_pair(key, 0u));
             it != m_byPrevious.end() && it->first == key; ++it)
            if (!m_visited[it->second])
                return true;
        return false;
    }

    // An unvisited triangle that starts where triangle i ends, or kNone.
    unsigned int successor(unsigned int i) const
    {
        const unsigned int key = m_previous[i];
        if (!m_indexed)
        {
            for (unsigned int j = 0; j < m_k; ++j)
                if (!m_visited[j] && m_next[j] == key)
                    return j;
            return kNone;
        }
        for (auto it = std::lower_bound(m_byNext.begin(), m_byNext.end(), std::make_pair(key, 0u));
             it != m_byNext.end() && it->first == key; ++it)
            if (!m_visited[it->second])
                return it->second;
        return kNone;
    }

    unsigned int chain(unsigned int start, unsigned int written)
    {
        unsigned int last = start;
        for (unsigned int i = start; i != kNone; i = successor(i))
        {
            m_visited[i] = 1;
            m_out[written++] = m_triangle[i];
            last = i;
        }
        const bool closed = m_next[start] == m_previous[last];
        m_out[written - 1] |=
            ZqVertexTriangleRelation::kFanEnd | (closed ? ZqVertexTriangleRelation::kFanClosed : 0u);
        return written;
    }

    unsigned int m_k = 0;
    bool m_indexed = false;
    std::vector<unsigned int> m_triangle, m_next, m_previous, m_out;
    std::vector<unsigned char> m_visited;
    std::vector<std::pair<unsigned int, unsigned int>> m_byNext, m_byPrevious;
};
} // namespace

void ZqVertexTriangleRelation::Compute(unsigned int vertexCount, std::span<const ZqTriangleCorners> triangles)
{
    Clear();
    if (triangles.size() > kMaxTriangles)
        CB_THROW(CbExceptionPreconditionViolation, "ZqVertexTriangleRelation::Compute",
                 std::to_string(triangles.size()) + " triangles exceed the relation's limit of " +
                     std::to_string(kMaxTriangles));
    m_offsets.SetCount(vertexCount + 1);
    std::memset(m_offsets.GetData(), 0, m_offsets.GetCount() * sizeof(unsigned int));
    m_entries.SetCount(static_cast<unsigned int>(triangles.size() * 3));
    fill(triangles);
    sortIntoFans(triangles);
    m_valid = true;
}

void ZqVertexTriangleRelation::Clear()
{
    m_offsets.RemoveAll();
    m_entries.RemoveAll();
    m_valid = false;
}

// Counting sort of the corners by vertex: afterwards each vertex's entries hold its triangles in
// ascending order.
void ZqVertexTriangleRelation::fill(std::span<const ZqTriangleCorners> triangles)
{
    unsigned int* offsets = m_offsets.GetData();
    const unsigned int vertexCount = m_offsets.GetCount() - 1;
    for (const ZqTriangleCorners& t : triangles)
    {
        ++offsets[t[0]];
        ++offsets[t[1]];
        ++offsets[t[2]];
    }
    // Exclusive prefix sum: offsets[v] becomes the first entry of v, used as its write cursor.
    unsigned int sum = 0;
    for (unsigned int v = 0; v <= vertexCount; ++v)
        sum += std::exchange(offsets[v], sum);
    unsigned int* entries = m_entries.GetData();
    const auto count = static_cast<unsigned int>(triangles.size());
    for (unsigned int t = 0; t < count; ++t)
    {
        entries[offsets[triangles[t][0]]++] = t;
        entries[offsets[triangles[t][1]]++] = t;
        entries[offsets[triangles[t][2]]++] = t;
    }
    // Each cursor now stands at the end of its vertex, which is the start of the next one.
    std::memmove(offsets + 1, offsets, vertexCount * sizeof(unsigned int));
    offsets[0] = 0;
}

void ZqVertexTriangleRelation::sortIntoFans(std::span<const ZqTriangleCorners> triangles)
{
    CFanSorter sorter;
    const unsigned int* offsets = m_offsets.GetData();
    unsigned int* entries = m_entries.GetData();
    const unsigned int vertexCount = m_offsets.GetCount() - 1;
    for (unsigned int v = 0; v < vertexCount; ++v)
    {
        const unsigned int k = offsets[v + 1] - offsets[v];
        if (k == 1)
            entries[offsets[v]] |= kFanEnd;
        else if (k > 1)
            sorter.Sort(entries + offsets[v], k, v, triangles.data());
    }
}

bool ZqVertexTriangleRelation::IsBorder(unsigned int v) const
{
    for (const unsigned int entry : GetEntries(v))
        if ((entry & (kFanEnd | kFanClosed)) == kFanEnd)
            return true;
    return false;
}

unsigned int ZqVertexTriangleRelation::GetFanCount(unsigned int v) const
{
    unsigned int fans = 0;
    for (const unsigned int entry : GetEntries(v))
        fans += (entry & kFanEnd) ? 1u : 0u;
    return fans;
}
