#pragma once

#include "basepool/cbarray.h"
#include "basepool/cbrefcounted.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zq3dview/zq3dview_export.h"
#include "zq3dview/zqd3dscene.h"
#include "zq3dview/zqscenetestsupport.h"
#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqdebugging.h"
#include "zqbase/zqunittest.h"

#include <functional>
#include <limits>
#include <vector>

class ZqBitmap;

// The base of every rendering test. A derived test registers, in initSubtests, test cases (one
// scene each, rendered from several named views and compared with reference images) and render
// benchmarks. Subtests are the cases in registration order, then the benchmarks.
//
//     void initSubtests() override
//     {
//         STestDesc desc;
//         desc.sName = L"EffectPhong";
//         desc.fnSetupScene = [](ZqD3DScene& scene) { SetupSceneDefault(scene, background); ... };
//         desc.aViews = CreateAxisViews(0.0f);
//         addTestCase(CreateTestCase(desc));
//     }
//
// A case runs in a fresh hidden 1600 x 900 scene (ZqTestScene). Each view is rendered and compared
// by PSNR with "<data>/<Class>/Snapshots/<case>-<view>-Ref.png"; a renderer whose pictures
// legitimately differ keeps its own references in "Snapshots/<renderer>/", looked up first
// (SRendererInfo::GetFolderName). A failed comparison gives eAborted (4). Recreate writes the
// references afresh. Every case reports the renderer and, per view, the numbers of the comparison.
//
// Registration runs once, lazily, on the first call of the subtest hooks, Recreate or Configure;
// when the runner calls InitSubtests itself first, its registrations count as that one run, and a
// later run of initSubtests registers nothing more.
class ZQ3DVIEW_API ZqRenderUnitTest : public ZqUnitTest,
                                      public IUnitTestRecreate,
                                      public ZqDebugging,
                                      private INonCopyable
{
    CB_DECLARE_RTTI(ZqRenderUnitTest)

public:
    static constexpr float sc_fDefaultPSNRThreshold = 50.0f;
    static constexpr float sc_fInfinity = std::numeric_limits<float>::infinity();

    using SceneFunction = std::function<void(ZqD3DScene&)>;
    using SView = ZqSceneView;

    // One test case; copied into the case object.
    struct STestDesc
    {
        CString sName;               // case name, subtest name, first part of the image names
        SceneFunction fnSetupScene;  // builds the scene, once after it is made
        SceneFunction fnSetupScene2; // right after the first; may be empty
        CbArray<SView> aViews;
        float fPSNRThreshold = sc_fDefaultPSNRThreshold; // minimum PSNR (dB) of each view
    };

    // Result of an image comparison; a fresh value means identical.
    struct SImageDiff
    {
        float fMeanAbsError = 0.0f; // mean absolute channel difference, 0..255
        float fRMSError = 0.0f;     // root mean square channel difference
        float fPSNR = sc_fInfinity; // 20 log10(255 / RMS), dB
    };

    // Bit flags of CompareImages.
    enum ECompareOptions : unsigned int
    {
        eCompareDefault = 0,
        eIgnoreTransparent = 1, // a pixel whose alpha is 0 in both images is not counted
        ePremultiplyAlpha = 2,  // colours times alpha / 255 before differencing; alpha not compared
        eIgnoreAlpha = 4,       // alpha neither compared nor premultiplied; wins over ePremultiplyAlpha
    };
    friend constexpr ECompareOptions operator|(ECompareOptions a, ECompareOptions b)
    {
        return ECompareOptions(unsigned(a) | unsigned(b));
    }

    // How a benchmark renders. Any value other than eReleaseAndRender acts as eRender.
    enum EMeasureMode
    {
        eRender = 0,           // the timed frame re-renders what the untimed one left on the device
        eReleaseAndRender = 1, // the untimed frame is followed by a release of the scene graph's
                               // device resources, so the timed frame makes them again
    };

    // The two scene set-up steps of a case.
    class ISetup
    {
    public:
        virtual void SetupScene(ZqD3DScene& scene) = 0;  // the descriptor's first callback
        virtual void SetupScene2(ZqD3DScene& scene) = 0; // the second, if there is one

    protected:
        ~ISetup() = default;
    };

    class ITestCase : public virtual CbRefCounted, public ISetup
    {
    public:
        virtual CString GetName() const = 0;
        virtual unsigned int GetViewCount() const = 0;
        virtual CString GetViewName(unsigned int index) const = 0;
        virtual void SetupView(unsigned int index, ZqD3DScene& scene) = 0;
        virtual float GetPSNRThreshold(unsigned int index) const = 0;
    };

    class IBenchCase : public virtual CbRefCounted
    {
    public:
        virtual CString GetName() const = 0;
        virtual void Create(ZqD3DScene& scene) = 0;  // the descriptor's first callback
        virtual void Prepare(ZqD3DScene& scene) = 0; // the second callback, then the case's camera
        virtual void WarmUp(ZqD3DScene& scene) = 0;  // one frame (and the release, eReleaseAndRender)
        virtual void Measure(ZqD3DScene& scene) = 0; // one frame
    };

    // Times of one bench case, seconds.
    struct SBenchResult
    {
        double dMean = 0.0;
        double dMedian = 0.0;
        double dMinimum = 0.0;
        double dMaximum = 0.0;
    };

    class ZQ3DVIEW_API ZqRenderBenchmark
    {
    public:
        ZqRenderBenchmark(const CString& name, unsigned int iterationCount);

        // A null case throws CbException ("ZqRenderUnitTest::ZqRenderBenchmark::AddBenchCase").
        void AddBenchCase(const CbSmartPointer<IBenchCase>& benchCase);
        unsigned int GetBenchCaseCount() const { return m_cases.GetCount(); }
        CString GetBenchCaseName(unsigned int index) const { return m_cases[index]->GetName(); }
        unsigned int GetIterationCount() const { return m_iterationCount; }
        const CString& GetName() const { return m_name; }
        // Each case in a fresh hidden scene: create and prepare once, then per iteration an untimed
        // warm-up and a timed measured frame. Throws Graphics::CExceptionGraphics without a device.
        // renderer, when given, receives the renderer string of the scenes.
        CbArray<SBenchResult> Run(CString* renderer = nullptr) const;

        static unsigned int GetDefaultIterationCount() { return 10; }
        // The middle sample, the mean of the two middle ones for an even count, 0 for none.
        static double GetMedian(std::vector<double> samples);

    private:
        CString m_name;
        unsigned int m_iterationCount;
        CbArray<CbSmartPointer<IBenchCase>> m_cases;
    };

    // The hidden scene every case and bench case runs in: its client area is 1600 x 900 whatever
    // the window rectangle, which is {0, 0, 1, 1}, and its visibility does not matter.
    class ZQ3DVIEW_API ZqTestScene : public ZqD3DScene
    {
    public:
        static constexpr int kWidth = 1600;
        static constexpr int kHeight = 900;
        ZqTestScene();
        SRect GetClientRect() const override;
    };

    ZqRenderUnitTest();
    ~ZqRenderUnitTest() override;

    // Static helpers for building scenes and reading results.
    static SImageDiff CompareImages(const ZqBitmap& a, const ZqBitmap& b, ECompareOptions options);
    static SView CreateView(const CString& name, const CbVector3f& direction, const CbVector3f& up,
                            float distance);
    // "X" (direction (-1, 0, 0), up (0, 0, -1)), "Y" ((0, -1, 0), up (1, 0, 0)), "Z" ((0, 0, -1),
    // up (1, 0, 0)), in this order.
    static CbArray<SView> CreateAxisViews(float distance);
    // A unit direction that depends only on the indices (MurmurHash3 of the indices, seed 2);
    // CreateRandomDir(i) and CreateRandomDir(i, 0) differ.
    static CbVector3f CreateRandomDir(unsigned int i);
    static CbVector3f CreateRandomDir(unsigned int i, unsigned int j);
    // Hue by golden-ratio steps (fraction of i times 0.618... times 360 degrees), saturation 1.
    static ZqColorRGBA CreateUniqueHue(unsigned int i, float lightness);
    // "0 s"; else "%.2f" and ns, µs, ms or s without a blank: 0.0005 gives "500.00µs".
    static CString FormatTime(double seconds);
    static void SetupSceneDefault(ZqD3DScene& scene, const ZqColorRGBA& background);
    static CbSmartPointer<ITestCase> CreateTestCase(const STestDesc& desc);
    static CbSmartPointer<IBenchCase> CreateRenderBenchCase(const STestDesc& desc, const CString& name,
                                                            EMeasureMode mode, unsigned int viewIndex);

    // The registered case of that name, or null; a copy of all of them.
    CbSmartPointer<ITestCase> GetTestCase(const CString& name);
    CbArray<CbSmartPointer<ITestCase>> GetTestCases();
    // Shows a registered case in a caller's (interactive) scene: the case's second set-up (the
    // caller's scene is set up already), view viewIndex, then InitiateRendering. Nothing happens
    // for a view index beyond the case's views or a name that is not registered.
    void ViewCase(ZqD3DScene& scene, const CString& caseName, unsigned int viewIndex);
    // Runs the lazy registration now.
    void Configure();

    bool CanRecreate(unsigned int index) const override;
    // Renders the case of index and writes its references; true for every index.
    bool Recreate(unsigned int index) override;

protected:
    // Derived tests register here (addTestCase, addBenchmark); it runs once.
    void initSubtests() override = 0;
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    // A null case throws CbException ("ZqRenderUnitTest::addTestCase"); a taken name is dropped.
    void addTestCase(const CbSmartPointer<ITestCase>& testCase);
    void addBenchmark(const ZqRenderBenchmark& benchmark);

    // Renders every view of testCase and compares (or, recreating, writes) its references; true
    // when no view failed.
    bool runTestCase(ITestCase& testCase, bool recreate);
    bool compareWithReference(const ZqBitmap& bitmap, const CString& caseName, const CString& viewName,
                              float threshold);
    void runBenchmark(unsigned int index);

    // "<data>/<Class>/Snapshots/" of the last case run.
    const CString& getSnapshotFolder() const { return m_sSnapshotFolder; }

private:
    void assertConfigured();
    void writeReference(const ZqBitmap& bitmap, const CString& caseName, const CString& viewName);
    // With eDF_WriteImages: the render as "<base>-Test.png" and, with a reference of its size, the
    // amplified difference as "<base>-Diff.png", announced in one message for the runner's page:
    // "Debug-Bilder View '<view>': Referenz <file> | Bild <file> | Differenz <file>" (the
    // reference and the difference only when there are such files).
    void writeDebugImages(const ZqBitmap& bitmap, const ZqBitmap* reference, const CString& referencePath,
                          const CString& viewName, const CString& baseName);
    CString findReference(const CString& caseName, const CString& viewName) const;

    ZqNamedCases<ITestCase> m_cases;
    CbArray<ZqRenderBenchmark> m_benchmarks;
    CString m_sSnapshotFolder;
    CString m_sRendererFolder;
    ZqLazyRegistration m_registration;
};
