#include "zq3dbase/zqftconvexhull2d.h"

#include "basepool/cbarraypolicyconstructuninitialized.h"
#include "basepool/cbexception.h"
#include "zq3dbase/zqorientation2d.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace
{
using CKeys = CbArrayEx<std::uint64_t, CbArrayPolicyConstructUninitialized>;
using CPoints = CbArrayEx<CbVector2f, CbArrayPolicyConstructUninitialized>;

// Below this many points the extreme-point filter costs more than it saves.
constexpr unsigned int kFilterThreshold = 64;
// From this many keys on a radix sort beats std::sort.
constexpr unsigned int kRadixSortThreshold = 4096;

// The bits of f mapped so that unsigned order is float order, -0 taken as +0.
std::uint32_t orderedBits(float f)
{
    if (f == 0.0f)
        f = 0.0f;
    std::uint32_t bits;
    std::memcpy(&bits, &f, sizeof(bits));
    return (bits & 0x80000000u) ? ~bits : (bits | 0x80000000u);
}

float fromOrderedBits(std::uint32_t key)
{
    const std::uint32_t bits = (key & 0x80000000u) ? (key & 0x7FFFFFFFu) : ~key;
    float f;
    std::memcpy(&f, &bits, sizeof(f));
    return f;
}

// A point as one 64-bit key that sorts by x, then y; keys of equal points are equal.
std::uint64_t toKey(const CbVector2f& p)
{
    return (std::uint64_t(orderedBits(p.x)) << 32) | orderedBits(p.y);
}

CbVector2f fromKey(std::uint64_t key)
{
    return {fromOrderedBits(static_cast<std::uint32_t>(key >> 32)),
            fromOrderedBits(static_cast<std::uint32_t>(key))};
}

// Sorts keys[0 .. count-1] ascending: least significant digit first radix sort in 8-bit digits,
// skipping the digits that all keys share. buffer holds count keys; returns where the result lies
// (keys or buffer).
std::uint64_t* radixSort(std::uint64_t* keys, std::uint64_t* buffer, unsigned int count)
{
    constexpr int kDigitBits = 8;
    constexpr int kDigits = (64 + kDigitBits - 1) / kDigitBits;
    constexpr unsigned int kBuckets = 1u << kDigitBits;
    std::vector<unsigned int> histograms(kDigits * kBuckets, 0);
    for (unsigned int i = 0; i < count; ++i)
        for (int d = 0; d < kDigits; ++d)
            ++histograms[d * kBuckets + ((keys[i] >> (d * kDigitBits)) & (kBuckets - 1))];
    std::uint64_t* from = keys;
    std::uint64_t* to = buffer;
    for (int d = 0; d < kDigits; ++d)
    {
        unsigned int* histogram = histograms.data() + d * kBuckets;
        const int shift = d * kDigitBits;
        if (histogram[(from[0] >> shift) & (kBuckets - 1)] == count)
            continue;
        unsigned int offset = 0;
        for (unsigned int b = 0; b < kBuckets; ++b)
            offset += std::exchange(histogram[b], offset);
        for (unsigned int i = 0; i < count; ++i)
            to[histogram[(from[i] >> shift) & (kBuckets - 1)]++] = from[i];
        std::swap(from, to);
    }
    return from;
}

// The points extreme in the eight directions of the axes and diagonals, in counter-clockwise
// order of the directions: min x, min x+y, min y, max x-y, max x, max x+y, max y, min x-y. Throws
// for a point with a coordinate that is not finite.
void findExtremes(const CbArray<CbVector2f>& points, CbVector2f extremes[8])
{
    const auto measures = [](const CbVector2f& p, float m[8])
    {
        m[0] = p.x, m[1] = p.x + p.y, m[2] = p.y, m[3] = p.y - p.x;
        m[4] = -p.x, m[5] = -p.x - p.y, m[6] = -p.y, m[7] = p.x - p.y;
    };
    // First the smallest measures (a loop without branches), then the first point attaining each.
    float smallest[8];
    measures(points[0], smallest);
    bool finite = true;
    for (const CbVector2f& p : points)
    {
        float m[8];
        measures(p, m);
        for (int d = 0; d < 8; ++d)
            smallest[d] = std::min(smallest[d], m[d]);
        finite &= std::fabs(p.x) <= FLT_MAX && std::fabs(p.y) <= FLT_MAX;
    }
    unsigned int missing = 8;
    bool found[8] = {};
    for (unsigned int i = 0; i < points.GetCount() && (missing || !finite); ++i)
    {
        const CbVector2f& p = points[i];
        if (!(std::fabs(p.x) <= FLT_MAX && std::fabs(p.y) <= FLT_MAX))
            CB_THROW(CbExceptionPreconditionViolation, "ZqFtConvexHull2D::Compute",
                     "point " + std::to_string(i) + " has a coordinate that is not finite");
        float m[8];
        measures(p, m);
        for (int d = 0; d < 8; ++d)
            if (!found[d] && m[d] == smallest[d])
            {
                found[d] = true;
                extremes[d] = p;
                --missing;
            }
    }
}

// Discards points that lie certainly inside the polygon of the extreme points. A point strictly
// left of every edge of a closed polygon of input points is interior to their convex hull
// (otherwise the polygon would wind around a point outside it), so it is no corner and lies on no
// hull edge; this holds even where rounding left the polygon not quite convex.
class CInteriorFilter
{
public:
    explicit CInteriorFilter(const CbVector2f extremes[8])
    {
        for (int k = 0; k < 8; ++k)
        {
            if (m_count == 0 || !(extremes[k] == m_polygon[m_count - 1]))
                m_polygon[m_count++] = extremes[k];
            m_firstEdge[k] = m_count - 1;
        }
        while (m_count > 1 && m_polygon[m_count - 1] == m_polygon[0])
            --m_count;
        for (unsigned int& edge : m_firstEdge)
            edge = edge % std::max(m_count, 1u);
        m_center = {(extremes[0].x + extremes[4].x) * 0.5f, (extremes[2].y + extremes[6].y) * 0.5f};
        if (m_count >= 3)
            findBox(extremes);
    }

    // False when the polygon is degenerate: nothing can be certainly inside.
    bool IsUseful() const { return m_count >= 3; }

    bool IsInside(const CbVector2f& p) const
    {
        if (p.x > m_box[0].x && p.x < m_box[1].x && p.y > m_box[0].y && p.y < m_box[1].y)
            return true;
        // Start with the edge facing p's direction from the center: a point outside the polygon
        // usually fails there at once.
        const float dx = p.x - m_center.x, dy = p.y - m_center.y;
        const bool steep = std::fabs(dy) > std::fabs(dx);
        const unsigned int octant = dy < 0 ? (dx < 0 ? (steep ? 1 : 0) : (steep ? 2 : 3))
                                           : (dx > 0 ? (steep ? 5 : 4) : (steep ? 6 : 7));
        unsigned int i = m_firstEdge[octant];
        for (unsigned int n = 0; n < m_count; ++n)
        {
            const unsigned int next = i + 1 == m_count ? 0 : i + 1;
            if (ZqOrientation2D::FilteredSign(m_polygon[i], m_polygon[next], p) != 1)
                return false;
            i = next;
        }
        return true;
    }

private:
    bool isInsideEdges(const CbVector2f& p) const
    {
        for (unsigned int i = 0, j = m_count - 1; i < m_count; j = i++)
            if (ZqOrientation2D::FilteredSign(m_polygon[j], m_polygon[i], p) != 1)
                return false;
        return true;
    }

    // An axis-parallel box inside the polygon for a quick test: the box between the diagonal
    // extremes, shrunk until its corners are certainly inside (then all of it is: the points
    // strictly left of every edge form a convex set).
    void findBox(const CbVector2f extremes[8])
    {
        const float x0 = std::max(extremes[1].x, extremes[7].x), x1 = std::min(extremes[3].x, extremes[5].x);
        const float y0 = std::max(extremes[1].y, extremes[3].y), y1 = std::min(extremes[5].y, extremes[7].y);
        if (!(x0 < x1 && y0 < y1))
            return;
        const float cx = 0.5f * (x0 + x1), cy = 0.5f * (y0 + y1), hx = 0.5f * (x1 - x0),
                    hy = 0.5f * (y1 - y0);
        for (float shrink : {0.999f, 0.99f, 0.9f, 0.7f, 0.5f})
        {
            const CbVector2f low(cx - shrink * hx, cy - shrink * hy),
                high(cx + shrink * hx, cy + shrink * hy);
            if (isInsideEdges(low) && isInsideEdges(high) && isInsideEdges({low.x, high.y}) &&
                isInsideEdges({high.x, low.y}))
            {
                m_box[0] = low;
                m_box[1] = high;
                return;
            }
        }
    }

    CbVector2f m_polygon[8];
    unsigned int m_count = 0;
    // Per direction octant, the edge of the polygon that starts at that octant's extreme point.
    unsigned int m_firstEdge[8] = {};
    CbVector2f m_center;
    // Empty unless a box inside the polygon was found.
    CbVector2f m_box[2] = {{1, 1}, {0, 0}};
};

// Appends p to the chain hull[0 .. count-1] after removing the chain's last points that would make
// a clockwise or straight turn; bottom is the number of chain points that must stay.
unsigned int pushConvex(CbVector2f* hull, unsigned int count, unsigned int bottom, const CbVector2f& p)
{
    while (count > bottom && ZqOrientation2D::Sign(hull[count - 2], hull[count - 1], p) <= 0)
        --count;
    hull[count] = p;
    return count + 1;
}

// The keys take -0 for +0, so a corner with a zero coordinate may have come back with the other sign:
// such corners are replaced by the first input point equal to them. A strictly convex polygon has at
// most two corners on each axis, so this is one pass over the input for at most four corners.
void restoreSignedZeros(const CbArray<CbVector2f>& input, CbVector2f* hull, unsigned int count)
{
    unsigned int zeros[4];
    unsigned int missing = 0;
    for (unsigned int i = 0; i < count && missing < 4; ++i)
        if (hull[i].x == 0.0f || hull[i].y == 0.0f)
            zeros[missing++] = i;
    for (unsigned int i = 0; i < input.GetCount() && missing > 0; ++i)
        for (unsigned int k = 0; k < missing; ++k)
            if (input[i] == hull[zeros[k]])
            {
                hull[zeros[k]] = input[i];
                zeros[k] = zeros[--missing];
                break;
            }
}
} // namespace

