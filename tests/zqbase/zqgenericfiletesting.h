// Test objects for the dependency serializer and a byte builder that writes the serialized forms of
// docs/generic-file-format.md by hand, so that tests can make data the writers never produce.

#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqbase/zqcrc32c.h"
#include "zqbase/zqdependencyserializer.h"
#include "zqbase/zqobjectreference.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// A value and links to objects of any class (kind "ZqTestNodeKind", record version 2; version 1
// records hold the value only).
struct ZqTestNode
{
    // A node of this value fails in the middle of being written.
    static constexpr std::int32_t kFailsToWrite = -999;
    std::int32_t value = 0;
    std::vector<ZqObjectReference> links;
};

// Raw bytes (kind "ZqTestBlobKind").
struct ZqTestBlob
{
    std::vector<unsigned char> bytes;
};

// A class without a kind.
struct ZqTestUnregistered
{
    int value = 0;
};

// Reads bytes into target (a serializer or a container file) and expects CbExceptionWrongFileVersion
// with a message containing expected.
template <class TTarget>
void ZqExpectReadRefused(TTarget& target, const std::vector<unsigned char>& bytes,
                         const std::string& expected)
{
    CbStreamReadBinary stream(bytes);
    try
    {
        target.Read(stream);
        ADD_FAILURE() << "accepted; expected: " << expected;
    }
    catch (const CbExceptionWrongFileVersion& exception)
    {
        EXPECT_NE(std::string(exception.GetDetail()).find(expected), std::string::npos) << exception.what();
    }
}

// The bytes a serializer or container writes into memory.
template <class T> std::vector<unsigned char> written(const T& writer)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    writer.Write(stream);
    return bytes;
}

// A serializer read from bytes through a stream, which it must read to the end.
inline ZqDependencySerializer readBack(const std::vector<unsigned char>& bytes)
{
    ZqDependencySerializer serializer;
    CbStreamReadBinary stream(bytes);
    serializer.Read(stream);
    EXPECT_TRUE(stream.IsAtEnd());
    return serializer;
}

class ZqBytes
{
public:
    ZqBytes& u32(std::uint32_t value) { return raw(&value, 4); }
    ZqBytes& u64(std::uint64_t value) { return raw(&value, 8); }
    ZqBytes& text(const std::string& value)
    {
        u32(static_cast<std::uint32_t>(value.size()));
        return raw(value.data(), value.size());
    }
    ZqBytes& bytes(const std::vector<unsigned char>& value) { return raw(value.data(), value.size()); }
    ZqBytes& raw(const void* data, std::size_t size)
    {
        const auto* first = static_cast<const unsigned char*>(data);
        m_data.insert(m_data.end(), first, first + size);
        return *this;
    }
    // A record of a serializer entry: kind number, size, bytes.
    ZqBytes& record(std::uint32_t kind, const ZqBytes& content)
    {
        u32(kind).u64(content.data().size());
        return bytes(content.data());
    }
    const std::vector<unsigned char>& data() const { return m_data; }

private:
    std::vector<unsigned char> m_data;
};

struct SEntryBytes
{
    std::string name;
    std::string kind;
    std::vector<unsigned char> bytes;
};

// A whole container file with correct checksums.
inline std::vector<unsigned char> containerBytes(const std::vector<SEntryBytes>& entries,
                                                 std::uint32_t version = 1)
{
    ZqBytes table;
    for (const SEntryBytes& entry : entries)
        table.text(entry.name)
            .text(entry.kind)
            .u64(entry.bytes.size())
            .u32(ZqCrc32c::Compute(entry.bytes.data(), entry.bytes.size()));
    ZqBytes file;
    const unsigned char magic[8] = {0x89, 'Z', 'Q', 'G', '\r', '\n', 0x1A, '\n'};
    file.raw(magic, 8).u32(version).u32(static_cast<std::uint32_t>(entries.size())).u64(table.data().size());
    file.bytes(table.data());
    file.u32(ZqCrc32c::Compute(file.data().data(), file.data().size()));
    for (const SEntryBytes& entry : entries)
        file.bytes(entry.bytes);
    return file.data();
}
