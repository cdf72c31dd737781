// The add-place sheet: city, state, country, latitude and longitude, as
// typed. OK hands the fields to the core, which closes the sheet.
#pragma once

#include <QDialog>

class QLineEdit;

namespace veloran {

class PlaceSheet : public QDialog {
    Q_OBJECT
  public:
    explicit PlaceSheet(QWidget* parent = nullptr);
    QString city() const;
    QString state() const;
    QString country() const;
    QString latitude() const;
    QString longitude() const;
    void clearFields();

  signals:
    void placeEntered();

  private:
    QLineEdit *city_, *state_, *country_, *latitude_, *longitude_;
};

}  // namespace veloran
