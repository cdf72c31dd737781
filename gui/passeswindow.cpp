// The passes window: its controls, the search on worker threads, the sky
// plot of the selected pass and the two exports.

#include "gui/passeswindow.h"

#include <QComboBox>
#include <QDateTime>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "app/appcontroller.h"
#include "engine/timebase.h"
#include "gui/skywidget.h"
#include "gui/time1904.h"
#include "gui/uibridge.h"
#include "views/skyplot.h"

namespace veloran {

namespace {

constexpr int kMaxWorkers = 4;
constexpr int kClockMs = 10000;
// A search older than this, or from another instant than the core's by
// more, is run again.
constexpr uint32_t kStaleSeconds = 1800;

// A record the pass finder can read, from the copied elements.
void Fill(SatRec* rec, const KepRec& kep, double nodeRate, double perigeeRate) {
    rec->satKep = kep;
    rec->satRAANPrecession = nodeRate;
    rec->perigeePrecession = perigeeRate;
}

uint32_t Seconds(const PassInputs& in, double day) {
    return static_cast<uint32_t>(static_cast<int64_t>(in.now) +
                                 std::llround((day - in.nowDay) * 86400.0));
}

}  // namespace

PassesWindow::PassesWindow(CorePost post, QWidget* parent)
    : QWidget(parent, Qt::Window),
      post_(std::move(post)),
      feed_(new PassesFeed, [](PassesFeed* f) { f->deleteLater(); }),
      cancelled_(std::make_shared<std::atomic<bool>>(false)) {
    setObjectName("passesWindow");
    setWindowTitle(tr("Passes"));
    resize(1100, 520);

    scope_ = new QComboBox;
    scope_->setObjectName("passesScope");
    scope_->setAccessibleName(tr("Which satellites"));
    scope_->addItems({tr("Track list"), tr("All satellites"), tr("One satellite")});
    satellite_ = new QComboBox;
    satellite_->setObjectName("passesSatellite");
    satellite_->setAccessibleName(tr("Satellite"));
    satellite_->setEnabled(false);
    days_ = new QSpinBox;
    days_->setObjectName("passesDays");
    days_->setAccessibleName(tr("Days"));
    days_->setRange(1, 10);
    days_->setValue(1);
    days_->setSuffix(tr(" days"));
    minElevation_ = new QDoubleSpinBox;
    minElevation_->setObjectName("passesMinElevation");
    minElevation_->setAccessibleName(tr("Minimum elevation"));
    minElevation_->setRange(0, 90);
    minElevation_->setDecimals(0);
    minElevation_->setSuffix(tr("\u00b0 min"));
    auto* csv = new QPushButton(tr("Export CSV\u2026"));
    csv->setObjectName("passesExportCsv");
    auto* ics = new QPushButton(tr("Export Calendar\u2026"));
    ics->setObjectName("passesExportCalendar");
    status_ = new QLabel;
    status_->setObjectName("passesStatus");

    model_ = new PassesModel(this);
    filter_ = new PassesFilter(this);
    filter_->setSourceModel(model_);
    table_ = new QTableView;
    table_->setObjectName("passesTable");
    table_->setModel(filter_);
    table_->setSortingEnabled(true);
    table_->sortByColumn(PassesModel::kAos, Qt::AscendingOrder);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    sky_ = new SkyWidget;
    sky_->setObjectName("passesSky");

    auto* controls = new QHBoxLayout;
    controls->addWidget(scope_);
    controls->addWidget(satellite_, 1);
    controls->addWidget(days_);
    controls->addWidget(minElevation_);
    controls->addStretch(1);
    controls->addWidget(csv);
    controls->addWidget(ics);
    auto* split = new QSplitter;
    split->addWidget(table_);
    split->addWidget(sky_);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 1);
    auto* column = new QVBoxLayout(this);
    column->addLayout(controls);
    column->addWidget(split, 1);
    column->addWidget(status_);

