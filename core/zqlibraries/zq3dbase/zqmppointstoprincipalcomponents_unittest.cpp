// Test of the principal components of point clouds: a Gaussian cloud with ellipsoidal contours of
// known axes and deviations, points on a line and in a plane, too few points, and a second
// computation on the same object.

#include "basepool/cbarray.h"
#include "basepool/cbexception.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zqmppointstoprincipalcomponents.h"
#include "zqbase/zqrandomseed.h"
#include "zqbase/zqunittest.h"

#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>

namespace
{
using PrincipalComponents = ZqMpPointsToPrincipalComponents<const CbVector3f*>;

struct SFrame
{
    CbVector3d axes[3]; // orthonormal
};

// A random orthonormal frame: Gram-Schmidt on Gaussian vectors (uniform over the rotations).
SFrame randomFrame(std::mt19937& generator)
{
    std::normal_distribution<double> normal;
    SFrame frame;
    for (unsigned int i = 0; i < 3; ++i)
        for (;;)
        {
            CbVector3d v(normal(generator), normal(generator), normal(generator));
            for (unsigned int j = 0; j < i; ++j)
                v -= frame.axes[j] * v.Dot(frame.axes[j]);
            if (v.Length() < 0.1)
                continue;
            frame.axes[i] = v / v.Length();
            break;
        }
    return frame;
}

CbVector3d randomCentre(std::mt19937& generator)
{
    std::uniform_real_distribution<double> coordinate(-100.0, 100.0);
    return CbVector3d(coordinate(generator), coordinate(generator), coordinate(generator));
}

double cosine(const CbVector3f& a, const CbVector3d& b)
{
    return std::fabs(CbVector3d(a).Dot(b)) / (CbVector3d(a).Length() * b.Length());
}

// Population variance of the points along a unit direction, in double.
double varianceAlong(const CbArray<CbVector3f>& points, const CbVector3d& direction)
{
    double sum = 0.0, squares = 0.0;
    for (const CbVector3f& p : points)
    {
        const double t = CbVector3d(p).Dot(direction);
        sum += t;
        squares += t * t;
    }
    const double n = points.GetCount();
    return squares / n - (sum / n) * (sum / n);
}
} // namespace

class ZqMpPointsToPrincipalComponents_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqMpPointsToPrincipalComponents_UnitTest)
    ZQ_DECLARE_SUBTEST_TABLE(ZqMpPointsToPrincipalComponents_UnitTest)

private:
    EResult runEllipsoidCloud();
    EResult runPointsOnLine();
    EResult runPointsInPlane();
    EResult runTooFewPoints();
    EResult runComputeTwice();

    // Computes; false (with the reason written) when Compute fails or finds no result.
    bool compute(PrincipalComponents& components, const CbArray<CbVector3f>& points);
    bool check(bool condition, const wchar_t* format, ...);
    // The axes are unit vectors, pairwise orthogonal, the variances ascending.
    bool checkFrame(const PrincipalComponents& components);
};

CB_IMPLEMENT_RTTI(ZqMpPointsToPrincipalComponents_UnitTest, ZqUnitTest::RTTI);

const ZqSubtestRowOf<ZqMpPointsToPrincipalComponents_UnitTest>
    ZqMpPointsToPrincipalComponents_UnitTest::s_subtests[] = {
        {"Ellipsoidförmige Punktwolke", &ZqMpPointsToPrincipalComponents_UnitTest::runEllipsoidCloud},
        {"Punkte auf einer Geraden", &ZqMpPointsToPrincipalComponents_UnitTest::runPointsOnLine},
        {"Punkte in einer Ebene", &ZqMpPointsToPrincipalComponents_UnitTest::runPointsInPlane},
        {"Weniger als drei Punkte", &ZqMpPointsToPrincipalComponents_UnitTest::runTooFewPoints},
        {"Zweimalige Berechnung", &ZqMpPointsToPrincipalComponents_UnitTest::runComputeTwice},
};

ZQ_IMPLEMENT_SUBTEST_TABLE(ZqMpPointsToPrincipalComponents_UnitTest)

bool ZqMpPointsToPrincipalComponents_UnitTest::check(bool condition, const wchar_t* format, ...)
{
    if (condition)
        return true;
    va_list arguments;
    va_start(arguments, format);
    WriteMessage(eError, CString(CbFormatV(format, arguments)));
    va_end(arguments);
    return false;
}

bool ZqMpPointsToPrincipalComponents_UnitTest::compute(PrincipalComponents& components,
                                                       const CbArray<CbVector3f>& points)
{
    components.begin = points.begin();
    components.end = points.end();
    components.setInputChanged();
    if (!components.Compute(ZqAlgorithm::eCF_Compute))
    {
        WriteMessageFormat(eError, L"Compute fehlgeschlagen: %S\n", components.GetLastError().c_str());
        return false;
    }
    return check(components.HasResult(), L"Kein Ergebnis für %u Punkte\n", points.GetCount());
}

