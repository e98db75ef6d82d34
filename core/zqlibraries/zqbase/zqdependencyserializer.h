#pragma once

#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"
#include "zqbase/zqobjectreference.h"

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

class CbStreamReadBinary;
class CbStreamWriteBinary;

template <class T> inline constexpr bool ZqIsSharedPointer = false;
template <class T> inline constexpr bool ZqIsSharedPointer<std::shared_ptr<T>> = true;

// Named objects and the objects they refer to, written and read as one unit (an entry of a
// ZqFileFormatGeneric). Any class with a registered ZqObjectKind can be held: triangulations,
// polylines and debug geometries register theirs from zq3dbase.
//
//     ZqDependencySerializer serializer;
//     serializer.Add(L"mesh", mesh);                                   // a
//     std::shared_ptr<ZqTriangulationStatic> serializer.Add(L"view", ZqDebugGeometry(mesh,
//     ZqColorRGBA::Chocolate, 17, 0)); std::shared_ptr<ZqDebugGeometry> view =
//     serializer.Get<ZqDebugGeometry>(L"view");
//
// Objects are shared, not copied (except by the Add that takes an object by reference), and an
// object is identified by its address and class. Writing follows the references of every named
// object and writes each object reached exactly once, before the objects that refer to it; reading
// restores the sharing. Hence:
// - The order of Add does not matter: a debug geometry added before or after the triangulation it
//   shows refers, after reading, to the very object stored under the triangulation's key.
// - Two debug geometries of one triangulation refer to one triangulation after reading, which is
//   written once.
// - An object that is referred to but was never added under a key is written as an unnamed record
//   and comes back reachable only through the objects that refer to it.
// - One object under two keys comes back as one object under both keys.
// - A reference cycle cannot be written (CbExceptionPreconditionViolation naming the key), nor
//   references nested deeper than kMaxDepth levels (an object that refers to nothing is one level).
class ZQBASE_API ZqDependencySerializer
{
public:
    // The newest layout of the serialized form; Read accepts it and every older one.
    static constexpr std::uint32_t kVersion = 1;
    // The deepest nesting of references written and read. Releasing a chain of objects recurses
    // once per level, so a file must not be able to ask for more.
    static constexpr std::uint32_t kMaxDepth = 1000;

    ZqDependencySerializer();
    ZqDependencySerializer(const ZqDependencySerializer& other);
    ZqDependencySerializer(ZqDependencySerializer&& other) noexcept;
    ZqDependencySerializer& operator=(const ZqDependencySerializer& other);
    ZqDependencySerializer& operator=(ZqDependencySerializer&& other) noexcept;
    ~ZqDependencySerializer();

    // Adds object under key. Throws CbExceptionPreconditionViolation when the key is taken, the
    // reference is empty, or no object kind is registered for its class.
    void Add(const CString& key, ZqObjectReference object);
    template <class T>
    requires(!std::is_const_v<T>) void Add(const CString& key, std::shared_ptr<T> object)
    {
        Add(key, ZqObjectReference(std::move(object)));
    }
    // Adds a copy of object.
    template <class T>
    requires(!std::is_same_v<T, ZqObjectReference> && !ZqIsSharedPointer<T> &&
             std::is_copy_constructible_v<T>) void Add(const CString& key, const T& object)
    {
        Add(key, ZqObjectReference(std::make_shared<T>(object)));
    }

    // The object under key; empty when there is none.
    ZqObjectReference Get(const CString& key) const;
    // The object under key when it is a T; null otherwise.
    template <class T> std::shared_ptr<T> Get(const CString& key) const { return Get(key).template As<T>(); }

    unsigned int GetCount() const { return static_cast<unsigned int>(m_entries.size()); }
    // The keys in the order they were added (or read).
    const CString& GetKey(unsigned int index) const;

    // Writes every named object and everything it refers to. Throws CbExceptionPreconditionViolation
    // for an object whose class has no kind, for a reference cycle and for nesting deeper than
    // kMaxDepth; nothing is written then.
    void Write(CbStreamWriteBinary& stream) const;
    // The same appended to buffer, where each record is written in place (no copy of large objects).
    void Write(std::vector<unsigned char>& buffer) const;
    // Replaces the content by what stream holds. Throws CbExceptionWrongFileVersion for data it cannot
    // trust (unknown object kind, newer layout, reference to a missing object, counts beyond the data,
    // ...) and then keeps its content unchanged.
    void Read(CbStreamReadBinary& stream);
    // The same for size bytes at data, which must hold the serialized form and nothing after it; the
    // records are read where they lie.
    void Read(const void* data, std::size_t size);

private:
    void commit(std::vector<std::pair<CString, ZqObjectReference>> keys);

    struct SEntry
    {
        CString key;
        ZqObjectReference object;
    };

    std::vector<SEntry> m_entries;
    std::unordered_map<std::wstring, std::size_t> m_index;
};
