// The globe tab's controls, its lazily made OpenGL view and the way its
// options go to the core.
#include "gui/globetab.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

#include "app/appcontroller.h"
#include "gui/globewidget.h"
#include "gui/uibridge.h"

namespace veloran {
namespace {

// The distance slider counts tenths of an Earth radius.
constexpr double kDistanceScale = 10.0;

QCheckBox* OptionBox(const QString& text, const char* name, const QString& tip) {
    auto* box = new QCheckBox(text);
    box->setObjectName(name);
    box->setAccessibleName(text);
    box->setToolTip(tip);
    return box;
}

QSlider* OptionSlider(const char* name, const QString& tip, int low, int high) {
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(name);
    slider->setAccessibleName(tip);
    slider->setToolTip(tip);
    slider->setRange(low, high);
    slider->setMaximumWidth(140);
    return slider;
}

}  // namespace

GlobeTab::GlobeTab(std::shared_ptr<GlobeSceneExchange> exchange, CorePost post, QWidget* parent)
    : QWidget(parent), exchange_(std::move(exchange)), post_(std::move(post)) {
    setObjectName("globeTab");
    layout_ = new QVBoxLayout(this);
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(2);

    controls_ = new QWidget;
    controls_->setObjectName("globeControls");
    auto* row = new QHBoxLayout(controls_);
    row->setContentsMargins(4, 2, 4, 0);
    pov_ = new QComboBox;
    pov_->setObjectName("cameraPOVPopUp");
    pov_->setAccessibleName(tr("Point of view"));
    pov_->addItems(
        {tr("Free Orbit"), tr("Above the Site"), tr("Behind the Satellite"), tr("From the Sun")});
    resolution_ = new QComboBox;
    resolution_->setObjectName("resolutionPopUp");
    resolution_->setAccessibleName(tr("Earth texture"));
    resolution_->addItems({tr("1024"), tr("2048"), tr("4096"), tr("Wire Frame")});
    distance_ = OptionSlider("cameraDistanceSlider", tr("Camera distance"),
                             static_cast<int>(kGlobeMinDistance * kDistanceScale),
                             static_cast<int>(kGlobeMaxDistance * kDistanceScale));
    ambient_ = OptionSlider("ambientLightSlider", tr("Light on the night side"), 0, 100);
    row->addWidget(new QLabel(tr("View")));
    row->addWidget(pov_);
    row->addWidget(new QLabel(tr("Texture")));
    row->addWidget(resolution_);
    row->addWidget(new QLabel(tr("Distance")));
    row->addWidget(distance_);
    row->addWidget(new QLabel(tr("Ambient")));
    row->addWidget(ambient_);
    row->addStretch(1);

    boxes_ = new QWidget;
    boxes_->setObjectName("globeOptionBoxes");
    auto* boxes = new QHBoxLayout(boxes_);
    boxes->setContentsMargins(4, 0, 4, 0);
    trackList_ = OptionBox(tr("Track List"), "globeTrackListCheckBox",
                           tr("Every satellite of the track list, not only the main one"));
    coverage_ = OptionBox(tr("Coverage"), "groundCoverageCheckBox",
                          tr("The area each satellite can be heard from"));
    labels_ = OptionBox(tr("Labels"), "globeLabelsCheckBox", tr("Names of satellites and places"));
    grid_ = OptionBox(tr("Grid"), "latLongLinesCheckBox", tr("Latitude and longitude lines"));
    skyTrack_ = OptionBox(tr("Sky Track"), "skyTrackCheckBox",
                          tr("The main satellite's path while it is above the horizon"));
    groundTrack_ = OptionBox(tr("Ground Track"), "globeGroundTrackCheckBox",
                             tr("The main satellite's next orbit over the ground"));
    planes_ = OptionBox(tr("Orbital Planes"), "orbitalPlaneCheckBox", tr("Each orbit as a ring"));
    cityLights_ =
        OptionBox(tr("City Lights"), "cityLightsCheckBox", tr("Cities lit on the night side"));
    for (QCheckBox* box :
         {trackList_, coverage_, labels_, grid_, skyTrack_, groundTrack_, planes_, cityLights_}) {
        boxes->addWidget(box);
        connect(box, &QCheckBox::clicked, this, &GlobeTab::optionsChanged);
    }
    boxes->addStretch(1);
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(controls_);
    column->addWidget(boxes_);
    layout_->addLayout(column);
    // Nothing is posted until the stored options are shown.
    controls_->setEnabled(false);
    for (QCheckBox* box :
         {trackList_, coverage_, labels_, grid_, skyTrack_, groundTrack_, planes_, cityLights_})
        box->setEnabled(false);

    connect(pov_, &QComboBox::activated, this, [this](int index) {
        if (globe_) globe_->setPointOfView(index);
        optionsChanged();
    });
    connect(resolution_, &QComboBox::activated, this, [this](int index) {
        if (globe_) globe_->setResolution(index);
        optionsChanged();
    });
    connect(distance_, &QSlider::valueChanged, this, [this](int value) {
        if (globe_) globe_->setDistance(value / kDistanceScale);
        if (!distance_->isSliderDown()) optionsChanged();
    });
    connect(distance_, &QSlider::sliderReleased, this, &GlobeTab::optionsChanged);
    connect(ambient_, &QSlider::valueChanged, this, [this](int value) {
        if (globe_) globe_->setAmbient(value);
        if (!ambient_->isSliderDown()) optionsChanged();
    });
    connect(ambient_, &QSlider::sliderReleased, this, &GlobeTab::optionsChanged);
}

void GlobeTab::setControlsShown(bool shown) {
    controls_->setVisible(shown);
    boxes_->setVisible(shown);
}

void GlobeTab::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!tried_) createView();
    // A scene of now at once rather than at the next tick.
    post_([](CoreSide& s) { s.ui->drawGlobe(s.app->viewFrame()); });
}

