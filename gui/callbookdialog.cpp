// The callsign lookup's settings dialog.

#include "gui/callbookdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/logbooklink.h"
#include "logbook/callbook.h"

namespace veloran {

namespace {

QLabel* Note(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

}  // namespace

CallbookDialog::CallbookDialog(LogbookLink* link, QWidget* parent) : QDialog(parent), link_(link) {
    setObjectName("callbookDialog");
    setWindowTitle(tr("Callbook"));

    auto* intro =
        new QLabel(tr("Typing a call in the log strip looks it up on HamQTH and fills in the name, "
                      "QTH and grid. You need a HamQTH account."));
    intro->setWordWrap(true);
    enabled_ = new QCheckBox(tr("Look up calls in the callbook"));
    enabled_->setObjectName("callbookEnabled");

    user_ = new QLineEdit;
    user_->setObjectName("callbookUser");
    user_->setPlaceholderText(tr("your HamQTH user name"));
    password_ = new QLineEdit;
    password_->setObjectName("callbookPassword");
    password_->setEchoMode(QLineEdit::Password);
    clear_ = new QPushButton(tr("Clear"));
    clear_->setObjectName("callbookClearPassword");
    clear_->setToolTip(tr("Remove the stored password"));
    clear_->setAutoDefault(false);
    auto* passwordRow = new QHBoxLayout;
    passwordRow->setContentsMargins(0, 0, 0, 0);
    passwordRow->addWidget(password_, 1);
    passwordRow->addWidget(clear_);
    passwordState_ = Note(QString());
    passwordState_->setObjectName("callbookPasswordState");
    url_ = new QLineEdit;
    url_->setObjectName("callbookUrl");
    url_->setPlaceholderText(kCallbookDefaultUrl);
    url_->setMinimumWidth(url_->fontMetrics().horizontalAdvance(kCallbookDefaultUrl) + 40);

    auto* form = new QFormLayout;
    form->addRow(tr("User name:"), user_);
    form->addRow(tr("Password:"), passwordRow);
    form->addRow(QString(), passwordState_);
    form->addRow(tr("Service:"), url_);
    form->addRow(QString(), Note(tr("HamQTH's XML service, or one that answers the same way.")));

    message_ = new QLabel;
    message_->setObjectName("callbookMessage");
    message_->setWordWrap(true);
    buttons_ = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons_->setObjectName("callbookButtons");

    auto* column = new QVBoxLayout(this);
    column->addWidget(intro);
    column->addSpacing(4);
    column->addWidget(enabled_);
    column->addLayout(form);
    column->addWidget(message_);
    column->addWidget(buttons_);

    connect(buttons_, &QDialogButtonBox::accepted, this, &CallbookDialog::accept);
    connect(buttons_, &QDialogButtonBox::rejected, this, &CallbookDialog::reject);
    connect(clear_, &QPushButton::clicked, this, &CallbookDialog::clearPassword);
    connect(password_, &QLineEdit::textChanged, this, &CallbookDialog::showPasswordState);

    LogbookFeed* feed = link_->feed();
    connect(feed, &LogbookFeed::callbookSettingsRead, this, &CallbookDialog::showStored);
    connect(feed, &LogbookFeed::callbookSettingsWritten, this, &CallbookDialog::written);

    // Nothing can be stored before the stored settings are shown.
    for (QWidget* w : {static_cast<QWidget*>(enabled_), static_cast<QWidget*>(user_),
                       static_cast<QWidget*>(password_), static_cast<QWidget*>(clear_),
                       static_cast<QWidget*>(url_)})
        w->setEnabled(false);
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(false);
    report(tr("Reading the settings\u2026"));
    link_->readCallbookSettings();
}

void CallbookDialog::showStored(bool enabled, const QString& user, const QString& url,
                                bool passwordStored) {
    if (loaded_) return;
    loaded_ = true;
    enabled_->setChecked(enabled);
    user_->setText(user);
    url_->setText(url);
    stored_ = passwordStored;
    for (QWidget* w : {static_cast<QWidget*>(enabled_), static_cast<QWidget*>(user_),
                       static_cast<QWidget*>(password_), static_cast<QWidget*>(url_)})
        w->setEnabled(true);
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(true);
    report(QString());
    showPasswordState();
    (user.isEmpty() ? user_ : password_)->setFocus();
}

void CallbookDialog::clearPassword() {
    password_->clear();
    if (stored_) cleared_ = true;
    showPasswordState();
}

void CallbookDialog::showPasswordState() {
    const bool typed = !password_->text().isEmpty();
    const bool kept = stored_ && !cleared_;
    clear_->setEnabled(loaded_ && (typed || kept));
    if (typed) {
        passwordState_->setText(kept || cleared_ ? tr("Replaces the stored password.")
                                                 : tr("Stored when you press OK."));
        return;
    }
    password_->setPlaceholderText(kept ? tr("stored \u2022 type to replace") : tr("none stored"));
    passwordState_->setText(
        kept ? tr("A password is stored; leave the field empty to keep it.")
             : (cleared_ ? tr("The stored password is removed when you press OK.")
                         : tr("Kept in a file of the config folder that only you can read.")));
}

void CallbookDialog::accept() {
    if (!loaded_ || saving_) return;
    CallbookSettings settings;
    settings.enabled = enabled_->isChecked();
    settings.user = user_->text().trimmed().toStdString();
    settings.password = password_->text().toStdString();
    const QString url = url_->text().trimmed();
    settings.url = url.isEmpty() ? std::string(kCallbookDefaultUrl) : url.toStdString();
    const bool passwordChanged = !password_->text().isEmpty() || cleared_;
    const bool havePassword = !password_->text().isEmpty() || (stored_ && !cleared_);
    if (!url.isEmpty() && !url.startsWith("http://") && !url.startsWith("https://")) {
        report(tr("The service address must start with http:// or https://."));
        url_->setFocus();
        return;
    }
    if (settings.enabled && settings.user.empty()) {
        report(tr("The lookup needs your callbook user name."));
        user_->setFocus();
        return;
    }
    if (settings.enabled && !havePassword) {
        report(tr("The lookup needs your callbook password."));
        password_->setFocus();
        return;
    }
    saving_ = true;
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(false);
    report(QString());
    link_->writeCallbookSettings(settings, passwordChanged);
}

void CallbookDialog::written(const QString& error) {
    if (!saving_) return;
    saving_ = false;
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(true);
    if (!error.isEmpty()) {
        report(error);
        return;
    }
    QDialog::accept();
}

void CallbookDialog::report(const QString& text) {
    const bool bad = !text.isEmpty() && !text.endsWith(QChar(0x2026));
    message_->setStyleSheet(bad ? "color: #c0392b; font-weight: bold;" : "");
    message_->setText(text);
    message_->setVisible(!text.isEmpty());
}

}  // namespace veloran
