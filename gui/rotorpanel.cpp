// The rotor panel. The dials turn with north (azimuth) and the zenith
// (elevation) at the top; QDial's zero sits at the bottom, hence the half
// turn between dial values and the controller's angles.

#include "gui/rotorpanel.h"

#include <QCheckBox>
#include <QDial>
#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "app/appcontroller.h"
#include "gui/theme.h"
#include "gui/uibridge.h"

namespace veloran {

namespace {

int FromDial(int value) {
    return (value + 180) % 360;
}
int ToDial(int angle) {
    return ((angle % 360) + 540) % 360;
}

QDial* Dial(const char* name, const QString& accessible) {
    auto* dial = new QDial;
    dial->setObjectName(name);
    dial->setAccessibleName(accessible);
    dial->setRange(0, 359);
    dial->setWrapping(true);
    dial->setNotchesVisible(true);
    dial->setNotchTarget(15);
    dial->setFixedSize(96, 96);
    return dial;
}

}  // namespace

RotorPanel::RotorPanel(UiBridge* bridge, CorePost post, QWidget* parent)
    : QWidget(parent), post_(std::move(post)) {
    setObjectName("rotorPanel");
    azimuth_ = new QLabel("Azimuth: 0.00");
    azimuth_->setObjectName("rotorAzimuth");
    elevation_ = new QLabel("Elevation: 0.00");
    elevation_->setObjectName("rotorElevation");
    MakeDigits(azimuth_, 18, true);
    MakeDigits(elevation_, 18, true);
    flip_ = new QLabel;
    flip_->setObjectName("flipLine");
    manual_ = new QCheckBox(tr("Manual"));
    manual_->setObjectName("manualSwitch");
    rotorOn_ = new QCheckBox(tr("Rotor"));
    rotorOn_->setObjectName("rotorCheckBox");
    azimuthDial_ = Dial("azimuthDial", tr("Azimuth by hand"));
    elevationDial_ = Dial("elevationDial", tr("Elevation by hand"));
    elevationDial_->setValue(ToDial(270));  // the horizon
    azimuthDial_->setValue(ToDial(0));

    // The angles and the switches on the left, the dials beside them, so
    // the panel stays low and leaves the height to the map above.
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(6, 4, 6, 4);
    grid->setHorizontalSpacing(12);
    grid->addWidget(azimuth_, 0, 0);
    grid->addWidget(elevation_, 1, 0);
    grid->addWidget(flip_, 2, 0, Qt::AlignLeft | Qt::AlignBottom);
    grid->addWidget(azimuthDial_, 0, 1, 3, 1, Qt::AlignHCenter);
    grid->addWidget(elevationDial_, 0, 2, 3, 1, Qt::AlignHCenter);
    auto* switches = new QHBoxLayout;
    switches->addWidget(rotorOn_);
    switches->addWidget(manual_);
    switches->addStretch(1);
    grid->addLayout(switches, 3, 0);
    grid->addWidget(new QLabel(tr("Az (N up)")), 3, 1, Qt::AlignHCenter);
    grid->addWidget(new QLabel(tr("El (zenith up)")), 3, 2, Qt::AlignHCenter);
    grid->setColumnStretch(0, 1);
    grid->setRowStretch(4, 1);

    connect(manual_, &QCheckBox::clicked, this, &RotorPanel::moved);
    connect(azimuthDial_, &QDial::sliderReleased, this, &RotorPanel::moved);
    connect(elevationDial_, &QDial::sliderReleased, this, &RotorPanel::moved);
    connect(azimuthDial_, &QDial::actionTriggered, this, [this](int action) {
        if (action != QAbstractSlider::SliderMove) moved();
    });
    connect(elevationDial_, &QDial::actionTriggered, this, [this](int action) {
        if (action != QAbstractSlider::SliderMove) moved();
    });
    connect(rotorOn_, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->openCloseRotor(on); }); });

    connect(bridge, &UiBridge::rotorPanelChanged, this,
            [this](const QString& az, const QString& el) {
                azimuth_->setText(az);
                elevation_->setText(el);
            });
    connect(bridge, &UiBridge::flipLineChanged, flip_, &QLabel::setText);
    connect(bridge, &UiBridge::rotorCheckedChanged, rotorOn_, &QCheckBox::setChecked);
    connect(bridge, &UiBridge::elevationControlChanged, this, [this](int value) {
        const QSignalBlocker quiet(elevationDial_);
        elevationDial_->setValue(ToDial(value));
    });
    connect(bridge, &UiBridge::settingsShown, this, [this](const WindowSettings& settings) {
        manual_->setChecked(settings.rotorManual);
        rotorOn_->setChecked(settings.rotorOn);
    });
}

void RotorPanel::moved() {
    const bool manual = manual_->isChecked();
    const int azimuth = FromDial(azimuthDial_->value());
    const int elevation = FromDial(elevationDial_->value());
    post_([=](CoreSide& s) { s.app->az_el_Moved(manual, azimuth, elevation); });
}

}  // namespace veloran
