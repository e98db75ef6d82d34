#include "zq3dview/zqrenderunittest.h"

#include "zq3dview/graphics/cexceptiongraphics.h"
#include "zq3dview/zqimagedifference.h"
#include "zqbase/zqbitmap.h"
#include "zqbase/zqtestenvironment.h"

#include <filesystem>

CB_IMPLEMENT_RTTI(ZqRenderUnitTest, ZqUnitTest::RTTI);

namespace
{
bool fileExists(const CString& path)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(CbWideToUtf8(path.Std()), ignored);
}

bool directoryExists(const CString& path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(CbWideToUtf8(path.Std()), ignored);
}
} // namespace

ZqRenderUnitTest::ZqRenderUnitTest() = default;

ZqRenderUnitTest::~ZqRenderUnitTest() = default;

void ZqRenderUnitTest::assertConfigured()
{
    m_registration.Ensure([this] { initSubtests(); });
}

void ZqRenderUnitTest::Configure()
{
    assertConfigured();
}

void ZqRenderUnitTest::addTestCase(const CbSmartPointer<ITestCase>& testCase)
{
    if (!testCase)
        CB_THROW(CbException, "ZqRenderUnitTest::addTestCase");
    if (m_registration.Accept())
        m_cases.Add(testCase, "ZqRenderUnitTest::addTestCase");
}

void ZqRenderUnitTest::addBenchmark(const ZqRenderBenchmark& benchmark)
{
    if (m_registration.Accept())
        m_benchmarks.Add(benchmark);
}

CbSmartPointer<ZqRenderUnitTest::ITestCase> ZqRenderUnitTest::GetTestCase(const CString& name)
{
    return m_cases.Find(name);
}

CbArray<CbSmartPointer<ZqRenderUnitTest::ITestCase>> ZqRenderUnitTest::GetTestCases()
{
    return m_cases.GetAll();
}

unsigned int ZqRenderUnitTest::getSubtestCount() const
{
    const_cast<ZqRenderUnitTest*>(this)->assertConfigured();
    return m_cases.GetCount() + m_benchmarks.GetCount();
}

CString ZqRenderUnitTest::getSubtestName(unsigned int index)
{
    assertConfigured();
    if (index < m_cases.GetCount())
        return m_cases.Get(index)->GetName();
    index -= m_cases.GetCount();
    return index < m_benchmarks.GetCount() ? m_benchmarks[index].GetName() : CString();
}

ZqUnitTest::EResult ZqRenderUnitTest::runUnitTest(unsigned int index)
{
    assertConfigured();
    if (index < m_cases.GetCount())
        return runTestCase(*m_cases.Get(index), false) ? ePassed : eAborted;
    index -= m_cases.GetCount();
    if (index >= m_benchmarks.GetCount())
        return eFailed;
    try
    {
        runBenchmark(index);
    }
    catch (const Graphics::CExceptionGraphics& e)
    {
        WriteMessageFormat(eError, L"Rendern nicht möglich: %S", e.GetDetail());
        return eAborted;
    }
    return ePassed;
}

bool ZqRenderUnitTest::CanRecreate(unsigned int) const
{
    return true;
}

bool ZqRenderUnitTest::Recreate(unsigned int index)
{
    assertConfigured();
    if (index < m_cases.GetCount())
        runTestCase(*m_cases.Get(index), true);
    return true;
}

void ZqRenderUnitTest::ViewCase(ZqD3DScene& scene, const CString& caseName, unsigned int viewIndex)
{
    assertConfigured();
    const CbSmartPointer<ITestCase> testCase = GetTestCase(caseName);
    if (!testCase || viewIndex >= testCase->GetViewCount())
        return;
    testCase->SetupScene2(scene);
    testCase->SetupView(viewIndex, scene);
    scene.InitiateRendering();
}

bool ZqRenderUnitTest::runTestCase(ITestCase& testCase, bool recreate)
{
    const CString caseName = testCase.GetName();
    if (!m_cases.Contains(caseName))
    {
        WriteMessageFormat(eError, L"Keine Testfunktion mit Namen %s gefunden.", caseName);
        return false;
    }
    m_sSnapshotFolder =
        CString(CbUtf8ToWide(ZqTestEnvironment::GetDataDirectory(GetRTTI().GetName()))) + L"/Snapshots/";
    std::error_code ignored;
    std::filesystem::create_directories(CbWideToUtf8(m_sSnapshotFolder.Std()), ignored);
    try
    {
        ZqTestScene scene;
        scene.CreateDevice();
        const Graphics::SRendererInfo& renderer = scene.GetDevice()->GetRendererInfo();
        WriteMessageFormat(eInfo, L"Renderer: %s", renderer.ToString());
        m_sRendererFolder = renderer.GetFolderName();
        testCase.SetupScene(scene);
        testCase.SetupScene2(scene);
        bool passed = true;
        for (unsigned int i = 0; i < testCase.GetViewCount(); ++i)
        {
            const CString viewName = testCase.GetViewName(i);
            testCase.SetupView(i, scene);
            scene.Render();
            ZqBitmap bitmap;
            scene.GetScreenshot(bitmap);
            if (recreate)
                writeReference(bitmap, caseName, viewName);
            else if (!compareWithReference(bitmap, caseName, viewName, testCase.GetPSNRThreshold(i)))
                passed = false;
        }
        return passed;
    }
    catch (const Graphics::CExceptionGraphics& e)
    {
        WriteMessageFormat(eError, L"Rendern nicht möglich: %S", e.GetDetail());
        return false;
    }
}

