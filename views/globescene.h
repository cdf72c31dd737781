// The 3D globe's scene, built from the records the tick holds: the Earth's
// frame, the Sun and the Moon, the satellites at virtual time, their
// footprints, ground tracks, sky tracks and orbital planes, the site with its
// dead spot and antenna ray, and a spacecraft's antenna beam and squint. No
// window system and no graphics library: a renderer draws the line, point and
// label lists as they stand.
//
// The frame is the one the engine's sitePosition and CalcSquintAngle use:
// Earth-fixed, the Earth's radius as unit, +y through the North Pole, the
// Greenwich meridian on -z and 90 degrees west on +x. A point at latitude phi
// and west-positive longitude lambda is (cos phi sin lambda, sin phi,
// -cos phi cos lambda).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/vector3.h"

namespace veloran {

// The globe's display options as the settings keep them. `resolution` is the
// texture pop-up's index: 0 = 1024, 1 = 2048, 2 = 4096 pixels wide, 3 = wire
// frame. `cameraPOV`: 0 free orbit, 1 above the site, 2 behind the main
// satellite, 3 from the Sun.
struct GlobeOptions {
    int cameraPOV = 0;
    int resolution = 1;
    double cameraDistance = 4.0;  // camera distance from the Earth's centre, Earth radii
    int nightLight = 20;          // ambient light on the night side, 0..100
    bool trackList = true;        // every tracked satellite, not only the main one
    bool groundCoverage = true;   // footprints
    bool labels = true;
    bool latLongLines = true;
    bool skyTrack = true;
    bool groundTrack = true;
    bool orbitalPlane = true;
    bool cityLights = true;
};

constexpr int kGlobeWireFrame = 3;
constexpr double kGlobeMinDistance = 1.5, kGlobeMaxDistance = 30.0;  // Earth radii

struct GlobeVertex {
    float x, y, z;     // scene units
    float r, g, b, a;  // colour, 0..1
};

struct GlobeLabel {
    Point3F at;
    float r, g, b;
    char text[40];
};

// The dead spot as the frame step keeps it between frames: a state it does
// not know leaves both flags as they were.
struct GlobeDeadSpot {
    bool southIsDead = true;
    bool showDeadSpotCrossing = false;
};
void ApplyDeadSpotState(int32_t deadSpotState, GlobeDeadSpot* deadSpot);

// What one scene is built from. Pointers are borrowed for the call only.
struct GlobeInput {
    double epoch = 0;              // epoch day of the scene (virtual time)
    const SatRec* sats = nullptr;  // entries 0 .. totalSats-1, the Moon and the Sun among them
    int32_t totalSats = 0;
    int32_t mainSatNum = 0;  // 1-based, 0 for none
    int32_t sunNum = 0;      // 1-based entries of the Sun and the Moon, 0 for none
    int32_t moonNum = 0;
    const SiteRec* site = nullptr;
    const Point3F* cityLights = nullptr;  // the places' light points on the unit sphere
    int32_t cityLightCount = 0;
    bool flipped = false;  // the rotor works over the top for this pass
    GlobeOptions options;
};

struct GlobeScene {
    GlobeOptions options;
    double epoch = 0;
    Vector3F sunDirection{0.0f, 0.0f, -1.0f};  // unit vector from the Earth's centre
    Point3F moon{0.0f, 0.0f, 0.0f};            // drawn nearer than it is, see kMoonDrawDistance
    float moonRadius = 0.0f;
    bool hasMoon = false;
    Point3F site{0.0f, 0.0f, 1.0f};
    bool hasMain = false;
    Point3F mainSat{0.0f, 0.0f, 0.0f};
    Vector3F mainVelocity{0.0f, 0.0f, 0.0f};  // direction of motion in the Earth-fixed frame
    int32_t mainPoint = -1;                   // index in `points` of the main satellite
    GlobeDeadSpot deadSpot;
    bool hasBeam = false;
    float squintRads = 0.0f;
    std::vector<GlobeVertex> lines;       // pairs: each two vertices make one segment
    std::vector<GlobeVertex> points;      // satellites and the site
    std::vector<GlobeVertex> cityLights;  // drawn on the night side only
    std::vector<GlobeLabel> labels;
    int32_t satelliteCount = 0;
};

// Scene point of latitude (radians), west-positive longitude (radians) and
// distance from the Earth's centre (Earth radii).
Point3F GlobePoint(double latRads, double lonWestRads, double radius);
// An Earth-centred, Earth-fixed vector (x to Greenwich, y to 90 degrees
// east, z to the North Pole) in the scene frame.
Vector3F GlobeFromEarthFixed(double x, double y, double z);
// Unit normal of an orbit's plane (the direction of its angular momentum)
// from the inclination and the right ascension of the node (radians) and the
// Greenwich sidereal angle (radians).
Vector3F OrbitalPlaneNormal(double inclination, double raan, double siderealAngle);

// Builds scenes tick after tick in the same buffers.
class GlobeSceneBuilder {
  public:
    GlobeSceneBuilder();
    ~GlobeSceneBuilder();
    void build(const GlobeInput* in, GlobeScene* scene);

  private:
    std::unique_ptr<SatRec> scratch_;  // propagated copy: the tick's records keep their values
    GlobeDeadSpot deadSpot_;
};

}  // namespace veloran
