// Maidenhead grid locators: six characters from a position, and a position
// from four or six characters.
#pragma once

namespace veloran {

// Writes the six-character locator of (lat, lon) into grid (7 bytes): field
// letters capital, sub-square letters small. lat -90..90 degrees north
// positive, lon degrees WEST positive. Half an arc-second is added so that a
// position on a boundary is not rounded down. A latitude of exactly 90 gives
// the second character one past 'R', as the formula does.
void LatLon_to_Grid(double lat, double lon, char* grid);

// The south-west corner, or with `centre` the centre, of a four- or
// six-character locator: lon degrees EAST positive, lat north positive.
// Sub-square letters are counted from capital 'A', so a six-character
// locator must be given with capital sub-square letters. The centre offsets
// for six characters are 0.1 degree of longitude and 0.05 of latitude.
// Returns 1, or 0 with the outputs unchanged when the text is not a locator
// (letters, digits, length 4 or 6).
int Grid_toLatLon(const char* grid, double* lon, double* lat, bool centre);

}  // namespace veloran
