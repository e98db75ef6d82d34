#include "zqbase/zqfileformatgeneric.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqbase/zqcheckedname.h"
#include "zqbase/zqcrc32c.h"
#include "zqbase/zqdependencyserializer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <unordered_set>

// Layout (little-endian; text is a 32-bit byte count and UTF-8):
//   0       8  magic
//   8       4  format version
//   12      4  entry count
//   16      8  table size T
//   24      T  per entry: text name, text kind, u64 size, u32 CRC-32C of the entry's bytes
//   24+T    4  CRC-32C of bytes 0 .. 24+T
//   28+T       the entries' bytes back to back in table order; the file ends after the last
// The table's checksum is verified before anything in it is believed, each entry's before it is
// parsed, so corruption is reported as such rather than read as data.

struct ZqFileFormatGeneric::SEntry
{
    CString name;
    CString kind;
    // Null for an entry of a kind this program does not know; its bytes are then kept as read.
    std::unique_ptr<ZqDependencySerializer> serializer;
    std::vector<unsigned char> bytes;
};

namespace
{
constexpr const char* kReadFunction = "ZqFileFormatGeneric::Read";
constexpr std::uint64_t kHeaderSize = 24;
// Two empty texts, a size and a checksum: the least an entry takes in the table.
constexpr std::uint64_t kMinimumTableEntry = 4 + 4 + 8 + 4;

[[noreturn]] void refuse(const std::string& detail)
{
    CB_THROW(CbExceptionWrongFileVersion, kReadFunction, detail);
}

// Reads size bytes that must be there; the message names what they were meant to be.
std::vector<unsigned char> readBytes(CbStreamReadBinary& stream, std::uint64_t size, const std::string& what)
{
    if (size > stream.GetRemaining())
        refuse("the file ends inside " + what + ": " + std::to_string(size) + " bytes needed, " +
               std::to_string(stream.GetRemaining()) + " left");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    try
    {
        stream.Read(bytes.data(), bytes.size());
    }
    catch (const CbExceptionWrongFileVersion&)
    {
        refuse("the file ends inside " + what);
    }
    return bytes;
}

template <class T> T take(const std::vector<unsigned char>& bytes, std::size_t offset)
{
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

struct STableEntry
{
    CString name;
    CString kind;
    std::uint64_t size = 0;
    std::uint32_t checksum = 0;
};

std::vector<STableEntry> readTable(CbStreamReadBinary& stream)
{
    // A short file of another kind is told apart from a truncated container by its first bytes.
    constexpr std::uint64_t magicSize = sizeof(ZqFileFormatGeneric::kMagic);
    std::vector<unsigned char> header =
        readBytes(stream, std::min(magicSize, stream.GetRemaining()), "the header");
    if (header.empty())
        refuse("the file is empty");
    if (std::memcmp(header.data(), ZqFileFormatGeneric::kMagic, header.size()) != 0)
        refuse("not a generic container file (wrong magic)");
    if (header.size() < magicSize)
        refuse("the file ends inside the header");
    const std::vector<unsigned char> rest = readBytes(stream, kHeaderSize - magicSize, "the header");
    header.insert(header.end(), rest.begin(), rest.end());
    const auto version = take<std::uint32_t>(header, 8);
    if (version == 0 || version > ZqFileFormatGeneric::kVersion)
        refuse("format version " + std::to_string(version) + " is not one of 1 to " +
               std::to_string(ZqFileFormatGeneric::kVersion) + " that this program reads");
    const auto count = take<std::uint32_t>(header, 12);
    const auto tableSize = take<std::uint64_t>(header, 16);
    if (count > tableSize / kMinimumTableEntry)
        refuse(std::to_string(count) + " entries cannot fit into an entry table of " +
               std::to_string(tableSize) + " bytes");

    const std::vector<unsigned char> table = readBytes(stream, tableSize, "the entry table");
    const std::vector<unsigned char> stored = readBytes(stream, 4, "the entry table's checksum");
    const std::uint32_t checksum =
        ZqCrc32c::Compute(table.data(), table.size(), ZqCrc32c::Compute(header.data(), header.size()));
    if (take<std::uint32_t>(stored, 0) != checksum)
        refuse("the header or entry table is corrupt (checksum mismatch)");

    CbStreamReadBinary tableStream(table);
    std::vector<STableEntry> entries(count);
    std::unordered_set<std::wstring> names;
    for (STableEntry& entry : entries)
    {
        entry.name = ZqCheckedName::Read(tableStream, kReadFunction, "entry name");
        entry.kind = ZqCheckedName::Read(tableStream, kReadFunction, "entry kind");
        tableStream.Read(entry.size);
        tableStream.Read(entry.checksum);
        if (!names.insert(entry.name.Std()).second)
            refuse("entry " + ZqCheckedName::Quote(entry.name) + " appears twice");
    }
    if (!tableStream.IsAtEnd())
        refuse("the entry table has " + std::to_string(tableStream.GetRemaining()) +
               " bytes after its last entry");
    return entries;
}

// Checks the sizes of the table against the rest of the file before any entry is allocated.
void checkSizes(const std::vector<STableEntry>& table, std::uint64_t remaining)
{
    std::uint64_t total = 0;
    for (const STableEntry& entry : table)
    {
        if (entry.size > remaining - total)
            refuse("entry " + ZqCheckedName::Quote(entry.name) + " claims " + std::to_string(entry.size) +
                   " bytes, more than the file holds");
        total += entry.size;
    }
    // A pipe reports no size; trailing bytes are found after the last entry there.
    if (remaining != std::numeric_limits<std::uint64_t>::max() && total != remaining)
        refuse(std::to_string(remaining - total) + " bytes follow the last entry");
}

std::unique_ptr<ZqDependencySerializer> parseSerializer(const STableEntry& entry,
                                                        const std::vector<unsigned char>& bytes)
{
    auto serializer = std::make_unique<ZqDependencySerializer>();
    try
    {
        serializer->Read(bytes.data(), bytes.size());
    }
    catch (const CbExceptionWrongFileVersion& exception)
    {
        refuse("entry " + ZqCheckedName::Quote(entry.name) + ": " + exception.GetDetail());
    }
    return serializer;
}

void writeText(std::vector<unsigned char>& buffer, const CString& text)
{
    CbStreamWriteBinary stream(buffer);
    stream.Write(text);
}
} // namespace

ZqFileFormatGeneric::ZqFileFormatGeneric() = default;
ZqFileFormatGeneric::~ZqFileFormatGeneric() = default;
ZqFileFormatGeneric::ZqFileFormatGeneric(ZqFileFormatGeneric&& other) noexcept = default;
ZqFileFormatGeneric& ZqFileFormatGeneric::operator=(ZqFileFormatGeneric&& other) noexcept = default;

void ZqFileFormatGeneric::Add(const CString& name, const ZqDependencySerializer& serializer)
{
    Add(name, std::make_unique<ZqDependencySerializer>(serializer));
}

void ZqFileFormatGeneric::Add(const CString& name, std::unique_ptr<ZqDependencySerializer> serializer)
{
    constexpr const char* function = "ZqFileFormatGeneric::Add";
    ZqCheckedName::Require(name, function, "entry name");
    if (!serializer)
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "entry " + ZqCheckedName::Quote(name) + " gets no serializer");
    if (std::any_of(m_entries.begin(), m_entries.end(),
                    [&](const SEntry& entry) { return entry.name == name; }))
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "entry " + ZqCheckedName::Quote(name) + " already exists");
    m_entries.push_back({name, CString(kSerializerKind), std::move(serializer), {}});
}

