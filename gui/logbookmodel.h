// The logbook window's table: value copies of the contacts as the core last
// listed them. An edit changes the copy and is handed on to be saved; the
// core's next listing replaces every row.
#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "logbook/contact.h"

namespace veloran {

class LogbookModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    enum Column {
        kTime,
        kCall,
        kSatellite,
        kMode,
        kUplink,
        kDownlink,
        kRstSent,
        kRstRcvd,
        kGrid,
        kName,
        kQth,
        kCountry,
        kComment,
        kLotw,
        kColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    void setContacts(std::vector<ContactRec> contacts);
    const ContactRec& contact(int row) const { return contacts_[static_cast<size_t>(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  signals:
    // The operator changed a cell; the row as it now reads.
    void edited(veloran::ContactRec contact);

  private:
    std::vector<ContactRec> contacts_;
};

}  // namespace veloran
