// One logged contact, as the store keeps it and ADIF carries it.
#pragma once

#include <cstdint>
#include <string>

namespace veloran {

// Text fields hold what the operator typed or what ADIF names (modes and
// confirmation letters in ADIF's own spelling), so export needs no mapping.
struct ContactRec {
    int64_t id = 0;           // row id in the store; 0 until saved
    uint32_t startUTC = 0;    // start of the contact, seconds since 1904 UTC
    uint32_t endUTC = 0;      // end of the contact, seconds since 1904 UTC; 0 = not logged
    std::string call;         // the other station, capitals
    std::string grid;         // their Maidenhead locator
    std::string rstSent;      // report we gave
    std::string rstRcvd;      // report we got
    std::string myCall;       // our call as used on the air
    std::string myGrid;       // our locator at the time
    std::string satellite;    // our name of the satellite ("ISS"), not LoTW's
    std::string transponder;  // the transponder mode's channel name ("FM Rptr")
    double uplinkMHz = 0;     // uplink as the satellite hears it, MHz (no transverter offset)
    double downlinkMHz = 0;   // downlink as the satellite sends it, MHz
    std::string mode;         // ADIF MODE: "SSB", "FM", "CW", "PKT", ...
    std::string submode;      // ADIF SUBMODE: "USB", "LSB", "FT4", ... or empty
    std::string name;         // operator's name
    std::string qth;          // their location in words
    std::string comment;
    std::string lotwSent;  // ADIF LOTW_QSL_SENT letter: "Y", "N", "R", "Q", "I" or empty
    std::string lotwRcvd;  // ADIF LOTW_QSL_RCVD letter: "Y", "N", "R", "I", "V" or empty
    std::string qslSent;   // paper card sent, ADIF QSL_SENT letter
    std::string qslRcvd;   // paper card received, ADIF QSL_RCVD letter
    std::string country;   // DXCC entity name, from the prefix table
    int32_t dxcc = 0;      // DXCC entity number; 0 = none or unknown
};

}  // namespace veloran