bool ZqMpPointsToPrincipalComponents_UnitTest::checkFrame(const PrincipalComponents& components)
{
    for (unsigned int i = 0; i < 3; ++i)
    {
        const double length = CbVector3d(components.axes[i]).Length();
        if (!check(std::fabs(length - 1.0) <= 1e-5, L"Achse %u hat die Länge %.9g\n", i, length))
            return false;
        for (unsigned int j = i + 1; j < 3; ++j)
        {
            const double dot = CbVector3d(components.axes[i]).Dot(CbVector3d(components.axes[j]));
            if (!check(std::fabs(dot) <= 1e-5, L"Achsen %u und %u nicht orthogonal (Skalarprodukt %.3g)\n", i,
                       j, dot))
                return false;
        }
    }
    return check(components.eigenvalues[0] <= components.eigenvalues[1] &&
                     components.eigenvalues[1] <= components.eigenvalues[2],
                 L"Varianzen nicht aufsteigend: %g %g %g\n", components.eigenvalues[0],
                 components.eigenvalues[1], components.eigenvalues[2]);
}

ZqUnitTest::EResult ZqMpPointsToPrincipalComponents_UnitTest::runEllipsoidCloud()
{
    std::mt19937 generator(ZqRandomSeed::Start(*this));
    const SFrame frame = randomFrame(generator);
    const CbVector3d centre = randomCentre(generator);
    const double deviations[3] = {0.5, 2.0, 5.0};
    const unsigned int count = 20000;
    std::normal_distribution<double> normal;
    CbArray<CbVector3f> points;
    for (unsigned int i = 0; i < count; ++i)
    {
        CbVector3d p = centre;
        for (unsigned int k = 0; k < 3; ++k)
            p += frame.axes[k] * (deviations[k] * normal(generator));
        points.Add(CbVector3f(p));
    }

    PrincipalComponents components;
    if (!compute(components, points) || !checkFrame(components))
        return eFailed;
    // Six standard errors: the mean scatters by deviation / sqrt(n), a variance by sqrt(2 / n) of
    // itself, an axis by sqrt(v_i v_j / n) / (v_j - v_i) radians towards another one.
    const double centreError = 6.0 * deviations[2] / std::sqrt(double(count));
    const double offCentre = (CbVector3d(components.centroid) - centre).Length();
    if (!check(offCentre <= centreError, L"Schwerpunkt %.6g vom Mittelpunkt entfernt (erlaubt %.3g)\n",
               offCentre, centreError))
        return eFailed;
    for (unsigned int k = 0; k < 3; ++k)
    {
        const double variance = deviations[k] * deviations[k];
        const double relative = std::fabs(components.eigenvalues[k] - variance) / variance;
        if (!check(relative <= 6.0 * std::sqrt(2.0 / count), L"Varianz %u ist %g statt %g\n", k,
                   components.eigenvalues[k], variance))
            return eFailed;
        const double c = cosine(components.axes[k], frame.axes[k]);
        if (!check(c >= 0.999, L"Achse %u weicht um %.3g Grad ab\n", k,
                   std::acos(std::min(c, 1.0)) * 180.0 / M_PI))
            return eFailed;
    }
    return ePassed;
}

ZqUnitTest::EResult ZqMpPointsToPrincipalComponents_UnitTest::runPointsOnLine()
{
    std::mt19937 generator(ZqRandomSeed::Start(*this));
    const CbVector3d direction = randomFrame(generator).axes[0];
    const CbVector3d centre = randomCentre(generator);
    std::uniform_real_distribution<double> parameter(-10.0, 10.0);
    CbArray<CbVector3f> points;
    for (unsigned int i = 0; i < 1000; ++i)
        points.Add(CbVector3f(centre + direction * parameter(generator)));

    PrincipalComponents components;
    if (!compute(components, points) || !checkFrame(components))
        return eFailed;
    // Two variances vanish up to the rounding of the points to float; the line's direction is last.
    const double spread = varianceAlong(points, direction);
    const double rounding = 1e-8 * spread;
    if (!check(components.eigenvalues[0] <= rounding && components.eigenvalues[1] <= rounding,
               L"Varianzen quer zur Geraden %g und %g statt 0\n", components.eigenvalues[0],
               components.eigenvalues[1]) ||
        !check(std::fabs(components.eigenvalues[2] - spread) <= 1e-5 * spread,
               L"Varianz entlang der Geraden %g statt %g\n", components.eigenvalues[2], spread) ||
        !check(cosine(components.axes[2], direction) >= 1.0 - 1e-6,
               L"Letzte Achse liegt nicht auf der Geraden\n"))
        return eFailed;
    return ePassed;
}

