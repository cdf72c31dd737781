// The station's site and the user's settings: one record, owned by the
// application controller and handed by pointer to the engine, the drivers and
// the views. Its persistence lives in data/.
#pragma once

#include <cstdint>

#include "engine/satrec.h"
#include "engine/vector3.h"

namespace veloran {

struct SiteRec {
    char call_sign[512];                // the user's callsign
    char siteName[255];                 // name of the site
    char keps_date[1024];               // "Keplerian Elements: " + the element-set file's FROM line
    double siteLatRads, siteLatDegs;    // station latitude, north positive
    double siteLongRads, siteLongDegs;  // station longitude, WEST positive
    double siteAltitudeM;               // station height, metres
    double siteMinElevRads, siteMinElevDegs;  // minimum elevation that counts as in view
    double siteAzOffset, siteElOffset;        // rotor offsets, degrees
    Bool32 park;                              // park the rotor between passes
    double siteParkAz, siteParkEl;            // park position, degrees
    int32_t timeDiff;                         // local time minus UTC
    char locationName[255];                   // chosen location
    Bool32 debug;                             // log device traffic and diagnostics
    Bool32 vfo_locked;                        // uplink follows the downlink tuning
    Bool32 wants_speech, wants_sounds;
    Bool32 displayUTC, displayKM;  // times in UTC; distances in km (else miles)
    int32_t OSVersion;
    int32_t radio, rotor;                       // driver indices
    int32_t radioBaud, rotorBaud, gatewayBaud;  // indices into the baud table
    int32_t radioPort, rotorPort, gatewayPort;  // indices into the port table
    int32_t radioPortFileDescriptor, rotorPortFileDescriptor,
        gatewayPortFileDescriptor;  // -1 when closed
    Bool32 vfo_enabled, rotor_enabled, rotor_manual, gateway_enabled;
    double rotor_az, rotor_el;  // hand-set rotor position, degrees
    Bool32 modeJ;               // kept; the drivers keep their own band-exchange state
    float commandDelay;         // delay between bytes sent to a device, ms
    Bool32 satModeTone;
    int32_t icomAddress;     // CI-V address
    int32_t deadSpotState;   // 0 none, 1 south is dead, 2 north is dead
    Bool32 deadSpotCrossed;  // the pass crosses the dead spot: flip the rotor
    Bool32 s_meter_enabled, dial_tracking_enabled;
    char theQRZIndexPath[260];
    double SinSiteLat, sinSiteLong, CosSiteLat, cosSiteLong;  // cached trigonometry of the site
    double siteAltitudeGEOC;                                  // geocentric radius of the site, km
    double SiteX, SiteY, SiteZ;                               // geocentric position, km
    Bool32 gAnticipateSatelliteAzimuth;                       // pre-position the rotor before AOS
    double speechVolume;
    Bool32 fullDopplerTuning, listenForBeacon;
    int32_t numLocations;
    Bool32 sunLight, spinDrift;
    Bool32 displayTrackList, groundCoverage;
    Bool32 Projection3D;
    Bool32 followSat_enabled;
    Bool32 cityLights;
    uint32_t speed;  // kept; nothing reads it
    int16_t nightLight;
    Bool32 trackListForHorizon, reduceLoadInBackGround, totalScreen;
    int16_t trackOrbits;
    double numOrbitsToTrack;
    Bool32 showGroundTrack, showSkyTrack;
    double cameraDistance, beamWidthDisplay;
    Bool32 showOrbitalPlane;
    uint32_t virtualTime;  // kept; nothing reads it
    Bool32 displayMapLabels;
    int16_t maxRezTex, cameraPOV;
    Point3F sitePosition;  // the site as a point of the 3D scene (unit sphere)
    int32_t hamlibRadioModel, hamlibRotorModel;  // Hamlib model numbers, used when radio or rotor
                                                 // is the Hamlib entry
    int32_t
        fmRetuneHz;  // FM transponders: retune only after a move of more than this, Hz; 0 always
    char speechVoice[128];  // the speech engine's voice by name; empty: the engine's default
    double speechRate;      // speaking rate, -1 slowest .. 0 the engine's normal .. 1 fastest
};

}  // namespace veloran
