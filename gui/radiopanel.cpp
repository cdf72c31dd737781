// The radio panel. Stepper clicks and slider moves go to the core as
// queued actions; what the core then shows comes back through the bridge.

#include "gui/radiopanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "app/appcontroller.h"
#include "gui/theme.h"
#include "gui/uibridge.h"

namespace veloran {

namespace {

// The trim steppers' travel and step, MHz.
constexpr double kStepperLimit = 10.0;
constexpr double kStepperStep = 0.001;

QCheckBox* Switch(const QString& text, const char* name) {
    auto* box = new QCheckBox(text);
    box->setObjectName(name);
    box->setAccessibleName(text);
    return box;
}

}  // namespace

RadioPanel::RadioPanel(UiBridge* bridge, CorePost post, QWidget* parent)
    : QWidget(parent), post_(std::move(post)) {
    setObjectName("radioPanel");
    title_ = new QLabel(tr("Veloran"));
    title_->setObjectName("radioPanelTitle");
    QFont titleFont = title_->font();
    titleFont.setPointSize(titleFont.pointSize() + 3);
    titleFont.setBold(true);
    title_->setFont(titleFont);
    modes_ = new QComboBox;
    modes_->setObjectName("channelPopUp");
    modes_->setAccessibleName(tr("Mode"));
    modes_->setMinimumContentsLength(18);

    QToolButton *upUp, *upDown, *downUp, *downDown;
    QWidget* upRow = frequencyRow(tr("Up"), &uplink_, &uplinkTrim_, &uplinkLine_, &upUp, &upDown);
    QWidget* downRow =
        frequencyRow(tr("Down"), &downlink_, &downlinkTrim_, &downlinkLine_, &downUp, &downDown);
    uplink_->setObjectName("uplinkFrequency");
    downlink_->setObjectName("downlinkFrequency");
    uplinkTrim_->setObjectName("uplinkTrim");
    downlinkTrim_->setObjectName("downlinkTrim");
    uplinkLine_->setObjectName("uplinkLine");
    downlinkLine_->setObjectName("downlinkLine");
    upUp->setObjectName("uplinkStepUp");
    upDown->setObjectName("uplinkStepDown");
    downUp->setObjectName("downlinkStepUp");
    downDown->setObjectName("downlinkStepDown");
    connect(upUp, &QToolButton::clicked, this, [this] { stepUplink(kStepperStep); });
    connect(upDown, &QToolButton::clicked, this, [this] { stepUplink(-kStepperStep); });
    connect(downUp, &QToolButton::clicked, this, [this] { stepDownlink(kStepperStep); });
    connect(downDown, &QToolButton::clicked, this, [this] { stepDownlink(-kStepperStep); });

    slider_ = new QSlider(Qt::Horizontal);
    slider_->setObjectName("vfoSlider");
    slider_->setAccessibleName(tr("Tuning"));
    slider_->setRange(-kSliderSteps, kSliderSteps);
    slider_->setToolTip(tr("Tuning: ±10 kHz around the Doppler-corrected frequencies"));
    connect(slider_, &QSlider::valueChanged, this, &RadioPanel::sliderChanged);

    fullDoppler_ = Switch(tr("Full Doppler"), "fullDopplerCheckBox");
    beacon_ = Switch(tr("Beacon"), "beaconCheckBox");
    lock_ = Switch(tr("Lock"), "lockCheckBox");
    auto* radioOn = Switch(tr("Radio"), "radioCheckBox");
    auto* gatewayOn = Switch(tr("Gateway"), "gatewayCheckBox");
    transponder_ = new QLabel;
    transponder_->setObjectName("transponderLine");
    sMeter_ = new QProgressBar;
    sMeter_->setObjectName("sMeter");
    sMeter_->setAccessibleName(tr("S-meter"));
    sMeter_->setRange(0, 100);
    sMeter_->setTextVisible(false);
    sMeter_->setMaximumHeight(12);

    connect(fullDoppler_, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->fullDopplerTuningChanged(on); }); });
    connect(beacon_, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->beaconChanged(on); }); });
    connect(lock_, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->vfoLockChanged(on); }); });
    connect(radioOn, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->openCloseRadio(on); }); });
    connect(gatewayOn, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->openCloseGateway(on); }); });
    connect(modes_, &QComboBox::activated, this, [this](int index) {
        post_([index](CoreSide& s) {
            s.ui->controls().selectedChannel = index;
            s.app->modeChanged();
        });
    });

    auto* top = new QHBoxLayout;
    top->addWidget(title_, 1);
    top->addWidget(modes_);
    auto* switches = new QHBoxLayout;
    for (QWidget* w : {static_cast<QWidget*>(radioOn), static_cast<QWidget*>(gatewayOn),
                       static_cast<QWidget*>(fullDoppler_), static_cast<QWidget*>(beacon_),
                       static_cast<QWidget*>(lock_)})
        switches->addWidget(w);
    switches->addStretch(1);
    auto* sliderRow = new QHBoxLayout;
    sliderRow->addWidget(new QLabel(tr("Tune")));
    sliderRow->addWidget(slider_, 1);
    sliderRow->addWidget(new QLabel(tr("S")));
    sliderRow->addWidget(sMeter_, 0);
    sMeter_->setFixedWidth(90);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(3);
    layout->addLayout(top);
    layout->addWidget(upRow);
    layout->addWidget(downRow);
    layout->addLayout(sliderRow);
    layout->addLayout(switches);
    layout->addWidget(transponder_);
    layout->addStretch(1);

    connect(bridge, &UiBridge::radioPanelTitleChanged, title_, &QLabel::setText);
    connect(bridge, &UiBridge::channelItemsCleared, modes_, &QComboBox::clear);
    connect(bridge, &UiBridge::channelItemAdded, this,
            [this](const QString& name) { modes_->addItem(name); });
    connect(bridge, &UiBridge::channelItemSelected, modes_, &QComboBox::setCurrentIndex);
    connect(bridge, &UiBridge::vfoSliderReset, this, &RadioPanel::sliderReset);
    connect(bridge, &UiBridge::vfoPanelChanged, this,
            [this](const QString& up, const QString& down, const QString& upTrim,
                   const QString& downTrim, const QString& upLine, const QString& downLine) {
                uplink_->setText(up);
                downlink_->setText(down);
                uplinkTrim_->setText(upTrim);
                downlinkTrim_->setText(downTrim);
                uplinkLine_->setText(upLine);
                downlinkLine_->setText(downLine);
            });
    connect(bridge, &UiBridge::trimSteppersChanged, this, [this](double up, double down) {
        uplinkStepper_ = up;
        downlinkStepper_ = down;
    });
    connect(bridge, &UiBridge::transponderLineChanged, this,
            [this](const QString& text, bool checked, bool enabled) {
                transponder_->setText(text);
                fullDoppler_->setChecked(checked);
                fullDoppler_->setEnabled(enabled);
            });
    connect(bridge, &UiBridge::sMeterChanged, sMeter_, [this](int level) {
        sMeter_->setValue(std::clamp(level, sMeter_->minimum(), sMeter_->maximum()));
    });
    connect(bridge, &UiBridge::radioCheckedChanged, radioOn, &QCheckBox::setChecked);
    connect(bridge, &UiBridge::gatewayCheckedChanged, gatewayOn, &QCheckBox::setChecked);
    connect(bridge, &UiBridge::settingsShown, this,
            [this, radioOn, gatewayOn](const WindowSettings& settings) {
                beacon_->setChecked(settings.beacon);
                lock_->setChecked(settings.locked);
                radioOn->setChecked(settings.radioOn);
                gatewayOn->setChecked(settings.gatewayOn);
            });
}

