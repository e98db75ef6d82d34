#pragma once

#include "basepool/cbvector3.h"

#include <algorithm>
#include <limits>

// An axis-aligned box that grows around points; empty until the first point.
struct ZqBoundingBox3f
{
    CbVector3f min{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                   std::numeric_limits<float>::max()};
    CbVector3f max{-std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(),
                   -std::numeric_limits<float>::max()};

    bool IsEmpty() const { return min.x > max.x || min.y > max.y || min.z > max.z; }
    void Extend(const CbVector3f& p)
    {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }
    void Extend(const ZqBoundingBox3f& box)
    {
        if (!box.IsEmpty())
        {
            Extend(box.min);
            Extend(box.max);
        }
    }
    CbVector3f GetCenter() const { return (min + max) * 0.5f; }
    // Corner i (bit 0: x, bit 1: y, bit 2: z; a set bit takes max).
    CbVector3f GetCorner(unsigned int i) const
    {
        return {(i & 1) ? max.x : min.x, (i & 2) ? max.y : min.y, (i & 4) ? max.z : min.z};
    }
};
