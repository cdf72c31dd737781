// The add-place sheet.

#include "gui/placesheet.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

namespace veloran {

namespace {
QLineEdit* Field(const char* name, const QString& hint) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    edit->setPlaceholderText(hint);
    edit->setAccessibleName(hint);
    return edit;
}
}  // namespace

PlaceSheet::PlaceSheet(QWidget* parent) : QDialog(parent) {
    setObjectName("placeSheet");
    setWindowTitle(tr("Add Place"));
    setModal(false);
    city_ = Field("placeCity", tr("City"));
    state_ = Field("placeState", tr("State or province"));
    country_ = Field("placeCountry", tr("Country"));
    latitude_ = Field("placeLatitude", tr("degrees, north positive"));
    longitude_ = Field("placeLongitude", tr("degrees, east positive"));
    auto* form = new QFormLayout(this);
    form->addRow(tr("City:"), city_);
    form->addRow(tr("State:"), state_);
    form->addRow(tr("Country:"), country_);
    form->addRow(tr("Latitude:"), latitude_);
    form->addRow(tr("Longitude:"), longitude_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("placeOK");
    form->addRow(buttons);
    // OK does not close: the core closes the sheet once it has the place.
    connect(buttons, &QDialogButtonBox::accepted, this, &PlaceSheet::placeEntered);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QString PlaceSheet::city() const {
    return city_->text();
}
QString PlaceSheet::state() const {
    return state_->text();
}
QString PlaceSheet::country() const {
    return country_->text();
}
QString PlaceSheet::latitude() const {
    return latitude_->text();
}
QString PlaceSheet::longitude() const {
    return longitude_->text();
}
void PlaceSheet::clearFields() {
    for (QLineEdit* edit : {city_, state_, country_, latitude_, longitude_}) edit->clear();
}

}  // namespace veloran
