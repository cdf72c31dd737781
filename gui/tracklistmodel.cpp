// The track-list table model and its tab.

#include "gui/tracklistmodel.h"

#include <QCollator>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>
#include <algorithm>
#include <cstring>
#include <numeric>

namespace veloran {

namespace {

int CheckboxColumn() {
    return TrackListModel::columnOfKey("checkbox");
}

// Numbers sort as numbers ("9.5 km" before "12.0 km", "-3.1" before "2.0"),
// everything else (names, hh:mm:ss, dates) by a collation that reads digit
// runs as numbers.
int CompareTexts(const QString& a, const QString& b) {
    bool aNumber = false, bNumber = false;
    const double x = a.section(' ', 0, 0).toDouble(&aNumber);
    const double y = b.section(' ', 0, 0).toDouble(&bNumber);
    if (aNumber && bNumber) return x < y ? -1 : (x > y ? 1 : 0);
    static const QCollator collator = [] {
        QCollator c;
        c.setNumericMode(true);
        c.setCaseSensitivity(Qt::CaseInsensitive);
        return c;
    }();
    return collator.compare(a, b);
}

}  // namespace

const std::vector<TrackColumn>& TrackListModel::columns() {
    static const std::vector<TrackColumn> kColumns = {
        {"checkbox", ""},
        {"satelliteName", "Satellite"},
        {"pri", "Pri"},
        {"pass", "Pass"},
        {"aostime", "AOS"},
        {"length", "Length"},
        {"maxe", "MaxE"},
        {"azimuth", "Az"},
        {"elevation", "El"},
        {"deltae", "El Trend"},
        {"range", "Range"},
        {"velocity", "Range Rate"},
        {"altitude", "Altitude"},
        {"deltaa", "Alt Trend"},
        {"latitude", "Lat"},
        {"longitude", "Lon"},
        {"maxetime", "To MaxE"},
        {"lostime", "To LOS"},
        {"eclipse", "Eclipse"},
        {"timetoe", "To Eclipse"},
        {"phase", "Phase"},
        {"squint", "Squint"},
        {"apogtime", "To Apogee"},
        {"planarcr", "To Plane"},
        {"pathLoss", "Path Loss"},
        {"orbit", "Orbit"},
        {"index", "Index"},
    };
    return kColumns;
}

int TrackListModel::columnOfKey(const char* key) {
    const auto& cols = columns();
    for (size_t i = 0; i < cols.size(); ++i)
        if (std::strcmp(cols[i].key, key) == 0) return static_cast<int>(i);
    return -1;
}

void TrackListModel::setRows(std::vector<SatelliteSlot> rows, std::vector<RowColour> colours) {
    // Remember which satellite each selected or current index stood on.
    const QModelIndexList persistent = persistentIndexList();
    std::vector<std::string> names;
    names.reserve(persistent.size());
    for (const QModelIndex& index : persistent) {
        const SatelliteSlot* slot = slotAt(index.row());
        names.push_back(slot != nullptr ? slot->satelliteName : std::string());
    }
    emit layoutAboutToBeChanged();
    rows_ = std::move(rows);
    colours_ = std::move(colours);
    colours_.resize(rows_.size(), RowColour::kBlack);
    applyOrder();
    QModelIndexList moved;
    moved.reserve(persistent.size());
    for (int i = 0; i < persistent.size(); ++i) {
        int found = -1;
        for (size_t r = 0; r < order_.size() && !names[i].empty(); ++r)
            if (rows_[order_[r]].satelliteName == names[i]) found = static_cast<int>(r);
        moved.push_back(found >= 0 ? index(found, persistent[i].column()) : QModelIndex());
    }
    changePersistentIndexList(persistent, moved);
    emit layoutChanged();
}

void TrackListModel::applyOrder() {
    order_.resize(rows_.size());
    std::iota(order_.begin(), order_.end(), 0);
    if (sortColumn_ < 0 || sortColumn_ >= columnCount()) return;
    const std::string key = columns()[sortColumn_].key;
    std::vector<QString> texts(rows_.size());
    for (size_t i = 0; i < rows_.size(); ++i)
        texts[i] = QString::fromStdString(rows_[i].valueForKey(key));
    std::stable_sort(order_.begin(), order_.end(), [&](int a, int b) {
        const int c = CompareTexts(texts[a], texts[b]);
        return sortOrder_ == Qt::AscendingOrder ? c < 0 : c > 0;
    });
}

void TrackListModel::sort(int column, Qt::SortOrder order) {
    emit layoutAboutToBeChanged();
    std::vector<int> before = order_;
    sortColumn_ = column;
    sortOrder_ = order;
    applyOrder();
    // Keep the selection on the same satellites.
    const QModelIndexList persistent = persistentIndexList();
    QModelIndexList moved;
    for (const QModelIndex& i : persistent) {
        const int core = i.row() < static_cast<int>(before.size()) ? before[i.row()] : -1;
        const auto it = std::find(order_.begin(), order_.end(), core);
        moved.push_back(it != order_.end()
                            ? index(static_cast<int>(it - order_.begin()), i.column())
                            : QModelIndex());
    }
    changePersistentIndexList(persistent, moved);
    emit layoutChanged();
}

int TrackListModel::coreRow(int row) const {
    return row >= 0 && row < static_cast<int>(order_.size()) ? order_[row] : -1;
}

const SatelliteSlot* TrackListModel::slotAt(int row) const {
    const int core = coreRow(row);
    return core >= 0 ? &rows_[core] : nullptr;
}

RowColour TrackListModel::colourAt(int row) const {
    const int core = coreRow(row);
    return core >= 0 ? colours_[core] : RowColour::kBlack;
}

QColor TrackListModel::textColour(RowColour colour, bool nightTheme) {
    // Darker green and blue than the pure primaries, so they read on white;
    // brighter ones on the night theme's dark rows.
    switch (colour) {
        case RowColour::kGrey:
            return nightTheme ? QColor(110, 110, 110) : QColor(150, 150, 150);
        case RowColour::kRed:
            return nightTheme ? QColor(255, 90, 80) : QColor(210, 0, 0);
        case RowColour::kGreen:
            return nightTheme ? QColor(90, 220, 90) : QColor(0, 150, 0);
        case RowColour::kBlue:
            return nightTheme ? QColor(120, 160, 255) : QColor(0, 0, 220);
        case RowColour::kBlack:
            break;
    }
    return nightTheme ? QColor(200, 200, 190) : QColor(0, 0, 0);
}

void TrackListModel::setNightTheme(bool on) {
    nightTheme_ = on;
    if (!rows_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1),
                         {Qt::ForegroundRole});
}

