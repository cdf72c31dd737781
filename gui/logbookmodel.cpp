// Rows of the logbook table.

#include "gui/logbookmodel.h"

#include <QDateTime>
#include <QTimeZone>

#include "gui/time1904.h"

namespace veloran {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

// The text fields the operator may correct in place, or null.
std::string* EditableField(ContactRec* c, int column) {
    switch (column) {
        case LogbookModel::kCall:
            return &c->call;
        case LogbookModel::kRstSent:
            return &c->rstSent;
        case LogbookModel::kRstRcvd:
            return &c->rstRcvd;
        case LogbookModel::kGrid:
            return &c->grid;
        case LogbookModel::kName:
            return &c->name;
        case LogbookModel::kQth:
            return &c->qth;
        case LogbookModel::kComment:
            return &c->comment;
        default:
            return nullptr;
    }
}

}  // namespace

void LogbookModel::setContacts(std::vector<ContactRec> contacts) {
    beginResetModel();
    contacts_ = std::move(contacts);
    endResetModel();
}

int LogbookModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(contacts_.size());
}

int LogbookModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant LogbookModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const ContactRec& c = contact(index.row());
    const int column = index.column();
    if (role == Qt::TextAlignmentRole && (column == kUplink || column == kDownlink))
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    // Sorting goes by the values, not their texts.
    if (role == Qt::UserRole) {
        if (column == kTime) return static_cast<qlonglong>(c.startUTC);
        if (column == kUplink) return c.uplinkMHz;
        if (column == kDownlink) return c.downlinkMHz;
        role = Qt::DisplayRole;
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
    switch (column) {
        case kTime:
            return DateTimeFrom1904(c.startUTC).toString("yyyy-MM-dd HH:mm:ss");
        case kCall:
            return Q(c.call);
        case kSatellite:
            return Q(c.satellite);
        case kMode:
            return Q(c.submode.empty() ? c.mode : c.mode + " " + c.submode);
        case kUplink:
            return c.uplinkMHz > 0 ? QString::number(c.uplinkMHz, 'f', 6) : QString();
        case kDownlink:
            return c.downlinkMHz > 0 ? QString::number(c.downlinkMHz, 'f', 6) : QString();
        case kRstSent:
            return Q(c.rstSent);
        case kRstRcvd:
            return Q(c.rstRcvd);
        case kGrid:
            return Q(c.grid);
        case kName:
            return Q(c.name);
        case kQth:
            return Q(c.qth);
        case kCountry:
            return Q(c.country);
        case kComment:
            return Q(c.comment);
        case kLotw:
            return Q(c.lotwSent + (c.lotwRcvd.empty() ? "" : "/" + c.lotwRcvd));
        default:
            return {};
    }
}

QVariant LogbookModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    static const char* const kTitles[kColumnCount] = {
        "UTC",  "Call", "Satellite", "Mode", "Uplink MHz", "Downlink MHz", "Sent",
        "Rcvd", "Grid", "Name",      "QTH",  "Country",    "Comment",      "LoTW"};
    return section >= 0 && section < kColumnCount ? tr(kTitles[section]) : QVariant();
}

Qt::ItemFlags LogbookModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    ContactRec scratch;
    if (index.isValid() && EditableField(&scratch, index.column()) != nullptr)
        f |= Qt::ItemIsEditable;
    return f;
}

bool LogbookModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::EditRole) return false;
    ContactRec& c = contacts_[static_cast<size_t>(index.row())];
    std::string* field = EditableField(&c, index.column());
    if (field == nullptr) return false;
    QString text = value.toString().trimmed();
    if (index.column() == kCall || index.column() == kGrid) text = text.toUpper();
    if (index.column() == kCall && text.isEmpty()) return false;  // a contact keeps its call
    if (text.toStdString() == *field) return false;
    *field = text.toStdString();
    emit dataChanged(index, index);
    emit edited(c);
    return true;
}

}  // namespace veloran
