// The places list: loading, choosing, adding and removing a place.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/appcontroller.h"
#include "data/cnumeric.h"
#include "engine/observer.h"

namespace veloran {

namespace {

std::string FormatDegrees(double degrees) {
    CNumericLocale cLocale;
    char text[64];
    std::snprintf(text, sizeof text, "%01.4f", degrees);
    return text;
}

}  // namespace

void AppController::loadLocations() {
    UserInterface* ui = services_.ui;
    mControls.selectedLocation = -1;
    ui->removeAllLocationItems();
    mPlacesUnreadable = 0;
    if (!LoadPlaces(paths_.placesFile, &mLocations)) {
        const int error = errno;
        if (error != ENOENT) mPlacesUnreadable = error != 0 ? error : EIO;
        std::fprintf(stderr, "cannot open /Contents/Resources/cities.dat file. Error %d (%sd) \n",
                     error, std::strerror(error));
        return;
    }
    for (const std::string& name : mLocations.names) ui->addLocationItem(name);
    mSite.numLocations = static_cast<int32_t>(mLocations.places.size());
}

void AppController::rewriteLocations() {
    if (mLocations.places.empty()) return;
    if (mPlacesUnreadable != 0) {
        std::fprintf(stderr, "the places file %s is not rewritten: it could not be read (%s)\n",
                     paths_.placesFile.c_str(), FileErrorText(mPlacesUnreadable).c_str());
        return;
    }
    if (!RewritePlaces(paths_.placesFile, &mLocations.places)) {
        const int error = errno;
        std::fprintf(stderr, "cannot open /Contents/Resources/cities.dat file. Error %d (%sd) \n",
                     error, std::strerror(error));
    }
}

void AppController::locationChosen() {
    const int index = mControls.selectedLocation;
    if (index < 0 || index >= static_cast<int>(mLocations.places.size())) return;
    const Location& place = mLocations.places[static_cast<size_t>(index)];
    ApplyLocationToSite(place, &mSite);
    SitePreCalc(&mSite);
    services_.ui->showLocation(mSite.locationName, FormatDegrees(place.latDegs),
                               FormatDegrees(place.lonDegs));
}

void AppController::locationOK() {
    std::string latitude, longitude;
    Location place;
    place.city = mControls.city;
    place.state = mControls.state;
    place.country = mControls.country;
    latitude = mControls.latitude;
    longitude = mControls.longitude;
    {
        CNumericLocale cLocale;
        place.latDegs = std::strtod(latitude.c_str(), nullptr);
        place.lonDegs = std::strtod(longitude.c_str(), nullptr);
    }
    place.latRads = LocationRadians(place.latDegs);
    place.lonRads = LocationRadians(place.lonDegs);
    place.fields = 5;
    services_.ui->closeLocationSheet();
    mLocations.places.push_back(place);
    ApplyLocationToSite(place, &mSite);
    SitePreCalc(&mSite);
    // The new place is kept in the file at once, and the list shown in its
    // sorted order.
    rewriteLocations();
    loadLocations();
    services_.ui->showLocation(mSite.locationName, FormatDegrees(place.latDegs),
                               FormatDegrees(place.lonDegs));
}

void AppController::removeLocation() {
    const int index = mControls.selectedLocation;
    if (index < 0 || index >= static_cast<int>(mLocations.places.size())) {
        services_.ui->beep();
        return;
    }
    mLocations.places.erase(mLocations.places.begin() + index);
    rewriteLocations();
    loadLocations();
}

void AppController::replaceLocations(const Location* places, int count) {
    if (places == nullptr || count < 0) return;
    mLocations.places.assign(places, places + count);
    for (Location& place : mLocations.places) {
        place.latRads = LocationRadians(place.latDegs);
        place.lonRads = LocationRadians(place.lonDegs);
    }
    rewriteLocations();
    loadLocations();
}

}  // namespace veloran