    connect(scope_, &QComboBox::currentIndexChanged, this, [this](int scope) {
        satellite_->setEnabled(scope == kOne);
        refresh();
    });
    connect(satellite_, &QComboBox::currentIndexChanged, this, [this] {
        if (scope_->currentIndex() == kOne) refresh();
    });
    connect(days_, &QSpinBox::valueChanged, this, &PassesWindow::refresh);
    connect(minElevation_, &QDoubleSpinBox::valueChanged, filter_,
            &PassesFilter::setMinimumElevation);
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &PassesWindow::showSelectedPass);
    connect(table_, &QTableView::doubleClicked, this, [this](const QModelIndex& index) {
        emit aosChosen(model_->row(filter_->mapToSource(index).row()).aos);
    });
    connect(csv, &QPushButton::clicked, this, [this] { exportFile(false); });
    connect(ics, &QPushButton::clicked, this, [this] { exportFile(true); });

    connect(feed_.get(), &PassesFeed::inputsReady, this, &PassesWindow::start);
    connect(feed_.get(), &PassesFeed::rowsFound, this, &PassesWindow::addRows);
    connect(feed_.get(), &PassesFeed::nowIs, this, [this](uint32_t now) {
        model_->setNow(now);
        // The slider moved, or time went on: search again from now.
        if (inputs_ && (now < inputs_->now || now - inputs_->now > kStaleSeconds)) refresh();
    });
    clock_ = new QTimer(this);
    clock_->setInterval(kClockMs);
    connect(clock_, &QTimer::timeout, this, [this] {
        if (!isVisible()) return;
        auto feed = feed_;
        post_([feed](CoreSide& s) { emit feed->nowIs(s.app->timeBaseSecs()); });
    });
    clock_->start();
}

PassesWindow::~PassesWindow() {
    stopWorkers();
}

void PassesWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!inputs_) refresh();
}

void PassesWindow::stopWorkers() {
    cancelled_->store(true);
    for (std::thread& t : workers_) t.join();
    workers_.clear();
}

void PassesWindow::refresh() {
    const int generation = ++generation_;
    const int scope = scope_->currentIndex();
    const int one = satellite_->currentIndex();
    auto feed = feed_;
    // On the core thread: copies of what the search reads, nothing more.
    post_([feed, generation, scope, one](CoreSide& s) {
        auto in = std::make_shared<PassInputs>();
        AppController* app = s.app;
        app->GetSiteRec(&in->site);
        in->now = app->timeBaseSecs();
        in->nowDay = EpochTime(in->now);
        const int total = app->GetTotalSats();
        auto rec = std::make_unique<SatRec>();
        if (total >= 3) {
            app->GetSatelliteRecordByIndex(total - 1, rec.get());  // the Sun closes the table
            in->sunKep = rec->satKep;
            in->sunNodeRate = rec->satRAANPrecession;
            in->sunPerigeeRate = rec->perigeePrecession;
        }
        for (int i = 0; i + 2 < total; ++i) {
            app->GetSatelliteRecordByIndex(i, rec.get());
            in->allNames << QString::fromUtf8(rec->name);
            const bool wanted = scope == kAll || (scope == kOne && i == one) ||
                                (scope == kTrackList && rec->tracked);
            if (!wanted) continue;
            const auto& names = app->satelliteNames();
            const QString tip = i < static_cast<int>(names.size())
                                    ? SatelliteToolTip(names[static_cast<size_t>(i)])
                                    : QString();
            in->satellites.push_back({QString::fromUtf8(rec->name), i, rec->satKep,
                                      rec->satRAANPrecession, rec->perigeePrecession, tip});
        }
        emit feed->inputsReady(generation, std::move(in));
    });
}

