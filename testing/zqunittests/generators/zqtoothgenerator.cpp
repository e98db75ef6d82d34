// Writes the two meshes of the Phong restoration scene into the folder given as the only argument:
//
//   Preparation.tri   a lower molar prepared for a crown: its root (rounded apex, widening to the
//                     cemento-enamel junction at z = 0), a chamfer margin just above it, axial walls
//                     converging by about 6 degrees and a rounded occlusal reduction; 31 360 triangles.
//   Restauration.tri  the crown that fits over it: an anatomical outside (height of contour at
//                     z = 2.6, four cusps around a central fossa) and an inside that follows the
//                     preparation at a cement gap of 0.06 mm, meeting the outside at a thin margin
//                     on the chamfer; 44 160 triangles.
//
// Units are millimetres, z runs from the root to the occlusal surface, the long axis of the molar
// (mesial-distal) is x. Both meshes are closed and oriented outward, counter-clockwise seen from
// outside. Each is a surface of revolution: a smooth profile (a Catmull-Rom curve through a few
// control points, resampled at equal arc lengths) swept around z, with an elliptic, slightly
// four-lobed cross-section and, on the crown's occlusal surface, cusps as a cosine of the angle.
//
// The output depends on nothing but this file: no random numbers, no clock; the arithmetic is
// plain double precision rounded to float at the end (compiled without contraction into fused
// multiply-adds), so every machine writes the same bytes. A CTest test regenerates the files and
// compares them with the committed ones.

#include "zq3dbase/zqtriangulationdynamic.h"

#include "basepool/cbexception.h"

