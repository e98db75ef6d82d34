#pragma once

#include "basepool/cblistbaseintermediate.h"
#include "basepool/cblistnodepolicy.h"
#include "basepool/cbplexmanager.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>

// Doubly linked list whose nodes come from a plex manager, with a choice of node policy
// (CbListNodePolicyStandard or CbListNodePolicyOptimized). Building a list makes a heap call only
// when the manager needs a new block; positions and iterators stay valid until their element is
// removed. The manager is created with the first node, or shared with other lists:
//
//     auto plex = CbMakeSharedPlexManager<CbNodeLinked<int>>(256u);
//     CbListEx<int, CbListNodePolicyOptimized<int>> a(plex), b(plex);
//     a.AddTail(std::move(b));   // same manager: relinks, copies nothing
template <class T, class NodePolicy = CbListNodePolicyStandard<T>>
class CbListEx : public CbListBaseIntermediate<T>
{
    using Base = CbListBaseIntermediate<T>;
    using typename Base::Node;
    static_assert(offsetof(Node, pNext) == 0,
                  "the forward link must be the free-list link of the plex manager");

public:
    using PlexManager = CbPlexManager<Node>;
    using typename Base::ConstIterator;
    using typename Base::Iterator;

    // A list with a plex manager of its own, whose first block holds blockSize nodes.
    explicit CbListEx(unsigned int blockSize = NodePolicy::kDefaultBlockSize) : m_blockSize(blockSize)
    {
        if (blockSize == 0)
            CB_THROW(CbExceptionPreconditionViolation, "CbListEx::CbListEx");
    }
    // A list that takes its nodes from a shared plex manager; null throws CbExceptionPreconditionViolation.
    explicit CbListEx(std::shared_ptr<PlexManager> plexManager) : m_plex(std::move(plexManager))
    {
        if (!m_plex)
            CB_THROW(CbExceptionPreconditionViolation, "CbListEx::CbListEx");
        m_blockSize = m_plex->GetBlockSize();
    }
    CbListEx(std::initializer_list<T> values) : CbListEx()
    {
        for (const T& value : values)
            AddTail(value);
    }
    // A copy has a plex manager of its own with the block size of other's.
    CbListEx(const CbListEx& other) : m_blockSize(other.m_blockSize) { AddTail(other); }
    // Takes other's nodes and plex manager; other is left empty without one.
    CbListEx(CbListEx&& other) noexcept : m_plex(std::move(other.m_plex)), m_blockSize(other.m_blockSize)
    {
        this->takeNodes(other);
    }
    CbListEx& operator=(const CbListEx& other)
    {
        if (this != &other)
        {
            RemoveAll();
            AddTail(other);
        }
        return *this;
    }
    CbListEx& operator=(CbListEx&& other) noexcept
    {
        if (this != &other)
        {
            RemoveAll();
            m_plex = std::move(other.m_plex);
            m_blockSize = other.m_blockSize;
            this->takeNodes(other);
        }
        return *this;
    }
    ~CbListEx() { RemoveAll(); }

    template <class... Args> CbListPosition EmplaceHead(Args&&... args)
    {
        Node* node = newNode(std::forward<Args>(args)...);
        this->linkHead(node);
        return CbListPosition(node);
    }
    template <class... Args> CbListPosition EmplaceTail(Args&&... args)
    {
        Node* node = newNode(std::forward<Args>(args)...);
        this->linkTail(node);
        return CbListPosition(node);
    }
    CbListPosition AddHead(const T& value) { return EmplaceHead(value); }
    CbListPosition AddHead(T&& value) { return EmplaceHead(std::move(value)); }
    CbListPosition AddTail(const T& value) { return EmplaceTail(value); }
    CbListPosition AddTail(T&& value) { return EmplaceTail(std::move(value)); }

