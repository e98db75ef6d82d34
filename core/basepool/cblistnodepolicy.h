#pragma once

#include <type_traits>

// Node policies of CbListEx: how elements live in their nodes and what emptying a list does with the
// nodes. Both take their nodes from a CbPlexManager that the list owns or shares.
//
// Standard: any element type. Every element is constructed and destroyed in its node. Emptying a list
// destroys the elements one by one; a list whose plex manager nobody else shares then frees all its
// blocks, so an empty list holds no memory. Blocks start small (10 nodes) for the many short lists.
template <class T> struct CbListNodePolicyStandard
{
    static constexpr unsigned int kDefaultBlockSize = 10;
    // Emptying hands the nodes back in one step and keeps the blocks.
    static constexpr bool kKeepsBlocks = false;
};

// Optimised: for trivially copyable and destructible elements (numbers, handles, small structs).
// Elements need no destruction, so emptying a list never walks it: the whole chain goes back to the
// plex manager's free list in constant time and the blocks stay for the next fill, which then makes
// no heap call. Suited to scratch lists that are filled and emptied again and again, and to lists
// that pass nodes among each other through a shared plex manager. Blocks start at 128 nodes.
template <class T> struct CbListNodePolicyOptimized
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>,
                  "CbListNodePolicyOptimized: the element type must be trivially copyable and destructible; "
                  "use CbListNodePolicyStandard");
    static constexpr unsigned int kDefaultBlockSize = 128;
    static constexpr bool kKeepsBlocks = true;
};
