// The passes table's model, its elevation filter and its two export formats.

#include "gui/passesmodel.h"

#include <QBrush>
#include <QColor>
#include <QDateTime>

#include "gui/time1904.h"

namespace veloran {

namespace {

QDateTime Utc(uint32_t secs) {
    return DateTimeFrom1904(secs);
}

QString Number(double value, int decimals) {
    return QString::number(value, 'f', decimals);  // QString::number ignores the locale
}

QString Duration(uint32_t seconds) {
    return QString("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(seconds / 60 % 60, 2, 10, QChar('0'))
        .arg(seconds % 60, 2, 10, QChar('0'));
}

QString Sunlit(const PassRec& p) {
    const auto word = [](Bool32 lit) { return lit ? QObject::tr("yes") : QObject::tr("no"); };
    return word(p.sunlitAtAOS) + "/" + word(p.sunlitAtMax) + "/" + word(p.sunlitAtLOS);
}

// iCalendar text values escape backslashes, semicolons and commas.
QString IcsText(QString text) {
    return text.replace("\\", "\\\\").replace(";", "\\;").replace(",", "\\,");
}

QString IcsTime(uint32_t secs) {
    return Utc(secs).toString("yyyyMMdd'T'HHmmss'Z'");
}

}  // namespace

QString PassTimeText(uint32_t secs) {
    return Utc(secs).toString("yyyy-MM-dd HH:mm:ss");
}

PassesModel::PassesModel(QObject* parent) : QAbstractTableModel(parent) {}

int PassesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int PassesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant PassesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const PassRow& r = rows_[static_cast<size_t>(index.row())];
    const PassRec& p = r.pass;
    if (role == Qt::BackgroundRole) {
        if (r.aos <= now_ && now_ < r.los) return QBrush(QColor(255, 236, 160));  // in progress
        return {};
    }
    if (role == Qt::ToolTipRole)
        return index.column() == kSatellite ? QVariant(r.satelliteTip) : QVariant();
    if (role == Qt::TextAlignmentRole && index.column() != kSatellite)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role == kSortRole) {
        switch (index.column()) {
            case kSatellite:
                return r.satellite;
            case kAos:
                return r.aos;
            case kAosAz:
                return p.aosAzimuthDegs;
            case kMax:
                return r.max;
            case kMaxEl:
                return p.maxElevationDegs;
            case kMaxAz:
                return p.maxAzimuthDegs;
            case kLos:
                return r.los;
            case kLosAz:
                return p.losAzimuthDegs;
            case kDuration:
                return r.los - r.aos;
            case kSunlit:
                return p.sunlitAtAOS + p.sunlitAtMax + p.sunlitAtLOS;
        }
    }
    if (role != Qt::DisplayRole) return {};
    switch (index.column()) {
        case kSatellite:
            return r.satellite;
        case kAos:
            return p.upAtStart ? tr("up now") : PassTimeText(r.aos);
        case kAosAz:
            return Number(p.aosAzimuthDegs, 0);
        case kMax:
            return PassTimeText(r.max);
        case kMaxEl:
            return Number(p.maxElevationDegs, 1);
        case kMaxAz:
            return Number(p.maxAzimuthDegs, 0);
        case kLos:
            return p.upAtEnd ? tr("beyond") : PassTimeText(r.los);
        case kLosAz:
            return p.upAtEnd ? QString("-") : Number(p.losAzimuthDegs, 0);
        case kDuration:
            return Duration(r.los - r.aos);
        case kSunlit:
            return Sunlit(p);
    }
    return {};
}

QVariant PassesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
        case kSatellite:
            return tr("Satellite");
        case kAos:
            return tr("AOS (UTC)");
        case kAosAz:
            return tr("AOS Az");
        case kMax:
            return tr("Max (UTC)");
        case kMaxEl:
            return tr("Max El");
        case kMaxAz:
            return tr("Max Az");
        case kLos:
            return tr("LOS (UTC)");
        case kLosAz:
            return tr("LOS Az");
        case kDuration:
            return tr("Duration");
        case kSunlit:
            return tr("Sunlit AOS/max/LOS");
    }
    return {};
}

