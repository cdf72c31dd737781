// What the radio code needs from the user interface: the outlets it touches
// (beep, check boxes, S-meter) and the user-defaults store. The application
// controller implements it over the real widgets; tests record the calls.
#pragma once

namespace veloran {

struct RadioUi {
    virtual ~RadioUi() = default;
    virtual void beep() {}
    // The radio's and the gateway's "enabled" check boxes.
    virtual void setRadioChecked(bool /*on*/) {}
    virtual void setGatewayChecked(bool /*on*/) {}
    // The S-meter level indicator.
    virtual void setSMeter(int /*level*/) {}
    // A truth value into the user defaults under `key`.
    virtual void storeBool(const char* /*key*/, bool /*value*/) {}
};

}  // namespace veloran
