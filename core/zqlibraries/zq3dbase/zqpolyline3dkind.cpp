// The object kind of ZqPolyline3D. Record, version 1: the polyline's stream form
// (ZqPolyline3DBase::Write): the closed flag as one byte, the vertex count, x y z of every vertex.

#include "zq3dbase/zqpolyline3d.h"
#include "zqbase/zqobjectkind.h"

namespace
{
class ZqPolyline3DKind final : public ZqObjectKindOf<ZqPolyline3D>
{
    CB_DECLARE_RTTI(ZqPolyline3DKind)

public:
    std::uint32_t GetVersion() const override { return 1; }

protected:
    void write(const ZqPolyline3D& polyline, ZqObjectWriter& writer) const override
    {
        polyline.Write(writer.GetStream());
    }
    std::shared_ptr<ZqPolyline3D> read(ZqObjectReader& reader) const override
    {
        auto polyline = std::make_shared<ZqPolyline3D>();
        polyline->Read(reader.GetStream());
        return polyline;
    }
};
} // namespace

CB_IMPLEMENT_RTTI(ZqPolyline3DKind, ZqObjectKind::RTTI);
