// The window's controls as the core knows them: the chosen mode, the chosen
// place, the add-place sheet as typed, the map's visible area, the tuning
// slider and the tabs in front. The core owns this copy and reads no widget;
// a front end writes the fields an action needs just before it runs that
// action on the core, and the controller keeps them in step with what it
// shows through its outlets.
#pragma once

#include <string>

namespace veloran {

struct ControlsModel {
    // The channel pop-up of the radio panel.
    int channelCount = 0;
    int selectedChannel = 0;
    // The places combo box, -1 for none.
    int selectedLocation = -1;
    // The add-place sheet's five fields as typed.
    std::string city, state, country, latitude, longitude;
    // The map's visible area (x, y, width, height), saved at quit;
    // hasMapRect is false until the map has reported one.
    bool hasMapRect = false;
    double mapRect[4] = {0, 0, 0, 0};
    // Where the tuning slider stands: the tick puts it back to zero, the
    // user's drags add their deltas.
    double vfoSlider = 0;
    // The tabs in front: map/globe, track list/horizon/sky, radio/rotor.
    int mapTab = 0, listTab = 0, radioTab = 0;
};

}  // namespace veloran
