#include "zqbase/zqdependencyserializer.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbtypename.h"
#include "zqbase/zqcheckedname.h"
#include "zqbase/zqobjectkind.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <new>
#include <optional>
#include <span>
#include <typeindex>
#include <utility>

// The serialized form (little-endian; text is a 32-bit byte count and UTF-8):
//   u32 layout version
//   u32 kind count,   per kind:   text registered kind name, u32 the kind's record version
//   u32 object count, per object: u32 kind number, u64 record size, the record
//   u32 key count,    per key:    text key, u32 object number
// Objects are numbered from 0 in the order written; a record refers to other objects by their
// numbers (0xFFFFFFFF: no object), always to earlier ones, so reading never has to look ahead or
// recurse. docs/generic-file-format.md shows an example.

namespace
{
constexpr std::uint32_t kNoObject = 0xFFFFFFFFu;
constexpr const char* kWriteFunction = "ZqDependencySerializer::Write";
constexpr const char* kReadFunction = "ZqDependencySerializer::Read";

std::string typeName(const std::type_info* type)
{
    return type ? CbDemangledTypeName(*type) : std::string("(none)");
}

[[noreturn]] void refuse(const std::string& detail)
{
    CB_THROW(CbExceptionWrongFileVersion, kReadFunction, detail);
}

// The objects of one Write in the order they are written: everything an object refers to comes
// before it. Objects are identified by address and class.
class GraphWriter
{
public:
    void Collect(const CString& key, const ZqObjectReference& root);
    // stream appends to buffer; each record's size is filled in once the record is written.
    void WriteKindsAndObjects(CbStreamWriteBinary& stream, std::vector<unsigned char>& buffer) const;
    std::uint32_t GetNumber(const ZqObjectReference& object) const { return m_numbers.at(identity(object)); }

private:
    using Identity = std::pair<const void*, std::type_index>;
    static constexpr std::uint32_t kInProgress = 0xFFFFFFFEu;

    struct SFrame
    {
        ZqObjectReference object;
        std::uint32_t kind;
        std::vector<ZqObjectReference> references;
        std::size_t next = 0;
    };
    struct SObject
    {
        ZqObjectReference object;
        std::uint32_t kind;
        std::uint32_t height; // 1 + the largest height of the objects it refers to
    };

    class RecordWriter final : public ZqObjectWriter
    {
    public:
        RecordWriter(CbStreamWriteBinary& stream, const GraphWriter& graph, std::uint32_t number)
            : ZqObjectWriter(stream), m_graph(graph), m_number(number)
        {
        }
        void WriteReference(const ZqObjectReference& object) override
        {
            GetStream().Write(object ? m_graph.numberOf(object, m_number) : kNoObject);
        }

    private:
        const GraphWriter& m_graph;
        std::uint32_t m_number;
    };

    static Identity identity(const ZqObjectReference& object)
    {
        return {object.GetAddress(), *object.GetType()};
    }
    [[noreturn]] static void throwTooDeep(const CString& key)
    {
        CB_THROW(CbExceptionPreconditionViolation, kWriteFunction,
                 "the references below key " + ZqCheckedName::Quote(key) + " are nested deeper than " +
                     std::to_string(ZqDependencySerializer::kMaxDepth) + " levels");
    }
    void enter(const CString& key, const ZqObjectReference& object, std::vector<SFrame>& stack);
    std::uint32_t kindOf(const ZqObjectReference& object);
    std::uint32_t numberOf(const ZqObjectReference& object, std::uint32_t writer) const;

