// Switching the radio and gateway ports on and off from their check boxes.
#pragma once

#include "engine/siterec.h"
#include "radio/radioui.h"
#include "serial/portlist.h"

namespace veloran {

// The radio check box changed to `checked`. Stops the driver and closes the
// port when off; when on, (re)opens the port at radioPort with radioBaud and
// starts the driver. Returns 1 when the radio is now open: the caller then
// handles the satellite anew so the radio is tuned at once. When the port
// cannot be opened, *openError (if given) gets the errno; else it is 0.
int switchRadioPort(SiteRec* site, bool checked, const PortNameRecord* ports,
                    const char* versionString, RadioUi* ui, int* openError = nullptr);
// The same for the gateway board; 1 when open.
int switchGatewayPort(SiteRec* site, bool checked, const PortNameRecord* ports, RadioUi* ui,
                      int* openError = nullptr);

}  // namespace veloran
