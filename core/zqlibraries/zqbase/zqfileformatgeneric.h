#pragma once

#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"

#include <cstdint>
#include <memory>
#include <vector>

class CbStreamReadBinary;
class CbStreamWriteBinary;
class ZqDependencySerializer;

// The container file of the libraries (".gen"): named entries, each a ZqDependencySerializer,
// written to and read from one file. The layout is described in docs/generic-file-format.md: a
// magic, a format version, a table of the entries with their kinds, sizes and CRC-32C checksums,
// then the entries.
//
//     ZqFileFormatGeneric file;
//     file.Add(L"scene", serializer);
//     file.Write(path);                       // a temporary file, renamed into place
//     file.Read(path);                        // replaces the content
//     std::unique_ptr<ZqDependencySerializer> scene = file.Release(L"scene");
//
// A file is untrusted input: Read refuses wrong magic, a newer format version, truncation, a
// checksum that does not match, an unknown object type, a reference to a missing object and sizes or
// counts beyond what the file holds, each with a CbExceptionWrongFileVersion naming the problem, and
// then keeps what the object held before. An entry of a kind this program does not know (written by
// a newer one) is not read but kept as it is, and written back unchanged.
class ZQBASE_API ZqFileFormatGeneric
{
public:
    static constexpr unsigned char kMagic[8] = {0x89, 'Z', 'Q', 'G', '\r', '\n', 0x1A, '\n'};
    // The newest format version; Read accepts it and every older one.
    static constexpr std::uint32_t kVersion = 1;
    // The kind of the entries that hold a ZqDependencySerializer.
    static constexpr const char* kSerializerKind = "ZqDependencySerializer";

    ZqFileFormatGeneric();
    ~ZqFileFormatGeneric();
    ZqFileFormatGeneric(ZqFileFormatGeneric&& other) noexcept;
    ZqFileFormatGeneric& operator=(ZqFileFormatGeneric&& other) noexcept;
    ZqFileFormatGeneric(const ZqFileFormatGeneric&) = delete;
    ZqFileFormatGeneric& operator=(const ZqFileFormatGeneric&) = delete;

    // Adds a copy of serializer (which shares its objects) as the entry name. Throws
    // CbExceptionPreconditionViolation when the name is taken or cannot be stored.
    void Add(const CString& name, const ZqDependencySerializer& serializer);
    void Add(const CString& name, std::unique_ptr<ZqDependencySerializer> serializer);
    // Hands the serializer of entry name over to the caller and removes the entry; null when there is
    // no such entry or it is of an unknown kind.
    std::unique_ptr<ZqDependencySerializer> Release(const CString& name);
    // The serializer of entry name, or null.
    const ZqDependencySerializer* Get(const CString& name) const;
    // The names of all entries in file order, those of unknown kinds included.
    std::vector<CString> GetNames() const;

    // Writes the file through a temporary name that is renamed into place, so that the target is
    // either the old file or the complete new one. Throws CbExceptionFile when it cannot be written,
    // CbExceptionPreconditionViolation when an entry cannot be serialized (see ZqDependencySerializer).
    void Write(const CString& path) const;
    // Replaces the content by the file's entries; CbExceptionFile when it cannot be opened.
    void Read(const CString& path);
    // The same on streams.
    void Write(CbStreamWriteBinary& stream) const;
    void Read(CbStreamReadBinary& stream);

private:
    struct SEntry;

    std::vector<SEntry> m_entries;
};
