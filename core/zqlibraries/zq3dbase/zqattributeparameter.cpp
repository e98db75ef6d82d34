#include "zq3dbase/zqattributeparameter.h"

#include "zq3dbase/zqparametrizationplanar.h"

ZqAttributeParameter::~ZqAttributeParameter() = default;

CbSmartPointer<ZqAttributeParameter> ZqAttributeParameter::Create(std::string_view kind)
{
    if (kind == "planar")
        return CbMakeSmart<ZqParametrizationPlanar>();
    return nullptr;
}
