#pragma once

// Constants of the numerics library.
inline constexpr float c_fPi = 3.14159265358979323846f;
inline constexpr double c_dPi = 3.14159265358979323846;
