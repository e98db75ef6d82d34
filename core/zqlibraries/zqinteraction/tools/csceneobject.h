#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/zqinteraction_export.h"

#include <string>

namespace Tools
{
// Something the user sees and works on in the interactive scene (a probe, a clipping plane, the
// camera). Data that belong to it (CDataExclusiveSimple) name it through GetSceneObject.
class ZQINTERACTION_API CSceneObject : public virtual CbRefCounted, private INonCopyable
{
public:
    explicit CSceneObject(std::string name);
    ~CSceneObject() override;

    const std::string& GetName() const { return m_name; }

private:
    std::string m_name;
};
} // namespace Tools