void PassesWindow::start(int generation, std::shared_ptr<const PassInputs> inputs) {
    if (generation != generation_) return;
    stopWorkers();
    cancelled_ = std::make_shared<std::atomic<bool>>(false);
    inputs_ = inputs;
    model_->clear();
    model_->setNow(inputs->now);
    if (satellite_->count() != inputs->allNames.size()) {
        const QSignalBlocker quiet(satellite_);
        satellite_->clear();
        satellite_->addItems(inputs->allNames);
    }
    pending_ = static_cast<int>(inputs->satellites.size());
    status_->setText(pending_ ? tr("Searching %n satellite(s)\u2026", "", pending_)
                              : tr("No satellites to search"));
    const double endDay = inputs->nowDay + days_->value();
    auto next = std::make_shared<std::atomic<size_t>>(0);
    auto feed = feed_;
    auto cancelled = cancelled_;
    const auto work = [inputs, next, feed, cancelled, generation, endDay] {
        auto rec = std::make_unique<SatRec>();
        auto sun = std::make_unique<SatRec>();
        Fill(sun.get(), inputs->sunKep, inputs->sunNodeRate, inputs->sunPerigeeRate);
        std::vector<PassRec> found(64);
        for (size_t i = (*next)++; i < inputs->satellites.size() && !*cancelled; i = (*next)++) {
            const PassInputs::Satellite& sat = inputs->satellites[i];
            Fill(rec.get(), sat.kep, sat.nodeRate, sat.perigeeRate);
            // A pass in progress is searched from half a day back for its AOS.
            const double from = inputs->nowDay - 0.5;
            int n = FindPasses(rec.get(), &inputs->site, sun.get(), from, endDay, 0.0, found.data(),
                               static_cast<int>(found.size()));
            if (n > static_cast<int>(found.size())) {
                found.resize(static_cast<size_t>(n));
                n = FindPasses(rec.get(), &inputs->site, sun.get(), from, endDay, 0.0, found.data(),
                               n);
            }
            std::vector<PassRow> rows;
            for (int k = 0; k < n; ++k) {
                const PassRec& p = found[static_cast<size_t>(k)];
                if (p.losDay < inputs->nowDay) continue;  // over before now
                rows.push_back({sat.name, sat.index, p, Seconds(*inputs, p.aosDay),
                                Seconds(*inputs, p.maxDay), Seconds(*inputs, p.losDay), sat.tip});
            }
            emit feed->rowsFound(generation, std::move(rows));
        }
    };
    const int workers =
        std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kMaxWorkers);
    for (int i = 0; i < workers; ++i) workers_.emplace_back(work);
}

void PassesWindow::addRows(int generation, std::vector<PassRow> rows) {
    if (generation != generation_) return;
    model_->append(rows);
    if (--pending_ <= 0)
        status_->setText(
            tr("%n pass(es) from %1 UTC", "", model_->rowCount()).arg(PassTimeText(inputs_->now)));
    if (!table_->currentIndex().isValid() && filter_->rowCount() > 0) table_->selectRow(0);
}

void PassesWindow::showSelectedPass() {
    const QModelIndex current = table_->currentIndex();
    if (!current.isValid() || !inputs_) return;
    const PassRow& row = model_->row(filter_->mapToSource(current).row());
    const PassInputs::Satellite* sat = nullptr;
    for (const PassInputs::Satellite& s : inputs_->satellites)
        if (s.index == row.satelliteIndex) sat = &s;
    if (sat == nullptr) return;
    auto rec = std::make_unique<SatRec>();
    std::strncpy(rec->name, sat->name.toUtf8().constData(), sizeof rec->name - 1);
    Fill(rec.get(), sat->kep, sat->nodeRate, sat->perigeeRate);
    // The pass as if it were next: the plot's marks are the pass's own.
    SkyPlotScene scene;
    const double aosDay = row.pass.aosDay;
    SkyPlotForPass(rec.get(), &inputs_->site, aosDay, row.aos, &scene);
    scene.hasSatellite = false;
    scene.title = (row.satellite + " " + PassTimeText(row.aos) + " UTC").toStdString();
    sky_->setScene(scene);
}

void PassesWindow::exportFile(bool calendar) {
    std::vector<PassRow> rows;
    for (int r = 0; r < filter_->rowCount(); ++r)
        rows.push_back(model_->row(filter_->mapToSource(filter_->index(r, 0)).row()));
    const QString path = QFileDialog::getSaveFileName(
        this, calendar ? tr("Export passes as a calendar") : tr("Export passes as CSV"),
        calendar ? "passes.ics" : "passes.csv",
        calendar ? tr("iCalendar (*.ics)") : tr("CSV (*.csv)"));
    if (path.isEmpty()) return;
    const uint32_t stamp = static_cast<uint32_t>(Now1904());
    const QString text = calendar ? PassesICalendar(rows, stamp) : PassesCsv(rows);
    // Written beside the old file and renamed over it, so a full disk never
    // leaves half a calendar.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit()) {
        status_->setText(tr("Cannot write %1: %2").arg(path, file.errorString()));
        return;
    }
    status_->setText(tr("%n pass(es) written to %1", "", static_cast<int>(rows.size())).arg(path));
}

}  // namespace veloran