QWidget* RadioPanel::frequencyRow(const QString& name, QLabel** digits, QLabel** trim,
                                  QLabel** line, QToolButton** up, QToolButton** down) {
    auto* row = new QWidget;
    auto* grid = new QGridLayout(row);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(0);
    auto* label = new QLabel(name);
    label->setMinimumWidth(36);
    *digits = new QLabel("---.---.---");
    MakeDigits(*digits, 22, true);
    (*digits)->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    (*digits)->setMinimumWidth((*digits)->fontMetrics().horizontalAdvance("0000.000.000") + 4);
    *trim = new QLabel("0.00000");
    MakeDigits(*trim, 11);
    *line = new QLabel;
    MakeDigits(*line, 9);
    *up = new QToolButton;
    *down = new QToolButton;
    (*up)->setArrowType(Qt::UpArrow);
    (*down)->setArrowType(Qt::DownArrow);
    for (QToolButton* b : {*up, *down}) {
        b->setAutoRepeat(true);
        b->setFixedSize(22, 15);
    }
    (*up)->setAccessibleName(name + tr(" up 1 kHz"));
    (*down)->setAccessibleName(name + tr(" down 1 kHz"));
    auto* stepper = new QVBoxLayout;
    stepper->setSpacing(0);
    stepper->addWidget(*up);
    stepper->addWidget(*down);
    grid->addWidget(label, 0, 0, 2, 1);
    grid->addWidget(*digits, 0, 1, 2, 1);
    grid->addLayout(stepper, 0, 2, 2, 1);
    grid->addWidget(*trim, 0, 3);
    grid->addWidget(*line, 1, 3);
    grid->setColumnStretch(3, 1);
    return row;
}

void RadioPanel::stepUplink(double by) {
    uplinkStepper_ = std::clamp(uplinkStepper_ + by, -kStepperLimit, kStepperLimit);
    const double value = uplinkStepper_;
    post_([value](CoreSide& s) { s.app->uplinkClicked(value); });
}

void RadioPanel::stepDownlink(double by) {
    downlinkStepper_ = std::clamp(downlinkStepper_ + by, -kStepperLimit, kStepperLimit);
    const double value = downlinkStepper_;
    post_([value](CoreSide& s) { s.app->downlinkClicked(value); });
}

void RadioPanel::sliderChanged(int value) {
    // Send the change, not the position: the tick puts the core's idea of
    // the slider back to zero every second, and while the operator holds the
    // knob that reset must not make the same offset count twice.
    const double position = static_cast<double>(value) / kSliderSteps;
    const double delta = position - sliderSent_;
    sliderSent_ = position;
    if (delta == 0) return;
    post_([delta](CoreSide& s) {
        s.ui->controls().vfoSlider += delta;
        s.app->vfoSliderMoved(s.ui->controls().vfoSlider);
    });
}

void RadioPanel::sliderReset(double value) {
    if (slider_->isSliderDown()) return;
    const QSignalBlocker quiet(slider_);
    slider_->setValue(static_cast<int>(value * kSliderSteps));
    sliderSent_ = static_cast<double>(slider_->value()) / kSliderSteps;
}

}  // namespace veloran