void TrackListModel::setNameTips(QHash<QString, QString> tips) {
    nameTips_ = std::move(tips);
    const int column = columnOfKey("satelliteName");
    if (!rows_.empty())
        emit dataChanged(index(0, column), index(rowCount() - 1, column), {Qt::ToolTipRole});
}

int TrackListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TrackListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns().size());
}

QVariant TrackListModel::data(const QModelIndex& index, int role) const {
    const SatelliteSlot* slot = slotAt(index.row());
    if (slot == nullptr || index.column() < 0 || index.column() >= columnCount()) return QVariant();
    const bool isCheckbox = index.column() == CheckboxColumn();
    switch (role) {
        case Qt::DisplayRole:
            if (isCheckbox) return QVariant();
            return QString::fromStdString(slot->valueForKey(columns()[index.column()].key));
        case Qt::CheckStateRole:
            if (!isCheckbox) return QVariant();
            return slot->checkbox ? Qt::Checked : Qt::Unchecked;
        case Qt::ForegroundRole:
            return textColour(colourAt(index.row()), nightTheme_);
        case Qt::ToolTipRole:
            if (std::strcmp(columns()[index.column()].key, "satelliteName") != 0) return QVariant();
            return nameTips_.value(QString::fromStdString(slot->satelliteName));
        case Qt::TextAlignmentRole: {
            const char* key = columns()[index.column()].key;
            const bool text = std::strcmp(key, "satelliteName") == 0 ||
                              std::strcmp(key, "pass") == 0 || std::strcmp(key, "eclipse") == 0;
            return QVariant::fromValue(Qt::AlignVCenter | (text ? Qt::AlignLeft : Qt::AlignRight));
        }
        default:
            return QVariant();
    }
}

QVariant TrackListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return QVariant();
    if (role == Qt::DisplayRole) return tr(columns()[section].header);
    if (role == Qt::UserRole) return QString::fromLatin1(columns()[section].key);
    if (role == Qt::ToolTipRole && section == CheckboxColumn())
        return tr("Candidate for automatic selection");
    return QVariant();
}

Qt::ItemFlags TrackListModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() == CheckboxColumn()) f |= Qt::ItemIsUserCheckable;
    return f;
}

bool TrackListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const int core = coreRow(index.row());
    if (core < 0 || role != Qt::CheckStateRole || index.column() != CheckboxColumn()) return false;
    const int32_t checkbox = value.toInt() == Qt::Checked ? 1 : 0;
    rows_[core].checkbox = checkbox;
    emit dataChanged(index, index, {Qt::CheckStateRole});
    emit checkToggled(core, checkbox);
    return true;
}

