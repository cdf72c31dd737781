// The rotor panel: where the antenna points, the manual switch with the
// azimuth and elevation dials for steering by hand, the flip line and the
// rotor port switch.
#pragma once

#include <QWidget>

#include "gui/corethread.h"

class QLabel;
class QDial;
class QCheckBox;

namespace veloran {

class UiBridge;

class RotorPanel : public QWidget {
    Q_OBJECT
  public:
    RotorPanel(UiBridge* bridge, CorePost post, QWidget* parent = nullptr);

  private:
    void moved();

    CorePost post_;
    QLabel *azimuth_, *elevation_, *flip_;
    QCheckBox *manual_, *rotorOn_;
    QDial *azimuthDial_, *elevationDial_;
};

}  // namespace veloran
