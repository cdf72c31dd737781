// The places table: five columns as the places file has them.

#include "gui/placeseditor.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/appcontroller.h"

namespace veloran {

namespace {

enum Column { kCity, kState, kCountry, kLatitude, kLongitude, kColumns };
constexpr int kWholePlace = 5;  // fields of a line the list shows

bool readDegrees(const QTableWidgetItem* item, double limit, double* value) {
    bool ok = false;
    const double v = item != nullptr ? item->text().trimmed().toDouble(&ok) : 0;
    if (ok && v >= -limit && v <= limit) *value = v;
    return ok && v >= -limit && v <= limit;
}

}  // namespace

PlacesEditor::PlacesEditor(UiBridge* bridge, CorePost post, QWidget* parent)
    : QDialog(parent), post_(std::move(post)) {
    setObjectName("placesWindow");
    setWindowTitle(tr("Places"));
    resize(720, 480);
    table_ = new QTableWidget(0, kColumns);
    table_->setObjectName("placesTable");
    table_->setHorizontalHeaderLabels(
        {tr("City"), tr("State"), tr("Country"), tr("Latitude (N +)"), tr("Longitude (E +)")});
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table_->setSortingEnabled(false);
    connect(table_, &QTableWidget::itemChanged, this, [this] { check(); });

    auto* add = new QPushButton(tr("Add Place"));
    add->setObjectName("addPlaceRow");
    connect(add, &QPushButton::clicked, this, [this] {
        const int row = table_->rowCount();
        table_->insertRow(row);
        table_->setItem(row, kCity, new QTableWidgetItem(tr("New place")));
        for (int c = kState; c < kColumns; ++c) table_->setItem(row, c, new QTableWidgetItem("0"));
        table_->setCurrentCell(row, kCity);
        table_->editItem(table_->item(row, kCity));
    });
    auto* remove = new QPushButton(tr("Remove"));
    remove->setObjectName("removePlaceRow");
    connect(remove, &QPushButton::clicked, this, [this] {
        if (table_->currentRow() >= 0) table_->removeRow(table_->currentRow());
        check();
    });
    status_ = new QLabel;
    status_->setObjectName("placesStatus");
    auto* box = new QDialogButtonBox;
    save_ = box->addButton(QDialogButtonBox::Save);
    save_->setObjectName("savePlaces");
    box->addButton(QDialogButtonBox::Close);
    connect(save_, &QPushButton::clicked, this, &PlacesEditor::save);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(remove);
    buttons->addWidget(status_, 1);
    buttons->addWidget(box);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_);
    layout->addLayout(buttons);

    connect(bridge, &UiBridge::prefsShown, this,
            [this](std::shared_ptr<const PrefsSnapshot> prefs) {
                if (!isVisible()) show(prefs->places);
            });
}

void PlacesEditor::open() {
    post_([](CoreSide& s) { s.app->prefsCancelled(); });
    QDialog::open();
}

void PlacesEditor::show(const std::vector<Location>& places) {
    const QSignalBlocker quiet(table_);
    partial_.clear();
    table_->setRowCount(0);
    for (const Location& place : places) {
        if (place.fields < kWholePlace) {
            partial_.push_back(place);
            continue;
        }
        const int row = table_->rowCount();
        table_->insertRow(row);
        table_->setItem(row, kCity, new QTableWidgetItem(QString::fromStdString(place.city)));
        table_->setItem(row, kState, new QTableWidgetItem(QString::fromStdString(place.state)));
        table_->setItem(row, kCountry, new QTableWidgetItem(QString::fromStdString(place.country)));
        table_->setItem(row, kLatitude, new QTableWidgetItem(QString::number(place.latDegs)));
        table_->setItem(row, kLongitude, new QTableWidgetItem(QString::number(place.lonDegs)));
    }
    check();
}

bool PlacesEditor::check() {
    const QSignalBlocker quiet(table_);
    int bad = 0;
    for (int row = 0; row < table_->rowCount(); ++row) {
        for (auto [column, limit] : {std::pair{kLatitude, 90.0}, std::pair{kLongitude, 180.0}}) {
            QTableWidgetItem* item = table_->item(row, column);
            double value = 0;
            const bool ok = readDegrees(item, limit, &value);
            if (item != nullptr) item->setForeground(ok ? palette().text() : QBrush(Qt::red));
            bad += ok ? 0 : 1;
        }
    }
    status_->setText(bad > 0 ? tr("Coordinates in red are not degrees in range.") : QString());
    save_->setEnabled(bad == 0);
    return bad == 0;
}

void PlacesEditor::save() {
    if (!check()) return;
    auto places = std::make_shared<std::vector<Location>>(partial_);
    for (int row = 0; row < table_->rowCount(); ++row) {
        Location place;
        auto text = [&](int column) {
            const QTableWidgetItem* item = table_->item(row, column);
            // A tab would split the line in the file.
            return item != nullptr ? item->text().trimmed().replace('\t', ' ').toStdString()
                                   : std::string();
        };
        place.city = text(kCity);
        place.state = text(kState);
        place.country = text(kCountry);
        readDegrees(table_->item(row, kLatitude), 90, &place.latDegs);
        readDegrees(table_->item(row, kLongitude), 180, &place.lonDegs);
        place.fields = kWholePlace;
        places->push_back(place);
    }
    post_([places](CoreSide& s) {
        s.app->replaceLocations(places->data(), static_cast<int>(places->size()));
    });
    accept();
}

}  // namespace veloran