std::unique_ptr<ZqDependencySerializer> ZqFileFormatGeneric::Release(const CString& name)
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [&](const SEntry& entry) { return entry.name == name && entry.serializer; });
    if (found == m_entries.end())
        return nullptr;
    std::unique_ptr<ZqDependencySerializer> serializer = std::move(found->serializer);
    m_entries.erase(found);
    return serializer;
}

const ZqDependencySerializer* ZqFileFormatGeneric::Get(const CString& name) const
{
    for (const SEntry& entry : m_entries)
        if (entry.name == name)
            return entry.serializer.get();
    return nullptr;
}

std::vector<CString> ZqFileFormatGeneric::GetNames() const
{
    std::vector<CString> names;
    for (const SEntry& entry : m_entries)
        names.push_back(entry.name);
    return names;
}

void ZqFileFormatGeneric::Write(CbStreamWriteBinary& stream) const
{
    // Every entry is serialized before the first byte goes out, so a failing one writes nothing.
    std::vector<std::vector<unsigned char>> serialized;
    std::vector<unsigned char> table;
    for (const SEntry& entry : m_entries)
    {
        const std::vector<unsigned char>* bytes = &entry.bytes;
        if (entry.serializer)
        {
            entry.serializer->Write(serialized.emplace_back());
            bytes = &serialized.back();
        }
        writeText(table, entry.name);
        writeText(table, entry.kind);
        CbStreamWriteBinary tableStream(table);
        tableStream.Write(std::uint64_t(bytes->size()));
        tableStream.Write(ZqCrc32c::Compute(bytes->data(), bytes->size()));
    }

    std::vector<unsigned char> header;
    CbStreamWriteBinary headerStream(header);
    headerStream.Write(kMagic, sizeof(kMagic));
    headerStream.Write(kVersion);
    headerStream.WriteCount(static_cast<std::uint32_t>(m_entries.size()));
    headerStream.Write(std::uint64_t(table.size()));
    stream.Write(header.data(), header.size());
    stream.Write(table.data(), table.size());
    stream.Write(
        ZqCrc32c::Compute(table.data(), table.size(), ZqCrc32c::Compute(header.data(), header.size())));

    std::size_t next = 0;
    for (const SEntry& entry : m_entries)
    {
        const std::vector<unsigned char>& bytes = entry.serializer ? serialized[next++] : entry.bytes;
        stream.Write(bytes.data(), bytes.size());
    }
}

