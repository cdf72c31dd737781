// The callsign lookup's settings as the logbook window edits them: on or
// off, the account, and the service's address. The password is typed hidden
// and never shown back: the dialog only learns whether one is stored, keeps it
// when the field is left empty, and can remove it. Reading and storing go
// through the core thread.
#pragma once

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace veloran {

class LogbookLink;

class CallbookDialog : public QDialog {
    Q_OBJECT
  public:
    // Asks the core for the stored settings; the fields wait for them.
    explicit CallbookDialog(LogbookLink* link, QWidget* parent = nullptr);

    // Checks the fields and hands them to the core; the dialog closes once
    // they are stored and stays open with the reason when they are not.
    void accept() override;

  private:
    void showStored(bool enabled, const QString& user, const QString& url, bool passwordStored);
    void written(const QString& error);
    void clearPassword();
    void showPasswordState();
    void report(const QString& text);

    LogbookLink* link_;
    QCheckBox* enabled_;
    QLineEdit *user_, *password_, *url_;
    QPushButton* clear_;
    QLabel *passwordState_, *message_;
    QDialogButtonBox* buttons_;
    bool loaded_ = false;
    bool stored_ = false;   // a password was stored when the dialog opened
    bool cleared_ = false;  // the operator asked to remove it
    bool saving_ = false;
};

}  // namespace veloran
