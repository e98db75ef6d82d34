#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbplexmanager.h"
#include "basepool/cbtypename.h"
#include "zq3dbase/zqpolylinelinks.h"
#include "zq3dbase/zqpolylinevertex.h"

#include <cstddef>
#include <iterator>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

// A polyline: a doubly linked chain of vertices, open or closed (a closed polyline joins its tail
// back to its head). T is the payload; the vertex class is ZqPolylineVertexOf<T>::Type
// (ZqPolylineVertex, a position, for CbVector3f), and the Append and Insert operations pass their
// arguments to its constructor.
//
// The vertices live in the blocks of a plex manager that the polyline owns: appending costs no heap
// call in the common case, and a vertex keeps its address until it is removed, so pointers to
// vertices (the findings of the polyline filters) stay valid while the chain changes elsewhere.
//
//     ZqPolyline3D line;
//     line.AppendVertexTail(CbVector3f(0, 0, 0));
//     line.AppendVertexTail(CbVector3f(1, 0, 0));
//     line.SetClosed(true);
//     line.GetSuccessor(line.GetTailVertex()) == line.GetHeadVertex();     // true; open: null
//
// A vertex handed to an operation must belong to this polyline; a null vertex throws
// CbExceptionPreconditionViolation.
template <class T> class ZqPolyline
{
public:
    using ValueType = T;
    using Vertex = typename ZqPolylineVertexOf<T>::Type;

    // Walks the vertices from head to tail (once, also on a closed polyline).
    template <class V> class IteratorT
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = std::remove_const_t<V>;
        using difference_type = std::ptrdiff_t;
        using pointer = V*;
        using reference = V&;

        IteratorT() = default;
        explicit IteratorT(V* vertex) : m_vertex(vertex) {}
        template <class U>
        requires(std::is_const_v<V> && !std::is_const_v<U>) IteratorT(const IteratorT<U>& other)
            : m_vertex(&*other)
        {
        }

        V& operator*() const { return *m_vertex; }
        V* operator->() const { return m_vertex; }
        IteratorT& operator++()
        {
            m_vertex = m_vertex->GetNext();
            return *this;
        }
        IteratorT operator++(int)
        {
            IteratorT before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const IteratorT& a, const IteratorT& b) { return a.m_vertex == b.m_vertex; }

    private:
        V* m_vertex = nullptr;
    };
    using Iterator = IteratorT<Vertex>;
    using ConstIterator = IteratorT<const Vertex>;

    ZqPolyline() = default;
    ZqPolyline(const ZqPolyline& other) : m_closed(other.m_closed)
    {
        for (const Vertex& vertex : other)
            AppendVertexTail(vertex);
    }
    // The moved-from polyline is empty and keeps its closed flag.
    ZqPolyline(ZqPolyline&& other) noexcept
        : m_plex(std::move(other.m_plex)), m_head(std::exchange(other.m_head, nullptr)),
          m_tail(std::exchange(other.m_tail, nullptr)), m_count(std::exchange(other.m_count, 0u)),
          m_closed(other.m_closed)
    {
    }
    ZqPolyline& operator=(const ZqPolyline& other)
    {
        if (this != &other)
        {
            ZqPolyline copy(other);
            swap(copy);
        }
        return *this;
    }
    ZqPolyline& operator=(ZqPolyline&& other) noexcept
    {
        if (this != &other)
        {
            RemoveAll();
            swap(other);
        }
        return *this;
    }
    virtual ~ZqPolyline() { RemoveAll(); }

    void swap(ZqPolyline& other) noexcept
    {
        std::swap(m_plex, other.m_plex);
        std::swap(m_head, other.m_head);
        std::swap(m_tail, other.m_tail);
        std::swap(m_count, other.m_count);
        std::swap(m_closed, other.m_closed);
    }

    unsigned int GetVertexCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    bool IsClosed() const { return m_closed; }
    void SetClosed(bool closed) { m_closed = closed; }

    // Null when the polyline is empty.
    Vertex* GetHeadVertex() { return m_head; }
    const Vertex* GetHeadVertex() const { return m_head; }
    Vertex* GetTailVertex() { return m_tail; }
    const Vertex* GetTailVertex() const { return m_tail; }

    // The vertex after vertex along the polyline: its next one, or the head after the tail of a
    // closed polyline; null after the tail of an open one. A single closed vertex succeeds itself.
    Vertex* GetSuccessor(const Vertex* vertex)
    {
        return const_cast<Vertex*>(std::as_const(*this).GetSuccessor(vertex));
    }
    const Vertex* GetSuccessor(const Vertex* vertex) const
    {
        check(vertex, "GetSuccessor");
        return vertex->GetNext() ? vertex->GetNext() : (m_closed ? m_head : nullptr);
    }
    // The vertex before vertex, mirroring GetSuccessor.
    Vertex* GetPredecessor(const Vertex* vertex)
    {
        return const_cast<Vertex*>(std::as_const(*this).GetPredecessor(vertex));
    }
    const Vertex* GetPredecessor(const Vertex* vertex) const
    {
        check(vertex, "GetPredecessor");
        return vertex->GetPrev() ? vertex->GetPrev() : (m_closed ? m_tail : nullptr);
    }

    // Adds a vertex built from arguments after the tail and numbers it (count - 1).
    template <class... Args> Vertex* AppendVertexTail(Args&&... arguments)
    {
        Vertex* vertex = newVertex(std::forward<Args>(arguments)...);
        vertex->m_index = m_count;
        vertex->m_prev = m_tail;
        (m_tail ? m_tail->m_next : m_head) = vertex;
        m_tail = vertex;
        ++m_count;
        return vertex;
    }
    // Adds a vertex before the head; the indices are stale until computeIndices.
    template <class... Args> Vertex* AppendVertexHead(Args&&... arguments)
    {
        Vertex* vertex = newVertex(std::forward<Args>(arguments)...);
        vertex->m_next = m_head;
        (m_head ? m_head->m_prev : m_tail) = vertex;
        m_head = vertex;
        ++m_count;
        return vertex;
    }
    // Adds a vertex right after where; the indices are stale until computeIndices.
    template <class... Args> Vertex* InsertVertexAfter(Vertex* where, Args&&... arguments)
    {
        check(where, "InsertVertexAfter");
        if (where == m_tail)
            return AppendVertexTail(std::forward<Args>(arguments)...);
        Vertex* vertex = newVertex(std::forward<Args>(arguments)...);
        vertex->m_prev = where;
        vertex->m_next = where->m_next;
        where->m_next->m_prev = vertex;
        where->m_next = vertex;
        ++m_count;
        return vertex;
    }

    // Unlinks and destroys vertex; the indices of the later vertices are stale until computeIndices.
    void RemoveVertex(Vertex* vertex)
    {
        check(vertex, "RemoveVertex");
        (vertex->m_prev ? vertex->m_prev->m_next : m_head) = vertex->m_next;
        (vertex->m_next ? vertex->m_next->m_prev : m_tail) = vertex->m_prev;
        --m_count;
        deleteVertex(vertex);
    }
    // Removes every vertex and gives the blocks back; the closed flag stays.
    void RemoveAll()
    {
        for (Vertex* vertex = m_head; vertex;)
        {
            Vertex* next = vertex->m_next;
            vertex->~Vertex();
            vertex = next;
        }
        m_plex.FreeAll();
        m_head = m_tail = nullptr;
        m_count = 0;
    }

    // Turns the chain around: the tail becomes the head. Indices are stale until computeIndices.
    void Reverse()
    {
        for (Vertex* vertex = m_head; vertex; vertex = vertex->m_prev)
            std::swap(vertex->m_next, vertex->m_prev);
        std::swap(m_head, m_tail);
    }

    // Numbers the vertices in chain order, the head 0.
    void computeIndices()
    {
        unsigned int index = 0;
        for (Vertex* vertex = m_head; vertex; vertex = vertex->m_next)
            vertex->m_index = index++;
    }

    Iterator begin() { return Iterator(m_head); }
    Iterator end() { return Iterator(); }
    ConstIterator begin() const { return ConstIterator(m_head); }
    ConstIterator end() const { return ConstIterator(); }

private:
    static std::string functionName(const char* function)
    {
        return CbTypeNameTemplate("ZqPolyline", CbTypeName<T>::Get()) + "::" + function;
    }
    static void check(const Vertex* vertex, const char* function)
    {
        if (!vertex)
            CB_THROW(CbExceptionPreconditionViolation, functionName(function).c_str(), "null vertex");
    }

    template <class... Args> Vertex* newVertex(Args&&... arguments)
    {
        void* storage = m_plex.AllocateNode();
        try
        {
            return ::new (storage) Vertex(std::forward<Args>(arguments)...);
        }
        catch (...)
        {
            m_plex.ReleaseNode(storage);
            throw;
        }
    }
    void deleteVertex(Vertex* vertex)
    {
        vertex->~Vertex();
        m_plex.ReleaseNode(vertex);
    }

    // First block 16 vertices, growing by half each time.
    CbPlexManager<Vertex> m_plex{16};
    Vertex* m_head = nullptr;
    Vertex* m_tail = nullptr;
    unsigned int m_count = 0;
    bool m_closed = false;
};