#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace
{
constexpr double kPi = std::numbers::pi;
constexpr unsigned int kAround = 160; // vertices of each ring

// A point of a profile in the meridian half-plane: distance from the axis and height.
struct SProfilePoint
{
    double rho;
    double z;
};
using Profile = std::vector<SProfilePoint>;

// The uniform Catmull-Rom curve through the control points (ends repeated), sampled densely.
Profile catmullRom(const Profile& controls, unsigned int samplesPerSegment)
{
    Profile curve;
    const std::size_t n = controls.size();
    for (std::size_t i = 0; i + 1 < n; ++i)
    {
        const SProfilePoint& p0 = controls[i == 0 ? 0 : i - 1];
        const SProfilePoint& p1 = controls[i];
        const SProfilePoint& p2 = controls[i + 1];
        const SProfilePoint& p3 = controls[i + 2 < n ? i + 2 : n - 1];
        for (unsigned int k = 0; k < samplesPerSegment; ++k)
        {
            const double t = double(k) / samplesPerSegment, t2 = t * t, t3 = t2 * t;
            const auto blend = [&](double a, double b, double c, double d) {
                return 0.5 * (2 * b + (c - a) * t + (2 * a - 5 * b + 4 * c - d) * t2 +
                              (3 * b - a - 3 * c + d) * t3);
            };
            curve.push_back({blend(p0.rho, p1.rho, p2.rho, p3.rho), blend(p0.z, p1.z, p2.z, p3.z)});
        }
    }
    curve.push_back(controls.back());
    return curve;
}

// count points along curve at equal arc lengths, the first and last kept.
Profile resample(const Profile& curve, unsigned int count)
{
    std::vector<double> length(curve.size(), 0.0);
    for (std::size_t i = 1; i < curve.size(); ++i)
        length[i] = length[i - 1] + std::hypot(curve[i].rho - curve[i - 1].rho, curve[i].z - curve[i - 1].z);
    Profile out;
    std::size_t segment = 1;
    for (unsigned int k = 0; k < count; ++k)
    {
        const double target = length.back() * k / (count - 1);
        while (segment + 1 < curve.size() && length[segment] < target)
            ++segment;
        const double span = length[segment] - length[segment - 1];
        const double t = span > 0 ? std::min(1.0, std::max(0.0, (target - length[segment - 1]) / span)) : 0.0;
        out.push_back({curve[segment - 1].rho + t * (curve[segment].rho - curve[segment - 1].rho),
                       curve[segment - 1].z + t * (curve[segment].z - curve[segment - 1].z)});
    }
    out.front() = curve.front();
    out.back() = curve.back();
    return out;
}

// The profile moved by distance along its normal in the half-plane, to the side away from the axis.
Profile offset(const Profile& profile, double distance)
{
    Profile out;
    for (std::size_t i = 0; i < profile.size(); ++i)
    {
        const SProfilePoint& a = profile[i == 0 ? 0 : i - 1];
        const SProfilePoint& b = profile[i + 1 < profile.size() ? i + 1 : i];
        const double dr = b.rho - a.rho, dz = b.z - a.z, length = std::hypot(dr, dz);
        // Turning the tangent (dr, dz) by -90 degrees gives (dz, -dr); the sign makes it point away
        // from the axis for a profile running upward.
        out.push_back({profile[i].rho + distance * dz / length, profile[i].z - distance * dr / length});
    }
    out.front().rho = 0.0;
    out.back().rho = 0.0;
    return out;
}

// The cross-section: a molar is longer mesial-distally (x) than bucco-lingually (y) and slightly
// four-lobed.
CbVector3f sweep(const SProfilePoint& p, double angle, double lift)
{
    const double lobes = 1.0 + 0.025 * std::cos(4.0 * angle);
    const double x = p.rho * 1.12 * lobes * std::cos(angle);
    const double y = p.rho * 0.95 * lobes * std::sin(angle);
    return {float(x), float(y), float(p.z + lift)};
}

// Sweeps a profile whose first and last points lie on the axis around z: one vertex at each pole,
// kAround per ring in between. lift(index, angle) raises a profile point at an angle (0 at the
// poles, so that they stay single vertices). Triangles face outward (by the signed volume).
ZqTriangulationDynamic revolve(const Profile& profile, const std::function<double(std::size_t, double)>& lift)
{
    ZqTriangulationDynamic mesh(unsigned(profile.size() * kAround));
    mesh.AddVertex(sweep(profile.front(), 0.0, 0.0));
    for (std::size_t i = 1; i + 1 < profile.size(); ++i)
        for (unsigned int k = 0; k < kAround; ++k)
        {
            const double angle = 2.0 * kPi * k / kAround;
            mesh.AddVertex(sweep(profile[i], angle, lift(i, angle)));
        }
    const unsigned int last = unsigned(1 + (profile.size() - 2) * kAround);
    mesh.AddVertex(sweep(profile.back(), 0.0, 0.0));
    const auto ring = [](std::size_t i, unsigned int k)
    { return unsigned(1 + (i - 1) * kAround + k % kAround); };
    std::vector<ZqTriangleCorners> triangles;
    for (unsigned int k = 0; k < kAround; ++k)
    {
        triangles.push_back({0, ring(1, k + 1), ring(1, k)});
        for (std::size_t i = 1; i + 2 < profile.size(); ++i)
        {
            triangles.push_back({ring(i, k), ring(i, k + 1), ring(i + 1, k + 1)});
            triangles.push_back({ring(i, k), ring(i + 1, k + 1), ring(i + 1, k)});
        }
        triangles.push_back({last, ring(profile.size() - 2, k), ring(profile.size() - 2, k + 1)});
    }
    double volume = 0.0;
    const auto positions = mesh.GetPositions();
    for (const ZqTriangleCorners& t : triangles)
        volume +=
            Dot(CbVector3d(positions[t[0]]), Cross(CbVector3d(positions[t[1]]), CbVector3d(positions[t[2]])));
    for (const ZqTriangleCorners& t : triangles)
        volume > 0 ? mesh.AddTriangle(t[0], t[1], t[2]) : mesh.AddTriangle(t[0], t[2], t[1]);
    return mesh;
}

// The preparation's outline from the root apex up to the centre of its occlusal surface: root,
// cemento-enamel junction at (3.6, -0.1), chamfer, axial wall, rounded occlusal reduction.
Profile preparationOutline()
{
    const Profile controls = {{0.0, -7.2}, {1.2, -7.0},  {2.0, -6.2},  {2.6, -4.0}, {3.2, -1.5},
                              {3.6, -0.1}, {3.55, 0.15}, {3.25, 0.45}, {3.05, 0.9}, {2.7, 4.0},
                              {2.45, 4.7}, {1.8, 5.15},  {0.9, 5.3},   {0.0, 5.3}};
    return catmullRom(controls, 64);
}

ZqTriangulationDynamic preparation()
{
    return revolve(resample(preparationOutline(), 100), [](std::size_t, double) { return 0.0; });
}

// The crown: its outside from the occlusal centre down to the margin, a rounded rim, and its inside
// (the preparation above the margin, moved out by the cement gap) up to the inner occlusal centre.
ZqTriangulationDynamic restoration()
{
    constexpr double kCementGap = 0.06;
    const Profile fine = offset(preparationOutline(), kCementGap);
    // The inside starts where the preparation's outline comes up through z = -0.05.
    std::size_t start = 0;
    while (start + 1 < fine.size() && !(fine[start].z >= -0.05 && fine[start].rho > 3.0))
        ++start;
    const Profile inside = resample(Profile(fine.begin() + long(start), fine.end()), 60);
    const SProfilePoint rim = inside.front();
    const Profile outside = resample(catmullRom({{0.0, 5.95},
                                                 {1.0, 6.15},
                                                 {2.2, 6.85},
                                                 {3.4, 6.5},
                                                 {4.25, 5.2},
                                                 {4.6, 3.4},
                                                 {4.45, 1.8},
                                                 {4.0, 0.6},
                                                 {rim.rho + 0.12, rim.z - 0.02}},
                                                64),
                                     79);
    Profile profile = outside;
    profile.push_back({rim.rho + 0.06, rim.z - 0.05});
    profile.insert(profile.end(), inside.begin(), inside.end());
    const std::size_t outsideCount = outside.size();
    // Four cusps at 45, 135, 225 and 315 degrees on the occlusal part of the outside, fading out
    // towards the centre and down the sides. Near the centre the lift grows as rho^4, the lowest
    // power for which rho^4 cos(4 angle) is smooth there, so the fossa has no crease.
    const auto cusps = [&profile, outsideCount](std::size_t i, double angle)
    {
        if (i >= outsideCount)
            return 0.0;
        const SProfilePoint& p = profile[i];
        const double height = std::min(1.0, std::max(0.0, (p.z - 4.6) / 1.0));
        const double across = std::pow(std::sin(kPi * std::min(p.rho / 4.2, 1.0)), 4);
        return -0.6 * height * height * (3 - 2 * height) * across * std::cos(4.0 * angle);
    };
    return revolve(profile, cusps);
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: zqtoothgenerator <output folder>\n");
        return 2;
    }
    const std::string folder = argv[1];
    try
    {
        preparation().WriteFile(CString(CbUtf8ToWide(folder + "/Preparation.tri")));
        restoration().WriteFile(CString(CbUtf8ToWide(folder + "/Restauration.tri")));
    }
    catch (const CbException& e)
    {
        std::fprintf(stderr, "zqtoothgenerator: %s\n", e.what());
        return 1;
    }
    return 0;
}
