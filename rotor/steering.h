// Rotor steering: where the antenna should point on each tick (the
// satellite with the station's offsets, the park position between passes, or
// "flipped" over the top for a pass that would cross the rotator's end stop),
// the hand steering of the rotor panel, switching the rotor port on and off,
// and the panel's texts. Free functions over the records; the application
// controller's updateRotors, az_el_Moved:, openCloseRotor: and
// updateRotorPanel are thin wrappers that add its own state.
#pragma once

#include <cstddef>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "rotor/rotorui.h"
#include "serial/portlist.h"

namespace veloran {

// The target for the main satellite `sat`, degrees, offsets included:
// the park position when the satellite is out of view, parking is on and no
// one-minute warning is pending; the flipped direction (azimuth 180 degrees
// round, elevation 180 - elevation) when the pass crosses the dead spot and
// the rotor is az/el; else the satellite's own direction. 0 and nothing
// stored when the rotor is steered by hand or a record is missing.
int rotorTarget(const SiteRec* site, const SatRec* sat, bool oneMinuteWarning, double* azimuth,
                double* elevation);

// One steering step (updateRotors): stores the target in rotor_az/rotor_el
// and, when the rotor is enabled, sends it. Returns SendAzEl's result, 0 when
// nothing was sent.
int steerRotor(SiteRec* site, const SatRec* sat, bool oneMinuteWarning);

// True when the rotor works flipped: the pass crosses the dead spot, a dead
// spot is set and the rotor is az/el. The status line's "Flipped" and the
// map's site mark read it.
bool rotorFlipped(const SiteRec* site);

// The manual switch or one of the two circular controls moved (az_el_Moved:).
// `manual` is the switch, `azimuthControl` the azimuth in whole degrees and
// `elevationControl` the elevation control (0..359, 270 the horizon, 0 the
// zenith, 90 the far horizon over the top). Manual off: a steering step for
// `sat` runs at once. Manual on: rotor_az/rotor_el take the controls' angles;
// an elevation control below the horizon (strictly between 90 and 270) is
// refused with a beep, rotor_el becomes 0 and the control goes back to 270;
// the angles are then sent without offsets when the rotor is enabled.
void moveRotorByHand(SiteRec* site, bool manual, int azimuthControl, int elevationControl,
                     const SatRec* sat, bool oneMinuteWarning, RotorUi* ui);

// The rotor check box changed to `checked` (openCloseRotor:). Off: stops the
// driver and closes the port. On: closes a port already open, then opens the
// one at rotorPort with rotorBaud and starts the driver; no port or a failed
// open beeps and unticks the check box. Stores "rotor_enabled". 1 when the
// rotor port is now open. When the port cannot be opened, *openError (if
// given) gets the errno; else it is 0.
int switchRotorPort(SiteRec* site, bool checked, const PortNameRecord* ports, RotorUi* ui,
                    int* openError = nullptr);

// "Azimuth: %0.2f" and "Elevation: %0.2f" of rotor_az and rotor_el, with '.'
// as the decimal point.
void rotorPanelTexts(const SiteRec* site, char* azimuthText, size_t azimuthSize,
                     char* elevationText, size_t elevationSize);
// updateRotorPanel: the two texts into the panel.
void showRotorPanel(const SiteRec* site, RotorUi* ui);

}  // namespace veloran