void ZqFtConvexHull2D::Compute(CbArray<CbVector2f>& points)
{
    const unsigned int n = points.GetCount();
    if (n == 0)
        return;
    CbVector2f extremes[8];
    findExtremes(points, extremes);
    const CInteriorFilter filter(extremes);
    const bool filtering = n >= kFilterThreshold && filter.IsUseful();

    CKeys keys;
    keys.SetCount(n);
    unsigned int m = 0;
    for (const CbVector2f& p : points)
        if (!filtering || !filter.IsInside(p))
            keys[m++] = toKey(p);
    std::uint64_t* sorted = keys.GetData();
    CKeys buffer;
    if (m >= kRadixSortThreshold)
    {
        buffer.SetCount(m);
        sorted = radixSort(keys.GetData(), buffer.GetData(), m);
    }
    else
        std::sort(sorted, sorted + m);
    m = static_cast<unsigned int>(std::unique(sorted, sorted + m) - sorted);

    // Andrew's monotone chain. A point strictly above the line from the leftmost to the rightmost
    // point can only be on the upper chain, one strictly below only on the lower chain, one on the
    // line on neither; so each chain sees only its own side.
    CPoints hull;
    hull.SetCount(m + 1);
    CPoints above;
    above.SetCount(m);
    unsigned int count = 0;
    const CbVector2f left = fromKey(sorted[0]);
    const CbVector2f right = fromKey(sorted[m - 1]);
    if (m == 1)
        hull[count++] = left;
    else
    {
        unsigned int upper = 0;
        count = pushConvex(hull.GetData(), count, 1, left);
        for (unsigned int i = 1; i + 1 < m; ++i)
        {
            const CbVector2f p = fromKey(sorted[i]);
            const int side = ZqOrientation2D::Sign(left, right, p);
            if (side < 0)
                count = pushConvex(hull.GetData(), count, 1, p);
            else if (side > 0)
                above[upper++] = p;
        }
        count = pushConvex(hull.GetData(), count, 1, right);
        const unsigned int lower = count;
        while (upper > 0)
            count = pushConvex(hull.GetData(), count, lower, above[--upper]);
        // Closing the chain at the leftmost point removes the upper chain's straight end; the
        // leftmost point itself is the lower chain's first.
        count = pushConvex(hull.GetData(), count, lower, left) - 1;
    }

    restoreSignedZeros(points, hull.GetData(), count);
    points.SetCount(count);
    std::copy_n(hull.GetData(), count, points.GetData());
}