    std::vector<std::unique_ptr<ZqObjectKind>> m_kinds;
    std::map<std::type_index, std::uint32_t> m_kindNumbers;
    std::vector<SObject> m_objects;
    std::map<Identity, std::uint32_t> m_numbers;
};

void GraphWriter::Collect(const CString& key, const ZqObjectReference& root)
{
    // Depth-first without recursion, so that a long chain of references cannot exhaust the stack.
    std::vector<SFrame> stack;
    enter(key, root, stack);
    while (!stack.empty())
    {
        SFrame& top = stack.back();
        if (top.next < top.references.size())
        {
            const ZqObjectReference next = top.references[top.next++];
            enter(key, next, stack);
            continue;
        }
        std::uint32_t height = 1;
        for (const ZqObjectReference& reference : top.references)
            if (reference)
                height = std::max(height, m_objects[m_numbers.at(identity(reference))].height + 1);
        if (height > ZqDependencySerializer::kMaxDepth)
            throwTooDeep(key);
        m_numbers[identity(top.object)] = static_cast<std::uint32_t>(m_objects.size());
        m_objects.push_back({std::move(top.object), top.kind, height});
        stack.pop_back();
    }
}

void GraphWriter::enter(const CString& key, const ZqObjectReference& object, std::vector<SFrame>& stack)
{
    if (!object)
        return;
    const auto [found, added] = m_numbers.try_emplace(identity(object), kInProgress);
    if (!added)
    {
        if (found->second == kInProgress)
            CB_THROW(CbExceptionPreconditionViolation, kWriteFunction,
                     "the objects reached from key " + ZqCheckedName::Quote(key) +
                         " refer to each other in a cycle through a " + typeName(object.GetType()));
        return;
    }
    if (stack.size() >= ZqDependencySerializer::kMaxDepth)
        throwTooDeep(key);
    if (m_objects.size() + stack.size() >= kInProgress)
        CB_THROW(CbExceptionPreconditionViolation, kWriteFunction, "too many objects");
    SFrame frame{object, kindOf(object), {}};
    m_kinds[frame.kind]->GetReferences(object, frame.references);
    stack.push_back(std::move(frame));
}

std::uint32_t GraphWriter::kindOf(const ZqObjectReference& object)
{
    const std::type_index type(*object.GetType());
    if (const auto found = m_kindNumbers.find(type); found != m_kindNumbers.end())
        return found->second;
    std::unique_ptr<ZqObjectKind> kind = ZqObjectKind::Find(*object.GetType());
    if (!kind)
        CB_THROW(CbExceptionPreconditionViolation, kWriteFunction,
                 "no object kind is registered for class " + typeName(object.GetType()));
    m_kinds.push_back(std::move(kind));
    return m_kindNumbers[type] = static_cast<std::uint32_t>(m_kinds.size() - 1);
}

std::uint32_t GraphWriter::numberOf(const ZqObjectReference& object, std::uint32_t writer) const
{
    const auto found = m_numbers.find(identity(object));
    if (found == m_numbers.end() || found->second >= writer)
        CB_THROW(CbExceptionPreconditionViolation, kWriteFunction,
                 "the kind " + CbWideToUtf8(m_kinds[m_objects[writer].kind]->GetRTTI().GetName()) +
                     " wrote a reference to a " + typeName(object.GetType()) +
                     " that its GetReferences did not report");
    return found->second;
}

void GraphWriter::WriteKindsAndObjects(CbStreamWriteBinary& stream, std::vector<unsigned char>& buffer) const
{
    stream.WriteCount(static_cast<std::uint32_t>(m_kinds.size()));
    for (const auto& kind : m_kinds)
    {
        stream.Write(CString(kind->GetRTTI().GetName()));
        stream.Write(kind->GetVersion());
    }
    stream.WriteCount(static_cast<std::uint32_t>(m_objects.size()));
    for (std::uint32_t number = 0; number < m_objects.size(); ++number)
    {
        stream.Write(m_objects[number].kind);
        const std::size_t sizeAt = buffer.size();
        stream.Write(std::uint64_t(0));
        RecordWriter writer(stream, *this, number);
        m_kinds[m_objects[number].kind]->Write(m_objects[number].object, writer);
        const std::uint64_t size = buffer.size() - sizeAt - sizeof(std::uint64_t);
        std::memcpy(buffer.data() + sizeAt, &size, sizeof(size));
    }
}

// What one Read builds before it replaces the serializer's content.
class GraphReader
{
public:
    // Records are copied out of the stream.
    explicit GraphReader(CbStreamReadBinary& stream) : m_stream(&stream) {}
    // Records are read where they lie in memory.
    GraphReader(const unsigned char* data, std::size_t size) : m_memory(data), m_memorySize(size)
    {
        m_stream = &m_segment.emplace(data, size);
    }
    CbStreamReadBinary& GetStream() { return *m_stream; }
    void ReadKinds();
    void ReadObjects();
    std::vector<std::pair<CString, ZqObjectReference>> ReadKeys();

private:
    struct SKind
    {
        std::unique_ptr<ZqObjectKind> kind;
        CString name;
        std::uint32_t version;
    };

