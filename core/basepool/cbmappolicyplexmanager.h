#pragma once

#include "basepool/cbplexmanager.h"

#include <new>
#include <type_traits>
#include <utility>

// Node allocation of the hashed containers: associations are built in nodes of a plex manager that
// the container owns (first block 128 nodes, growth factor 1.5 unless set otherwise).
template <class Association> class CbMapPolicyPlexManager
{
public:
    using PlexManager = CbPlexManager<Association>;
    static constexpr unsigned int kDefaultBlockSize = 128;
    // Emptying the container need not visit the nodes one by one.
    static constexpr bool kTrivialNodes = std::is_trivially_destructible_v<Association>;

    explicit CbMapPolicyPlexManager(unsigned int blockSize = kDefaultBlockSize) : m_plex(blockSize) {}

    template <class... Args> Association* NewNode(Args&&... args)
    {
        void* raw = m_plex.AllocateNode();
        try
        {
            return ::new (raw) Association(std::in_place, std::forward<Args>(args)...);
        }
        catch (...)
        {
            m_plex.ReleaseNode(raw);
            throw;
        }
    }
    void DeleteNode(Association* node)
    {
        node->~Association();
        m_plex.ReleaseNode(node);
    }
    // Destroys one node without giving it back, ahead of FreeAll.
    static void DestroyNode(Association* node) { node->~Association(); }
    // Frees every block; the nodes' associations must be destroyed already (or trivial).
    void FreeAll() { m_plex.FreeAll(); }

    PlexManager& GetPlexManager() { return m_plex; }
    const PlexManager& GetPlexManager() const { return m_plex; }

private:
    PlexManager m_plex;
};
