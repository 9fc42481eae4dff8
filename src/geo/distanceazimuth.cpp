#include "geo/distanceazimuth.h"

#include "common/vbtext.h"

#include <cmath>
#include <optional>

namespace {

constexpr double kPi = 3.14159265;  // the eight-decimal value the distances were always computed with
constexpr double kDegree = kPi / 180;
constexpr double kA = 6378;  // equatorial radius, km
constexpr double kB = 6356;  // polar radius, km
constexpr double kRatio = kB * kB / (kA * kA);
constexpr double kE2 = 1 - kRatio;
constexpr double kKmPerMile = 1.609;

// The operations that can fail; nullopt where the statement using them is skipped.
std::optional<double> checkedSqrt(double v) { return v < 0 ? std::nullopt : std::optional(std::sqrt(v)); }
std::optional<double> checkedDiv(double n, double d) { return d == 0 ? std::nullopt : std::optional(n / d); }

}  // namespace

double Atan2Full(double y, double x) {
    if (x == 0 && y == 0) return kPi / 2;
    double angle = std::fabs(y) > std::fabs(x) ? kPi / 2 - std::atan(std::fabs(x) / std::fabs(y))
                                               : std::atan(std::fabs(y) / std::fabs(x));
    if (x < 0) angle = kPi - angle;
    if (y < 0) angle = -angle;
    return angle;
}

double ScaledAngle(double angle, double f) { return Atan2Full(f * std::sin(angle), std::cos(angle)); }

void DistanceAzimuth(double lat1, double lon1, double lat2, double lon2, int16_t units, double& distance,
                     double& azimuth) {
    const double phi1 = lat1 * kDegree, lambda1 = lon1 * kDegree;
    const double phi2 = lat2 * kDegree, lambda2 = lon2 * kDegree;
    double theta1 = ScaledAngle(phi1, kRatio);
    double theta2 = ScaledAngle(phi2, kRatio);

    const double cosD = std::cos(lambda1 - lambda2) * std::cos(theta1) * std::cos(theta2) +
                        std::sin(theta1) * std::sin(theta2);
    double d = 0;
    if (const auto root = checkedSqrt(1 - cosD * cosD)) d = Atan2Full(*root, cosD);

    double alpha = Atan2Full(std::sin(lambda2 - lambda1) * std::cos(theta2) * std::cos(theta1),
                             std::sin(theta2) - std::sin(theta1) * cosD);
    if (alpha < 0) alpha += 2 * kPi;

    if (!(theta1 < theta2)) std::swap(theta1, theta2);
    const double thetaS = theta1, thetaN = theta2;
    const double a = Atan2Full(std::sin(thetaS) * std::sin(d), std::sin(thetaN) - std::cos(d) * std::sin(thetaS));

    double s = 0;
    const auto ratio = std::fabs(std::sin(a)) > std::fabs(std::sin(d + a)) ? checkedDiv(std::sin(thetaS), std::sin(a))
                                                                          : checkedDiv(std::sin(thetaN), std::sin(d + a));
    if (ratio) s = *ratio;

    const double beta0 = Atan2Full(s, std::sqrt(std::fabs(1 - s * s)) * (kB / kA));
    const double e = kE2 * std::sin(beta0) * std::sin(beta0);
    const double f = 1 / std::sqrt(1 - e);
    const double sigma1 = ScaledAngle(a, f);
    const double sigma2 = ScaledAngle(d + a, f);
    const double t = (1 - e / 4) * (sigma2 - sigma1);
    // Dividing by the polar radius makes this term almost vanish; the distances have always been
    // computed so.
    const double u = e * (std::sin(2 * sigma2) - std::sin(2 * sigma1)) / kB;

    if (const auto km = vb::toInt16(kA * (t - u))) distance = *km;
    if (units == 1) distance = std::floor(distance / kKmPerMile);
    azimuth = std::floor(alpha / kDegree);
    if (distance == 0) azimuth = 0;
}
