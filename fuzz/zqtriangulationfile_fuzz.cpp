// Triangulation files from untrusted bytes. The reader either refuses them with
// CbExceptionWrongFileVersion, leaving the target triangulation as it was, or accepts a
// triangulation that is sound (every corner a distinct vertex, every position finite, every present
// attribute one value per element) and that writes back to bytes which read as the same
// triangulation.

#include "basepool/cbexception.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{
[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool same(const ZqTriangulationBase& a, const ZqTriangulationBase& b)
{
    ZqMpCompareTriangulationsOld compare;
    compare.SetFlags(CbFlags<ZqMpCompareTriangulationsOld::EFlags>::FromBits(
        ZqMpCompareTriangulationsOld::eF_CompareAttributes |
        ZqMpCompareTriangulationsOld::eF_CompareSerializeSwitches |
        ZqMpCompareTriangulationsOld::eF_CompareParameters));
    compare.SetInput(a, b);
    compare.SetParameters(0.0f);
    return compare.Compute() && compare.GetOutput();
}

void checkSound(const ZqTriangulationBase& t)
{
    for (const CbVector3f& p : t.GetPositions())
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            fail("accepted a position that is not finite");
    for (const ZqTriangleCorners& c : t.GetTriangles())
        if (c[0] >= t.GetVertexCount() || c[1] >= t.GetVertexCount() || c[2] >= t.GetVertexCount() ||
            c[0] == c[1] || c[1] == c[2] || c[0] == c[2])
            fail("accepted a triangle with bad corners");
    t.GetVertexAttributes().ForEach(
        [&](EVertexAttribute, const auto& column)
        {
            if (column.present && column.values.GetCount() != t.GetVertexCount())
                fail("accepted a vertex attribute of the wrong length");
        });
    t.GetTriangleAttributes().ForEach(
        [&](ETriangleAttribute, const auto& column)
        {
            if (column.present && column.values.GetCount() != t.GetTriangleCount())
                fail("accepted a triangle attribute of the wrong length");
        });
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ZqTriangulationDynamic target;
    target.AddVertex({1, 2, 3});
    const ZqTriangulationDynamic before(target);
    try
    {
        CbStreamReadBinary stream(data, size);
        target.Serialize(stream);
    }
    catch (const CbExceptionWrongFileVersion&)
    {
        if (!same(target, before))
            fail("a refused read changed the triangulation");
        return 0;
    }
    checkSound(target);
    // Relation and round trip must work on whatever was accepted (NaN attribute values compare equal).
    target.ComputeVertexTriangleRelationship();
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary writer(bytes);
    target.Serialize(writer);
    ZqTriangulationDynamic reread;
    CbStreamReadBinary reader(bytes);
    reread.Serialize(reader);
    if (!reader.IsAtEnd() || !same(target, reread))
        fail("an accepted triangulation does not survive writing and reading");
    return 0;
}