    // Appends copies of other's elements (other may be this list).
    void AddTail(const CbListEx& other)
    {
        unsigned int count = other.m_count;
        for (Node* node = other.m_head; count != 0; node = node->pNext, --count)
            AddTail(node->data);
    }
    // Prepends copies of other's elements, keeping their order.
    void AddHead(const CbListEx& other)
    {
        unsigned int count = other.m_count;
        for (Node* node = other.m_tail; count != 0; node = node->pPrev, --count)
            AddHead(node->data);
    }
    // Appends (prepends) other's elements and empties other: relinked when both lists share a plex
    // manager, moved element by element otherwise.
    void AddTail(CbListEx&& other)
    {
        if (&other == this)
            return;
        if (sharesNodesWith(other))
            this->spliceTail(other);
        else
        {
            for (Node* node = other.m_head; node; node = node->pNext)
                AddTail(std::move(node->data));
            other.RemoveAll();
        }
    }
    void AddHead(CbListEx&& other)
    {
        if (&other == this)
            return;
        if (sharesNodesWith(other))
            this->spliceHead(other);
        else
        {
            for (Node* node = other.m_tail; node; node = node->pPrev)
                AddHead(std::move(node->data));
            other.RemoveAll();
        }
    }

    // A new element before (after) pos; with no position, at the head (tail).
    CbListPosition InsertBefore(CbListPosition pos, const T& value)
    {
        if (!pos)
            return AddHead(value);
        Node* node = newNode(value);
        this->linkBefore(static_cast<Node*>(pos.GetNode()), node);
        return CbListPosition(node);
    }
    CbListPosition InsertAfter(CbListPosition pos, const T& value)
    {
        if (!pos)
            return AddTail(value);
        Node* node = newNode(value);
        this->linkAfter(static_cast<Node*>(pos.GetNode()), node);
        return CbListPosition(node);
    }

    void SetAt(CbListPosition pos, const T& value) { this->GetAt(pos) = value; }

    // Removes and returns the first (last) element; an empty list throws CbExceptionContainer.
    T RemoveHead()
    {
        Node* node = this->nonEmpty("CbListEx::RemoveHead");
        T value(std::move(node->data));
        this->unlink(node);
        deleteNode(node);
        return value;
    }
    T RemoveTail()
    {
        Node* node = this->nonEmptyTail("CbListEx::RemoveTail");
        T value(std::move(node->data));
        this->unlink(node);
        deleteNode(node);
        return value;
    }
    // Removes the element at pos; a null position throws CbExceptionPreconditionViolation.
    void RemoveAt(CbListPosition pos)
    {
        Node* node = Base::nodeAt(pos, "CbListEx::RemoveAt");
        this->unlink(node);
        deleteNode(node);
    }
    // Removes the element of it and returns the iterator to the one after it.
    Iterator Erase(Iterator it)
    {
        Node* node = it.GetNode();
        Iterator next(node->pNext, this);
        this->unlink(node);
        deleteNode(node);
        return next;
    }

    // Removes every element (see the node policies for what happens to the nodes).
    void RemoveAll()
    {
        if (!this->m_head)
            return;
        if constexpr (NodePolicy::kKeepsBlocks)
            m_plex->ReleaseChain(this->m_head, this->m_tail);
        else
        {
            const bool sole = m_plex.use_count() == 1;
            for (Node* node = this->m_head; node;)
            {
                Node* next = node->pNext;
                if (sole)
                    node->~Node();
                else
                    deleteNode(node);
                node = next;
            }
            if (sole)
                m_plex->FreeAll();
        }
        this->forgetNodes();
    }

    // The plex manager of this list's nodes (created here if the list has none yet), e.g. to share
    // it with another list or to tune its growth.
    const std::shared_ptr<PlexManager>& GetPlexManager()
    {
        plex();
        return m_plex;
    }
    unsigned int GetBlockSize() const { return m_blockSize; }

private:
    PlexManager& plex()
    {
        if (!m_plex)
            m_plex = std::make_shared<PlexManager>(m_blockSize);
        return *m_plex;
    }
    bool sharesNodesWith(const CbListEx& other) const { return m_plex && m_plex == other.m_plex; }

    template <class... Args> Node* newNode(Args&&... args)
    {
        PlexManager& manager = plex();
        void* raw = manager.AllocateNode();
        try
        {
            return ::new (raw) Node(std::in_place, std::forward<Args>(args)...);
        }
        catch (...)
        {
            manager.ReleaseNode(raw);
            throw;
        }
    }
    void deleteNode(Node* node)
    {
        node->~Node();
        m_plex->ReleaseNode(node);
    }

    std::shared_ptr<PlexManager> m_plex;
    unsigned int m_blockSize = NodePolicy::kDefaultBlockSize;
};