    class RecordReader final : public ZqObjectReader
    {
    public:
        RecordReader(CbStreamReadBinary& stream, std::uint32_t version, GraphReader& graph)
            : ZqObjectReader(stream, version), m_graph(graph)
        {
        }
        ZqObjectReference ReadReference() override;

    private:
        GraphReader& m_graph;
    };

    std::uint32_t readCount(std::uint64_t bytesPerElement, const char* what);
    ZqObjectReference readObject(std::uint32_t number);
    std::span<const unsigned char> takeRecord(std::uint64_t size, std::vector<unsigned char>& copy);
    std::string describe(std::uint32_t number) const;

    CbStreamReadBinary* m_stream;
    // In memory, the stream covers the bytes after the last record taken, from m_segmentStart on.
    const unsigned char* m_memory = nullptr;
    std::size_t m_memorySize = 0;
    std::size_t m_segmentStart = 0;
    std::optional<CbStreamReadBinary> m_segment;
    std::vector<SKind> m_kinds;
    std::vector<ZqObjectReference> m_objects;
    std::vector<std::uint32_t> m_heights;
    std::uint32_t m_objectCount = 0;
    std::uint32_t m_kindOfCurrent = 0;
};

std::uint32_t GraphReader::readCount(std::uint64_t bytesPerElement, const char* what)
{
    const std::uint32_t count = m_stream->ReadCount();
    if (count > m_stream->GetRemaining() / bytesPerElement)
        refuse(std::to_string(count) + " " + what + " cannot fit into the " +
               std::to_string(m_stream->GetRemaining()) + " bytes left");
    return count;
}

void GraphReader::ReadKinds()
{
    const std::uint32_t count = readCount(8, "object kinds");
    for (std::uint32_t i = 0; i < count; ++i)
    {
        SKind entry;
        entry.name = ZqCheckedName::Read(*m_stream, kReadFunction, "object kind name");
        m_stream->Read(entry.version);
        for (const SKind& earlier : m_kinds)
            if (earlier.name == entry.name)
                refuse("object kind " + ZqCheckedName::Quote(entry.name) + " is listed twice");
        entry.kind = ZqObjectKind::Find(entry.name.GetString());
        if (!entry.kind)
            refuse("unknown object type " + ZqCheckedName::Quote(entry.name));
        if (entry.version > entry.kind->GetVersion())
            refuse("object type " + ZqCheckedName::Quote(entry.name) + " has record version " +
                   std::to_string(entry.version) + ", newer than the " +
                   std::to_string(entry.kind->GetVersion()) + " this program reads");
        m_kinds.push_back(std::move(entry));
    }
}

void GraphReader::ReadObjects()
{
    m_objectCount = readCount(12, "objects");
    m_objects.reserve(m_objectCount);
    m_heights.reserve(m_objectCount);
    for (std::uint32_t number = 0; number < m_objectCount; ++number)
    {
        m_heights.push_back(1);
        m_objects.push_back(readObject(number));
    }
}

std::string GraphReader::describe(std::uint32_t number) const
{
    return "object " + std::to_string(number) + " (" + CbWideToUtf8(m_kinds[m_kindOfCurrent].name.Std()) +
           ")";
}

ZqObjectReference GraphReader::readObject(std::uint32_t number)
{
    std::uint32_t kindNumber = 0;
    std::uint64_t size = 0;
    m_stream->Read(kindNumber);
    m_stream->Read(size);
    if (kindNumber >= m_kinds.size())
        refuse("object " + std::to_string(number) + " has kind number " + std::to_string(kindNumber) +
               " of " + std::to_string(m_kinds.size()));
    m_kindOfCurrent = kindNumber;
    if (size > m_stream->GetRemaining())
        refuse(describe(number) + " claims " + std::to_string(size) + " bytes, only " +
               std::to_string(m_stream->GetRemaining()) + " are left");
    std::vector<unsigned char> copy;
    const std::span<const unsigned char> bytes = takeRecord(size, copy);

    const SKind& kind = m_kinds[kindNumber];
    CbStreamReadBinary record(bytes.data(), bytes.size());
    RecordReader reader(record, kind.version, *this);
    ZqObjectReference object;
    try
    {
        object = kind.kind->Read(reader);
    }
    catch (const CbException& exception)
    {
        // The reader's own refusals (references) name the object already.
        if (std::string(exception.GetFunction()) == kReadFunction)
            throw;
        refuse(describe(number) + ": " + (*exception.GetDetail() ? exception.GetDetail() : exception.what()));
    }
    catch (const std::bad_alloc&)
    {
        refuse(describe(number) + ": its data asks for more memory than there is");
    }
    if (!record.IsAtEnd())
        refuse(describe(number) + ": " + std::to_string(record.GetRemaining()) +
               " bytes of its record were not read");
    if (!object || *object.GetType() != kind.kind->GetType())
        CB_THROW(CbExceptionPreconditionViolation, kReadFunction,
                 "the kind " + CbWideToUtf8(kind.name.Std()) + " read no object of its class");
    return object;
}

std::span<const unsigned char> GraphReader::takeRecord(std::uint64_t size, std::vector<unsigned char>& copy)
{
    if (!m_memory)
    {
        copy.resize(static_cast<std::size_t>(size));
        m_stream->Read(copy.data(), copy.size());
        return copy;
    }
    const std::size_t start = m_segmentStart + static_cast<std::size_t>(m_stream->GetPosition());
    m_segmentStart = start + static_cast<std::size_t>(size);
    m_stream = &m_segment.emplace(m_memory + m_segmentStart, m_memorySize - m_segmentStart);
    return {m_memory + start, static_cast<std::size_t>(size)};
}

ZqObjectReference GraphReader::RecordReader::ReadReference()
{
    std::uint32_t number = 0;
    GetStream().Read(number);
    if (number == kNoObject)
        return {};
    const std::uint32_t current = static_cast<std::uint32_t>(m_graph.m_objects.size());
    if (number >= m_graph.m_objectCount)
        refuse(m_graph.describe(current) + " refers to object " + std::to_string(number) +
               ", but the entry holds only " + std::to_string(m_graph.m_objectCount));
    if (number >= current)
        refuse(m_graph.describe(current) + " refers to object " + std::to_string(number) +
               ", which is not written before it");
    // Deeper chains would make the objects' destructors recurse as deep when they are released.
    std::uint32_t& height = m_graph.m_heights[current];
    height = std::max(height, m_graph.m_heights[number] + 1);
    if (height > ZqDependencySerializer::kMaxDepth)
        refuse(m_graph.describe(current) + ": references nested deeper than " +
               std::to_string(ZqDependencySerializer::kMaxDepth) + " levels");
    return m_graph.m_objects[number];
}

std::vector<std::pair<CString, ZqObjectReference>> GraphReader::ReadKeys()
{
    const std::uint32_t count = readCount(8, "keys");
    std::vector<std::pair<CString, ZqObjectReference>> keys;
    keys.reserve(count);
    std::unordered_map<std::wstring, std::uint32_t> seen;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        CString key = ZqCheckedName::Read(*m_stream, kReadFunction, "key");
        std::uint32_t number = 0;
        m_stream->Read(number);
        if (number >= m_objects.size())
            refuse("key " + ZqCheckedName::Quote(key) + " refers to object " + std::to_string(number) +
                   ", but the entry holds " + std::to_string(m_objects.size()));
        if (!seen.emplace(key.Std(), number).second)
            refuse("key " + ZqCheckedName::Quote(key) + " appears twice");
        keys.emplace_back(std::move(key), m_objects[number]);
    }
    return keys;
}
std::vector<std::pair<CString, ZqObjectReference>> readGraph(GraphReader& graph)
{
    std::uint32_t version = 0;
    graph.GetStream().Read(version);
    if (version == 0 || version > ZqDependencySerializer::kVersion)
        refuse("layout version " + std::to_string(version) + " is not one of 1 to " +
               std::to_string(ZqDependencySerializer::kVersion) + " that this program reads");
    graph.ReadKinds();
    graph.ReadObjects();
    return graph.ReadKeys();
}
} // namespace