void GlobeTab::createView() {
    tried_ = true;
    if (!GlobeWidget::openGlAvailable()) {
        auto* line =
            new QLabel(tr("The 3D globe needs OpenGL 3.3, which this display does not offer."));
        line->setObjectName("globeUnavailable");
        line->setAlignment(Qt::AlignCenter);
        layout_->addWidget(line, 1);
        return;
    }
    globe_ = new GlobeWidget(exchange_);
    layout_->addWidget(globe_, 1);
    connect(globe_, &GlobeWidget::distanceChangedByWheel, this, [this](double radii) {
        distance_->setValue(static_cast<int>(std::lround(radii * kDistanceScale)));
    });
    connect(globe_, &GlobeWidget::pointOfViewChangedByDrag, this, [this](int pov) {
        pov_->setCurrentIndex(pov);
        optionsChanged();
    });
}

void GlobeTab::sceneReady() {
    if (!optionsKnown_) {
        // The first scene carries the options the core has stored.
        if (const GlobeScene* scene = exchange_->take(); scene != nullptr) {
            optionsKnown_ = true;
            showOptions(scene->options);
        }
    }
    if (globe_) globe_->sceneReady();
}

void GlobeTab::showOptions(const GlobeOptions& o) {
    const QSignalBlocker a(pov_), b(resolution_), c(distance_), d(ambient_);
    pov_->setCurrentIndex(o.cameraPOV);
    resolution_->setCurrentIndex(o.resolution);
    distance_->setValue(static_cast<int>(std::lround(o.cameraDistance * kDistanceScale)));
    ambient_->setValue(o.nightLight);
    const std::pair<QCheckBox*, bool> boxes[] = {
        {trackList_, o.trackList}, {coverage_, o.groundCoverage}, {labels_, o.labels},
        {grid_, o.latLongLines},   {skyTrack_, o.skyTrack},       {groundTrack_, o.groundTrack},
        {planes_, o.orbitalPlane}, {cityLights_, o.cityLights}};
    for (const auto& [box, on] : boxes) {
        box->setChecked(on);
        box->setEnabled(true);
    }
    controls_->setEnabled(true);
    if (globe_) {
        globe_->setPointOfView(o.cameraPOV);
        globe_->setResolution(o.resolution);
        globe_->setDistance(o.cameraDistance);
        globe_->setAmbient(o.nightLight);
    }
}

GlobeOptions GlobeTab::controlOptions() const {
    GlobeOptions o;
    o.cameraPOV = pov_->currentIndex();
    o.resolution = resolution_->currentIndex();
    o.cameraDistance = distance_->value() / kDistanceScale;
    o.nightLight = ambient_->value();
    o.trackList = trackList_->isChecked();
    o.groundCoverage = coverage_->isChecked();
    o.labels = labels_->isChecked();
    o.latLongLines = grid_->isChecked();
    o.skyTrack = skyTrack_->isChecked();
    o.groundTrack = groundTrack_->isChecked();
    o.orbitalPlane = planes_->isChecked();
    o.cityLights = cityLights_->isChecked();
    return o;
}

void GlobeTab::optionsChanged() {
    if (!optionsKnown_) return;
    const GlobeOptions o = controlOptions();
    post_([o](CoreSide& s) { s.app->globeOptionsChanged(o); });
}

}  // namespace veloran
