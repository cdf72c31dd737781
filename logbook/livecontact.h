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

// What the station knows at the moment a contact is saved, as value copies.
struct LiveContactState {
    std::string satellite;    // the main satellite's name; empty when there is none
    std::string transponder;  // the selected mode's channel name
    int commMode = 0;         // the selected mode's commMode (0 without a mode)
    double uplinkMHz = 0;     // uplink at the satellite: the mode's, trims included, MHz
    double downlinkMHz = 0;   // downlink at the satellite, trims included, MHz
    uint32_t nowUTC = 0;      // seconds since 1904
    uint32_t passAOSUTC = 0;  // AOS of the main satellite's pass under way or last begun; 0 unknown
    std::string myCall;
    std::string myGrid;  // the station's locator
};

// The transponder part of the state from the selected mode: its channel,
// commMode and the frequencies at the satellite. Those are the mode's uplink
// and downlink plus the operator's trims (TXOffset, RXOffset), before any
// transverter offset is taken off and without Doppler, so they are exact
// whatever the radio was last sent: the retune threshold and the radio's own
// rounding leave them alone. On the beacon the uplink is still the mode's;
// a mode without a downlink logs its beacon (with BEOffset).
void FillMode(const ModeRec* mode, LiveContactState* state);

// Our call and six-character locator from the site record.
void FillStation(const SiteRec* site, LiveContactState* state);

// What the operator typed.
struct ContactEntry {
    std::string call;
    std::string rstSent;
    std::string rstRcvd;
    std::string grid;
    std::string comment;
    std::string name;  // the operator's name, as typed or looked up
    std::string qth;
};

// The ADIF mode of a transponder mode's commMode: "FM", "SSB", "CW", "AM",
// "PKT" for the mixed digital one; empty when it says nothing.
std::string AdifModeOf(int commMode);

// Fills *out from the entry and the live state, frequencies to the hertz.
// The country comes from `dxcc` when given. 0 when the call is empty.
int MakeContact(const LiveContactState* state, const ContactEntry* entry, const DxccTable* dxcc,
                ContactRec* out);

// The index in `log` of an earlier contact with the same call (case and a
// portable suffix aside) on the same satellite within the pass
// [passStartUTC, passEndUTC], or -1.
int FindDuplicate(const std::vector<ContactRec>& log, const ContactRec* contact,
                  uint32_t passStartUTC, uint32_t passEndUTC);

// How far back "this pass" reaches when the pass's AOS is not known (no
// main satellite): longer than any low-orbit pass, shorter than an orbit.
constexpr uint32_t kPassLookBackSeconds = 30 * 60;

// Whether the log already holds this station on this satellite since
// passStartUTC, the AOS of the pass. 1 with the earlier contact in *earlier,
// 0 when not, -1 when the log cannot be read (store->error says why).
int CheckDuplicate(LogStore* store, const ContactRec* contact, uint32_t passStartUTC,
                   ContactRec* earlier);

// What saving a contact from the live state came to.
enum class LiveSave {
    Failed,     // not saved: store->error says why
    NoCall,     // nothing typed: nothing saved
    Saved,      // saved, a new station on this pass
    Duplicate,  // saved, but the station was already worked on this pass (*earlier)
};

// Makes the contact (MakeContact, its end time its start), checks it against
// the contacts since the pass's AOS (state->passAOSUTC, or the start less
// kPassLookBackSeconds when that is not known) and adds it to the store.
LiveSave SaveLiveContact(LogStore* store, const LiveContactState* state, const ContactEntry* entry,
                         const DxccTable* dxcc, ContactRec* saved, ContactRec* earlier);

}  // namespace veloran
