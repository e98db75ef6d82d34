#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Internal to zqbase, as everything under detail/: not part of the library's interface. ZqMD5 and
// ZqSHA1 hold one by value, which is why their headers include it.
//
// The input side of the 64-byte-block digests (MD5, SHA-1): collects bytes into whole blocks for
// the digest's compression function, counts them, and appends the closing padding (0x80, zeros up
// to 56 bytes into a block, the bit length in the digest's byte order).
//
// compress is called as compress(const unsigned char* blocks, std::size_t count) with count >= 1.
class ZqDigestInput
{
public:
    static constexpr std::size_t kBlockSize = 64;

    enum ELengthOrder
    {
        eLO_LittleEndian, // MD5
        eLO_BigEndian     // SHA-1
    };

    void Reset()
    {
        m_length = 0;
        m_buffered = 0;
    }

    template <class Compress> void Update(const void* data, std::size_t length, Compress&& compress)
    {
        if (length == 0)
            return;
        const auto* bytes = static_cast<const unsigned char*>(data);
        m_length += length;
        if (m_buffered)
        {
            const std::size_t take = std::min(length, kBlockSize - m_buffered);
            std::memcpy(m_buffer + m_buffered, bytes, take);
            m_buffered += take;
            bytes += take;
            length -= take;
            if (m_buffered < kBlockSize)
                return;
            compress(static_cast<const unsigned char*>(m_buffer), std::size_t(1));
            m_buffered = 0;
        }
        const std::size_t blocks = length / kBlockSize;
        if (blocks)
            compress(bytes, blocks);
        bytes += blocks * kBlockSize;
        length -= blocks * kBlockSize;
        std::memcpy(m_buffer, bytes, length);
        m_buffered = length;
    }

    // Pads the input and compresses the last block(s); the digest's state then holds the result.
    template <class Compress> void Finish(ELengthOrder order, Compress&& compress)
    {
        const std::uint64_t bits = m_length * 8;
        unsigned char tail[2 * kBlockSize] = {0x80};
        const std::size_t padding = (m_buffered < 56 ? 56 : 120) - m_buffered;
        for (int i = 0; i < 8; ++i)
            tail[padding + i] =
                static_cast<unsigned char>(bits >> (order == eLO_LittleEndian ? 8 * i : 56 - 8 * i));
        Update(tail, padding + 8, compress);
    }

private:
    std::uint64_t m_length = 0; // bytes given to Update
    unsigned char m_buffer[kBlockSize];
    std::size_t m_buffered = 0; // bytes of m_buffer in use
};
