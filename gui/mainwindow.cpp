// The main window's layout, menus, full screen, tray and the wiring of its
// controls to the core.

#include "gui/mainwindow.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QSpinBox>
#include <QSplitter>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTabBar>
#include <QTabWidget>
#include <QTextBrowser>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "app/appcontroller.h"
#include "app/tracklist.h"
#include "data/settings.h"
#include "gui/globetab.h"
#include "gui/horizonwidget.h"
#include "gui/kepsdownload.h"
#include "gui/logbooklink.h"
#include "gui/logbookwindow.h"
#include "gui/logstrip.h"
#include "gui/mapwidget.h"
#include "gui/modeseditor.h"
#include "gui/passeswindow.h"
#include "gui/placeseditor.h"
#include "gui/placesheet.h"
#include "gui/prefsdialog.h"
#include "gui/radiopanel.h"
#include "gui/rotorpanel.h"
#include "gui/simulateddevices.h"
#include "gui/skywidget.h"
#include "gui/theme.h"
#include "gui/time1904.h"
#include "gui/tracklistmodel.h"
#include "gui/uibridge.h"

// The window's icon is compiled into this library; Q_INIT_RESOURCE declares
// its loader where it stands, so this stays outside any namespace.
static void LoadGuiResources() {
    Q_INIT_RESOURCE(resources);
}

