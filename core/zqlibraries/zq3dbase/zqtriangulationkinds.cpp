// The object kinds of the triangulations. Record, version 1: the triangulation in the form of the
// .tri file (ZqTriangulationBase::Serialize, docs/triangulation.md): positions, corners and the
// attributes whose serialize switch is on.

#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqobjectkind.h"

namespace
{
template <class TTriangulation> class ZqTriangulationKind : public ZqObjectKindOf<TTriangulation>
{
public:
    std::uint32_t GetVersion() const override { return 1; }

protected:
    void write(const TTriangulation& triangulation, ZqObjectWriter& writer) const override
    {
        triangulation.Serialize(writer.GetStream());
    }
    std::shared_ptr<TTriangulation> read(ZqObjectReader& reader) const override
    {
        auto triangulation = std::make_shared<TTriangulation>();
        triangulation->Serialize(reader.GetStream());
        return triangulation;
    }
};

class ZqTriangulationStaticKind final : public ZqTriangulationKind<ZqTriangulationStatic>
{
    CB_DECLARE_RTTI(ZqTriangulationStaticKind)
};

class ZqTriangulationDynamicKind final : public ZqTriangulationKind<ZqTriangulationDynamic>
{
    CB_DECLARE_RTTI(ZqTriangulationDynamicKind)
};
} // namespace

CB_IMPLEMENT_RTTI(ZqTriangulationStaticKind, ZqObjectKind::RTTI);
CB_IMPLEMENT_RTTI(ZqTriangulationDynamicKind, ZqObjectKind::RTTI);
