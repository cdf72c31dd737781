// The quick-entry strip: fields, Enter to log, the country as the call is
// typed, the callbook's answer and the duplicate warning in the strip itself.

#include "gui/logstrip.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QStyle>
#include <QTimeZone>
#include <QTimer>

#include "gui/logbooklink.h"
#include "gui/time1904.h"
#include "logbook/livecontact.h"

namespace veloran {

namespace {

QLineEdit* Field(const char* name, const QString& label, int width, const QString& text = {}) {
    auto* field = new QLineEdit(text);
    field->setObjectName(name);
    field->setPlaceholderText(label);
    field->setAccessibleName(label);
    field->setToolTip(label);
    field->setMinimumWidth(width);
    return field;
}

// A contact's start as the operator reads it in the strip.
QString Clock(uint32_t utc1904) {
    return DateTimeFrom1904(utc1904).toString("HH:mm:ss");
}

void ShowCountry(QLabel* label, const QString& country) {
    label->setProperty("empty", country.isEmpty());
    label->setText(country.isEmpty() ? QObject::tr("country") : country);
    label->style()->unpolish(label);
    label->style()->polish(label);
}

}  // namespace

LogStrip::LogStrip(LogbookLink* link, QWidget* parent)
    : QWidget(parent), link_(link), lookupPause_(new QTimer(this)) {
    setObjectName("logStrip");
    call_ = Field("logCall", tr("Call"), 110);
    call_->setValidator(
        new QRegularExpressionValidator(QRegularExpression("[A-Za-z0-9/]{0,16}"), call_));
    QFont bold = call_->font();
    bold.setBold(true);
    call_->setFont(bold);
    rstSent_ = Field("logRstSent", tr("RST sent"), 48, "59");
    rstRcvd_ = Field("logRstRcvd", tr("RST rcvd"), 48, "59");
    grid_ = Field("logGrid", tr("Their grid"), 70);
    name_ = Field("logName", tr("Name"), 90);
    qth_ = Field("logQth", tr("QTH"), 90);
    comment_ = Field("logComment", tr("Comment"), 120);
    for (QLineEdit* f : {rstSent_, rstRcvd_}) f->setMaximumWidth(56);
    grid_->setMaximumWidth(80);
    country_ = new QLabel;
    country_->setObjectName("logCountry");
    country_->setMinimumWidth(160);
    // The country's place stays marked while no call is typed, so the
    // fields do not jump when it appears.
    country_->setStyleSheet("QLabel[empty=\"true\"] { color: palette(mid); font-style: italic; }");
    ShowCountry(country_, {});
    status_ = new QLabel;
    status_->setObjectName("logStatus");
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    auto* title = new QLabel(tr("<b>Log</b>"));
    row->addWidget(title);
    for (QLineEdit* f : {call_, rstSent_, rstRcvd_, grid_, name_, qth_})
        row->addWidget(f, f == call_ || f == name_ || f == qth_ ? 1 : 0);
    row->addWidget(country_);
    row->addWidget(comment_, 2);
    row->addWidget(status_, 2);

    for (QLineEdit* f : {call_, rstSent_, rstRcvd_, grid_, name_, qth_, comment_})
        connect(f, &QLineEdit::returnPressed, this, &LogStrip::save);
    connect(call_, &QLineEdit::textEdited, this, &LogStrip::callEdited);
    lookupPause_->setSingleShot(true);
    lookupPause_->setInterval(700);
    connect(lookupPause_, &QTimer::timeout, this, [this] {
        if (call_->text().size() >= 3) link_->lookUp(call_->text().toUpper());
    });

    LogbookFeed* feed = link_->feed();
    connect(feed, &LogbookFeed::countryFound, this, [this](const QString& call, const QString& c) {
        if (call == call_->text().toUpper()) ShowCountry(country_, c);
    });
    connect(feed, &LogbookFeed::callbookAnswered, this,
            [this](const QString& call, const QString& name, const QString& qth,
                   const QString& grid, const QString& error) {
                if (call != call_->text().toUpper()) return;  // the operator moved on
                if (!error.isEmpty()) {
                    status_->setText(error);
                    return;
                }
                // What the operator typed stays; the callbook fills the gaps.
                if (name_->text().isEmpty()) name_->setText(name);
                if (qth_->text().isEmpty()) qth_->setText(qth);
                if (grid_->text().isEmpty()) grid_->setText(grid);
            });
    connect(feed, &LogbookFeed::contactSaved, this,
            [this](const ContactRec& c, const QString& duplicate) {
                // Short, so it fits beside the fields: the operator reads it
                // between two contacts.
                QString line = tr("Logged %1 %2 %3")
                                   .arg(QString::fromStdString(c.call),
                                        QString::fromStdString(c.satellite), Clock(c.startUTC));
                if (!duplicate.isEmpty()) {
                    status_->setStyleSheet("color: #c0392b; font-weight: bold;");
                    line = tr("DUPE %1: %2").arg(QString::fromStdString(c.call), duplicate);
                } else {
                    status_->setStyleSheet({});
                }
                status_->setToolTip(line);
                status_->setText(line);
            });
    connect(feed, &LogbookFeed::failed, this, [this](const QString& message) {
        status_->setStyleSheet("color: #c0392b; font-weight: bold;");
        status_->setText(message);
    });
}

void LogStrip::callEdited(const QString& text) {
    const QString call = text.toUpper();
    if (call != text) {
        const int at = call_->cursorPosition();
        call_->setText(call);
        call_->setCursorPosition(at);
    }
    ShowCountry(country_, {});
    if (!call.isEmpty()) link_->findCountry(call);
    lookupPause_->start();
}

void LogStrip::save() {
    const QString call = call_->text().trimmed().toUpper();
    if (call.isEmpty()) {
        call_->setFocus();
        return;
    }
    ContactEntry entry;
    entry.call = call.toStdString();
    entry.rstSent = rstSent_->text().trimmed().toStdString();
    entry.rstRcvd = rstRcvd_->text().trimmed().toStdString();
    entry.grid = grid_->text().trimmed().toUpper().toStdString();
    entry.comment = comment_->text().trimmed().toStdString();
    entry.name = name_->text().trimmed().toStdString();
    entry.qth = qth_->text().trimmed().toStdString();
    link_->save(entry);
    clearEntry();
}

void LogStrip::clearEntry() {
    // The reports stay: most contacts of a pass get the same ones.
    lookupPause_->stop();
    for (QLineEdit* f : {call_, grid_, name_, qth_, comment_}) f->clear();
    ShowCountry(country_, {});
    call_->setFocus();
}

}  // namespace veloran
