// The radio panel: the satellite being worked, its mode, both frequencies in
// large digits with their trim steppers, the tuning slider, the Doppler,
// beacon and lock switches, the transponder line and the S-meter.
#pragma once

#include <QWidget>

#include "gui/corethread.h"

class QLabel;
class QComboBox;
class QSlider;
class QCheckBox;
class QProgressBar;
class QToolButton;

namespace veloran {

class UiBridge;

class RadioPanel : public QWidget {
    Q_OBJECT
  public:
    RadioPanel(UiBridge* bridge, CorePost post, QWidget* parent = nullptr);

  private:
    QWidget* frequencyRow(const QString& name, QLabel** digits, QLabel** trim, QLabel** line,
                          QToolButton** up, QToolButton** down);
    void stepUplink(double by);
    void stepDownlink(double by);
    void sliderChanged(int value);
    void sliderReset(double value);

    CorePost post_;
    QLabel* title_;
    QComboBox* modes_;
    QLabel *uplink_, *downlink_, *uplinkTrim_, *downlinkTrim_, *uplinkLine_, *downlinkLine_;
    QSlider* slider_;
    QCheckBox *fullDoppler_, *beacon_, *lock_;
    QLabel* transponder_;
    QProgressBar* sMeter_;
    double uplinkStepper_ = 0, downlinkStepper_ = 0;  // the steppers' values, MHz
    double sliderSent_ = 0;                           // the slider position last sent
};

// The slider's travel, in the units vfoSliderMoved takes (hundredths of a
// MHz per unit): ±1 is ±10 kHz.
constexpr int kSliderSteps = 1000;

}  // namespace veloran
