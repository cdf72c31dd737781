// The passes table: one row per pass, found on worker threads and appended
// as each satellite's search ends. Rows hold values only; times are time
// values (seconds since 1904, UTC).
#pragma once

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QString>
#include <cstdint>
#include <vector>

#include "engine/passfinder.h"

namespace veloran {

struct PassRow {
    QString satellite;
    int satelliteIndex = 0;  // 0-based entry of the satellite table
    PassRec pass{};
    uint32_t aos = 0, max = 0, los = 0;  // time values
    QString satelliteTip;                // the satellite's long name and catalogue number
};

class PassesModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    enum Column {
        kSatellite,
        kAos,
        kAosAz,
        kMax,
        kMaxEl,
        kMaxAz,
        kLos,
        kLosAz,
        kDuration,
        kSunlit,
        kColumnCount
    };
    // Sorting uses this role: times and angles as numbers.
    static constexpr int kSortRole = Qt::UserRole + 1;

    explicit PassesModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void clear();
    void append(const std::vector<PassRow>& rows);
    const PassRow& row(int r) const { return rows_[static_cast<size_t>(r)]; }
    const std::vector<PassRow>& rows() const { return rows_; }
    // The instant passes in progress are highlighted at; repaints the rows.
    void setNow(uint32_t now);

  private:
    std::vector<PassRow> rows_;
    uint32_t now_ = 0;
};

// Hides passes whose maximum stays below the minimum elevation.
class PassesFilter : public QSortFilterProxyModel {
    Q_OBJECT
  public:
    explicit PassesFilter(QObject* parent = nullptr);
    void setMinimumElevation(double degrees);

  protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

  private:
    double minimum_ = 0;
};

// "YYYY-MM-DD hh:mm:ss" UTC of a time value.
QString PassTimeText(uint32_t secs);
// The rows as CSV, one header line first; '.' decimals whatever the locale.
QString PassesCsv(const std::vector<PassRow>& rows);
// The rows as an iCalendar file: one event per pass, AOS to LOS, in UTC.
QString PassesICalendar(const std::vector<PassRow>& rows, uint32_t stamp);

}  // namespace veloran
