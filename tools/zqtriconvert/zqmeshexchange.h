#pragma once

#include "zq3dbase/zqtriangulationdynamic.h"

#include <string>

// Mesh files of other programs (PLY, OBJ) to and from a triangulation, through the Open Asset
// Import Library. Failures throw CbExceptionFile (cannot read or write) or
// CbExceptionWrongFileVersion (read, but not a usable triangle mesh), with the reason as detail.
class ZqMeshExchange
{
public:
    // Every triangle of every mesh in the file, vertices that agree in all their data joined, with
    // normals, the first texture coordinates and the first vertex colours where the file has them
    // (each switched on for the triangulation file). Points, lines and triangles that use one
    // vertex twice are dropped and counted in droppedFaces.
    static void Import(const std::string& path, ZqTriangulationDynamic& target, unsigned int& droppedFaces);
    // Writes positions, triangles and the normal, parameter and colour attributes that are present.
    // format: "ply" (ASCII), "plyb" (binary) or "objnomtl" (OBJ without material file). The file is
    // written under a temporary name and renamed into place.
    static void Export(const ZqTriangulationBase& source, const std::string& path, const char* format);
};
