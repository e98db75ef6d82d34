#pragma once

// The links every vertex class of a polyline carries: its neighbours in chain order and the index
// that ZqPolyline::computeIndices gives it. A vertex class derives from ZqPolylineLinks<itself>.
//
// Copying a vertex copies what it holds, never its links: a copy belongs to no chain until a
// polyline links it in.
template <class Vertex> class ZqPolylineLinks
{
public:
    // The neighbours in chain order; null past the head and the tail, also on a closed polyline
    // (ZqPolyline::GetSuccessor and GetPredecessor wrap around).
    Vertex* GetNext() { return m_next; }
    const Vertex* GetNext() const { return m_next; }
    Vertex* GetPrev() { return m_prev; }
    const Vertex* GetPrev() const { return m_prev; }
    // Position in chain order (head 0); valid after computeIndices and for vertices appended at
    // the tail since.
    unsigned int GetIndex() const { return m_index; }

protected:
    ZqPolylineLinks() = default;
    ZqPolylineLinks(const ZqPolylineLinks&) noexcept {}
    ZqPolylineLinks& operator=(const ZqPolylineLinks&) noexcept { return *this; }
    ~ZqPolylineLinks() = default;

private:
    template <class> friend class ZqPolyline;

    Vertex* m_next = nullptr;
    Vertex* m_prev = nullptr;
    unsigned int m_index = 0;
};

// The vertex class of ZqPolyline<T>: each payload type names its own (ZqPolylineVertex for
// CbVector3f). A payload without one does not compile.
template <class T> struct ZqPolylineVertexOf;
