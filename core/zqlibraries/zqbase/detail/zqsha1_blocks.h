#pragma once

// Block functions of ZqSHA1, internal to zqbase (detail/): each folds `blocks` 64-byte blocks at data into
// the five state words.

#include <cstddef>
#include <cstdint>

void ZqSha1BlocksPortable(std::uint32_t state[5], const unsigned char* data, std::size_t blocks);

// Uses the x86 SHA extensions; call it only when ZqSha1CpuHasShaExtensions() is true.
void ZqSha1BlocksShaExtensions(std::uint32_t state[5], const unsigned char* data, std::size_t blocks);
bool ZqSha1CpuHasShaExtensions();
