// The polar sky plot: the sky above the site as a disc, north up and east
// to the right as an observer lying on their back sees it, the horizon at
// the rim and the zenith at the centre. It shows one pass's track with its
// AOS, maximum and LOS, the satellite where it is now, the direction the
// antenna was last sent to and, when the rotor reports it, where it points.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "views/displaylist.h"

namespace veloran {

// A direction in the sky, degrees: azimuth from north through east,
// elevation above the horizon.
struct SkyDirection {
    double azimuthDegs;
    double elevationDegs;
};

struct SkyPlotScene {
    float size = 400.0f;  // side of the square frame, pixels
    std::string title;    // above the disc (satellite name and pass date), may be empty

    std::vector<SkyDirection> track;        // the pass from AOS to LOS; empty when there is none
    std::string aosText, maxText, losText;  // labels at the three marks ("AOS 21:04", ...)

    bool hasSatellite = false;  // the satellite now; drawn only while above the horizon
    SkyDirection satellite{0, 0};
    std::string satelliteName;

    // Antenna angles as the rotor takes them: elevation 0..180, above 90 when
    // the steering flips the antenna over the top for a pass through the dead
    // spot. The plot shows the direction the beam points in.
    bool hasTarget = false;  // the angles last sent
    SkyDirection target{0, 0};
    bool hasRotor = false;  // the angles the rotor last reported
    SkyDirection rotor{0, 0};
};

// Where a direction lands in a plot of side `size`: y grows upwards, as in
// every display list. Elevations below the horizon are put on the rim.
PointF SkyPlotPoint(float size, SkyDirection direction);

// The sky direction a rotor position points the beam in: an elevation above
// 90 degrees looks over the top, to the opposite azimuth.
SkyDirection AntennaDirection(SkyDirection rotorAngles);

// Fills the scene's pass, satellite and title for `sat` seen from `site` at
// epoch day nowDay (the same instant as the time value nowSecs): the pass in
// progress, else the next within two days, with its times in UTC. Leaves the
// size and the antenna alone. Returns 1 when a pass was found, 0 otherwise.
// Calls only thread-safe engine functions.
int SkyPlotForPass(const SatRec* sat, const SiteRec* site, double nowDay, uint32_t nowSecs,
                   SkyPlotScene* scene);

// Clears `out` and draws the scene into it: the grid, then the track and its
// marks, then the antenna, then the satellite on top.
void BuildSkyPlot(const SkyPlotScene* scene, DisplayList* out);

}  // namespace veloran
