// ZqFtConvexHull2D against a plain monotone chain (std::sort with a comparator, double-precision
// cross products without any exactness guarantee), on 10^6 random points in a square, 10^6 points on
// a circle and 10^6 points of one line, measured in the same run. Prints the ratio hull / reference
// per input.

#include "zq3dbase/zqftconvexhull2d.h"

#include "zqbenchmain.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr unsigned int kPoints = 1000000;

const CbArray<CbVector2f>& randomPoints()
{
    static const CbArray<CbVector2f> points = []
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> coordinate(-5.0f, 5.0f);
        CbArray<CbVector2f> p;
        p.SetCapacity(kPoints);
        for (unsigned int i = 0; i < kPoints; ++i)
        {
            const float x = coordinate(random);
            p.Add({x, coordinate(random)});
        }
        return p;
    }();
    return points;
}

const CbArray<CbVector2f>& circlePoints()
{
    static const CbArray<CbVector2f> points = []
    {
        std::mt19937 random(2);
        std::uniform_real_distribution<double> angle(0.0, 2.0 * M_PI);
        CbArray<CbVector2f> p;
        p.SetCapacity(kPoints);
        for (unsigned int i = 0; i < kPoints; ++i)
        {
            const double a = angle(random);
            p.Add({static_cast<float>(100.0 * std::cos(a)), static_cast<float>(100.0 * std::sin(a))});
        }
        return p;
    }();
    return points;
}

// Points of the diagonal y = x: every orientation test is exactly collinear, the case that double
// precision cannot decide and the exact evaluation must.
const CbArray<CbVector2f>& diagonalPoints()
{
    static const CbArray<CbVector2f> points = []
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<float> coordinate(-100.0f, 100.0f);
        CbArray<CbVector2f> p;
        p.SetCapacity(kPoints);
        for (unsigned int i = 0; i < kPoints; ++i)
        {
            const float t = coordinate(random);
            p.Add({t, t});
        }
        return p;
    }();
    return points;
}

// The textbook monotone chain.
void referenceHull(std::vector<CbVector2f>& points)
{
    std::sort(points.begin(), points.end(),
              [](const CbVector2f& a, const CbVector2f& b)
              { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    points.erase(std::unique(points.begin(), points.end()), points.end());
    if (points.size() < 3)
        return;
    const auto cross = [](const CbVector2f& o, const CbVector2f& a, const CbVector2f& b)
    { return (double(a.x) - o.x) * (double(b.y) - o.y) - (double(a.y) - o.y) * (double(b.x) - o.x); };
    std::vector<CbVector2f> hull(2 * points.size());
    std::size_t k = 0;
    for (const CbVector2f& p : points)
    {
        while (k >= 2 && cross(hull[k - 2], hull[k - 1], p) <= 0)
            --k;
        hull[k++] = p;
    }
    for (std::size_t i = points.size() - 1, lower = k + 1; i-- > 0;)
    {
        while (k >= lower && cross(hull[k - 2], hull[k - 1], points[i]) <= 0)
            --k;
        hull[k++] = points[i];
    }
    hull.resize(k - 1);
    points.swap(hull);
}

template <const CbArray<CbVector2f>& (*Input)()> void hull(benchmark::State& state)
{
    unsigned int corners = 0;
    for (auto _ : state)
    {
        CbArray<CbVector2f> points(Input());
        ZqFtConvexHull2D::Compute(points);
        corners = points.GetCount();
        benchmark::DoNotOptimize(points.GetData());
    }
    state.counters["corners"] = corners;
}

template <const CbArray<CbVector2f>& (*Input)()> void reference(benchmark::State& state)
{
    std::size_t corners = 0;
    for (auto _ : state)
    {
        std::vector<CbVector2f> points(Input().begin(), Input().end());
        referenceHull(points);
        corners = points.size();
        benchmark::DoNotOptimize(points.data());
    }
    state.counters["corners"] = static_cast<double>(corners);
}

BENCHMARK(hull<randomPoints>)->Name("Random/ZqFtConvexHull2D")->Unit(benchmark::kMillisecond);
BENCHMARK(reference<randomPoints>)->Name("Random/MonotoneChain")->Unit(benchmark::kMillisecond);
BENCHMARK(hull<circlePoints>)->Name("Circle/ZqFtConvexHull2D")->Unit(benchmark::kMillisecond);
BENCHMARK(reference<circlePoints>)->Name("Circle/MonotoneChain")->Unit(benchmark::kMillisecond);
BENCHMARK(hull<diagonalPoints>)->Name("Diagonal/ZqFtConvexHull2D")->Unit(benchmark::kMillisecond);
BENCHMARK(reference<diagonalPoints>)->Name("Diagonal/MonotoneChain")->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    std::vector<ZqBenchPair> pairs;
    for (const char* input : {"Random", "Circle", "Diagonal"})
        pairs.push_back({std::string(input) + "/ZqFtConvexHull2D", std::string(input) + "/MonotoneChain"});
    return ZqBenchMain(argc, argv, pairs);
}
