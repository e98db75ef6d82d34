#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "zq3dbase/cbtriangleref.h"
#include "zq3dbase/cbvertexref.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <string>
#include <type_traits>

// Walks the one-ring of a centre vertex: the triangles around it (TRef = CbTriangleRef) or the
// vertices around it (TRef = CbVertexRef), in the fan order of the vertex-triangle relation, which
// the triangulation must have (ComputeVertexTriangleRelationship).
//
// TCounterClockwise: true walks counter-clockwise seen from the side the triangles face, false
//   clockwise.
// TAllFans: false walks one fan, the one holding the start triangle (or the vertex's first fan),
//   as a circulator: a closed fan comes back to its start (IsAtStart) and goes round again, an open
//   fan ends (IsEnd) after its border element. true walks every fan of the vertex once, the start
//   fan first, and ends after the last one; this visits every triangle of a non-manifold vertex.
//
// An open fan is always walked from border to border, so a walk never misses part of it; the
// start triangle only chooses the fan and, in a closed fan, the first element. For the vertices,
// each step yields the vertex on the edge shared with the triangle visited before, and an open fan
// of k triangles yields k + 1 vertices (both border vertices), a closed one k:
//
//     centre c, fan t0 = (c, a0, a1), t1 = (c, a1, a2), open:
//       <CbTriangleRef, true, ...>:  t0, t1      <CbVertexRef, true, ...>:  a0, a1, a2
//       <CbTriangleRef, false, ...>: t1, t0      <CbVertexRef, false, ...>: a2, a1, a0
//
//     for (ZqTriangulationIteratorOneRing<CbVertexRef, true, false> it(t, centre); !it.IsEnd();)
//     {
//         use(*it);
//         if ((++it).IsAtStart())
//             break;
//     }
//
// Failures: constructing without a relation or with a centre that is not a vertex throws
// CbExceptionPreconditionViolation; getCornerIndex of a triangle that does not touch the centre
// (also a start triangle) throws CbException.
template <class TRef, bool TCounterClockwise, bool TAllFans> class ZqTriangulationIteratorOneRing
{
    static_assert(std::is_same_v<TRef, CbVertexRef> || std::is_same_v<TRef, CbTriangleRef>);

public:
    ZqTriangulationIteratorOneRing(const ZqTriangulationBase& triangulation, CbVertexRef centre)
        : m_triangulation(triangulation), m_centre(centre.GetIndex())
    {
        bind();
        m_startFan = 0;
        m_startOffset = 0;
        Reset();
    }
    ZqTriangulationIteratorOneRing(const ZqTriangulationBase& triangulation, CbVertexRef centre,
                                   CbTriangleRef start)
        : m_triangulation(triangulation), m_centre(centre.GetIndex())
    {
        bind();
        getCornerIndex(start);
        for (unsigned int i = 0; i < m_entryCount; ++i)
            if ((m_entries[i] & ZqVertexTriangleRelation::kTriangleMask) == start.GetIndex())
            {
                m_startFan = fanBegin(i);
                m_startOffset = i - m_startFan;
            }
        Reset();
    }

    // Back to the start element.
    void Reset()
    {
        m_end = m_entryCount == 0;
        m_fansLeft = m_end ? 0 : (TAllFans ? fanCount() : 1);
        enterFan(m_startFan);
    }

    bool IsEnd() const { return m_end; }
    // At the start element: right after Reset, and after each full round of a closed fan.
    bool IsAtStart() const { return !m_end && m_fan == m_startFan && m_element == 0; }
    // The current fan is open and the walk stands on its last element or has ended after it.
    bool IsBorder() const
    {
        return m_entryCount > 0 && !m_fanClosed && (m_end || m_element + 1 == elementCount());
    }
    // The current fan closes around the centre.
    bool IsClosed() const { return m_fanClosed; }

    CbVertexRef GetCentre() const { return CbVertexRef(m_centre); }
    // The triangle the walk stands on (for the extra border vertex of an open fan, the last triangle).
    CbTriangleRef GetTriangle() const
    {
        return CbTriangleRef(m_entries[entryIndex()] & ZqVertexTriangleRelation::kTriangleMask);
    }
    TRef Get() const
    {
        if constexpr (std::is_same_v<TRef, CbTriangleRef>)
            return GetTriangle();
        else
        {
            const CbTriangleRef triangle = GetTriangle();
            const unsigned int corner = getCornerIndex(triangle);
            // Counter-clockwise yields the corner after the centre, clockwise the one before; the
            // extra border element of an open fan takes the other one.
            const bool after = TCounterClockwise != isExtraElement();
            const ZqTriangleCorners& corners = m_triangulation.GetTriangles()[triangle.GetIndex()];
            return CbVertexRef(
                corners[after ? (corner == 2 ? 0 : corner + 1) : (corner == 0 ? 2 : corner - 1)]);
        }
    }
    TRef operator*() const { return Get(); }

    ZqTriangulationIteratorOneRing& operator++()
    {
        if (m_end)
            return *this;
        if (++m_element < elementCount())
            return *this;
        if (m_fanClosed && !TAllFans)
            m_element = 0;
        else if (--m_fansLeft > 0)
            enterFan(nextFan(m_fan));
        else
            m_end = true;
        return *this;
    }

    // The corner (0, 1 or 2) of triangle whose vertex is the centre, testing corner 0, then 1, then 2.
    unsigned int getCornerIndex(CbTriangleRef triangle) const
    {
        const auto triangles = m_triangulation.GetTriangles();
        if (triangle.GetIndex() < triangles.size())
        {
            const ZqTriangleCorners& corners = triangles[triangle.GetIndex()];
            for (unsigned int corner = 0; corner < 3; ++corner)
                if (corners[corner] == m_centre)
                    return corner;
        }
        CB_THROW(CbException, (functionName() + "::getCornerIndex").c_str(),
                 "triangle " + std::to_string(triangle.GetIndex()) + " does not touch vertex " +
                     std::to_string(m_centre));
    }

private:
    static std::string functionName()
    {
        return CbTypeNameTemplate("ZqTriangulationIteratorOneRing", CbTypeName<TRef>::Get(),
                                  TCounterClockwise ? "1" : "0", TAllFans ? "1" : "0");
    }

    void bind()
    {
        const ZqVertexTriangleRelation& relation = m_triangulation.GetVertexTriangleRelationship();
        if (!m_triangulation.HasVertexTriangleRelationship() || m_centre >= relation.GetVertexCount())
            CB_THROW(CbExceptionPreconditionViolation,
                     (functionName() + "::ZqTriangulationIteratorOneRing").c_str(),
                     "no vertex-triangle relation, or centre " + std::to_string(m_centre) +
                         " is not a vertex");
        const auto entries = relation.GetEntries(m_centre);
        m_entries = entries.data();
        m_entryCount = static_cast<unsigned int>(entries.size());
    }

    // First entry of the fan that holds entry i.
    unsigned int fanBegin(unsigned int i) const
    {
        while (i > 0 && !(m_entries[i - 1] & ZqVertexTriangleRelation::kFanEnd))
            --i;
        return i;
    }
    unsigned int nextFan(unsigned int begin) const
    {
        while (!(m_entries[begin] & ZqVertexTriangleRelation::kFanEnd))
            ++begin;
        return begin + 1 == m_entryCount ? 0 : begin + 1;
    }
    unsigned int fanCount() const
    {
        unsigned int fans = 0;
        for (unsigned int i = 0; i < m_entryCount; ++i)
            fans += (m_entries[i] & ZqVertexTriangleRelation::kFanEnd) ? 1u : 0u;
        return fans;
    }
    void enterFan(unsigned int begin)
    {
        m_fan = begin;
        m_element = 0;
        if (m_end)
        {
            m_fanSize = 0;
            m_fanClosed = false;
            return;
        }
        unsigned int last = begin;
        while (!(m_entries[last] & ZqVertexTriangleRelation::kFanEnd))
            ++last;
        m_fanSize = last - begin + 1;
        m_fanClosed = (m_entries[last] & ZqVertexTriangleRelation::kFanClosed) != 0;
    }

    unsigned int elementCount() const
    {
        return m_fanSize + (std::is_same_v<TRef, CbVertexRef> && !m_fanClosed ? 1u : 0u);
    }
    bool isExtraElement() const { return m_element == m_fanSize; }
    // The entry of the current element: closed fans run from the start offset (in the start fan)
    // round the fan, open fans from border to border.
    unsigned int entryIndex() const
    {
        if (m_fanClosed)
        {
            const unsigned int offset = m_fan == m_startFan ? m_startOffset : 0;
            const unsigned int step = TCounterClockwise ? m_element : m_fanSize - m_element;
            return m_fan + (offset + step) % m_fanSize;
        }
        const unsigned int along = isExtraElement() ? m_fanSize - 1 : m_element;
        return m_fan + (TCounterClockwise ? along : m_fanSize - 1 - along);
    }

    const ZqTriangulationBase& m_triangulation;
    unsigned int m_centre;
    const unsigned int* m_entries = nullptr;
    unsigned int m_entryCount = 0;
    unsigned int m_startFan = 0;
    unsigned int m_startOffset = 0;
    unsigned int m_fan = 0;
    unsigned int m_fanSize = 0;
    bool m_fanClosed = false;
    unsigned int m_element = 0;
    unsigned int m_fansLeft = 0;
    bool m_end = true;
};
