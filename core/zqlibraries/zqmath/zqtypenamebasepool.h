#pragma once

#include "basepool/cbarray.h"
#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zqmath/zqtypename.h"

// Exception texts of templates over the basepool containers and vectors name them by their
// short class names: "class CbArray<class CbVector2f>", not the demangled "CbArray<CbVector2<float> >".
template <> struct ZqTypeName<CbVector2<float>>
{
    static std::string Get() { return "class CbVector2f"; }
};
template <> struct ZqTypeName<CbVector2<double>>
{
    static std::string Get() { return "class CbVector2d"; }
};
template <> struct ZqTypeName<CbVector3<float>>
{
    static std::string Get() { return "class CbVector3f"; }
};
template <> struct ZqTypeName<CbVector3<double>>
{
    static std::string Get() { return "class CbVector3d"; }
};
template <class T> struct ZqTypeName<CbArray<T>>
{
    static std::string Get() { return "class " + ZqTemplateText("CbArray", {ZqTypeName<T>::Get()}); }
};
