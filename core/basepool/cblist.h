#pragma once

#include "basepool/cblistex.h"

// The linked list for any element type: CbListEx with the standard node policy.
template <class T> using CbList = CbListEx<T, CbListNodePolicyStandard<T>>;