namespace veloran {

namespace {

// What a desktop's title bar and frame take above and below a window.
constexpr int kWindowFrameHeight = 40;

// The time slider reaches two weeks either way, in minutes.
constexpr int kTimeSliderMinutes = 14 * 24 * 60;

QLabel* Line(const char* name) {
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QCheckBox* Box(const QString& text, const char* name) {
    auto* box = new QCheckBox(text);
    box->setObjectName(name);
    box->setAccessibleName(text);
    return box;
}

}  // namespace

MainWindow::MainWindow(UiBridge* bridge, CorePost post, QWidget* parent)
    : QMainWindow(parent),
      bridge_(bridge),
      post_(std::move(post)),
      timeWanted_(std::make_shared<std::atomic<int>>(0)),
      timePending_(std::make_shared<std::atomic<bool>>(false)) {
    LoadGuiResources();
    setObjectName("mainWindow");
    setWindowTitle("Veloran");
    setWindowIcon(QIcon(":/veloran.svg"));
    placeSheet_ = new PlaceSheet(this);
    sims_ = std::make_unique<SimulatedDevices>();
    prefs_ = new PrefsDialog(bridge_, post_, sims_.get(), this);
    modes_ = new ModesEditor(post_, this);
    places_ = new PlacesEditor(bridge_, post_, this);
    kepsDownload_ = new KepsDownloadDialog(bridge_, post_, this);
    connect(bridge_, &UiBridge::modesForEditingShown, modes_, &ModesEditor::showRecords);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(4);
    topBar_ = buildTopBar();
    layout->addWidget(topBar_);
    // The map over the lower panel, with a handle between them: the map
    // takes whatever height the window gains, the panel keeps the height the
    // operator gave it.
    mapSplitter_ = new QSplitter(Qt::Vertical);
    mapSplitter_->setObjectName("mapSplitter");
    mapSplitter_->setChildrenCollapsible(false);
    mapSplitter_->addWidget(buildMapArea());
    lowerPanel_ = buildLowerPanel();
    mapSplitter_->addWidget(lowerPanel_);
    mapSplitter_->setStretchFactor(0, 1);
    mapSplitter_->setStretchFactor(1, 0);
    mapSplitter_->handle(1)->setToolTip(
        tr("Drag to share the height between the map and the panels"));
    connect(mapSplitter_, &QSplitter::splitterMoved, this,
            [this] { lowerPanelHeight_ = mapSplitter_->sizes().value(1); });
    layout->addWidget(mapSplitter_, 1);
    logbook_ = new LogbookLink(post_, this);
    logStrip_ = new LogStrip(logbook_);
    layout->addWidget(logStrip_);
    setCentralWidget(central);
    // The status bar: the station's messages first, where the eye finds
    // them, then the version line and the element sets' date.
    QFont bold = message_->font();
    bold.setBold(true);
    message_->setFont(bold);
    kepsDate_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    kepsDate_->setMinimumWidth(200);
    statusBar()->addWidget(message_, 1);
    downloadBar_ = new QProgressBar;
    downloadBar_->setObjectName("downloadProgress");
    downloadBar_->setMaximumWidth(160);
    downloadBar_->setTextVisible(false);
    downloadCancel_ = new QPushButton(tr("Cancel"));
    downloadCancel_->setObjectName("downloadCancelButton");
    connect(downloadCancel_, &QPushButton::clicked, this, [this] {
        downloadCancel_->setEnabled(false);
        post_([](CoreSide& s) { s.app->cancelDownload(); });
    });
    statusBar()->addPermanentWidget(downloadBar_);
    statusBar()->addPermanentWidget(downloadCancel_);
    downloadBar_->hide();
    downloadCancel_->hide();
    statusBar()->addPermanentWidget(version_);
    statusBar()->addPermanentWidget(kepsDate_, 1);
    buildMenus();
    connectBridge();
    setMinimumSize(960, 600);
    setLowerPanelHeight(0);
    // A 1280 x 800 laptop's screen, less what its desktop keeps for itself.
    QSize size(1280, 800);
    if (const QScreen* shown = screen())
        size = size.boundedTo(shown->availableSize() - QSize(0, kWindowFrameHeight));
    resize(size.expandedTo(minimumSize()));
}

MainWindow::~MainWindow() = default;

QWidget* MainWindow::buildTopBar() {
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    satellites_ = new QComboBox;
    satellites_->setObjectName("satellitePopUp");
    satellites_->setAccessibleName(tr("Add Satellite"));
    satellites_->setMaxVisibleItems(30);
    satellites_->setMinimumContentsLength(16);
    connect(satellites_, &QComboBox::activated, this, [this](int index) {
        // Item 0 is the pop-up's title; the choice adds a satellite and
        // the pop-up shows its title again.
        satellites_->setCurrentIndex(0);
        if (index < 1) return;
        post_([index](CoreSide& s) { s.trackList->addSatellite(index); });
    });
    locations_ = new QComboBox;
    locations_->setObjectName("locationComboBox");
    locations_->setAccessibleName(tr("Place"));
    locations_->setMinimumContentsLength(24);
    locations_->setMaxVisibleItems(30);
    locations_->setPlaceholderText(tr("Choose a place"));
    connect(locations_, &QComboBox::activated, this, [this](int index) {
        post_([index](CoreSide& s) {
            s.app->controls().selectedLocation = index;
            s.app->locationChosen();
        });
    });
    auto* addPlace = new QToolButton;
    addPlace->setObjectName("addPlaceButton");
    addPlace->setText("+");
    addPlace->setToolTip(tr("Add a place"));
    connect(addPlace, &QToolButton::clicked, this, [this] {
        placeSheet_->clearFields();
        placeSheet_->show();
        placeSheet_->raise();
    });
    auto* removePlace = new QToolButton;
    removePlace->setObjectName("removePlaceButton");
    removePlace->setText("−");
    removePlace->setToolTip(tr("Remove the chosen place"));
    connect(removePlace, &QToolButton::clicked, this, [this] {
        const int index = locations_->currentIndex();
        post_([index](CoreSide& s) {
            s.app->controls().selectedLocation = index;
            s.app->removeLocation();
        });
    });
    connect(placeSheet_, &PlaceSheet::placeEntered, this, [this] {
        const std::string city = placeSheet_->city().toStdString();
        const std::string state = placeSheet_->state().toStdString();
        const std::string country = placeSheet_->country().toStdString();
        const std::string latitude = placeSheet_->latitude().toStdString();
        const std::string longitude = placeSheet_->longitude().toStdString();
        post_([=](CoreSide& s) {
            ControlsModel& c = s.app->controls();
            c.city = city;
            c.state = state;
            c.country = country;
            c.latitude = latitude;
            c.longitude = longitude;
            s.app->locationOK();
        });
    });
    latitude_ = Line("siteLatitude");
    longitude_ = Line("siteLongitude");
    MakeDigits(latitude_, 10);
    MakeDigits(longitude_, 10);
    clock_ = Line("clockLine");
    MakeDigits(clock_, 16, true);
    clock_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    clock_->setMinimumWidth(clock_->fontMetrics().horizontalAdvance("0000:00:00 00:00:00 UTC+00") +
                            8);
    row->addWidget(satellites_);
    row->addSpacing(12);
    row->addWidget(new QLabel(tr("Place")));
    row->addWidget(locations_);
    row->addWidget(addPlace);
    row->addWidget(removePlace);
    row->addWidget(latitude_);
    row->addWidget(longitude_);
    row->addStretch(1);
    row->addWidget(clock_);
    return bar;
}

QWidget* MainWindow::buildMapArea() {
    auto* area = new QWidget;
    auto* column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    mapTabs_ = new QTabWidget;
    mapTabs_->setObjectName("mapTabs");
    map_ = new MapWidget;
    mapTabs_->addTab(map_, tr("World Map"));
    globeTab_ = new GlobeTab(bridge_->globeExchange(), post_);
    mapTabs_->addTab(globeTab_, tr("3D Globe"));
    connect(bridge_, &UiBridge::globeScenePublished, globeTab_, &GlobeTab::sceneReady);
    connect(mapTabs_, &QTabWidget::currentChanged, this, [this](int index) {
        post_([index](CoreSide& s) { s.app->controls().mapTab = index; });
    });
    connect(map_, &MapWidget::zoomInClicked, this,
            [this] { post_([](CoreSide& s) { s.app->zoomedin(); }); });
    connect(map_, &MapWidget::zoomOutClicked, this,
            [this] { post_([](CoreSide& s) { s.app->zoomedout(); }); });
    connect(map_, &MapWidget::followToggled, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->followSatChanged(on); }); });
    connect(map_, &MapWidget::nightThemeToggled, this, [this](bool on) {
        nightAction_->setChecked(on);
        setNight(on);
        post_([on](CoreSide& s) { s.defaults->setBool(kNightThemeKey, on); });
    });
    connect(map_, &MapWidget::visibleRectChanged, this, [this](QRectF rect, int) {
        post_([rect](CoreSide& s) {
            ControlsModel& c = s.app->controls();
            c.hasMapRect = !rect.isEmpty();
            c.mapRect[0] = rect.x();
            c.mapRect[1] = rect.y();
            c.mapRect[2] = rect.width();
            c.mapRect[3] = rect.height();
        });
    });

    auto* controls = new QHBoxLayout;
    showTrackList_ = Box(tr("Track List Paths"), "displayTrackListCheckBox");
    showTrackList_->setToolTip(tr("Draw the footprints of every satellite in the track list"));
    connect(showTrackList_, &QCheckBox::clicked, this,
            [this](bool on) { post_([on](CoreSide& s) { s.app->displayTrackListChanged(on); }); });
    disclosure_ = new QToolButton;
    disclosure_->setObjectName("disclosureButton");
    disclosure_->setArrowType(Qt::DownArrow);
    disclosure_->setCheckable(true);
    disclosure_->setChecked(true);
    disclosure_->setToolTip(tr("Show or hide the lower panel"));
    connect(disclosure_, &QToolButton::toggled, this, &MainWindow::setLowerPanelShown);
    mapStatus_ = Line("mapStatus");
    MakeDigits(mapStatus_, 11, true);
    figures_ = Line("satelliteFigures");
    MakeDigits(figures_, 10);
    // The main satellite by its names, and how old its element set is.
    mainSatellite_ = Line("mainSatelliteLine");
    mainSatellite_->setTextFormat(Qt::RichText);
    controls->addWidget(disclosure_);
    controls->addWidget(mapStatus_);
    controls->addSpacing(16);
    controls->addWidget(figures_, 1);
    controls->addWidget(showTrackList_);

    column->addWidget(mapTabs_, 1);
    column->addWidget(mainSatellite_);
    column->addLayout(controls);
    return area;
}

