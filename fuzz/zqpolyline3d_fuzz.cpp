// The polyline stream form from untrusted bytes. Whatever Read accepts must write back as exactly
// the bytes it consumed; whatever it rejects must be rejected with CbExceptionWrongFileVersion,
// leaving the target polyline as it was.

#include "basepool/cbexception.h"
#include "zq3dbase/zqpolyline3d.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{
void check(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CbStreamReadBinary in(data, size);
    ZqPolyline3D polyline({{1, 2, 3}}, true);
    try
    {
        in >> polyline;
    }
    catch (const CbExceptionWrongFileVersion&)
    {
        check(polyline.GetVertexCount() == 1 && polyline.IsClosed() &&
                  polyline.GetHeadVertex()->GetPosition() == CbVector3f(1, 2, 3),
              "a rejected read changed the polyline");
        return 0;
    }
    std::vector<unsigned char> written;
    {
        CbStreamWriteBinary out(written);
        out << polyline;
    }
    check(written.size() == in.GetPosition(), "write-back length differs from the bytes read");
    check(std::memcmp(written.data(), data, written.size()) == 0, "write-back differs from the bytes read");
    return 0;
}
