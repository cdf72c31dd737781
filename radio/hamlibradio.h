// Radios reached through Hamlib: any rig model on a serial port, or model 2
// (Hamlib's network rig) on a rigctld at HOST:PORT. It is one more row of the
// radio table, so the tuning controller drives it exactly as the built-in
// drivers (the same VFORec, the same skip of unchanged frequencies).
//
// The connection is stood for by a descriptor of its own (kept in
// radioPortFileDescriptor like a serial port's), so "port open" means the
// same to every caller; close it with CloseHamlibRadio, never closeSerialPort.
#pragma once

#include <string>
#include <vector>

#include "radio/drivers.h"

namespace veloran {

// The radio index that selects Hamlib: the first after the built-in models.
constexpr int kHamlibRadio = kRadioCount;
// Hamlib's own model numbers for its dummy rig and its network rig (rigctld).
constexpr int kHamlibDummyModel = 1;
constexpr int kHamlibNetModel = 2;

// The Hamlib row of the radio table.
const RadioDriver* HamlibRadioDriver();

// Opens Hamlib rig `model` on `port` (a device path, or HOST:PORT for model
// 2); `baud` in bit/s, 0 for the model's default. Returns the connection's
// descriptor, or -1 with the reason in *error ("no answer", Hamlib's error
// text, or an unknown model). A host that does not answer costs at most
// about a second. Hamlib's own diagnostics go to standard error (our traffic
// log) when `debug` is on and are silenced otherwise.
int OpenHamlibRadio(int model, const char* port, int baud, bool debug, std::string* error);
// How long Hamlib waits for each reply of a radio opened from now on: 500 ms
// unless changed (a test whose rigctld shares a busy machine allows more).
// A longer wait also lengthens the first look at a rigctld (a second).
void SetHamlibReplyTimeout(int milliseconds);
int HamlibReplyTimeout();
// Closes a connection made by OpenHamlibRadio; ignores any other descriptor.
void CloseHamlibRadio(int fd);
// 1 when `fd` stands for an open Hamlib radio.
int IsHamlibRadio(int fd);

// Why the last failed call on `fd` failed (empty when none did).
std::string HamlibRadioError(int fd);

// A model Hamlib knows, for --list-radios, --list-rotors and the model list.
struct HamlibModel {
    int number;
    std::string maker;
    std::string model;
};
// Hamlib's rig models, by number.
std::vector<HamlibModel> HamlibRadioModels();
// The maker and model of rig `number`, or "" when Hamlib has no such model.
std::string HamlibRadioName(int number);

}  // namespace veloran