QWidget* MainWindow::buildLowerPanel() {
    auto* panel = new QWidget;
    panel->setObjectName("lowerPanel");
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto* row = new QHBoxLayout;
    radioTabs_ = new QTabWidget;
    radioTabs_->setObjectName("radioTabs");
    radioTabs_->addTab(new RadioPanel(bridge_, post_), tr("Radio"));
    radioTabs_->addTab(new RotorPanel(bridge_, post_), tr("Rotor"));
    radioTabs_->setMinimumWidth(520);
    connect(radioTabs_, &QTabWidget::currentChanged, this, [this](int index) {
        post_([index](CoreSide& s) { s.app->controls().radioTab = index; });
    });

    listTabs_ = new QTabWidget;
    listTabs_->setObjectName("listTabs");
    trackList_ = new TrackListWidget;
    horizon_ = new HorizonWidget;
    listTabs_->addTab(trackList_, tr("Track List"));
    listTabs_->addTab(horizon_, tr("Horizon"));
    listTabs_->addTab(new SkyTab(post_), tr("Sky"));
    connect(listTabs_, &QTabWidget::currentChanged, this, [this](int index) {
        post_([index](CoreSide& s) { s.app->controls().listTab = index; });
    });
    connect(trackList_, &TrackListWidget::trackListToggled, this,
            [this](bool on) { post_([on](CoreSide& s) { s.trackList->toggleTrackList(on); }); });
    connect(trackList_, &TrackListWidget::addClicked, this, [this] { satellites_->showPopup(); });
    connect(trackList_, &TrackListWidget::deleteClicked, this, [this](int coreRow) {
        post_([coreRow](CoreSide& s) { s.trackList->deleteRow(coreRow); });
    });
    connect(trackList_, &TrackListWidget::singleClicked, this, [this](int coreRow, int checkbox) {
        post_([coreRow, checkbox](CoreSide& s) { s.trackList->singleClick(coreRow, checkbox); });
    });
    connect(trackList_, &TrackListWidget::doubleClicked, this, [this](int coreRow) {
        post_([coreRow](CoreSide& s) { s.trackList->doubleClick(coreRow); });
    });
    connect(horizon_, &HorizonWidget::heightAvailable, this, [this](int height) {
        post_([height](CoreSide& s) {
            s.ui->viewBuilder().setHorizonSize(kHorizonDefaultWidth, static_cast<float>(height));
        });
    });
    row->addWidget(radioTabs_, 0);
    row->addWidget(listTabs_, 1);
    column->addLayout(row, 1);
    column->addWidget(buildTimeBar());
    return panel;
}

