#pragma once

#include "basepool/cbarray.h"
#include "basepool/cbexception.h"
#include "basepool/cbmap.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cbvector3.h"
#include "basepool/cstring.h"
#include "zq3dview/zq3dview_export.h"
#include "zqbase/zqcolorrgba.h"

#include <functional>

class ZqD3DScene;

// What the two scene test bases (ZqRenderUnitTest, ZqSceneDependentUnitTest) share: named views,
// the default scene set-up and the registry of named cases.

// One camera set-up: a name (used in file names and messages) and the function that places the
// scene's camera.
struct ZqSceneView
{
    CString sName;
    std::function<void(ZqD3DScene&)> fnSetupCamera;
};

namespace ZqSceneTestSupport
{
// A view that looks along direction with the given up vector at the scene graph's root from
// distance (0: framing its bounds, see ZqD3DScene::LookAt). Its camera function does nothing when
// the scene has no active camera; up and direction are normalised, and one whose squared length
// is not above the smallest normal float (1.1754944e-38) becomes the zero vector.
ZQ3DVIEW_API ZqSceneView CreateView(const CString& name, const CbVector3f& direction, const CbVector3f& up,
                                    float distance);

// Sets the background; adds a group "cameras" with the camera "top", made the active camera; adds
// to the root a light object "light" owning a directional light, enabled, white in all colours,
// with direction (0, 0, 1) in the camera's frame: a headlight that lights what the camera sees.
ZQ3DVIEW_API void SetupSceneDefault(ZqD3DScene& scene, const ZqColorRGBA& background);
} // namespace ZqSceneTestSupport

// Named cases in registration order, shared through CbSmartPointer. Adding a null case throws
// CbException naming the caller's function; a name that is already registered leaves the first
// case in place and drops the new one.
template <class Case> class ZqNamedCases
{
public:
    // True when the case was added, false when its name was taken.
    bool Add(const CbSmartPointer<Case>& testCase, const char* function)
    {
        if (!testCase)
            CB_THROW(CbException, function);
        const CString name = testCase->GetName();
        if (m_index.Contains(name))
            return false;
        m_index.SetAt(name, m_cases.GetCount());
        m_cases.Add(testCase);
        return true;
    }
    unsigned int GetCount() const { return m_cases.GetCount(); }
    const CbSmartPointer<Case>& Get(unsigned int index) const { return m_cases[index]; }
    bool Contains(const CString& name) const { return m_index.Contains(name); }
    // The case of that name, or null.
    CbSmartPointer<Case> Find(const CString& name) const
    {
        unsigned int index = 0;
        return m_index.Lookup(name, index) ? m_cases[index] : CbSmartPointer<Case>();
    }
    const CbArray<CbSmartPointer<Case>>& GetAll() const { return m_cases; }

private:
    CbArray<CbSmartPointer<Case>> m_cases;
    CbMap<CString, unsigned int> m_index;
};

// The once-only registration of a scene test base: the registering hook runs on first need
// (Ensure), unless the runner already called it directly, whose registrations then count as that
// one run; registrations after it are refused (Accept returns false).
class ZqLazyRegistration
{
public:
    template <class Register> void Ensure(Register&& registerCases)
    {
        switch (m_state)
        {
        case EState::eNone:
            m_state = EState::eRunning;
            registerCases();
            m_state = EState::eDone;
            break;
        case EState::eDirect:
            m_state = EState::eDone;
            break;
        case EState::eRunning: // a hook called from inside the registration
        case EState::eDone:
            break;
        }
    }
    // True when a registration may be made now.
    bool Accept()
    {
        if (m_state == EState::eDone)
            return false;
        if (m_state == EState::eNone)
            m_state = EState::eDirect;
        return true;
    }

private:
    enum class EState
    {
        eNone,
        eRunning,
        eDirect,
        eDone
    };
    EState m_state = EState::eNone;
};
