// Fifty tracked satellites for the view benchmarks: low and medium orbits
// spread over planes and phases, each with a made-up pass profile.
#pragma once

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/orbit.h"
#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/timebase.h"

namespace {

using namespace veloran;

constexpr int kSatellites = 50;

struct Scene {
    std::vector<std::unique_ptr<SatRec>> sats;
    SiteRec site;
    uint32_t now;
    double epoch;
};

// Fifty low and medium orbits spread over planes and phases, with a
// made-up pass profile each for the timeline.
Scene MakeScene() {
    Scene s;
    std::memset(&s.site, 0, sizeof s.site);
    s.site.siteLatRads = 43.7 * kDegreesToRadians;
    s.site.siteLongRads = 79.2 * kDegreesToRadians;
    DateTimeRec d{2026, 11, 21, 12, 0, 0, 7};
    s.now = QFDateToSeconds(&d);
    s.epoch = EpochTime(s.now);
    for (int i = 0; i < kSatellites; ++i) {
        auto rec = std::make_unique<SatRec>();
        std::memset(rec.get(), 0, sizeof(SatRec));
        InitSatRec(rec.get());
        std::snprintf(rec->name, sizeof rec->name, "SAT-%d", i);
        KepRec* k = &rec->satKep;
        k->epochDay = s.epoch - 2.0;
        k->inclination = (45.0 + i) * kDegreesToRadians;
        k->epochRAAN = i * 7.2 * kDegreesToRadians;
        k->eccentricity = 0.001 + 0.002 * (i % 5);
        k->epochMeanAnomaly = i * 23.0 * kDegreesToRadians;
        k->epochMeanMotion = 12.0 + (i % 8) * 0.5;
        CalcKepVals(rec.get(), &s.site);
        OneShot(rec.get(), s.epoch);
        rec->satAltitude = rec->satOrbitRadius - kEarthRadiusKm;
        rec->tracked = 1;
        rec->AOS = i == 0;
        rec->secondsToAOS = static_cast<uint32_t>(i * 500);
        rec->secondsToMAXE = rec->secondsToAOS + 300;
        rec->maxElevation = (i * 13) % 90;
        rec->passElevCounter = 50;
        for (int j = 0; j < 50; ++j)
            rec->passElev[j] = static_cast<uint8_t>(rec->maxElevation * std::sin(j * 3.14159 / 49));
        s.sats.push_back(std::move(rec));
    }
    return s;
}

}  // namespace