QWidget* MainWindow::buildTimeBar() {
    auto* bar = new QWidget;
    auto* grid = new QGridLayout(bar);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(1);
    timeSlider_ = new QSlider(Qt::Horizontal);
    timeSlider_->setObjectName("timeSlider");
    timeSlider_->setAccessibleName(tr("Time offset, minutes"));
    timeSlider_->setRange(-kTimeSliderMinutes, kTimeSliderMinutes);
    timeSlider_->setPageStep(60);
    timeMinutes_ = new QSpinBox;
    timeMinutes_->setObjectName("timeMinutes");
    timeMinutes_->setRange(-kTimeSliderMinutes, kTimeSliderMinutes);
    timeMinutes_->setSuffix(tr(" min"));
    timeMinutes_->setAccelerated(true);
    auto* now = new QPushButton(tr("Now"));
    now->setObjectName("realTimeButton");
    now->setToolTip(tr("Back to real time"));
    connect(timeSlider_, &QSlider::valueChanged, this, &MainWindow::slideTime);
    connect(timeMinutes_, &QSpinBox::valueChanged, timeSlider_, &QSlider::setValue);
    connect(now, &QPushButton::clicked, this, [this] { timeSlider_->setValue(0); });
    debug_ = Box(tr("Debug"), "debugCheckBox");
    speech_ = Box(tr("Speech"), "speechCheckBox");
    connect(speech_, &QCheckBox::clicked, this,
            [this] { post_([](CoreSide& s) { s.app->speechChanged(); }); });
    connect(debug_, &QCheckBox::clicked, this, [this](bool on) {
        post_([on](CoreSide& s) {
            auto site = std::make_unique<SiteRec>();
            s.app->GetSiteRec(site.get());
            site->debug = on;
            s.app->SetSiteRec(site.get());
            s.defaults->setBool(prefkeys::kDebug, on);
        });
    });
    version_ = Line("versionLine");
    kepsDate_ = Line("kepsDateLine");
    message_ = Line("messageLine");
    auto* timeLabel = new QLabel(tr("Time"));
    grid->addWidget(timeLabel, 0, 0);
    grid->addWidget(timeSlider_, 0, 1);
    grid->addWidget(timeMinutes_, 0, 2);
    grid->addWidget(now, 0, 3);
    grid->addWidget(speech_, 0, 4);
    grid->addWidget(debug_, 0, 5);
    grid->setColumnStretch(1, 1);
    return bar;
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* prefs = file->addAction(tr("&Preferences…"), this, [this] {
        prefs_->setNightTheme(nightAction_->isChecked());
        prefs_->open();
    });
    prefs->setObjectName("preferencesAction");
    // Ctrl+, as on other desktops; Qt has no standard key for it on Linux.
    prefs->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    prefs->setShortcutContext(Qt::ApplicationShortcut);
    connect(prefs_, &PrefsDialog::nightThemeChosen, this, [this](bool on) {
        nightAction_->setChecked(on);
        setNight(on);
        post_([on](CoreSide& s) { s.defaults->setBool(kNightThemeKey, on); });
    });
    QAction* places = file->addAction(tr("P&laces…"), places_, &PlacesEditor::open);
    places->setObjectName("placesEditorAction");
    file->addSeparator();
    const QString elementFiles =
        tr("Element sets (*.txt *.tle *.dat *.3le *.csv *.json *.xml);;All files (*)");
    auto importKeps = [this, elementFiles](bool merge) {
        const QString path = QFileDialog::getOpenFileName(
            this, merge ? tr("Merge Element Sets") : tr("Import Element Sets"), QString(),
            elementFiles);
        if (path.isEmpty()) return;
        postWithFile(path, [merge](CoreSide& s) { s.app->importKeps(merge); });
    };
    QAction* keps =
        file->addAction(tr("&Import Element Sets…"), this, [importKeps] { importKeps(false); });
    keps->setObjectName("importKepsAction");
    keps->setShortcut(QKeySequence::Open);
    keps->setToolTip(tr("Replaces the element sets with those of a file"));
    QAction* merge =
        file->addAction(tr("&Merge Element Sets…"), this, [importKeps] { importKeps(true); });
    merge->setObjectName("mergeKepsAction");
    merge->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    QAction* download =
        file->addAction(tr("&Download Element Sets…"), kepsDownload_, &KepsDownloadDialog::open);
    download->setObjectName("downloadKepsAction");
    download->setToolTip(tr("Fetches element sets from AMSAT, CelesTrak or an address of yours"));
    connect(kepsDownload_, &KepsDownloadDialog::downloadStarted, this,
            [this] { message_->setText(tr("Downloading element sets…")); });
    download->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
    file->addSeparator();
    const QString modesFiles = tr("Modes files (*.txt *.dat);;All files (*)");
    QAction* importModes = file->addAction(tr("Import &Modes…"), this, [this, modesFiles] {
        const QString path =
            QFileDialog::getOpenFileName(this, tr("Import Modes"), QString(), modesFiles);
        if (!path.isEmpty()) postWithFile(path, [](CoreSide& s) { s.app->importModes(); });
    });
    importModes->setObjectName("importModesAction");
    QAction* satnogs = file->addAction(tr("Import &SatNOGS Transmitters…"), this, [this] {
        const QString path =
            QFileDialog::getOpenFileName(this, tr("Import SatNOGS Transmitters"), QString(),
                                         tr("SatNOGS transmitters (*.json);;All files (*)"));
        if (!path.isEmpty()) postWithFile(path, [](CoreSide& s) { s.app->importSatnogs(); });
    });
    satnogs->setObjectName("importSatnogsAction");
    satnogs->setToolTip(tr("Adds the channels of a SatNOGS DB transmitters list to your modes"));
    QAction* exportModes = file->addAction(tr("&Export Modes…"), this, [this, modesFiles] {
        const QString path = QFileDialog::getSaveFileName(
            this, tr("Export Modes"), QDir::home().filePath("Veloran Modes.txt"), modesFiles);
        if (!path.isEmpty()) postWithFile(path, [](CoreSide& s) { s.app->exportModes(); });
    });
    exportModes->setObjectName("exportModesAction");
    QAction* defaults = file->addAction(tr("Default Modes"), this, [this] {
        const auto answer = QMessageBox::question(
            this, tr("Default Modes"),
            tr("Replace your modes with the ones Veloran comes with? Your own channels, tones "
               "and offsets are lost unless you export them first."));
        if (answer == QMessageBox::Yes) post_([](CoreSide& s) { s.app->defaultModes(); });
    });
    defaults->setObjectName("defaultModesAction");
    file->addSeparator();
    QAction* quit = file->addAction(tr("&Quit"), qApp, &QApplication::quit);
    quit->setObjectName("quitAction");
    quit->setShortcut(QKeySequence::Quit);
    quit->setShortcutContext(Qt::ApplicationShortcut);

    QMenu* view = menuBar()->addMenu(tr("&View"));
    fullScreenAction_ = view->addAction(tr("&Full Screen"));
    fullScreenAction_->setObjectName("fullScreenAction");
    fullScreenAction_->setShortcut(Qt::Key_F11);
    fullScreenAction_->setCheckable(true);
    connect(fullScreenAction_, &QAction::triggered, this, &MainWindow::setFullScreenView);
    addAction(fullScreenAction_);  // F11 works while the menu bar is hidden
    QAction* showMap = view->addAction(tr("Map"), this, [this] { mapTabs_->setCurrentIndex(0); });
    showMap->setObjectName("showMapAction");
    showMap->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_1));
    QAction* showGlobe =
        view->addAction(tr("Globe"), this, [this] { mapTabs_->setCurrentIndex(1); });
    showGlobe->setObjectName("showGlobeAction");
    showGlobe->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_2));
    nightAction_ = view->addAction(tr("&Night Theme"));
    nightAction_->setObjectName("nightThemeAction");
    nightAction_->setCheckable(true);
    connect(nightAction_, &QAction::triggered, this, [this](bool on) {
        setNight(on);
        post_([on](CoreSide& s) { s.defaults->setBool(kNightThemeKey, on); });
    });

    view->addSeparator();
    QAction* zoomIn = view->addAction(tr("Zoom &In"), this,
                                      [this] { post_([](CoreSide& s) { s.app->zoomedin(); }); });
    zoomIn->setObjectName("zoomInAction");
    zoomIn->setShortcut(QKeySequence::ZoomIn);
    QAction* zoomOut = view->addAction(tr("Zoom &Out"), this,
                                       [this] { post_([](CoreSide& s) { s.app->zoomedout(); }); });
    zoomOut->setObjectName("zoomOutAction");
    zoomOut->setShortcut(QKeySequence::ZoomOut);
    QAction* trackTab = view->addAction(tr("&Track List"), this, [this] {
        setLowerPanelShown(true);
        listTabs_->setCurrentIndex(0);
    });
    trackTab->setObjectName("trackListTabAction");
    // Ctrl+1 and Ctrl+2 are the map tab view's; the list tab view follows.
    trackTab->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_3));
    QAction* horizonTab = view->addAction(tr("&Horizon"), this, [this] {
        setLowerPanelShown(true);
        listTabs_->setCurrentIndex(1);
    });
    horizonTab->setObjectName("horizonTabAction");
    horizonTab->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_4));
    QAction* skyTab = view->addAction(tr("&Sky"), this, [this] {
        setLowerPanelShown(true);
        listTabs_->setCurrentIndex(2);
    });
    skyTab->setObjectName("skyTabAction");
    skyTab->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_5));

    QMenu* satellite = menuBar()->addMenu(tr("S&atellite"));
    QAction* modes = satellite->addAction(tr("&Modes…"), modes_, &ModesEditor::open);
    modes->setObjectName("modesEditorAction");
    modes->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M));
    modes->setShortcutContext(Qt::ApplicationShortcut);
    QAction* choose = satellite->addAction(tr("Choose &Satellite"), this, [this] {
        satellites_->setFocus();
        satellites_->showPopup();
    });
    choose->setObjectName("chooseSatelliteAction");

    radioMenu_ = menuBar()->addMenu(tr("&Radio"));
    radioMenu_->setObjectName("radioMenu");
    radioGroup_ = new QActionGroup(this);

    QMenu* speech = menuBar()->addMenu(tr("&Speech"));
    speechAction_ = speech->addAction(tr("&Speak Pass Warnings"));
    speechAction_->setObjectName("speechAction");
    speechAction_->setCheckable(true);
    speechAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(speechAction_, &QAction::triggered, this,
            [this] { post_([](CoreSide& s) { s.app->speechChanged(); }); });

    QMenu* window = menuBar()->addMenu(tr("&Window"));
    QAction* passes = window->addAction(tr("&Passes"));
    passes->setObjectName("passesAction");
    passes->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));
    connect(passes, &QAction::triggered, this, &MainWindow::showPasses);
    addAction(passes);  // the shortcut works while the menu bar is hidden
    QAction* logbook = window->addAction(tr("&Logbook"));
    logbook->setObjectName("logbookAction");
    logbook->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    connect(logbook, &QAction::triggered, this, &MainWindow::showLogbook);
    addAction(logbook);
    windowAction_ = window->addAction(tr("Veloran"));
    windowAction_->setObjectName("openNewWindowAction");
    connect(windowAction_, &QAction::triggered, this, &MainWindow::showAgain);
    // Enabled only while the main window is hidden, as the controller says.
    connect(window, &QMenu::aboutToShow, this, [this] { windowAction_->setEnabled(!isVisible()); });

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* guide = help->addAction(tr("Veloran &User Guide"), this, &MainWindow::showUserGuide);
    guide->setObjectName("userGuideAction");
    guide->setShortcut(QKeySequence::HelpContents);
    QAction* about = help->addAction(tr("&About Veloran"), this, [this] {
        QMessageBox::about(
            this, tr("About Veloran"),
            tr("<h3>Veloran %1</h3><p>Satellite tracking and Doppler tuning for radio "
               "amateurs.</p><p>World map imagery: NASA Visible Earth (Blue Marble and "
               "Earth at Night), courtesy of NASA.</p><p>Built with Qt %2.</p>")
                .arg(QCoreApplication::applicationVersion(), QT_VERSION_STR));
    });
    about->setObjectName("aboutAction");
}

