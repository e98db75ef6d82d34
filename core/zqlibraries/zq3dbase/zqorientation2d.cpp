#include "zq3dbase/zqorientation2d.h"

namespace
{
// Adds term to the expansion e[0 .. count-1] (non-overlapping components of increasing magnitude,
// zeros dropped) and returns the new component count; the result keeps those properties and its
// sum is exactly the old sum plus term.
int growExpansion(double* e, int count, double term)
{
    double q = term;
    int kept = 0;
    for (int i = 0; i < count; ++i)
    {
        // Error-free sum: q + e[i] == sum + error exactly.
        const double sum = q + e[i];
        const double virtualB = sum - q;
        const double virtualA = sum - virtualB;
        const double error = (q - virtualA) + (e[i] - virtualB);
        if (error != 0.0)
            e[kept++] = error;
        q = sum;
    }
    if (q != 0.0)
        e[kept++] = q;
    return kept;
}
} // namespace

int ZqOrientation2D::SignExact(const CbVector2f& a, const CbVector2f& b, const CbVector2f& c)
{
    // Products of two floats are exact in double (48 significant bits, exponents within +-300).
    const double terms[6] = {
        double(a.x) * double(b.y),    -(double(a.y) * double(b.x)), double(b.x) * double(c.y),
        -(double(b.y) * double(c.x)), double(c.x) * double(a.y),    -(double(c.y) * double(a.x)),
    };
    double expansion[6];
    int count = 0;
    for (double term : terms)
        if (term != 0.0)
            count = growExpansion(expansion, count, term);
    if (count == 0)
        return 0;
    return expansion[count - 1] > 0.0 ? 1 : -1;
}
