// Contacts from the live tracking state.

#include "logbook/livecontact.h"

#include <strings.h>

#include <cctype>
#include <cmath>
#include <cstring>

#include "data/grid.h"

namespace veloran {

namespace {

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// "G4ABC/P" and "G4ABC" are the same station on the same pass.
std::string BaseCall(const std::string& call) {
    std::string upper = Upper(call);
    const size_t slash = upper.rfind('/');
    if (slash != std::string::npos && upper.size() - slash <= 4 && slash > 0) upper.resize(slash);
    return upper;
}

// Frequencies are logged to the hertz.
double ToHertz(double mhz) {
    return std::round(mhz * 1e6) / 1e6;
}

}  // namespace

void FillStation(const SiteRec* site, LiveContactState* state) {
    state->myCall =
        Upper(std::string(site->call_sign, strnlen(site->call_sign, sizeof site->call_sign)));
    char grid[7];
    LatLon_to_Grid(site->siteLatDegs, site->siteLongDegs, grid);  // both take west positive
    state->myGrid = grid;
}

std::string AdifModeOf(int commMode) {
    // The commMode numbering of the modes file.
    switch (commMode) {
        case 1:
        case 2:
        case 6:
        case 10:
        case 12:
            return "FM";
        case 3:
        case 4:
        case 5:
        case 13:
        case 16:
            return "SSB";
        case 7:
        case 8:
        case 9:
        case 14:
            return "CW";
        case 15:
            return "AM";
        case 11:
            return "PKT";
        default:
            return "";
    }
}

void FillMode(const ModeRec* mode, LiveContactState* state) {
    if (!mode || !state) return;
    state->transponder = std::string(mode->channel, strnlen(mode->channel, sizeof mode->channel));
    state->commMode = mode->commMode;
    state->uplinkMHz = mode->upFreq != 0 ? mode->upFreq + mode->TXOffset : 0;
    if (mode->downFreq != 0)
        state->downlinkMHz = mode->downFreq + mode->RXOffset;
    else if (mode->beaconFreq != 0)
        state->downlinkMHz = mode->beaconFreq + mode->BEOffset;
    else
        state->downlinkMHz = 0;
}

int MakeContact(const LiveContactState* state, const ContactEntry* entry, const DxccTable* dxcc,
                ContactRec* out) {
    *out = ContactRec();
    out->call = Upper(entry->call);
    if (out->call.empty()) return 0;
    out->rstSent = entry->rstSent;
    out->rstRcvd = entry->rstRcvd;
    out->grid = entry->grid;
    out->comment = entry->comment;
    out->name = entry->name;
    out->qth = entry->qth;
    out->startUTC = state->nowUTC;
    out->satellite = state->satellite;
    out->myCall = Upper(state->myCall);
    out->myGrid = state->myGrid;
    out->transponder = state->transponder;
    out->mode = AdifModeOf(state->commMode);
    out->uplinkMHz = ToHertz(state->uplinkMHz);
    out->downlinkMHz = ToHertz(state->downlinkMHz);
    if (dxcc) {
        if (const DxccEntity* e = LookupDxcc(dxcc, out->call)) {
            out->country = e->name;
            out->dxcc = e->code;
        }
    }
    return 1;
}

int FindDuplicate(const std::vector<ContactRec>& log, const ContactRec* contact,
                  uint32_t passStartUTC, uint32_t passEndUTC) {
    const std::string call = BaseCall(contact->call);
    for (size_t i = 0; i < log.size(); ++i) {
        const ContactRec& c = log[i];
        if (c.id != 0 && c.id == contact->id) continue;
        if (c.startUTC < passStartUTC || c.startUTC > passEndUTC) continue;
        if (BaseCall(c.call) != call) continue;
        if (strcasecmp(c.satellite.c_str(), contact->satellite.c_str()) != 0) continue;
        return static_cast<int>(i);
    }
    return -1;
}

int CheckDuplicate(LogStore* store, const ContactRec* contact, uint32_t passStartUTC,
                   ContactRec* earlier) {
    std::vector<ContactRec> recent;
    if (ListContacts(store, passStartUTC, &recent) < 0) return -1;
    const int index = FindDuplicate(recent, contact, passStartUTC, contact->startUTC);
    if (index < 0) return 0;
    if (earlier) *earlier = recent[static_cast<size_t>(index)];
    return 1;
}

LiveSave SaveLiveContact(LogStore* store, const LiveContactState* state, const ContactEntry* entry,
                         const DxccTable* dxcc, ContactRec* saved, ContactRec* earlier) {
    ContactRec contact;
    if (!MakeContact(state, entry, dxcc, &contact)) return LiveSave::NoCall;
    contact.endUTC = contact.startUTC;
    uint32_t passStart = state->passAOSUTC;
    if (passStart == 0 || passStart > contact.startUTC)
        passStart =
            contact.startUTC > kPassLookBackSeconds ? contact.startUTC - kPassLookBackSeconds : 0;
    ContactRec before;
    const int duplicate = CheckDuplicate(store, &contact, passStart, &before);
    if (duplicate < 0 || !AddContact(store, &contact)) return LiveSave::Failed;
    if (saved) *saved = contact;
    if (duplicate == 0) return LiveSave::Saved;
    if (earlier) *earlier = before;
    return LiveSave::Duplicate;
}

}  // namespace veloran