void MainWindow::postWithFile(const QString& path, CoreAction action) {
    post_([file = path.toStdString(), action](CoreSide& s) {
        s.ui->setChosenFile(file);
        action(s);
        s.ui->setChosenFile(std::string());
    });
}

void MainWindow::showUserGuide() {
    // The README beside the sources, or the installed copy.
    const QString here = QCoreApplication::applicationDirPath();
    for (const QString& path : {here + "/../../README.md", here + "/../share/doc/veloran/README.md",
                                here + "/../README.md"}) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) continue;
        auto* browser = new QTextBrowser;
        browser->setAttribute(Qt::WA_DeleteOnClose);
        browser->setObjectName("userGuide");
        browser->setWindowTitle(tr("Veloran User Guide"));
        browser->setMarkdown(QString::fromUtf8(file.readAll()));
        browser->resize(760, 640);
        browser->show();
        return;
    }
    message_->setText(tr("The user guide (README.md) is not installed beside the program."));
}

void MainWindow::applyWindowPrefs(const WindowPrefs& prefs) {
    for (QTabWidget* tabs : {mapTabs_, listTabs_, radioTabs_}) tabs->blockSignals(true);
    mapTabs_->setCurrentIndex(prefs.mapTab);
    listTabs_->setCurrentIndex(prefs.listTab);
    radioTabs_->setCurrentIndex(prefs.radioTab);
    for (QTabWidget* tabs : {mapTabs_, listTabs_, radioTabs_}) tabs->blockSignals(false);
    {
        const QSignalBlocker quietSlider(timeSlider_);
        const QSignalBlocker quietMinutes(timeMinutes_);
        timeSlider_->setValue(prefs.timeSliderMinutes);
        timeMinutes_->setValue(prefs.timeSliderMinutes);
    }
    nightAction_->setChecked(prefs.night);
    setNight(prefs.night);
    kepsDownload_->setAutomaticHours(prefs.kepsUpdateHours);
    if (!prefs.trackListColumns.isEmpty()) trackList_->restoreColumnLayout(prefs.trackListColumns);
    if (prefs.lowerPanelHeight > 0) setLowerPanelHeight(prefs.lowerPanelHeight);
    radioMenu_->clear();
    for (int i = 0; i < prefs.radioNames.size(); ++i) {
        QAction* item = radioMenu_->addAction(prefs.radioNames[i]);
        item->setCheckable(true);
        item->setObjectName(QString("radioItem%1").arg(i));
        item->setEnabled(i < prefs.radioItemEnabled.size() && prefs.radioItemEnabled[i]);
        radioGroup_->addAction(item);
        connect(item, &QAction::triggered, this,
                [this, i] { post_([i](CoreSide& s) { s.app->radioDriverChanged(i); }); });
    }
}