CString ZqRenderUnitTest::findReference(const CString& caseName, const CString& viewName) const
{
    const CString fileName = CbFormat(L"%s-%s-Ref.png", caseName, viewName);
    if (!m_sRendererFolder.IsEmpty())
    {
        const CString own = m_sSnapshotFolder + m_sRendererFolder + L"/" + fileName;
        if (fileExists(own))
            return own;
    }
    return m_sSnapshotFolder + fileName;
}

bool ZqRenderUnitTest::compareWithReference(const ZqBitmap& bitmap, const CString& caseName,
                                            const CString& viewName, float threshold)
{
    const CString baseName = CbFormat(L"%s%s-%s", m_sSnapshotFolder, caseName, viewName);
    const CString referencePath = findReference(caseName, viewName);
    ZqBitmap reference;
    if (!fileExists(referencePath))
    {
        WriteMessageFormat(eError, L"Keine Referenzdatei für View '%s' gefunden.", viewName);
        writeDebugImages(bitmap, nullptr, referencePath, viewName, baseName);
        return false;
    }
    if (!reference.Read(referencePath))
    {
        WriteMessageFormat(eError, L"Referenzdatei für View '%s' nicht lesbar: %s", viewName,
                           reference.GetLastError());
        writeDebugImages(bitmap, nullptr, referencePath, viewName, baseName);
        return false;
    }
    const SImageDiff diff = CompareImages(bitmap, reference, eIgnoreTransparent | ePremultiplyAlpha);
    const bool passed = diff.fPSNR >= threshold;
    WriteMessage(eInfo, ZqImageDifference::Measure(bitmap, reference)
                            .Describe(viewName, diff.fMeanAbsError, diff.fRMSError, diff.fPSNR));
    if (diff.fMeanAbsError == 0.0f)
        return passed;
    WriteMessageFormat(eInfo, L"ø Pixelfehler View '%s': %.3e (PSNR %.2f dB).", viewName,
                       double(diff.fMeanAbsError), double(diff.fPSNR));
    writeDebugImages(bitmap, &reference, referencePath, viewName, baseName);
    return passed;
}

void ZqRenderUnitTest::writeDebugImages(const ZqBitmap& bitmap, const ZqBitmap* reference,
                                        const CString& referencePath, const CString& viewName,
                                        const CString& baseName)
{
    if (!IsDebugFlagSet(eDF_WriteImages))
        return;
    const CString testPath = baseName + L"-Test.png";
    if (!bitmap.Write(testPath, ZqBitmap::eWO_Alpha))
    {
        WriteMessage(eError, bitmap.GetLastError());
        return;
    }
    CString message = CbFormat(L"Debug-Bilder View '%s': ", viewName);
    if (reference)
        message += L"Referenz " + referencePath + L" | ";
    message += L"Bild " + testPath;
    if (reference && reference->GetWidth() == bitmap.GetWidth() &&
        reference->GetHeight() == bitmap.GetHeight())
    {
        const CString diffPath = baseName + L"-Diff.png";
        const ZqBitmap difference = ZqImageDifference::MakeDifferenceImage(bitmap, *reference);
        if (!difference.Write(diffPath, ZqBitmap::eWO_None))
        {
            WriteMessage(eError, difference.GetLastError());
            return;
        }
        message += L" | Differenz " + diffPath;
    }
    WriteMessage(eInfo, message);
}

void ZqRenderUnitTest::writeReference(const ZqBitmap& bitmap, const CString& caseName,
                                      const CString& viewName)
{
    const CString fileName = CbFormat(L"%s-%s-Ref.png", caseName, viewName);
    const CString ownFolder = m_sSnapshotFolder + m_sRendererFolder + L"/";
    const CString path =
        (!m_sRendererFolder.IsEmpty() && directoryExists(ownFolder) ? ownFolder : m_sSnapshotFolder) +
        fileName;
    CString change = L"neu";
    if (fileExists(path))
    {
        ZqBitmap old;
        const bool readable = old.Read(path);
        if (readable && old == bitmap)
        {
            WriteMessageFormat(eInfo, L"Referenz geschrieben: %s (unverändert)", path);
            return;
        }
        const float psnr =
            readable ? CompareImages(bitmap, old, eIgnoreTransparent | ePremultiplyAlpha).fPSNR : 0.0f;
        change = CbFormat(L"geändert, PSNR %.2f dB", double(psnr));
    }
    if (!bitmap.Write(path, ZqBitmap::eWO_Alpha))
        WriteMessageFormat(eError, L"Referenz nicht geschrieben: %s", bitmap.GetLastError());
    else
        WriteMessageFormat(eInfo, L"Referenz geschrieben: %s (%s)", path, change);
}
