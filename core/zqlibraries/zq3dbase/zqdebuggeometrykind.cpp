// The object kind of ZqDebugGeometry. Record, version 1: the geometry's object number, the colour as
// four floats (r, g, b, a), the draw method and the shading as 32-bit numbers.

#include "zq3dbase/zqdebuggeometry.h"
#include "zqbase/zqobjectkind.h"

namespace
{
class ZqDebugGeometryKind final : public ZqObjectKindOf<ZqDebugGeometry>
{
    CB_DECLARE_RTTI(ZqDebugGeometryKind)

public:
    std::uint32_t GetVersion() const override { return 1; }

protected:
    void getReferences(const ZqDebugGeometry& object,
                       std::vector<ZqObjectReference>& references) const override
    {
        references.push_back(object.GetGeometry());
    }

    void write(const ZqDebugGeometry& object, ZqObjectWriter& writer) const override
    {
        writer.WriteReference(object.GetGeometry());
        CbStreamWriteBinary& stream = writer.GetStream();
        const ZqColorRGBA& color = object.GetColor();
        stream << color.r << color.g << color.b << color.a;
        stream << std::uint32_t(object.GetDrawMethod()) << std::uint32_t(object.GetShading());
    }

    std::shared_ptr<ZqDebugGeometry> read(ZqObjectReader& reader) const override
    {
        auto object = std::make_shared<ZqDebugGeometry>();
        object->SetGeometry(reader.ReadReference());
        CbStreamReadBinary& stream = reader.GetStream();
        ZqColorRGBA color;
        std::uint32_t drawMethod = 0;
        std::uint32_t shading = 0;
        stream >> color.r >> color.g >> color.b >> color.a >> drawMethod >> shading;
        object->SetColor(color);
        object->SetDrawMethod(drawMethod);
        object->SetShading(shading);
        return object;
    }
};
} // namespace

CB_IMPLEMENT_RTTI(ZqDebugGeometryKind, ZqObjectKind::RTTI);
