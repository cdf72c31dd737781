// The simulators behind the "Simulated" port items, by radio and rotor index.

#include "gui/simulateddevices.h"

#include <QObject>

#include "radio/drivers.h"
#include "rotor/rotor.h"
#include "sim/gateway_sim.h"
#include "sim/icom_sim.h"
#include "sim/radio_sim.h"
#include "sim/rotor_sim.h"
#include "sim/sim_pty.h"
#include "sim/ts2000_sim.h"

namespace veloran {

namespace {

enum class Family { None, Yaesu, Icom, Kenwood };

struct RadioSimRow {
    Family family;
    sim::RadioModel yaesu;
    sim::IcomModel icom;
};

// By radio index. The IC-820 and IC-970 speak the IC-821's commands, and the
// IC-706 family one dialect; the TS-790, TS-50, PCR1000 and AOR receiver
// have no simulator.
constexpr RadioSimRow kRadioSims[kRadioCount] = {
    {Family::Yaesu, sim::RadioModel::FT736R, {}},
    {Family::Yaesu, sim::RadioModel::FT847, {}},
    {Family::Yaesu, sim::RadioModel::FT817, {}},
    {Family::Yaesu, sim::RadioModel::FT100D, {}},
    {Family::Yaesu, sim::RadioModel::VR5000, {}},
    {Family::Icom, {}, sim::IcomModel::IC821},
    {Family::Icom, {}, sim::IcomModel::IC821},
    {Family::Icom, {}, sim::IcomModel::IC910},
    {Family::Icom, {}, sim::IcomModel::IC821},
    {Family::Icom, {}, sim::IcomModel::IC706},
    {Family::Icom, {}, sim::IcomModel::IC706},
    {Family::None, {}, {}},
    {Family::Icom, {}, sim::IcomModel::IC706},
    {Family::None, {}, {}},
    {Family::Kenwood, {}, {}},
    {Family::None, {}, {}},
    {Family::None, {}, {}},
};

// By rotor index; the Alfa SPID answers as a GS-232.
constexpr sim::RotorProtocol kRotorSims[kRotorCount] = {
    sim::RotorProtocol::kGS232,       sim::RotorProtocol::kGS232,
    sim::RotorProtocol::kAutoTracker, sim::RotorProtocol::kAutoTracker,
    sim::RotorProtocol::kEasyComm,    sim::RotorProtocol::kEasyComm,
    sim::RotorProtocol::kKLM,         sim::RotorProtocol::kSARtek,
    sim::RotorProtocol::kSatEL,       sim::RotorProtocol::kDCU1,
    sim::RotorProtocol::kSpid,        sim::RotorProtocol::kPT,
};

// A rotor turns at about this rate; the simulator moves toward each command
// as a real one would.
constexpr double kRotorDegreesPerSecond = 6.0;

const QString kPrefix = QStringLiteral("Simulated ");

}  // namespace

struct SimulatedDevices::Running {
    int radio = -1, icomAddress = -1, rotor = -1;
    std::unique_ptr<sim::SimulatedRadio> yaesu;
    std::unique_ptr<sim::SimDevice> radioDevice;
    std::unique_ptr<sim::PtyServer> radioLine;
    std::unique_ptr<sim::RotorSim> rotorSim;
    std::unique_ptr<sim::GatewayBoard> board;
    std::unique_ptr<sim::PtyServer> boardLine;
    std::string radioPath;

    ~Running() {
        radioLine.reset();  // stops serving before the device goes
        if (rotorSim) sim::CloseRotorSim(rotorSim.get());
        boardLine.reset();
    }
};

SimulatedDevices::SimulatedDevices() : running_(std::make_unique<Running>()) {}
SimulatedDevices::~SimulatedDevices() = default;

QString SimulatedDevices::radioItem(int radio) {
    if (radio < 0 || radio >= kRadioCount || kRadioSims[radio].family == Family::None) return {};
    return kPrefix + QString::fromUtf8(RadioDriverFor(radio)->model);
}

QString SimulatedDevices::rotorItem(int rotor) {
    const char* name = rotorName(rotor);
    return name != nullptr ? kPrefix + QString::fromUtf8(name) : QString();
}

QString SimulatedDevices::gatewayItem() {
    return kPrefix + QObject::tr("gateway board");
}

bool SimulatedDevices::isSimulatedItem(const QString& text) {
    return text.startsWith(kPrefix);
}

std::string SimulatedDevices::startRadio(int radio, int icomAddress) {
    Running& r = *running_;
    if (radio < 0 || radio >= kRadioCount || kRadioSims[radio].family == Family::None) return {};
    if (r.radio == radio && r.icomAddress == icomAddress && !r.radioPath.empty())
        return r.radioPath;
    r.radioLine.reset();
    r.radioDevice.reset();
    r.yaesu.reset();
    r.radioPath.clear();
    r.radio = radio;
    r.icomAddress = icomAddress;
    const RadioSimRow& row = kRadioSims[radio];
    if (row.family == Family::Yaesu) {
        r.yaesu = std::make_unique<sim::SimulatedRadio>(row.yaesu);
        if (r.yaesu->open()) r.radioPath = r.yaesu->devicePath();
        return r.radioPath;
    }
    if (row.family == Family::Icom)
        r.radioDevice =
            std::make_unique<sim::IcomSimulator>(row.icom, static_cast<uint8_t>(icomAddress));
    else
        r.radioDevice = std::make_unique<sim::Ts2000Simulator>();
    r.radioLine = std::make_unique<sim::PtyServer>();
    if (!r.radioLine->open()) return {};
    r.radioLine->start(r.radioDevice.get());
    r.radioPath = r.radioLine->path();
    return r.radioPath;
}

const sim::SimulatedRadio* SimulatedDevices::yaesuRadio() const {
    return running_->yaesu.get();
}

std::string SimulatedDevices::startRotor(int rotor) {
    Running& r = *running_;
    if (rotor < 0 || rotor >= kRotorCount) return {};
    if (r.rotor == rotor && r.rotorSim) return r.rotorSim->slavePath;
    if (r.rotorSim) sim::CloseRotorSim(r.rotorSim.get());
    r.rotorSim = std::make_unique<sim::RotorSim>();
    r.rotor = rotor;
    if (!sim::OpenRotorSim(r.rotorSim.get(), kRotorSims[rotor], kRotorDegreesPerSecond)) {
        r.rotorSim.reset();
        return {};
    }
    sim::StartRotorSimThread(r.rotorSim.get());
    return r.rotorSim->slavePath;
}

std::string SimulatedDevices::startGateway() {
    Running& r = *running_;
    if (r.boardLine) return r.boardLine->path();
    r.board = std::make_unique<sim::GatewayBoard>();
    r.boardLine = std::make_unique<sim::PtyServer>();
    if (!r.boardLine->open()) {
        r.boardLine.reset();
        return {};
    }
    r.boardLine->start(r.board.get());
    return r.boardLine->path();
}

}  // namespace veloran
