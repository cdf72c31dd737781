// The logbook window: every contact in a table that can be searched, sorted
// and corrected in place, with delete, ADIF import and export, CSV export and
// the callsign lookup's settings.
// File names are chosen here; reading and writing happen on the core thread.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSortFilterProxyModel;
class QTableView;

namespace veloran {

class CallbookDialog;
class LogbookLink;
class LogbookModel;

class LogbookWindow : public QWidget {
    Q_OBJECT
  public:
    explicit LogbookWindow(LogbookLink* link, QWidget* parent = nullptr);

    LogbookModel* model() const { return model_; }
    QSortFilterProxyModel* proxy() const { return proxy_; }

    // The actions with the file already chosen (the buttons ask first).
    void importFrom(const QString& path);
    void exportAdifTo(const QString& path);
    void exportCsvTo(const QString& path);
    void deleteSelected();
    // Opens the callsign lookup's settings over the window.
    CallbookDialog* openCallbookSettings();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void report(const QString& text, bool bad = false);

    LogbookLink* link_;
    LogbookModel* model_;
    QSortFilterProxyModel* proxy_;
    QLineEdit* filter_;
    QTableView* table_;
    QLabel *count_, *status_;
    QPlainTextEdit* importReport_;
};

}  // namespace veloran