void ZqFileFormatGeneric::Read(CbStreamReadBinary& stream)
{
    const std::vector<STableEntry> table = readTable(stream);
    checkSizes(table, stream.GetRemaining());

    std::vector<SEntry> entries;
    entries.reserve(table.size());
    for (const STableEntry& tableEntry : table)
    {
        SEntry& entry = entries.emplace_back();
        entry.name = tableEntry.name;
        entry.kind = tableEntry.kind;
        entry.bytes = readBytes(stream, tableEntry.size, "entry " + ZqCheckedName::Quote(tableEntry.name));
        if (ZqCrc32c::Compute(entry.bytes.data(), entry.bytes.size()) != tableEntry.checksum)
            refuse("entry " + ZqCheckedName::Quote(tableEntry.name) + " is corrupt (checksum mismatch)");
        if (CbWideToUtf8(tableEntry.kind.Std()) == kSerializerKind)
        {
            entry.serializer = parseSerializer(tableEntry, entry.bytes);
            entry.bytes = {};
        }
    }
    if (!stream.IsAtEnd())
        refuse("the file goes on after its last entry");
    m_entries.swap(entries);
}

void ZqFileFormatGeneric::Write(const CString& path) const
{
    CbStreamWriteBinary stream(CbWideToUtf8(path.Std()));
    Write(stream);
    stream.Close();
}

void ZqFileFormatGeneric::Read(const CString& path)
{
    const std::string file = CbWideToUtf8(path.Std());
    CbStreamReadBinary stream(file);
    try
    {
        Read(stream);
    }
    catch (const CbExceptionWrongFileVersion& exception)
    {
        throw CbExceptionWrongFileVersion(exception.GetFile(), exception.GetLine(), exception.GetFunction(),
                                          file + ": " + exception.GetDetail());
    }
}
