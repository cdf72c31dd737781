// Rotators reached through Hamlib: any rotator model on a serial port, or
// model 2 (Hamlib's network rotator) on a rotctld at HOST:PORT. It is one
// more row of the rotor table: our steering (offsets, park, flip, dead spot,
// whole-degree steps) decides where to point, Hamlib only carries it there.
//
// As with the Hamlib radio, the connection is stood for by a descriptor of
// its own in rotorPortFileDescriptor; close it with CloseHamlibRotor.
#pragma once

#include <string>
#include <vector>

#include "rotor/rotor.h"

namespace veloran {

// The rotor index that selects Hamlib: the first after the built-in ones.
constexpr int kHamlibRotor = kRotorCount;

// Opens Hamlib rotator `model` on `port` (device path, or HOST:PORT for
// model 2); `baud` in bit/s, 0 for the model's default. The connection's
// descriptor, or -1 with the reason in *error. A silent host costs at most
// about a second.
int OpenHamlibRotor(int model, const char* port, int baud, bool debug, std::string* error);
void CloseHamlibRotor(int fd);
int IsHamlibRotor(int fd);

// Points the rotator, degrees: 1 when Hamlib took it, -1 otherwise.
int HamlibRotorPosition(int fd, int azimuth, int elevation, bool debug);
// The rotator's position read back, degrees; 1 when it answered.
int HamlibRotorReadBack(int fd, double* azimuth, double* elevation, bool debug);

struct HamlibRotorModel {
    int number;
    std::string maker;
    std::string model;
};
// Hamlib's rotator models, by number.
std::vector<HamlibRotorModel> HamlibRotorModels();

}  // namespace veloran
