#include "zq3dbase/zqpolyline3dbase.h"

#include "basepool/cbexception.h"

#include <cmath>
#include <cstdint>
#include <string>

ZqPolyline3DBase::~ZqPolyline3DBase() = default;

bool ZqPolyline3DBase::IsFinite() const
{
    for (const ZqPolylineVertex& vertex : *this)
    {
        const CbVector3f& p = vertex.GetPosition();
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            return false;
    }
    return true;
}

void ZqPolyline3DBase::Write(CbStreamWriteBinary& stream) const
{
    stream.Write(static_cast<std::uint8_t>(IsClosed() ? 1 : 0));
    stream.WriteCount(GetVertexCount(), stream.GetVersion());
    for (const ZqPolylineVertex& vertex : *this)
        stream.Write(vertex.GetPosition());
}

void ZqPolyline3DBase::Read(CbStreamReadBinary& stream)
{
    std::uint8_t closed = 0;
    stream.Read(closed);
    if (closed > 1)
        CB_THROW(CbExceptionWrongFileVersion, "ZqPolyline3DBase::Read",
                 "closed flag " + std::to_string(closed) + ", expected 0 or 1");
    const std::uint32_t count = stream.ReadCount(stream.GetVersion());
    const std::uint64_t bytes = std::uint64_t(count) * sizeof(CbVector3f);
    if (bytes > stream.GetRemaining())
        CB_THROW(CbExceptionWrongFileVersion, "ZqPolyline3DBase::Read",
                 std::to_string(count) + " vertices need " + std::to_string(bytes) + " bytes, " +
                     std::to_string(stream.GetRemaining()) + " are left");
    ZqPolyline<CbVector3f> read;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        CbVector3f position;
        stream.Read(position);
        read.AppendVertexTail(position);
    }
    read.SetClosed(closed == 1);
    ZqPolyline<CbVector3f>::swap(read);
}
