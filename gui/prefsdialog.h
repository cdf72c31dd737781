// The preferences panel: station, radio, rotor, gateway, speech and sounds,
// display. It shows a copy of the site record the core sent, edits that copy,
// and on OK hands it back to the core thread whole; Cancel asks the core to
// show its own settings again. The "Test" buttons ask the core, which holds
// the ports.
#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "data/locations.h"
#include "engine/siterec.h"
#include "gui/corethread.h"
#include "gui/uibridge.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QSpinBox;
class QTabWidget;

namespace veloran {

class SimulatedDevices;

class PrefsDialog : public QDialog {
    Q_OBJECT
  public:
    // `sims` starts the "Simulated" port items' devices; it must outlive
    // the dialog.
    PrefsDialog(UiBridge* bridge, CorePost post, SimulatedDevices* sims, QWidget* parent = nullptr);

    // Asks the core for its settings and shows the panel.
    void open() override;
    void accept() override;
    void reject() override;

    // The night theme lives with the window, not the site record.
    void setNightTheme(bool on);

  signals:
    void nightThemeChosen(bool on);

  private:
    QWidget* buildStation();
    QWidget* buildRadio();
    QWidget* buildRotor();
    QWidget* buildGateway();
    QWidget* buildSpeech();
    QWidget* buildDisplay();
    void show(const PrefsSnapshot& prefs);
    // The controls read back into a copy of the record last shown.
    SiteRec fromControls() const;
    void placeChosen(int index);
    void latLonEdited();
    void locatorEdited();
    void test(TestedDevice device);
    // The "Simulated" item at the end of each port list follows the model.
    void updateSimulatedItems();
    // The path to add for a port box: a typed one, or the started
    // simulator's; empty when an item of the list is chosen.
    std::string pathToAdd(TestedDevice device);
    // Opens the list of Hamlib's models for the radio or the rotor.
    void chooseHamlibModel(TestedDevice device);
    void showHamlibModels();

    CorePost post_;
    SimulatedDevices* sims_;
    std::shared_ptr<const PrefsSnapshot> shown_;
    QTabWidget* tabs_;
    // Station
    QLineEdit *callSign_, *siteName_, *latitude_, *longitude_, *locator_;
    QDoubleSpinBox *altitude_, *minElevation_;
    QComboBox* place_;
    // Radio
    QComboBox *radio_, *radioPort_, *radioBaud_;
    QSpinBox* icomAddress_;
    QDoubleSpinBox* commandDelay_;
    QCheckBox *sMeter_, *dialTracking_, *debug_;
    QLabel *radioTest_ = nullptr, *hamlibRadio_ = nullptr;
    int hamlibRadioModel_ = 1;
    QVector<HamlibChoice> hamlibRadios_;
    // Rotor
    QComboBox *rotor_, *rotorPort_, *rotorBaud_, *deadSpot_;
    QDoubleSpinBox *azOffset_, *elOffset_, *parkAz_, *parkEl_;
    QCheckBox* park_;
    QLabel *rotorTest_ = nullptr, *hamlibRotor_ = nullptr;
    int hamlibRotorModel_ = 1;
    QVector<HamlibChoice> hamlibRotors_;
    // Gateway
    QComboBox *gatewayPort_, *gatewayBaud_;
    QLabel* gatewayTest_;
    // Speech and sounds
    QCheckBox *speech_, *sounds_;
    QComboBox* voice_;
    QSlider* rate_;
    QLabel *rateText_, *speechNote_;
    QWidget* rateRow_;
    QPushButton* sayTest_;
    void showVoices(const PrefsSnapshot& prefs);
    QString chosenVoice() const;
    double chosenRate() const;
    // Display
    QCheckBox *utc_, *km_, *trackList_, *night_;
};

}  // namespace veloran
