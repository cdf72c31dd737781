// Maidenhead grid locators.

#include "data/grid.h"

#include <cctype>
#include <cmath>
#include <cstring>

namespace veloran {

namespace {

// Half an arc-second, in degrees.
constexpr double kHalfArcSecond = 0.00013888888888;

// base plus the whole part of value; a value no locator can hold (outside
// the range of the inputs, or not a number) counts as 0 rather than
// overflowing the conversion.
char Offset(char base, double value) {
    if (!(value > -1000.0 && value < 1000.0)) value = 0.0;
    return static_cast<char>(base + static_cast<int>(value));
}

}  // namespace

void LatLon_to_Grid(double lat, double lon, char* grid) {
    if (grid == nullptr) return;
    const double x = (180.0 - lon) + kHalfArcSecond;
    const double y = lat + 90.0 + kHalfArcSecond;
    grid[0] = Offset('A', x / 20.0);
    grid[1] = Offset('A', y / 10.0);
    const double rx = x - 20.0 * std::floor(x / 20.0);
    grid[2] = Offset('0', rx / 2.0);
    const double ry = y - 10.0 * std::floor(y / 10.0);
    grid[3] = Offset('0', ry);
    grid[4] = Offset('a', (rx - 2.0 * std::floor(rx / 2.0)) * 12.0);
    grid[5] = Offset('a', (ry - std::floor(ry)) * 24.0);
    grid[6] = '\0';
}

int Grid_toLatLon(const char* grid, double* lon, double* lat, bool centre) {
    if (grid == nullptr || lon == nullptr || lat == nullptr) return 0;
    const size_t length = std::strlen(grid);
    auto letter = [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; };
    auto digit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
    if ((length != 4 && length != 6) || !letter(grid[0]) || !letter(grid[1]) || !digit(grid[2]) ||
        !digit(grid[3]))
        return 0;
    double x = (grid[0] - 'A') * 20.0 + (grid[2] - '0') * 2.0;
    const bool subLon = length >= 5 && letter(grid[4]);
    if (subLon) x += (grid[4] - 'A') / 12.0;
    if (centre) x += subLon ? 0.1 : 1.0;
    double y = (grid[1] - 'A') * 10.0 + (grid[3] - '0');
    const bool subLat = length >= 6 && letter(grid[5]);
    if (subLat) y += (grid[5] - 'A') / 24.0;
    if (centre) y += subLat ? 0.05 : 0.5;
    *lon = x - 180.0;
    *lat = y - 90.0;
    return 1;
}

}  // namespace veloran
