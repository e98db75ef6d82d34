#include "zqmeshexchange.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace
{
// Which optional vertex data the meshes of a scene carry; an attribute is made when any mesh has it.
struct SVertexData
{
    bool normals = false;
    bool parameters = false;
    bool colors = false;
};

SVertexData vertexDataOf(const aiScene& scene)
{
    SVertexData data;
    for (unsigned int m = 0; m < scene.mNumMeshes; ++m)
    {
        data.normals = data.normals || scene.mMeshes[m]->HasNormals();
        data.parameters = data.parameters || scene.mMeshes[m]->HasTextureCoords(0);
        data.colors = data.colors || scene.mMeshes[m]->HasVertexColors(0);
    }
    return data;
}

void appendMesh(const aiMesh& mesh, const SVertexData& data, ZqTriangulationDynamic& t, unsigned int& dropped)
{
    const unsigned int first = t.GetVertexCount();
    for (unsigned int v = 0; v < mesh.mNumVertices; ++v)
    {
        const aiVector3D& p = mesh.mVertices[v];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            CB_THROW(CbExceptionWrongFileVersion, "ZqMeshExchange::Import",
                     "a vertex position that is not a finite number");
        const CbVertexRef vertex = t.AddVertex({p.x, p.y, p.z});
        if (data.normals && mesh.HasNormals())
            t.Get<eVA_Normal>(vertex) = {mesh.mNormals[v].x, mesh.mNormals[v].y, mesh.mNormals[v].z};
        if (data.parameters && mesh.HasTextureCoords(0))
            t.Get<eVA_Parameter>(vertex) = {mesh.mTextureCoords[0][v].x, mesh.mTextureCoords[0][v].y};
        if (data.colors && mesh.HasVertexColors(0))
        {
            const aiColor4D& c = mesh.mColors[0][v];
            t.Get<eVA_Color>(vertex) = {c.r, c.g, c.b, c.a};
        }
    }
    for (unsigned int f = 0; f < mesh.mNumFaces; ++f)
    {
        const aiFace& face = mesh.mFaces[f];
        const unsigned int* i = face.mIndices;
        if (face.mNumIndices != 3 || i[0] == i[1] || i[1] == i[2] || i[0] == i[2])
        {
            ++dropped;
            continue;
        }
        t.AddTriangle(first + i[0], first + i[1], first + i[2]);
    }
}

// A scene of one mesh holding the triangulation; the scene owns (and frees) everything it points to.
void fillScene(const ZqTriangulationBase& source, aiScene& scene)
{
    scene.mRootNode = new aiNode();
    scene.mRootNode->mNumMeshes = 1;
    scene.mRootNode->mMeshes = new unsigned int[1]{0};
    scene.mNumMaterials = 1;
    scene.mMaterials = new aiMaterial* [1] { new aiMaterial() };
    auto* mesh = new aiMesh();
    scene.mNumMeshes = 1;
    scene.mMeshes = new aiMesh* [1] { mesh };
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    const unsigned int n = source.GetVertexCount();
    mesh->mNumVertices = n;
    mesh->mVertices = new aiVector3D[n];
    const auto positions = source.GetPositions();
    for (unsigned int v = 0; v < n; ++v)
        mesh->mVertices[v] = {positions[v].x, positions[v].y, positions[v].z};
    if (source.IsPresent(eVA_Normal))
    {
        mesh->mNormals = new aiVector3D[n];
        const auto normals = source.GetAttribute<eVA_Normal>();
        for (unsigned int v = 0; v < n; ++v)
            mesh->mNormals[v] = {normals[v].x, normals[v].y, normals[v].z};
    }
    if (source.IsPresent(eVA_Parameter))
    {
        mesh->mTextureCoords[0] = new aiVector3D[n];
        mesh->mNumUVComponents[0] = 2;
        const auto parameters = source.GetAttribute<eVA_Parameter>();
        for (unsigned int v = 0; v < n; ++v)
            mesh->mTextureCoords[0][v] = {parameters[v].x, parameters[v].y, 0.0f};
    }
    if (source.IsPresent(eVA_Color))
    {
        mesh->mColors[0] = new aiColor4D[n];
        const auto colors = source.GetAttribute<eVA_Color>();
        for (unsigned int v = 0; v < n; ++v)
            mesh->mColors[0][v] = {colors[v].r, colors[v].g, colors[v].b, colors[v].a};
    }
    mesh->mNumFaces = source.GetTriangleCount();
    mesh->mFaces = new aiFace[mesh->mNumFaces];
    const auto triangles = source.GetTriangles();
    for (unsigned int t = 0; t < mesh->mNumFaces; ++t)
    {
        mesh->mFaces[t].mNumIndices = 3;
        mesh->mFaces[t].mIndices = new unsigned int[3]{triangles[t][0], triangles[t][1], triangles[t][2]};
    }
}
} // namespace

void ZqMeshExchange::Import(const std::string& path, ZqTriangulationDynamic& target,
                            unsigned int& droppedFaces)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices |
                                                       aiProcess_PreTransformVertices);
    if (!scene)
        CB_THROW(CbExceptionFile, "ZqMeshExchange::Import",
                 "cannot read " + path + ": " + importer.GetErrorString());
    const SVertexData data = vertexDataOf(*scene);
    ZqTriangulationDynamic t;
    if (data.normals)
        t.Assert(eVA_Normal);
    if (data.parameters)
        t.Assert(eVA_Parameter);
    if (data.colors)
        t.Assert(eVA_Color);
    for (const EVertexAttribute a : {eVA_Normal, eVA_Parameter, eVA_Color})
        t.SetSerialize(a, true);
    droppedFaces = 0;
    for (unsigned int m = 0; m < scene->mNumMeshes; ++m)
        appendMesh(*scene->mMeshes[m], data, t, droppedFaces);
    if (t.GetTriangleCount() == 0)
        CB_THROW(CbExceptionWrongFileVersion, "ZqMeshExchange::Import", path + " holds no triangle");
    target = std::move(t);
}

void ZqMeshExchange::Export(const ZqTriangulationBase& source, const std::string& path, const char* format)
{
    aiScene scene;
    fillScene(source, scene);
    const std::string temporary = path + ".tmp-" + std::to_string(getpid());
    Assimp::Exporter exporter;
    if (exporter.Export(&scene, format, temporary) != AI_SUCCESS)
    {
        std::remove(temporary.c_str());
        CB_THROW(CbExceptionFile, "ZqMeshExchange::Export",
                 "cannot write " + path + ": " + exporter.GetErrorString());
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0)
    {
        std::remove(temporary.c_str());
        CB_THROW(CbExceptionFile, "ZqMeshExchange::Export", "cannot rename the written file to " + path);
    }
}