TrackListWidget::TrackListWidget(QWidget* parent) : QWidget(parent) {
    setObjectName("trackList");
    model_ = new TrackListModel(this);
    table_ = new QTableView;
    table_->setObjectName("satelliteTable");
    table_->setAccessibleName(tr("Track list"));
    // Narrow to begin with: each column widens to its texts as rows arrive.
    table_->horizontalHeader()->setDefaultSectionSize(28);
    table_->setModel(model_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setWordWrap(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 6);
    table_->horizontalHeader()->setSectionsMovable(true);
    table_->horizontalHeader()->setHighlightSections(false);
    table_->horizontalHeader()->setSortIndicatorShown(true);
    // Unsorted until the user picks a column: the core's order, next pass first.
    table_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    table_->horizontalHeader()->setSortIndicatorClearable(true);
    table_->setSortingEnabled(true);

    trackList_ = new QCheckBox(tr("Automatic selection from the track list"));
    trackList_->setObjectName("tracklistCB");
    add_ = new QPushButton(tr("Add"));
    add_->setObjectName("addSatellite");
    add_->setToolTip(tr("Add the satellite chosen in the satellite pop-up"));
    delete_ = new QPushButton(tr("Delete"));
    delete_->setObjectName("deleteRow");

    controls_ = new QWidget;
    auto* bar = new QHBoxLayout(controls_);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->addWidget(trackList_);
    bar->addStretch(1);
    bar->addWidget(add_);
    bar->addWidget(delete_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(controls_);
    layout->addWidget(table_, 1);

    connect(trackList_, &QCheckBox::toggled, this, &TrackListWidget::trackListToggled);
    connect(add_, &QPushButton::clicked, this, &TrackListWidget::addClicked);
    connect(delete_, &QPushButton::clicked, this, [this] { emit deleteClicked(selectedRow()); });
    connect(model_, &TrackListModel::checkToggled, this, &TrackListWidget::singleClicked);
    connect(table_, &QTableView::clicked, this, [this](const QModelIndex& index) {
        // A click on the check box arrives through the model with its new value.
        if (index.column() == CheckboxColumn()) return;
        const SatelliteSlot* slot = model_->slotAt(index.row());
        if (slot != nullptr) emit singleClicked(model_->coreRow(index.row()), slot->checkbox);
    });
    QHeaderView* header = table_->horizontalHeader();
    connect(header, &QHeaderView::sectionMoved, this, &TrackListWidget::columnLayoutChanged);
    connect(header, &QHeaderView::sectionResized, this, [this] {
        if (autoSizing_) return;
        sized_ = true;
        emit columnLayoutChanged();
    });
    connect(header, &QHeaderView::sortIndicatorChanged, this,
            &TrackListWidget::columnLayoutChanged);
    connect(table_, &QTableView::doubleClicked, this,
            [this](const QModelIndex& index) { emit doubleClicked(model_->coreRow(index.row())); });
    // An empty list still shows readable headings; the rows widen the
    // columns further as they arrive.
    autoSizing_ = true;
    for (int column = 0; column < model_->columnCount(); ++column)
        header->resizeSection(column, header->sectionSizeHint(column));
    autoSizing_ = false;
}

int TrackListWidget::selectedRow() const {
    const QModelIndexList rows = table_->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : model_->coreRow(rows.first().row());
}

QByteArray TrackListWidget::saveColumnLayout() const {
    return table_->horizontalHeader()->saveState();
}

bool TrackListWidget::restoreColumnLayout(const QByteArray& state) {
    QHeaderView* header = table_->horizontalHeader();
    const QByteArray before = header->saveState();
    if (!header->restoreState(state) || header->count() != model_->columnCount()) {
        header->restoreState(before);
        return false;
    }
    sized_ = true;  // the user's widths win over fitting the first rows
    return true;
}

void TrackListWidget::setRows(std::vector<SatelliteSlot> rows, std::vector<RowColour> colours) {
    model_->setRows(std::move(rows), std::move(colours));
    if (sized_ || model_->rowCount() == 0) return;
    // Columns widen to their texts as the values fill in (the first rows
    // may still read zero), until the user sets a width of their own.
    QHeaderView* header = table_->horizontalHeader();
    autoSizing_ = true;
    for (int column = 0; column < model_->columnCount(); ++column) {
        const int wanted =
            std::max(static_cast<QAbstractItemView*>(table_)->sizeHintForColumn(column),
                     header->sectionSizeHint(column));
        if (wanted > header->sectionSize(column)) header->resizeSection(column, wanted);
    }
    autoSizing_ = false;
}

void TrackListWidget::setTrackListChecked(bool on) {
    const QSignalBlocker block(trackList_);
    trackList_->setChecked(on);
}

void TrackListWidget::deselectAllRows() {
    table_->clearSelection();
}

void TrackListWidget::setNightTheme(bool on) {
    model_->setNightTheme(on);
}

}  // namespace veloran
