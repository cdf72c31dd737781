// What the rotor steering needs from the user interface: a beep, the rotor
// check box, the elevation control, the rotor panel's two lines and the
// user-defaults store. The application controller implements it over the
// real widgets; tests record the calls.
#pragma once

namespace veloran {

struct RotorUi {
    virtual ~RotorUi() = default;
    virtual void beep() {}
    // The rotor's "enabled" check box.
    virtual void setRotorChecked(bool /*on*/) {}
    // The circular elevation control (0..359, 270 is the horizon).
    virtual void setElevationControl(int /*value*/) {}
    // The rotor panel: "Azimuth: ..." and "Elevation: ...".
    virtual void setRotorPanel(const char* /*azimuthText*/, const char* /*elevationText*/) {}
    // A truth value into the user defaults under `key`.
    virtual void storeBool(const char* /*key*/, bool /*value*/) {}
};

}  // namespace veloran