ZqUnitTest::EResult ZqMpPointsToPrincipalComponents_UnitTest::runPointsInPlane()
{
    std::mt19937 generator(ZqRandomSeed::Start(*this));
    const SFrame frame = randomFrame(generator);
    const CbVector3d centre = randomCentre(generator);
    std::uniform_real_distribution<double> u(-10.0, 10.0), v(-3.0, 3.0);
    CbArray<CbVector3f> points;
    for (unsigned int i = 0; i < 2000; ++i)
        points.Add(CbVector3f(centre + frame.axes[1] * v(generator) + frame.axes[2] * u(generator)));

    PrincipalComponents components;
    if (!compute(components, points) || !checkFrame(components))
        return eFailed;
    // The normal comes first with no variance; the two in-plane variances add up to the spread of
    // the points in the plane, whatever their own directions.
    const double inPlane = varianceAlong(points, frame.axes[1]) + varianceAlong(points, frame.axes[2]);
    const double sum = double(components.eigenvalues[1]) + double(components.eigenvalues[2]);
    if (!check(components.eigenvalues[0] <= 1e-8 * inPlane, L"Varianz quer zur Ebene %g statt 0\n",
               components.eigenvalues[0]) ||
        !check(cosine(components.axes[0], frame.axes[0]) >= 1.0 - 1e-6,
               L"Erste Achse ist nicht die Normale\n") ||
        !check(std::fabs(sum - inPlane) <= 1e-5 * inPlane, L"Varianzen in der Ebene %g + %g statt %g\n",
               components.eigenvalues[1], components.eigenvalues[2], inPlane) ||
        !check(components.eigenvalues[1] < 0.5 * components.eigenvalues[2],
               L"Die Varianzen in der Ebene %g und %g unterscheiden sich zu wenig\n",
               components.eigenvalues[1], components.eigenvalues[2]))
        return eFailed;
    return ePassed;
}

ZqUnitTest::EResult ZqMpPointsToPrincipalComponents_UnitTest::runTooFewPoints()
{
    const CbArray<CbVector3f> points = {{1, 2, 3}, {4, -1, 0}, {0, 0, 7}};
    for (unsigned int count = 0; count < 3; ++count)
    {
        PrincipalComponents components;
        components.begin = points.begin();
        components.end = points.begin() + count;
        components.setInputChanged();
        if (!check(components.Compute(ZqAlgorithm::eCF_Compute), L"Compute mit %u Punkten fehlgeschlagen\n",
                   count) ||
            !check(!components.HasResult(), L"Ergebnis für %u Punkte\n", count))
            return eFailed;
        bool unset = components.centroid == CbVector3f();
        for (unsigned int i = 0; i < 3; ++i)
            unset = unset && components.axes[i] == CbVector3f() && components.eigenvalues[i] == 0.0f;
        if (!check(unset, L"%u Punkte haben Schwerpunkt, Achsen oder Varianzen gesetzt\n", count))
            return eFailed;
    }

    // Three points: the smallest variance belongs to the normal of their triangle.
    PrincipalComponents components;
    if (!compute(components, points) || !checkFrame(components))
        return eFailed;
    const CbVector3d a(points[0]), b(points[1]), c(points[2]);
    const CbVector3d normal = (b - a).Cross(c - a);
    const CbVector3d mean = (a + b + c) / 3.0;
    if (!check(components.eigenvalues[0] <= 1e-5f, L"Varianz quer zum Dreieck %g statt 0\n",
               components.eigenvalues[0]) ||
        !check(cosine(components.axes[0], normal) >= 1.0 - 1e-6,
               L"Erste Achse ist nicht die Dreiecksnormale\n") ||
        !check((CbVector3d(components.centroid) - mean).Length() <= 1e-6,
               L"Schwerpunkt des Dreiecks falsch\n"))
        return eFailed;
    return ePassed;
}

ZqUnitTest::EResult ZqMpPointsToPrincipalComponents_UnitTest::runComputeTwice()
{
    const CbArray<CbVector3f> points = {{0, 0, 0}, {2, 0, 0}, {0, 1, 0}, {0, 0, 4}, {1, 1, 1}};
    PrincipalComponents components;
    if (!compute(components, points))
        return eFailed;
    const CbVector3f centroid = components.centroid;
    const float largest = components.eigenvalues[2];
    const CbVector3f axis = components.axes[2];

    // Unchanged inputs: nothing to do.
    if (!check(components.Compute(ZqAlgorithm::eCF_Compute), L"Compute ohne Änderung fehlgeschlagen\n"))
        return eFailed;
    // A new computation on the same object is refused and leaves the first result.
    const CbArray<CbVector3f> others = {{5, 5, 5}, {6, 5, 5}, {5, 7, 5}, {5, 5, 9}};
    components.begin = others.begin();
    components.end = others.end();
    components.setInputChanged();
    const bool computed = components.Compute(ZqAlgorithm::eCF_Compute);
    if (!check(!computed, L"Zweite Berechnung wurde nicht abgewiesen\n") ||
        !check(components.GetLastError().find("ZqMpPointsToPrincipalComponents::compute") !=
                   std::string::npos,
               L"Unerwarteter Fehler: %S\n", components.GetLastError().c_str()) ||
        !check(components.centroid == centroid && components.eigenvalues[2] == largest &&
                   components.axes[2] == axis,
               L"Zweite Berechnung hat das Ergebnis verändert\n"))
        return eFailed;
    return ePassed;
}