void PassesModel::clear() {
    beginResetModel();
    rows_.clear();
    endResetModel();
}

void PassesModel::append(const std::vector<PassRow>& rows) {
    if (rows.empty()) return;
    const int first = rowCount();
    beginInsertRows(QModelIndex(), first, first + static_cast<int>(rows.size()) - 1);
    rows_.insert(rows_.end(), rows.begin(), rows.end());
    endInsertRows();
}

void PassesModel::setNow(uint32_t now) {
    now_ = now;
    if (!rows_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1),
                         {Qt::BackgroundRole});
}

PassesFilter::PassesFilter(QObject* parent) : QSortFilterProxyModel(parent) {
    setSortRole(PassesModel::kSortRole);
}

void PassesFilter::setMinimumElevation(double degrees) {
    minimum_ = degrees;
    invalidateFilter();
}

bool PassesFilter::filterAcceptsRow(int sourceRow, const QModelIndex&) const {
    const auto* model = static_cast<const PassesModel*>(sourceModel());
    return model->row(sourceRow).pass.maxElevationDegs >= minimum_;
}

QString PassesCsv(const std::vector<PassRow>& rows) {
    QString out =
        "satellite,aos,aos_azimuth,max_time,max_elevation,max_azimuth,los,los_azimuth,"
        "duration_s,sunlit_aos,sunlit_max,sunlit_los\n";
    for (const PassRow& r : rows) {
        const PassRec& p = r.pass;
        QString name = r.satellite;
        if (name.contains(',') || name.contains('"'))
            name = '"' + QString(name).replace("\"", "\"\"") + '"';
        out += QStringList{name,
                           Utc(r.aos).toString(Qt::ISODate),
                           Number(p.aosAzimuthDegs, 1),
                           Utc(r.max).toString(Qt::ISODate),
                           Number(p.maxElevationDegs, 2),
                           Number(p.maxAzimuthDegs, 1),
                           Utc(r.los).toString(Qt::ISODate),
                           Number(p.losAzimuthDegs, 1),
                           QString::number(r.los - r.aos),
                           QString::number(p.sunlitAtAOS ? 1 : 0),
                           QString::number(p.sunlitAtMax ? 1 : 0),
                           QString::number(p.sunlitAtLOS ? 1 : 0)}
                   .join(',');
        out += '\n';
    }
    return out;
}

QString PassesICalendar(const std::vector<PassRow>& rows, uint32_t stamp) {
    // RFC 5545: CRLF line ends, a UID and a DTSTAMP in every event.
    QStringList lines{"BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Veloran//Passes//EN",
                      "CALSCALE:GREGORIAN"};
    for (const PassRow& r : rows) {
        const PassRec& p = r.pass;
        lines << "BEGIN:VEVENT"
              << "UID:" + IcsTime(r.aos) + "-" + QString::number(r.satelliteIndex) + "@veloran"
              << "DTSTAMP:" + IcsTime(stamp) << "DTSTART:" + IcsTime(r.aos)
              << "DTEND:" + IcsTime(r.los)
              << "SUMMARY:" + IcsText(QObject::tr("%1 pass, max %2 deg")
                                          .arg(r.satellite, Number(p.maxElevationDegs, 0)))
              << "DESCRIPTION:" +
                     IcsText(QObject::tr("AOS azimuth %1, maximum %2 deg at azimuth %3, LOS "
                                         "azimuth %4")
                                 .arg(Number(p.aosAzimuthDegs, 0), Number(p.maxElevationDegs, 1),
                                      Number(p.maxAzimuthDegs, 0), Number(p.losAzimuthDegs, 0)))
              << "END:VEVENT";
    }
    lines << "END:VCALENDAR";
    return lines.join("\r\n") + "\r\n";
}

}  // namespace veloran
