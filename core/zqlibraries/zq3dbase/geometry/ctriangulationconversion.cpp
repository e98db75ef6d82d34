#include "zq3dbase/geometry/ctriangulationconversion.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace Geometry
{
namespace
{
const char* const kFunction = "Geometry::CTriangulationConversion::Convert";

// Calls visit(std::integral_constant<E, e>) for every attribute e of the enumeration E below count.
template <class E, E... values, class TVisit>
void forEach(std::integer_sequence<E, values...>, TVisit&& visit)
{
    (visit(std::integral_constant<E, values>{}), ...);
}
template <class TVisit> void forEachVertexAttribute(TVisit&& visit)
{
    forEach(std::integer_sequence<EVertexAttribute, eVA_Color, eVA_Parameter, eVA_Normal, eVA_Scalar,
                                  eVA_Flags>{},
            visit);
}
template <class TVisit> void forEachTriangleAttribute(TVisit&& visit)
{
    forEach(std::integer_sequence<ETriangleAttribute, eTA_Normal, eTA_Material, eTA_Flags>{}, visit);
}

// Copies the values of one present attribute of source into a new Geometry attribute of target.
template <class TRef, class TValues>
void copyInto(CTriangulation& target, const CString& name, bool serialize, TValues values)
{
    using T = std::remove_const_t<typename TValues::element_type>;
    target.AddAttribute<TRef, T>(name, serialize);
    CAttributeTriangulationRaw<TRef>* store = target.FindAttribute<TRef>(name, SAttributeTypeOf<T>::value);
    std::memcpy(store->GetData(), values.data(), values.size_bytes());
}

// Copies the Geometry attribute at index into the slot of result when the slot has its name and
// value type; returns whether it did.
template <class T, class TSlot>
bool copyOut(const CTriangulation& source, unsigned int index, TSlot slot, ZqTriangulationDynamic& result)
{
    const CTriangulation::SAttributeInfo info = source.GetAttributeInfo(index);
    if (info.name != CTriangulationConversion::GetAttributeName(TSlot::value) ||
        info.type != SAttributeTypeOf<T>::value)
        return false;
    result.Assert(TSlot::value);
    result.SetSerialize(TSlot::value, info.serialize);
    const std::span<T> values = result.GetAttribute<TSlot::value>();
    std::memcpy(values.data(), source.GetAttributeStorage(index).GetData(), values.size_bytes());
    return true;
}
} // namespace

CString CTriangulationConversion::GetAttributeName(EVertexAttribute attribute)
{
    return CString(CStringA(ZqGetAttributeName(attribute)));
}

CString CTriangulationConversion::GetAttributeName(ETriangleAttribute attribute)
{
    return L"triangle " + CString(CStringA(ZqGetAttributeName(attribute)));
}

std::vector<CString> CTriangulationConversion::Convert(const ZqTriangulationBase& source,
                                                       CTriangulation& target)
{
    const unsigned int vertexCount = source.GetVertexCount();
    for (const ZqTriangleCorners& corners : source.GetTriangles())
        if (corners[0] >= vertexCount || corners[1] >= vertexCount || corners[2] >= vertexCount)
            CB_THROW(CbExceptionPreconditionViolation, kFunction, "a triangle whose corners are not set");

    CTriangulation result;
    result.SetVertexCount(vertexCount);
    std::copy(source.GetPositions().begin(), source.GetPositions().end(), result.EditPositions().begin());
    result.SetTriangleCount(source.GetTriangleCount());
    std::copy(source.GetTriangles().begin(), source.GetTriangles().end(), result.EditTriangles().begin());

    std::vector<CString> leftOut;
    // Copies the slot's attribute when it is present, into an attribute of TRef's domain.
    auto copySlot = [&]<class TRef>(auto slot, TRef)
    {
        constexpr auto attribute = decltype(slot)::value;
        if (!source.IsPresent(attribute))
            return;
        copyInto<TRef>(result, GetAttributeName(attribute), source.GetSerialize(attribute),
                       source.GetAttribute<attribute>());
        if (source.GetAttributeParameter(attribute))
            leftOut.push_back(GetAttributeName(attribute) + L" (parameter)");
    };
    forEachVertexAttribute([&](auto slot) { copySlot(slot, CVertexRef()); });
    forEachTriangleAttribute([&](auto slot) { copySlot(slot, CTriangleRef()); });
    target.Swap(result);
    return leftOut;
}

template <class TTarget>
std::vector<CString> CTriangulationConversion::replace(const CTriangulation& source, TTarget& target)
{
    ZqTriangulationDynamic result;
    std::vector<CString> leftOut = toDynamic(source, result);
    target = static_cast<const ZqTriangulationBase&>(result);
    return leftOut;
}

std::vector<CString> CTriangulationConversion::Convert(const CTriangulation& source,
                                                       ZqTriangulationDynamic& target)
{
    return replace(source, target);
}

std::vector<CString> CTriangulationConversion::Convert(const CTriangulation& source,
                                                       ZqTriangulationStatic& target)
{
    return replace(source, target);
}

std::vector<CString> CTriangulationConversion::toDynamic(const CTriangulation& source,
                                                         ZqTriangulationDynamic& result)
{
    // Checks the corners, so that AppendTriangle cannot fail half-way.
    source.GetVertexTriangleRelation();
    result.Reserve(source.GetVertexCount(), source.GetTriangleCount());
    for (const CbVector3f& position : source.GetPositions())
        result.AppendVertex(position);
    for (const CTriangulation::SCorners& c : source.GetTriangles())
        result.AppendTriangle(CbVertexRef(c[0]), CbVertexRef(c[1]), CbVertexRef(c[2]));

    std::vector<CString> leftOut;
    for (unsigned int i = 0; i < source.GetAttributeCount(); ++i)
    {
        bool kept = false;
        if (source.GetAttributeInfo(i).domain == eEK_Vertices)
            forEachVertexAttribute(
                [&](auto slot) {
                    kept = kept ||
                           copyOut<ZqVertexAttributeType<decltype(slot)::value>>(source, i, slot, result);
                });
        else
            forEachTriangleAttribute(
                [&](auto slot) {
                    kept = kept ||
                           copyOut<ZqTriangleAttributeType<decltype(slot)::value>>(source, i, slot, result);
                });
        if (!kept)
            leftOut.push_back(source.GetAttributeInfo(i).name);
    }
    return leftOut;
}
} // namespace Geometry