void MainWindow::connectBridge() {
    UiBridge* b = bridge_;
    connect(b, &UiBridge::windowPrefsShown, this, &MainWindow::applyWindowPrefs);
    connect(b, &UiBridge::satelliteItemsCleared, satellites_, &QComboBox::clear);
    connect(b, &UiBridge::satelliteItemAdded, this,
            [this](const QString& name) { satellites_->addItem(name); });
    connect(b, &UiBridge::downloadProgressed, this, [this](qint64 received, qint64 total) {
        if (!downloadBar_->isVisible()) downloadCancel_->setEnabled(true);
        // Kilobytes keep the range within an int for any size allowed.
        downloadBar_->setRange(0, total > 0 ? static_cast<int>(total / 1024) + 1 : 0);
        downloadBar_->setValue(static_cast<int>(received / 1024));
        downloadBar_->show();
        downloadCancel_->show();
    });
    connect(b, &UiBridge::downloadEnded, this, [this] {
        downloadBar_->hide();
        downloadCancel_->hide();
    });
    connect(b, &UiBridge::kepsDateChanged, this, [this](const QString& text) {
        kepsDate_->setText(text);
        kepsDate_->setToolTip(text);
    });
    connect(b, &UiBridge::satelliteNamesChanged, this, &MainWindow::showSatelliteNames);
    connect(b, &UiBridge::mainSatelliteStatusChanged, this, &MainWindow::showMainSatellite);
    connect(b, &UiBridge::alertRequested, this,
            [this](const QString& title, const QString& text, const QString& button) {
                // Window-modal but not blocking: the core has long moved on.
                auto* box = new QMessageBox(QMessageBox::Warning, "Veloran", title,
                                            QMessageBox::NoButton, this);
                box->setInformativeText(text);
                box->addButton(button.isEmpty() ? tr("OK") : button, QMessageBox::AcceptRole);
                box->setAttribute(Qt::WA_DeleteOnClose);
                box->open();
            });
    connect(b, &UiBridge::beepRequested, this, [] { QApplication::beep(); });
    connect(b, &UiBridge::locationItemsCleared, locations_, &QComboBox::clear);
    connect(b, &UiBridge::locationItemAdded, this,
            [this](const QString& name) { locations_->addItem(name); });
    connect(b, &UiBridge::locationShown, this,
            [this](const QString& name, const QString& lat, const QString& lon) {
                const int index = locations_->findText(name);
                if (index >= 0) locations_->setCurrentIndex(index);
                latitude_->setText(tr("Lat %1").arg(lat));
                longitude_->setText(tr("Lon %1").arg(lon));
            });
    connect(b, &UiBridge::locationSheetClosed, placeSheet_, &QDialog::hide);
    connect(b, &UiBridge::settingsShown, this, [this](const WindowSettings& settings) {
        map_->setFollowChecked(settings.followSat);
        showTrackList_->setChecked(settings.displayTrackList);
        speech_->setChecked(settings.speech);
        speechAction_->setChecked(settings.speech);
        locations_->setCurrentIndex(locations_->findText(settings.locationName));
        latitude_->setText(tr("Lat %1").arg(settings.latitude));
        longitude_->setText(tr("Lon %1").arg(settings.longitude));
        const QList<QAction*> items = radioGroup_->actions();
        if (settings.radio >= 0 && settings.radio < items.size())
            items[settings.radio]->setChecked(true);
    });
    connect(b, &UiBridge::clockLineChanged, this, [this](const QString& text, bool red) {
        clock_->setText(text);
        QPalette p = clock_->palette();
        p.setColor(QPalette::WindowText,
                   red ? VirtualTimeColour() : palette().color(QPalette::WindowText));
        clock_->setPalette(p);
        clock_->setProperty("virtualTime", red);
    });
    connect(b, &UiBridge::versionLineChanged, version_, &QLabel::setText);
    connect(b, &UiBridge::mapStatusChanged, mapStatus_, &QLabel::setText);
    // A radio, rotor or gateway lost, silent or back; stays until the next one.
    connect(b, &UiBridge::deviceMessageChanged, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(b, &UiBridge::satelliteFiguresChanged, this,
            [this](const QString& alt, const QString& vel, const QString& maxe, const QString& r) {
                figures_->setText(alt + "    " + vel + "    " + maxe + "    " + r);
            });
    connect(b, &UiBridge::debugCheckedChanged, debug_, &QCheckBox::setChecked);
    connect(b, &UiBridge::speechCheckedChanged, speech_, &QCheckBox::setChecked);
    connect(b, &UiBridge::speechCheckedChanged, speechAction_, &QAction::setChecked);
    connect(b, &UiBridge::zoomButtonsChanged, map_, &MapWidget::setZoomButtons);
    connect(b, &UiBridge::mapZoomed, map_, &MapWidget::zoomMap);
    connect(
        b, &UiBridge::viewListsPublished, this,
        [this](std::shared_ptr<const DisplayList> map, std::shared_ptr<const DisplayList> horizon) {
            if (map) map_->setList(std::move(map));
            if (horizon) horizon_->setList(std::move(horizon));
        });
    connect(b, &UiBridge::trackRowsChanged, trackList_, &TrackListWidget::setRows);
    connect(b, &UiBridge::trackRowsDeselected, trackList_, &TrackListWidget::deselectAllRows);
    connect(b, &UiBridge::mainWindowShown, this, [this](bool shown) {
        if (shown && !isVisible()) show();
        if (!shown && isVisible()) hide();
    });
    connect(b, &UiBridge::trackListCheckedChanged, trackList_,
            &TrackListWidget::setTrackListChecked);
    // Device messages (a port that would not open, a radio that stopped
    // answering) arrive as beeps with the switch going off; the message line
    // says which.
    connect(b, &UiBridge::noticeShown, message_, &QLabel::setText);
    connect(b, &UiBridge::radioCheckedChanged, this, [this](bool on) {
        if (!on) message_->setText(tr("Radio off"));
    });
    connect(b, &UiBridge::rotorCheckedChanged, this, [this](bool on) {
        if (!on) message_->setText(tr("Rotor off"));
    });
}

void MainWindow::showSatelliteNames(const std::vector<SatelliteNames>& names) {
    QHash<QString, QString> tips;
    for (const SatelliteNames& n : names)
        tips.insert(QString::fromStdString(n.name), SatelliteToolTip(n));
    // Item k of the pop-up is satellite k; the names arrive after the items.
    for (int i = 1; i < satellites_->count(); ++i)
        satellites_->setItemData(i, tips.value(satellites_->itemText(i)), Qt::ToolTipRole);
    trackList_->model()->setNameTips(std::move(tips));
}

void MainWindow::showMainSatellite(const MainSatelliteStatus& status) {
    const SatelliteNames& n = status.names;
    QString text = "<b>" + QString::fromStdString(n.name).toHtmlEscaped() + "</b>";
    if (!n.longName.empty() && n.longName != n.name)
        text += "&nbsp;&nbsp;" + QString::fromStdString(n.longName).toHtmlEscaped();
    if (n.catalog > 0) text += "&nbsp;&nbsp;" + tr("#%1").arg(n.catalog);
    const bool stale = status.hasElements && !status.warning.empty();
    if (status.hasElements) {
        QString age;
        if (status.ageDays < 0)
            age = tr("elements: epoch in %1 days").arg(-status.ageDays, 0, 'f', 1);
        else
            age = tr("elements %1 days old").arg(status.ageDays, 0, 'f', 1);
        if (stale) {
            const QColor red = VirtualTimeColour();
            age = QString("<span style=\"color:%1\"><b>%2 — %3</b></span>")
                      .arg(red.name(), age,
                           tr("older than %1 days, download new ones").arg(status.limitDays));
        }
        text += "&nbsp;&nbsp;&nbsp;&nbsp;" + age;
    }
    if (n.name.empty()) text.clear();
    mainSatellite_->setText(text);
    mainSatellite_->setToolTip(stale ? QString::fromStdString(status.warning)
                                     : SatelliteToolTip(n));
    mainSatellite_->setProperty("stale", stale);
}

void MainWindow::slideTime(int minutes) {
    {
        const QSignalBlocker quiet(timeMinutes_);
        timeMinutes_->setValue(minutes);
    }
    timeWanted_->store(minutes);
    if (timePending_->exchange(true)) return;
    auto wanted = timeWanted_;
    auto pending = timePending_;
    post_([wanted, pending](CoreSide& s) {
        pending->store(false);
        s.app->timeSlid(wanted->load());
    });
}

void MainWindow::showLogbook() {
    if (logbookWindow_ == nullptr) logbookWindow_ = new LogbookWindow(logbook_, this);
    logbookWindow_->show();
    logbookWindow_->raise();
    logbookWindow_->activateWindow();
}

void MainWindow::showPasses() {
    if (passesWindow_ == nullptr) {
        passesWindow_ = new PassesWindow(post_, this);
        connect(passesWindow_, &PassesWindow::aosChosen, this, [this](uint32_t aos) {
            // The slider holds minutes from real time.
            const qint64 minutes = (static_cast<qint64>(aos) - Now1904()) / 60;
            timeSlider_->setValue(static_cast<int>(
                std::clamp<qint64>(minutes, timeSlider_->minimum(), timeSlider_->maximum())));
        });
    }
    passesWindow_->show();
    passesWindow_->raise();
    passesWindow_->activateWindow();
}

int MainWindow::lowerPanelHeight() const {
    // A hidden panel has no size in the splitter; keep the one it had.
    return lowerPanel_->isVisibleTo(this) ? mapSplitter_->sizes().value(1) : lowerPanelHeight_;
}

void MainWindow::setLowerPanelHeight(int height) {
    // Never below what its panels need to be read; 0 asks for just that.
    const int least = lowerPanel_->minimumSizeHint().height();
    lowerPanelHeight_ = std::max(height, least);
    const int total = std::max(mapSplitter_->height(), lowerPanelHeight_ + 1);
    mapSplitter_->setSizes({total - lowerPanelHeight_, lowerPanelHeight_});
}

void MainWindow::setLowerPanelShown(bool shown) {
    disclosure_->setArrowType(shown ? Qt::DownArrow : Qt::RightArrow);
    if (disclosure_->isChecked() != shown) {
        const QSignalBlocker quiet(disclosure_);
        disclosure_->setChecked(shown);
    }
    lowerPanelHeight_ = lowerPanelHeight();
    lowerPanel_->setVisible(shown);
}

void MainWindow::setFullScreenView(bool on) {
    if (on == fullScreen_) return;
    fullScreen_ = on;
    fullScreenAction_->setChecked(on);
    // The map or the globe, whichever is in front, fills the screen;
    // everything else steps aside and comes back as it was, and tracking
    // never stops.
    topBar_->setVisible(!on);
    menuBar()->setVisible(!on);
    statusBar()->setVisible(!on);
    lowerPanelHeight_ = lowerPanelHeight();
    lowerPanel_->setVisible(!on && disclosure_->isChecked());
    for (QWidget* w : {static_cast<QWidget*>(mapStatus_), static_cast<QWidget*>(figures_),
                       static_cast<QWidget*>(mainSatellite_), static_cast<QWidget*>(showTrackList_),
                       static_cast<QWidget*>(disclosure_), static_cast<QWidget*>(logStrip_)})
        w->setVisible(!on);
    mapTabs_->tabBar()->setVisible(!on);
    globeTab_->setControlsShown(!on);
    if (on) {
        wasMaximized_ = isMaximized();
        showFullScreen();
    } else if (wasMaximized_) {
        showMaximized();
    } else {
        showNormal();
    }
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && fullScreen_) {
        setFullScreenView(false);
        return;
    }
    QMainWindow::keyPressEvent(event);
}

