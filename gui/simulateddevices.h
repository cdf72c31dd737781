// Stand-in devices for trying the program without hardware: choosing
// "Simulated <model>" in a port list starts the matching simulator on a
// pseudo-terminal inside the program, and the station opens its path like
// any USB adapter. Each kind of device has at most one simulator; choosing
// another model replaces it. The simulators answer on threads of their own.
#pragma once

#include <QString>
#include <memory>
#include <string>

namespace veloran {

namespace sim {
class SimulatedRadio;
}

class SimulatedDevices {
  public:
    SimulatedDevices();
    ~SimulatedDevices();
    SimulatedDevices(const SimulatedDevices&) = delete;
    SimulatedDevices& operator=(const SimulatedDevices&) = delete;

    // The port-list item for radio index `radio` (rotor index `rotor`, the
    // gateway board); empty when there is no simulator for that model.
    static QString radioItem(int radio);
    static QString rotorItem(int rotor);
    static QString gatewayItem();
    static bool isSimulatedItem(const QString& text);

    // Starts (or keeps, when the same model already runs) the simulator and
    // returns the path to open; empty when none could be started.
    std::string startRadio(int radio, int icomAddress);
    std::string startRotor(int rotor);
    std::string startGateway();

    // The Yaesu simulator now running, for a look at its VFOs; else null.
    const sim::SimulatedRadio* yaesuRadio() const;

  private:
    struct Running;
    std::unique_ptr<Running> running_;
};

}  // namespace veloran
