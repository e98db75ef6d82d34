#pragma once

#include "basepool/cbexception.h"
#include "basepool/cblistposition.h"
#include "basepool/cbnodelinked.h"

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

class CbListSort;

// The linking logic of the doubly linked lists, independent of where nodes come from and how elements
// are built: head, tail, count, positions, iterators, lookup and the relinking operations. Nodes are
// CbNodeLinked<T>; the head's backward and the tail's forward link are null.
template <class T> class CbListBaseIntermediate
{
public:
    using Node = CbNodeLinked<T>;
    using value_type = T;
    using size_type = unsigned int;

    // Bidirectional iterator; decrementing end() gives the tail.
    template <bool Const> class TIterator
    {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = std::conditional_t<Const, const T*, T*>;
        using reference = std::conditional_t<Const, const T&, T&>;

        TIterator() = default;
        TIterator(Node* node, const CbListBaseIntermediate* list) : m_node(node), m_list(list) {}
        // Iterator to ConstIterator.
        template <bool OtherConst, class = std::enable_if_t<Const && !OtherConst>>
        TIterator(const TIterator<OtherConst>& other) : m_node(other.GetNode()), m_list(other.GetList())
        {
        }

        reference operator*() const { return m_node->data; }
        pointer operator->() const { return &m_node->data; }
        TIterator& operator++()
        {
            m_node = m_node->pNext;
            return *this;
        }
        TIterator operator++(int)
        {
            TIterator old = *this;
            m_node = m_node->pNext;
            return old;
        }
        TIterator& operator--()
        {
            m_node = m_node ? m_node->pPrev : m_list->m_tail;
            return *this;
        }
        TIterator operator--(int)
        {
            TIterator old = *this;
            --*this;
            return old;
        }
        friend bool operator==(const TIterator& a, const TIterator& b) { return a.m_node == b.m_node; }

        CbListPosition GetPosition() const { return CbListPosition(m_node); }
        Node* GetNode() const { return m_node; }
        const CbListBaseIntermediate* GetList() const { return m_list; }

    private:
        Node* m_node = nullptr;
        const CbListBaseIntermediate* m_list = nullptr;
    };
    using Iterator = TIterator<false>;
    using ConstIterator = TIterator<true>;
    using iterator = Iterator;
    using const_iterator = ConstIterator;
    using reverse_iterator = std::reverse_iterator<Iterator>;
    using const_reverse_iterator = std::reverse_iterator<ConstIterator>;

    unsigned int GetCount() const { return m_count; }
    unsigned int GetSize() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }

    // First and last element; an empty list throws CbExceptionContainer.
    T& GetHead() { return nonEmpty("CbListBaseIntermediate::GetHead")->data; }
    const T& GetHead() const { return nonEmpty("CbListBaseIntermediate::GetHead")->data; }
    T& GetTail() { return nonEmptyTail("CbListBaseIntermediate::GetTail")->data; }
    const T& GetTail() const { return nonEmptyTail("CbListBaseIntermediate::GetTail")->data; }

    CbListPosition GetHeadPosition() const { return CbListPosition(m_head); }
    CbListPosition GetTailPosition() const { return CbListPosition(m_tail); }

    // The element at pos; pos moves on to the next (previous) element, or to no position after the
    // tail (head). A null position throws CbExceptionPreconditionViolation.
    T& GetNext(CbListPosition& pos)
    {
        Node* node = nodeAt(pos, "CbListBaseIntermediate::GetNext");
        pos = CbListPosition(node->pNext);
        return node->data;
    }
    const T& GetNext(CbListPosition& pos) const
    {
        return const_cast<CbListBaseIntermediate*>(this)->GetNext(pos);
    }
    T& GetPrev(CbListPosition& pos)
    {
        Node* node = nodeAt(pos, "CbListBaseIntermediate::GetPrev");
        pos = CbListPosition(node->pPrev);
        return node->data;
    }
    const T& GetPrev(CbListPosition& pos) const
    {
        return const_cast<CbListBaseIntermediate*>(this)->GetPrev(pos);
    }
    T& GetAt(CbListPosition pos) { return nodeAt(pos, "CbListBaseIntermediate::GetAt")->data; }
    const T& GetAt(CbListPosition pos) const { return nodeAt(pos, "CbListBaseIntermediate::GetAt")->data; }

    // Position of the first element equal to value after startAfter (from the head when startAfter is
    // no position); no position when there is none.
    CbListPosition Find(const T& value, CbListPosition startAfter = nullptr) const
    {
        Node* node = startAfter ? static_cast<Node*>(startAfter.GetNode())->pNext : m_head;
        for (; node; node = node->pNext)
            if (node->data == value)
                return CbListPosition(node);
        return nullptr;
    }
    // Position of the element with the zero-based index, walking from the nearer end; no position for
    // an index at or past the count.
    CbListPosition FindIndex(unsigned int index) const
    {
        if (index >= m_count)
            return nullptr;
        Node* node;
        if (index < m_count / 2)
            for (node = m_head; index != 0; --index)
                node = node->pNext;
        else
            for (node = m_tail, index = m_count - 1 - index; index != 0; --index)
                node = node->pPrev;
        return CbListPosition(node);
    }

    // Relinks the element at pos to the front (back) of the list.
    void MoveToHead(CbListPosition pos)
    {
        Node* node = nodeAt(pos, "CbListBaseIntermediate::MoveToHead");
        if (node != m_head)
        {
            unlink(node);
            linkHead(node);
        }
    }
    void MoveToTail(CbListPosition pos)
    {
        Node* node = nodeAt(pos, "CbListBaseIntermediate::MoveToTail");
        if (node != m_tail)
        {
            unlink(node);
            linkTail(node);
        }
    }
    // Reverses the order of the elements by relinking.
    void Reverse()
    {
        for (Node* node = m_head; node;)
        {
            Node* next = node->pNext;
            node->pNext = node->pPrev;
            node->pPrev = next;
            node = next;
        }
        std::swap(m_head, m_tail);
    }

    Iterator begin() { return Iterator(m_head, this); }
    Iterator end() { return Iterator(nullptr, this); }
    ConstIterator begin() const { return ConstIterator(m_head, this); }
    ConstIterator end() const { return ConstIterator(nullptr, this); }
    ConstIterator cbegin() const { return begin(); }
    ConstIterator cend() const { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }

    // Element-wise comparison.
    friend bool operator==(const CbListBaseIntermediate& a, const CbListBaseIntermediate& b)
    {
        if (a.m_count != b.m_count)
            return false;
        for (Node *x = a.m_head, *y = b.m_head; x; x = x->pNext, y = y->pNext)
            if (!(x->data == y->data))
                return false;
        return true;
    }

    // The nodes themselves, for algorithms over the links.
    Node* GetHeadNode() const { return m_head; }
    Node* GetTailNode() const { return m_tail; }