void MainWindow::setUpTray() {
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
    tray_ = new QSystemTrayIcon(windowIcon(), this);
    tray_->setToolTip("Veloran");
    auto* menu = new QMenu(this);
    menu->addAction(tr("Show"), this, &MainWindow::showAgain);
    menu->addAction(tr("Quit"), qApp, &QApplication::quit);
    tray_->setContextMenu(menu);
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
        if (r == QSystemTrayIcon::Trigger) showAgain();
    });
    tray_->show();
}

void MainWindow::showAgain() {
    show();
    raise();
    activateWindow();
    post_([](CoreSide& s) {
        if (!s.app->windowOpen()) s.app->openNewWindow();
    });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (tray_ == nullptr) {
        // No tray to bring the window back from: closing quits.
        event->accept();
        QApplication::quit();
        return;
    }
    event->ignore();
    hide();
    post_([](CoreSide& s) { s.app->windowShouldClose(); });
}

void MainWindow::setNight(bool on) {
    ApplyTheme(qApp, on);
    map_->setNightTheme(on);
    horizon_->setNightTheme(on);
    trackList_->setNightTheme(on);
}

void MainWindow::saveWindowState() {
    const std::string columns = trackList_->saveColumnLayout().toBase64().toStdString();
    const int lower = lowerPanelHeight();
    post_([columns, lower](CoreSide& s) {
        s.defaults->setString(kTrackListColumnsKey, columns);
        s.defaults->setInteger(kLowerPanelHeightKey, lower);
    });
}

}  // namespace veloran