ZqDependencySerializer::ZqDependencySerializer() = default;
ZqDependencySerializer::ZqDependencySerializer(const ZqDependencySerializer& other) = default;
ZqDependencySerializer::ZqDependencySerializer(ZqDependencySerializer&& other) noexcept = default;
ZqDependencySerializer& ZqDependencySerializer::operator=(const ZqDependencySerializer& other) = default;
ZqDependencySerializer& ZqDependencySerializer::operator=(ZqDependencySerializer&& other) noexcept = default;
ZqDependencySerializer::~ZqDependencySerializer() = default;

void ZqDependencySerializer::Add(const CString& key, ZqObjectReference object)
{
    constexpr const char* function = "ZqDependencySerializer::Add";
    ZqCheckedName::Require(key, function, "key");
    if (m_index.count(key.Std()))
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "key " + ZqCheckedName::Quote(key) + " is already taken");
    if (!object)
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "key " + ZqCheckedName::Quote(key) + " gets no object");
    if (!ZqObjectKind::Find(*object.GetType()))
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "no object kind is registered for class " + typeName(object.GetType()));
    m_index.emplace(key.Std(), m_entries.size());
    m_entries.push_back({key, std::move(object)});
}

ZqObjectReference ZqDependencySerializer::Get(const CString& key) const
{
    const auto found = m_index.find(key.Std());
    return found == m_index.end() ? ZqObjectReference() : m_entries[found->second].object;
}

