// A contact made from what the tracker knows at the moment the operator
// saves it, and the duplicate check (same call, satellite and pass).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "logbook/contact.h"
#include "logbook/dxcc.h"
#include "logbook/store.h"

namespace veloran {

// The live state the window hands over when a contact is saved.
struct LiveContactState {
    const char* satellite = "";     // the main satellite's name
    const ModeRec* mode = nullptr;  // its selected transponder mode
    double radioUpMHz = 0;          // the uplink the radio is set to (0 on the beacon)
    double radioDownMHz = 0;        // the downlink the radio is set to
    double dopplerTX = 0;           // Doppler shift of the uplink, MHz, as the tuner used it
    double dopplerRX = 0;           // Doppler shift of the downlink, MHz
    bool listenForBeacon = false;   // the radio is on the beacon
    uint32_t nowUTC = 0;            // seconds since 1904
    std::string myCall;
    std::string myGrid;  // the station's locator
};

// Our call and six-character locator from the site record.
void FillStation(const SiteRec* site, LiveContactState* state);

// What the operator typed.
struct ContactEntry {
    std::string call;
    std::string rstSent;
    std::string rstRcvd;
    std::string grid;
    std::string comment;
};

// The ADIF mode of a transponder mode's commMode: "FM", "SSB", "CW", "AM",
// "PKT" for the mixed digital one; empty when it says nothing.
std::string AdifModeOf(int commMode);

// Fills *out from the entry and the live state. The frequencies are those at
// the satellite: the radio's settings with the transverter offsets put back
// and the Doppler shift taken out, so a transverter station logs the real
// band; on the beacon, the mode's uplink and downlink with the user's tweaks.
// The country comes from `dxcc` when given. 0 when the call is empty.
int MakeContact(const LiveContactState* state, const ContactEntry* entry, const DxccTable* dxcc,
                ContactRec* out);

// The index in `log` of an earlier contact with the same call (case and a
// portable suffix aside) on the same satellite within the pass
// [passStartUTC, passEndUTC], or -1.
int FindDuplicate(const std::vector<ContactRec>& log, const ContactRec* contact,
                  uint32_t passStartUTC, uint32_t passEndUTC);

// How far back a pass reaches when its AOS is not known: longer than any
// low-orbit pass, shorter than an orbit, so only this pass is searched.
constexpr uint32_t kPassLookBackSeconds = 30 * 60;

// Whether the log already holds this station on this satellite since
// passStartUTC (the AOS of the pass in progress, or the contact's start less
// kPassLookBackSeconds). 1 with the earlier contact in *earlier, 0 when not,
// -1 when the log cannot be read (store->error says why).
int CheckDuplicate(LogStore* store, const ContactRec* contact, uint32_t passStartUTC,
                   ContactRec* earlier);

}  // namespace veloran
