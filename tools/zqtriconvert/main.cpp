// zqtriconvert: converts a mesh between the triangulation file (.tri) and PLY or OBJ, so that meshes
// of other programs can be used by the tests and the libraries' files can be looked at elsewhere.
//
//     zqtriconvert scan.ply scan.tri       PLY or OBJ in, triangulation file out
//     zqtriconvert scan.tri scan.obj       triangulation file in, OBJ (or binary PLY) out
//
// Exit status: 0 converted, 1 the conversion failed (the reason is printed), 2 usage error.

#include "basepool/cbexception.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zqmeshexchange.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace
{
const char* const kUsage = "usage: zqtriconvert [--ascii] INPUT OUTPUT\n"
                           "  Converts between the triangulation file (.tri) and PLY (.ply) or OBJ (.obj),\n"
                           "  chosen by the file endings. PLY is written binary unless --ascii is given.\n";

std::string extensionOf(const std::string& path)
{
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos)
        return "";
    std::string extension = path.substr(dot + 1);
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

bool isKnown(const std::string& extension)
{
    return extension == "tri" || extension == "ply" || extension == "obj";
}

int convert(const std::string& input, const std::string& output, bool ascii)
{
    ZqTriangulationDynamic triangulation;
    unsigned int dropped = 0;
    if (extensionOf(input) == "tri")
        triangulation.ReadFile(CString(input.c_str()));
    else
        ZqMeshExchange::Import(input, triangulation, dropped);
    const std::string target = extensionOf(output);
    if (target == "tri")
        triangulation.WriteFile(CString(output.c_str()));
    else
        ZqMeshExchange::Export(triangulation, output,
                               target == "obj" ? "objnomtl" : (ascii ? "ply" : "plyb"));
    std::printf("%s: %u vertices, %u triangles", output.c_str(), triangulation.GetVertexCount(),
                triangulation.GetTriangleCount());
    if (dropped > 0)
        std::printf(" (%u faces dropped: points, lines or triangles using a vertex twice)", dropped);
    std::printf("\n");
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    bool ascii = false;
    std::string paths[2];
    int count = 0;
    for (int i = 1; i < argc; ++i)
    {
        if (std::strcmp(argv[i], "--ascii") == 0)
            ascii = true;
        else if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0)
        {
            std::fputs(kUsage, stdout);
            return 0;
        }
        else if (count < 2 && argv[i][0] != '-')
            paths[count++] = argv[i];
        else
        {
            std::fprintf(stderr, "zqtriconvert: unexpected argument '%s'\n%s", argv[i], kUsage);
            return 2;
        }
    }
    if (count != 2)
    {
        std::fputs(kUsage, stderr);
        return 2;
    }
    for (const std::string& path : paths)
        if (!isKnown(extensionOf(path)))
        {
            std::fprintf(stderr, "zqtriconvert: %s: unknown file ending (use .tri, .ply or .obj)\n",
                         path.c_str());
            return 2;
        }
    try
    {
        return convert(paths[0], paths[1], ascii);
    }
    catch (const CbException& e)
    {
        std::fprintf(stderr, "zqtriconvert: %s\n", *e.GetDetail() ? e.GetDetail() : e.what());
        return 1;
    }
}