const CString& ZqDependencySerializer::GetKey(unsigned int index) const
{
    if (index >= m_entries.size())
        CB_THROW(CbExceptionPreconditionViolation, "ZqDependencySerializer::GetKey",
                 "index " + std::to_string(index) + " of " + std::to_string(m_entries.size()) + " keys");
    return m_entries[index].key;
}

void ZqDependencySerializer::Write(CbStreamWriteBinary& stream) const
{
    std::vector<unsigned char> buffer;
    Write(buffer);
    stream.Write(buffer.data(), buffer.size());
}

void ZqDependencySerializer::Write(std::vector<unsigned char>& buffer) const
{
    // Missing kinds and reference cycles are found before the first byte is written.
    GraphWriter graph;
    for (const SEntry& entry : m_entries)
        graph.Collect(entry.key, entry.object);
    const std::size_t before = buffer.size();
    try
    {
        CbStreamWriteBinary stream(buffer);
        stream.Write(kVersion);
        graph.WriteKindsAndObjects(stream, buffer);
        stream.WriteCount(GetCount());
        for (const SEntry& entry : m_entries)
        {
            stream.Write(entry.key);
            stream.Write(graph.GetNumber(entry.object));
        }
    }
    catch (...)
    {
        buffer.resize(before);
        throw;
    }
}

void ZqDependencySerializer::Read(CbStreamReadBinary& stream)
{
    GraphReader graph(stream);
    commit(readGraph(graph));
}

void ZqDependencySerializer::Read(const void* data, std::size_t size)
{
    GraphReader graph(static_cast<const unsigned char*>(data), size);
    std::vector<std::pair<CString, ZqObjectReference>> keys = readGraph(graph);
    if (!graph.GetStream().IsAtEnd())
        refuse(std::to_string(graph.GetStream().GetRemaining()) + " bytes after its end");
    commit(std::move(keys));
}

void ZqDependencySerializer::commit(std::vector<std::pair<CString, ZqObjectReference>> keys)
{

    std::vector<SEntry> entries;
    std::unordered_map<std::wstring, std::size_t> index;
    entries.reserve(keys.size());
    for (auto& [key, object] : keys)
    {
        index.emplace(key.Std(), entries.size());
        entries.push_back({std::move(key), std::move(object)});
    }
    m_entries.swap(entries);
    m_index.swap(index);
}
