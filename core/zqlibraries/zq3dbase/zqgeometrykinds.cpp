// The object kinds of the geometry classes that have a stream form of their own; each record,
// version 1, is that stream form:
// - ZqTriangulationStatic, ZqTriangulationDynamic: the .tri form (ZqTriangulationBase::Serialize,
//   docs/triangulation.md): positions, corners and the attributes whose serialize switch is on;
// - ZqPolyline3D: ZqPolyline3DBase::Write: the closed flag as one byte, the vertex count, x y z of
//   every vertex.

#include "zq3dbase/zqpolyline3d.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqobjectkind.h"

namespace
{
void writeObject(const ZqTriangulationBase& triangulation, CbStreamWriteBinary& stream)
{
    triangulation.Serialize(stream);
}
void readObject(ZqTriangulationBase& triangulation, CbStreamReadBinary& stream)
{
    triangulation.Serialize(stream);
}
void writeObject(const ZqPolyline3DBase& polyline, CbStreamWriteBinary& stream)
{
    polyline.Write(stream);
}
void readObject(ZqPolyline3DBase& polyline, CbStreamReadBinary& stream)
{
    polyline.Read(stream);
}

template <class T> class ZqStreamFormKind : public ZqObjectKindOf<T>
{
public:
    std::uint32_t GetVersion() const override { return 1; }

protected:
    void write(const T& object, ZqObjectWriter& writer) const override
    {
        writeObject(object, writer.GetStream());
    }
    std::shared_ptr<T> read(ZqObjectReader& reader) const override
    {
        auto object = std::make_shared<T>();
        readObject(*object, reader.GetStream());
        return object;
    }
};

class ZqTriangulationStaticKind final : public ZqStreamFormKind<ZqTriangulationStatic>
{
    CB_DECLARE_RTTI(ZqTriangulationStaticKind)
};

class ZqTriangulationDynamicKind final : public ZqStreamFormKind<ZqTriangulationDynamic>
{
    CB_DECLARE_RTTI(ZqTriangulationDynamicKind)
};

class ZqPolyline3DKind final : public ZqStreamFormKind<ZqPolyline3D>
{
    CB_DECLARE_RTTI(ZqPolyline3DKind)
};
} // namespace

CB_IMPLEMENT_RTTI(ZqTriangulationStaticKind, ZqObjectKind::RTTI);
CB_IMPLEMENT_RTTI(ZqTriangulationDynamicKind, ZqObjectKind::RTTI);
CB_IMPLEMENT_RTTI(ZqPolyline3DKind, ZqObjectKind::RTTI);
