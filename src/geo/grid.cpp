#include "geo/grid.h"

#include <cmath>

QString GridSquare(double L, double G) {
    if (L > 90 || L < -90 || !std::isfinite(L) || !std::isfinite(G)) return {};
    const auto whole = [](double v) { return std::floor(v); };
    double D = whole(std::fabs(L)) + 0.0001;
    if (L < 0) D = -D;
    const double M = 60 * (std::fabs(L) - whole(std::fabs(L)));
    double Mq = 2.5 * whole(M / 2.5) + 0.0001;
    double E = whole(std::fabs(G)) + 0.0001;
    if (G < 0) E = -E;
    const double N = 60 * (std::fabs(G) - whole(std::fabs(G)));
    double Nw = whole(N) + 0.0001;
    const double X = 180 + E;
    const double Y = 90 + D;
    QString grid;
    grid += QChar(static_cast<char16_t>(65 + whole(X / 20)));
    grid += QChar(static_cast<char16_t>(65 + whole(Y / 10)));
    grid += QChar(static_cast<char16_t>(48 + whole((X - 20 * whole(X / 20)) / 2)));
    grid += QChar(static_cast<char16_t>(48 + whole(Y - 10 * whole(Y / 10))));
    if (G < 0) Nw = 60 - Nw;
    if (L < 0) Mq = 60 - Mq;
    const auto xWhole = static_cast<long long>(whole(X));
    grid += QChar(static_cast<char16_t>(65 + 12 * (((xWhole % 2) + 2) % 2) + whole(Nw / 5))).toLower();
    grid += QChar(static_cast<char16_t>(65 + whole(Mq / 2.5))).toLower();
    return grid;
}
