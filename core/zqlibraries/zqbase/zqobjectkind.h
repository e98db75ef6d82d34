#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbrtti.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbtypename.h"
#include "zqbase/zqbase_export.h"
#include "zqbase/zqobjectreference.h"

#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

// How a kind writes the record of one object: the object's own data goes to GetStream(), every
// object it refers to through WriteReference, which writes that object's number in the entry.
class ZQBASE_API ZqObjectWriter
{
public:
    explicit ZqObjectWriter(CbStreamWriteBinary& stream) : m_stream(stream) {}
    virtual ~ZqObjectWriter();

    CbStreamWriteBinary& GetStream() { return m_stream; }
    // object must be empty or one of the references the kind's GetReferences gave for this object;
    // anything else is a programming error of the kind (CbExceptionPreconditionViolation).
    virtual void WriteReference(const ZqObjectReference& object) = 0;

private:
    CbStreamWriteBinary& m_stream;
};

// How a kind reads the record of one object. The stream ends where the record ends, so a kind cannot
// read into its neighbour; counts are checked against what is left before anything is allocated.
class ZQBASE_API ZqObjectReader
{
public:
    ZqObjectReader(CbStreamReadBinary& stream, std::uint32_t version) : m_stream(stream), m_version(version)
    {
    }
    virtual ~ZqObjectReader();

    CbStreamReadBinary& GetStream() { return m_stream; }
    // The layout version the record was written with, at most the kind's own GetVersion().
    std::uint32_t GetVersion() const { return m_version; }

    // An object of an earlier record, or an empty reference. A number that names no earlier record
    // throws CbExceptionWrongFileVersion.
    virtual ZqObjectReference ReadReference() = 0;
    // A count of elements that take at least bytesPerElement bytes each in the record; throws
    // CbExceptionWrongFileVersion when the rest of the record cannot hold that many.
    std::uint32_t ReadCount(std::uint64_t bytesPerElement);

private:
    CbStreamReadBinary& m_stream;
    std::uint32_t m_version;
};

// One kind of object that a ZqDependencySerializer can hold: it writes and reads the objects of one
// class and names the objects they refer to. A kind is a class registered with CbRTTI as a kind of
// ZqObjectKind::RTTI, with a creation function; its registered name is what files record for its
// objects. The library that holds the class registers its kind, so zqbase knows none of them:
//
//     class ZqPolyline3DKind final : public ZqObjectKindOf<ZqPolyline3D>
//     {
//         CB_DECLARE_RTTI(ZqPolyline3DKind)
//         ...
//     };
//     CB_IMPLEMENT_RTTI(ZqPolyline3DKind, ZqObjectKind::RTTI);
//
// Kinds hold no state; one is created whenever it is looked up.
class ZQBASE_API ZqObjectKind : public IObject
{
    CB_DECLARE_RTTI(ZqObjectKind)

public:
    ~ZqObjectKind() override;

    // The class of the objects this kind writes and reads.
    virtual const std::type_info& GetType() const = 0;
    // The newest record layout: Write writes it, Read reads it and every older one.
    virtual std::uint32_t GetVersion() const = 0;
    // Appends the objects that Write will refer to (empty references may be left out).
    virtual void GetReferences(const ZqObjectReference& object,
                               std::vector<ZqObjectReference>& references) const = 0;
    virtual void Write(const ZqObjectReference& object, ZqObjectWriter& writer) const = 0;
    // A new object from a record; throws CbExceptionWrongFileVersion for data it cannot read.
    virtual ZqObjectReference Read(ZqObjectReader& reader) const = 0;

    // The kind registered under name; null when there is none or the record of that name is not a kind.
    static std::unique_ptr<ZqObjectKind> Find(const wchar_t* name);
    // The kind of objects of class type (the one registered last, if several); null when there is none.
    static std::unique_ptr<ZqObjectKind> Find(const std::type_info& type);
};

// The base of a kind for objects of class T: it checks the class and hands the derived kind typed
// objects.
template <class T> class ZqObjectKindOf : public ZqObjectKind
{
public:
    const std::type_info& GetType() const final { return typeid(T); }
    void GetReferences(const ZqObjectReference& object,
                       std::vector<ZqObjectReference>& references) const final
    {
        getReferences(typed(object), references);
    }
    void Write(const ZqObjectReference& object, ZqObjectWriter& writer) const final
    {
        write(typed(object), writer);
    }
    ZqObjectReference Read(ZqObjectReader& reader) const final { return ZqObjectReference(read(reader)); }

protected:
    virtual void getReferences(const T& object, std::vector<ZqObjectReference>& references) const {}
    virtual void write(const T& object, ZqObjectWriter& writer) const = 0;
    virtual std::shared_ptr<T> read(ZqObjectReader& reader) const = 0;

private:
    static const T& typed(const ZqObjectReference& object)
    {
        const T* typedObject = object.Get<T>();
        if (!typedObject)
            CB_THROW(CbExceptionPreconditionViolation, "ZqObjectKindOf::typed",
                     "the object is not a " + CbDemangledTypeName(typeid(T)));
        return *typedObject;
    }
};