protected:
    CbListBaseIntermediate() = default;
    ~CbListBaseIntermediate() = default;
    CbListBaseIntermediate(const CbListBaseIntermediate&) = delete;
    CbListBaseIntermediate& operator=(const CbListBaseIntermediate&) = delete;

    static Node* nodeAt(CbListPosition pos, const char* function)
    {
        if (!pos)
            CB_THROW(CbExceptionPreconditionViolation, function);
        return static_cast<Node*>(pos.GetNode());
    }
    Node* nonEmpty(const char* function) const
    {
        if (!m_head)
            CB_THROW(CbExceptionContainer, function);
        return m_head;
    }
    Node* nonEmptyTail(const char* function) const
    {
        if (!m_tail)
            CB_THROW(CbExceptionContainer, function);
        return m_tail;
    }

    void linkHead(Node* node)
    {
        node->pPrev = nullptr;
        node->pNext = m_head;
        (m_head ? m_head->pPrev : m_tail) = node;
        m_head = node;
        ++m_count;
    }
    void linkTail(Node* node)
    {
        node->pNext = nullptr;
        node->pPrev = m_tail;
        (m_tail ? m_tail->pNext : m_head) = node;
        m_tail = node;
        ++m_count;
    }
    void linkBefore(Node* where, Node* node)
    {
        node->pNext = where;
        node->pPrev = where->pPrev;
        (where->pPrev ? where->pPrev->pNext : m_head) = node;
        where->pPrev = node;
        ++m_count;
    }
    void linkAfter(Node* where, Node* node)
    {
        node->pPrev = where;
        node->pNext = where->pNext;
        (where->pNext ? where->pNext->pPrev : m_tail) = node;
        where->pNext = node;
        ++m_count;
    }
    void unlink(Node* node)
    {
        (node->pPrev ? node->pPrev->pNext : m_head) = node->pNext;
        (node->pNext ? node->pNext->pPrev : m_tail) = node->pPrev;
        --m_count;
    }
    // Appends (prepends) the whole chain of other and leaves other empty.
    void spliceTail(CbListBaseIntermediate& other)
    {
        if (!other.m_head)
            return;
        other.m_head->pPrev = m_tail;
        (m_tail ? m_tail->pNext : m_head) = other.m_head;
        m_tail = other.m_tail;
        m_count += other.m_count;
        other.forgetNodes();
    }
    void spliceHead(CbListBaseIntermediate& other)
    {
        if (!other.m_head)
            return;
        other.m_tail->pNext = m_head;
        (m_head ? m_head->pPrev : m_tail) = other.m_tail;
        m_head = other.m_head;
        m_count += other.m_count;
        other.forgetNodes();
    }
    void takeNodes(CbListBaseIntermediate& other)
    {
        m_head = other.m_head;
        m_tail = other.m_tail;
        m_count = other.m_count;
        other.forgetNodes();
    }
    void forgetNodes()
    {
        m_head = m_tail = nullptr;
        m_count = 0;
    }

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    unsigned int m_count = 0;

private:
    friend class CbListSort;
};
