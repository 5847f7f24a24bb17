#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "tkkernel/util.h"

int GetRandom(int nMinimum, int nMaximum) {
    const std::int64_t count = std::int64_t{nMaximum} - nMinimum + 1;
    if (count < 1) return nMinimum;
    // Contract: the run-time library's generator, whose seed is the program's business.
    return static_cast<int>(std::rand() % count + nMinimum);
}

double Arsinh(double x) {
    return std::log(x + std::sqrt(x * x + 1));
}

double Arcosh(double x) {
    return std::log(x + std::sqrt(x * x - 1));
}

double Artanh(double x) {
    return 0.5 * std::log((x + 1) / (1 - x));
}

double DEG(double x) {
    return x * 57.29577951308232;
}

double RAD(double x) {
    return x * 0.017453292519943295;
}
