#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbplexmanager.h"

#include <iterator>
#include <new>
#include <utility>

// First-in first-out queue of elements in singly linked nodes from a plex manager of its own: pushing
// and popping reuse nodes through the manager's free list, so a queue in steady use makes no heap
// calls. Popping an empty queue throws CbExceptionContainer; TryPop is the non-throwing form.
template <class T> class CbQueue
{
    struct SNode
    {
        SNode* pNext;
        T data;

        template <class... Args>
        explicit SNode(std::in_place_t, Args&&... args) : pNext(nullptr), data(std::forward<Args>(args)...)
        {
        }
    };

public:
    // Forward iterator from the front (the next to pop) to the back.
    class ConstIterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        ConstIterator() = default;
        explicit ConstIterator(const SNode* node) : m_node(node) {}
        reference operator*() const { return m_node->data; }
        pointer operator->() const { return &m_node->data; }
        ConstIterator& operator++()
        {
            m_node = m_node->pNext;
            return *this;
        }
        ConstIterator operator++(int)
        {
            ConstIterator old = *this;
            m_node = m_node->pNext;
            return old;
        }
        friend bool operator==(const ConstIterator& a, const ConstIterator& b)
        {
            return a.m_node == b.m_node;
        }

    private:
        const SNode* m_node = nullptr;
    };

    // blockSize: nodes of the first block of the queue's plex manager; 0 throws CbExceptionContainer.
    explicit CbQueue(unsigned int blockSize = 10) : m_plex(blockSize) {}
    CbQueue(const CbQueue& other) : m_plex(other.m_plex.GetBlockSize())
    {
        for (const T& value : other)
            Push(value);
    }
    CbQueue(CbQueue&& other) noexcept
        : m_plex(std::move(other.m_plex)), m_head(std::exchange(other.m_head, nullptr)),
          m_tail(std::exchange(other.m_tail, nullptr)), m_count(std::exchange(other.m_count, 0u))
    {
    }
    CbQueue& operator=(const CbQueue& other)
    {
        if (this != &other)
        {
            RemoveAll();
            for (const T& value : other)
                Push(value);
        }
        return *this;
    }
    CbQueue& operator=(CbQueue&& other) noexcept
    {
        if (this != &other)
        {
            RemoveAll();
            m_plex = std::move(other.m_plex);
            m_head = std::exchange(other.m_head, nullptr);
            m_tail = std::exchange(other.m_tail, nullptr);
            m_count = std::exchange(other.m_count, 0u);
        }
        return *this;
    }
    ~CbQueue() { RemoveAll(); }

    unsigned int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }

    // Appends an element at the back and returns it.
    template <class... Args> T& Emplace(Args&&... args)
    {
        void* raw = m_plex.AllocateNode();
        SNode* node;
        try
        {
            node = ::new (raw) SNode(std::in_place, std::forward<Args>(args)...);
        }
        catch (...)
        {
            m_plex.ReleaseNode(raw);
            throw;
        }
        (m_tail ? m_tail->pNext : m_head) = node;
        m_tail = node;
        ++m_count;
        return node->data;
    }
    void Push(const T& value) { Emplace(value); }
    void Push(T&& value) { Emplace(std::move(value)); }

    // Removes and returns the front element.
    T Pop()
    {
        if (!m_head)
            CB_THROW(CbExceptionContainer, "CbQueue::Pop");
        T value(std::move(m_head->data));
        popFront();
        return value;
    }
    // Moves the front element into value and removes it; false (value untouched) when empty.
    bool TryPop(T& value)
    {
        if (!m_head)
            return false;
        value = std::move(m_head->data);
        popFront();
        return true;
    }

    // The element popped next, and the one pushed last; an empty queue throws CbExceptionContainer.
    T& Front() { return nonEmpty("CbQueue::Front")->data; }
    const T& Front() const { return nonEmpty("CbQueue::Front")->data; }
    T& Back()
    {
        nonEmpty("CbQueue::Back");
        return m_tail->data;
    }
    const T& Back() const
    {
        nonEmpty("CbQueue::Back");
        return m_tail->data;
    }

    // Destroys every element and frees the manager's blocks.
    void RemoveAll()
    {
        for (SNode* node = m_head; node;)
        {
            SNode* next = node->pNext;
            node->~SNode();
            node = next;
        }
        m_head = m_tail = nullptr;
        m_count = 0;
        m_plex.FreeAll();
    }

    // The queue's node allocator, e.g. to see how many blocks it holds.
    const CbPlexManager<SNode>& GetPlexManager() const { return m_plex; }

    ConstIterator begin() const { return ConstIterator(m_head); }
    ConstIterator end() const { return ConstIterator(nullptr); }

private:
    SNode* nonEmpty(const char* function) const
    {
        if (!m_head)
            CB_THROW(CbExceptionContainer, function);
        return m_head;
    }
    void popFront()
    {
        SNode* node = m_head;
        m_head = node->pNext;
        if (!m_head)
            m_tail = nullptr;
        --m_count;
        node->~SNode();
        m_plex.ReleaseNode(node);
    }

    CbPlexManager<SNode> m_plex;
    SNode* m_head = nullptr;
    SNode* m_tail = nullptr;
    unsigned int m_count = 0;
};
