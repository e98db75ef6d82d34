#pragma once

#include "zq3dbase/zqpolylinetriangulation.h"

#include <utility>
#include <vector>

// The holes handed to a hole filler: the rims of the holes, each a ZqPolylineTriangulation, in the
// order they were added (AddTail copies or moves a rim; a copy stays bound to the rim's
// triangulation).
class ZqPolylineTriangulationList
{
public:
    void AddTail(const ZqPolylineTriangulation& rim) { m_rims.push_back(rim); }
    void AddTail(ZqPolylineTriangulation&& rim) { m_rims.push_back(std::move(rim)); }
    void RemoveAll() { m_rims.clear(); }
    unsigned int GetCount() const { return static_cast<unsigned int>(m_rims.size()); }
    bool IsEmpty() const { return m_rims.empty(); }

    auto begin() const { return m_rims.begin(); }
    auto end() const { return m_rims.end(); }

private:
    std::vector<ZqPolylineTriangulation> m_rims;
};
