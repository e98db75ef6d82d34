#include "zq3dbase/zqftconvexhull2d.h"

#include "basepool/cbarraypolicyconstructuninitialized.h"
#include "basepool/cbexception.h"
#include "zq3dbase/zqorientation2d.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

namespace
{
using CKeys = CbArrayEx<std::uint64_t, CbArrayPolicyConstructUninitialized>;
using CPoints = CbArrayEx<CbVector2f, CbArrayPolicyConstructUninitialized>;

// Below this many points the extreme-point filter costs more than it saves.
constexpr unsigned int kFilterThreshold = 64;

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

// The polygon of the points extreme in the eight directions of the axes and diagonals, in
// counter-clockwise order of the directions, consecutive repeats removed. Throws for a point with
// a coordinate that is not finite.
unsigned int extremePolygon(const CbArray<CbVector2f>& points, CbVector2f polygon[8])
{
    // Extremes of x, x + y, y, x - y, in the order min x, min x+y, min y, max x-y, max x, max x+y,
    // max y, min x-y.
    unsigned int extreme[8] = {};
    double value[8] = {};
    for (unsigned int i = 0; i < points.GetCount(); ++i)
    {
        const CbVector2f& p = points[i];
        if (!std::isfinite(p.x) || !std::isfinite(p.y))
            CB_THROW(CbExceptionPreconditionViolation, "ZqFtConvexHull2D::Compute",
                     "point " + std::to_string(i) + " has a coordinate that is not finite");
        const double x = p.x, y = p.y;
        // Each direction as the value to minimise.
        const double measure[8] = {x, x + y, y, y - x, -x, -x - y, -y, x - y};
        for (int d = 0; d < 8; ++d)
            if (i == 0 || measure[d] < value[d])
            {
                value[d] = measure[d];
                extreme[d] = i;
            }
    }
    unsigned int count = 0;
    for (unsigned int index : extreme)
        if (count == 0 || !(points[index] == polygon[count - 1]))
            polygon[count++] = points[index];
    while (count > 1 && polygon[count - 1] == polygon[0])
        --count;
    return count;
}

// True when p lies certainly inside the closed polygon, i.e. strictly left of each of its edges.
// A point strictly left of every edge of a closed polygon of input points is interior to their
// convex hull (otherwise the polygon would wind around a point outside it), so it is no corner and
// lies on no hull edge.
bool isInside(const CbVector2f* polygon, unsigned int count, const CbVector2f& p)
{
    for (unsigned int i = 0, j = count - 1; i < count; j = i++)
        if (ZqOrientation2D::FilteredSign(polygon[j], polygon[i], p) != 1)
            return false;
    return true;
}

// Appends p to the chain hull[0 .. count-1] after removing the chain's last points that would make
// a clockwise or straight turn; bottom is the number of chain points that must stay.
unsigned int pushConvex(CbVector2f* hull, unsigned int count, unsigned int bottom, const CbVector2f& p)
{
    while (count > bottom && ZqOrientation2D::Sign(hull[count - 2], hull[count - 1], p) <= 0)
        --count;
    hull[count] = p;
    return count + 1;
}
} // namespace

void ZqFtConvexHull2D::Compute(CbArray<CbVector2f>& points)
{
    const unsigned int n = points.GetCount();
    if (n == 0)
        return;
    CbVector2f polygon[8];
    const unsigned int corners = extremePolygon(points, polygon);
    const bool filter = n >= kFilterThreshold && corners >= 3;

    CKeys keys;
    keys.SetCount(n);
    unsigned int m = 0;
    for (const CbVector2f& p : points)
        if (!filter || !isInside(polygon, corners, p))
            keys[m++] = toKey(p);
    std::sort(keys.begin(), keys.begin() + m);
    m = static_cast<unsigned int>(std::unique(keys.begin(), keys.begin() + m) - keys.begin());

    CPoints hull;
    hull.SetCount(m == 1 ? 1 : 2 * m);
    unsigned int count = 0;
    if (m == 1)
        hull[count++] = fromKey(keys[0]);
    else
    {
        // Lower chain from left to right, then upper chain back; the last point repeats the first.
        for (unsigned int i = 0; i < m; ++i)
            count = pushConvex(hull.GetData(), count, 1, fromKey(keys[i]));
        const unsigned int lower = count;
        for (unsigned int i = m - 1; i-- > 0;)
            count = pushConvex(hull.GetData(), count, lower, fromKey(keys[i]));
        --count;
    }

    points.SetCount(count);
    std::copy_n(hull.GetData(), count, points.GetData());
}
