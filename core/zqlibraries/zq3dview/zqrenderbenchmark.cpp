#include "zq3dview/zqrenderunittest.h"

#include "zqbase/cbtimer.h"

#include <algorithm>
#include <limits>

ZqRenderUnitTest::ZqRenderBenchmark::ZqRenderBenchmark(const CString& name, unsigned int iterationCount)
    : m_name(name), m_iterationCount(iterationCount)
{
}

void ZqRenderUnitTest::ZqRenderBenchmark::AddBenchCase(const CbSmartPointer<IBenchCase>& benchCase)
{
    if (!benchCase)
        CB_THROW(CbException, "ZqRenderUnitTest::ZqRenderBenchmark::AddBenchCase");
    m_cases.Add(benchCase);
}

double ZqRenderUnitTest::ZqRenderBenchmark::GetMedian(std::vector<double> samples)
{
    if (samples.empty())
        return 0.0;
    std::sort(samples.begin(), samples.end());
    const std::size_t middle = samples.size() / 2;
    return samples.size() % 2 ? samples[middle] : (samples[middle - 1] + samples[middle]) / 2.0;
}

CbArray<ZqRenderUnitTest::SBenchResult> ZqRenderUnitTest::ZqRenderBenchmark::Run(CString* renderer) const
{
    CbArray<SBenchResult> results;
    for (const auto& benchCase : m_cases)
    {
        ZqTestScene scene;
        scene.CreateDevice();
        if (renderer)
            *renderer = scene.GetDevice()->GetRendererInfo().ToString();
        benchCase->Create(scene);
        benchCase->Prepare(scene);
        SBenchResult result{0.0, 0.0, std::numeric_limits<double>::max(), 0.0};
        std::vector<double> samples;
        samples.reserve(m_iterationCount);
        double sum = 0.0;
        CbTimer timer;
        for (unsigned int i = 0; i < m_iterationCount; ++i)
        {
            benchCase->WarmUp(scene);
            timer.Reset();
            benchCase->Measure(scene);
            const double seconds = double(timer.GetElapsedTicks()) / 1e6;
            samples.push_back(seconds);
            result.dMinimum = std::min(result.dMinimum, seconds);
            result.dMaximum = std::max(result.dMaximum, seconds);
            sum += seconds;
        }
        result.dMean = m_iterationCount ? sum / m_iterationCount : 0.0;
        result.dMedian = GetMedian(std::move(samples));
        results.Add(result);
    }
    return results;
}

void ZqRenderUnitTest::runBenchmark(unsigned int index)
{
    const ZqRenderBenchmark& benchmark = m_benchmarks[index];
    CString renderer;
    const CbArray<SBenchResult> results = benchmark.Run(&renderer);
    if (!renderer.IsEmpty())
        WriteMessageFormat(eInfo, L"Renderer: %s", renderer);
    WriteMessageFormat(eInfo, L"Iterationen: %d", int(benchmark.GetIterationCount()));
    for (unsigned int i = 0; i < results.GetCount(); ++i)
        WriteMessageFormat(eInfo, L"[Min %s, Median %s, Max %s] %s", FormatTime(results[i].dMinimum),
                           FormatTime(results[i].dMedian), FormatTime(results[i].dMaximum),
                           benchmark.GetBenchCaseName(i));
}
