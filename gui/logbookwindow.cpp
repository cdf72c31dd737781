// The logbook window.

#include "gui/logbookwindow.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

#include "gui/callbookdialog.h"
#include "gui/logbooklink.h"
#include "gui/logbookmodel.h"

namespace veloran {

LogbookWindow::LogbookWindow(LogbookLink* link, QWidget* parent)
    : QWidget(parent, Qt::Window), link_(link), model_(new LogbookModel(this)) {
    setObjectName("logbookWindow");
    setWindowTitle(tr("Logbook"));
    resize(1200, 520);  // fits a 1280-pixel screen with its frame

    proxy_ = new QSortFilterProxyModel(this);
    proxy_->setSourceModel(model_);
    proxy_->setFilterKeyColumn(-1);  // a search matches any column
    proxy_->setFilterCaseSensitivity(Qt::CaseInsensitive);
    proxy_->setSortRole(Qt::UserRole);

    filter_ = new QLineEdit;
    filter_->setObjectName("logbookFilter");
    filter_->setPlaceholderText(tr("Search call, satellite, grid, country, comment\u2026"));
    filter_->setClearButtonEnabled(true);
    connect(filter_, &QLineEdit::textChanged, proxy_, &QSortFilterProxyModel::setFilterFixedString);
    count_ = new QLabel;
    count_->setObjectName("logbookCount");
    count_->setMinimumWidth(count_->fontMetrics().horizontalAdvance("99999 of 99999 contacts"));
    count_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto* remove = new QPushButton(tr("Delete"));
    remove->setObjectName("logbookDelete");
    auto* import = new QPushButton(tr("Import ADIF\u2026"));
    import->setObjectName("logbookImport");
    auto* adif = new QPushButton(tr("Export ADIF\u2026"));
    adif->setObjectName("logbookExportAdif");
    auto* csv = new QPushButton(tr("Export CSV\u2026"));
    csv->setObjectName("logbookExportCsv");
    auto* callbook = new QPushButton(tr("Callbook\u2026"));
    callbook->setObjectName("logbookCallbook");
    callbook->setToolTip(tr("Look calls up online as they are typed in the log strip"));

    table_ = new QTableView;
    table_->setObjectName("logbookTable");
    table_->setModel(proxy_);
    table_->setSortingEnabled(true);
    table_->sortByColumn(LogbookModel::kTime, Qt::DescendingOrder);  // the latest on top
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
    table_->setAlternatingRowColors(true);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(22);
    table_->horizontalHeader()->setStretchLastSection(true);
    auto* del = new QShortcut(QKeySequence::Delete, table_);
    del->setContext(Qt::WidgetShortcut);
    connect(del, &QShortcut::activated, this, &LogbookWindow::deleteSelected);

    status_ = new QLabel;
    status_->setObjectName("logbookStatus");
    status_->setWordWrap(true);
    importReport_ = new QPlainTextEdit;
    importReport_->setObjectName("logbookImportReport");
    importReport_->setReadOnly(true);
    importReport_->setMaximumHeight(110);
    importReport_->hide();

    auto* top = new QHBoxLayout;
    top->addWidget(filter_, 1);
    top->addWidget(count_);
    top->addSpacing(12);
    top->addWidget(remove);
    top->addWidget(import);
    top->addWidget(adif);
    top->addWidget(csv);
    top->addSpacing(12);
    top->addWidget(callbook);
    auto* column = new QVBoxLayout(this);
    column->addLayout(top);
    column->addWidget(table_, 1);
    column->addWidget(status_);
    column->addWidget(importReport_);

    connect(callbook, &QPushButton::clicked, this, &LogbookWindow::openCallbookSettings);
    connect(remove, &QPushButton::clicked, this, &LogbookWindow::deleteSelected);
    connect(import, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(
            this, tr("Import ADIF"), {}, tr("ADIF files (*.adi *.adif);;All files (*)"));
        if (!path.isEmpty()) importFrom(path);
    });
    connect(adif, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getSaveFileName(this, tr("Export ADIF"), "veloran.adi",
                                                          tr("ADIF files (*.adi)"));
        if (!path.isEmpty()) exportAdifTo(path);
    });
    connect(csv, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getSaveFileName(this, tr("Export CSV"), "veloran.csv",
                                                          tr("CSV files (*.csv)"));
        if (!path.isEmpty()) exportCsvTo(path);
    });

    connect(model_, &LogbookModel::edited, this,
            [this](const ContactRec& contact) { link_->update(contact); });
    auto counted = [this] {
        const int all = model_->rowCount(), shown = proxy_->rowCount();
        count_->setText(shown == all ? (all == 1 ? tr("1 contact") : tr("%1 contacts").arg(all))
                                     : tr("%1 of %2 contacts").arg(shown).arg(all));
    };
    connect(proxy_, &QAbstractItemModel::modelReset, this, counted);
    connect(proxy_, &QAbstractItemModel::layoutChanged, this, counted);
    connect(proxy_, &QAbstractItemModel::rowsInserted, this, counted);
    connect(proxy_, &QAbstractItemModel::rowsRemoved, this, counted);

    LogbookFeed* feed = link_->feed();
    connect(feed, &LogbookFeed::contactsListed, this, [this](std::vector<ContactRec> contacts) {
        model_->setContacts(std::move(contacts));
        table_->resizeColumnsToContents();
    });
    connect(feed, &LogbookFeed::exported, this, [this](const QString& file, int count) {
        report(tr("%1 contact%2 written to %3").arg(count).arg(count == 1 ? "" : "s").arg(file));
    });
    connect(feed, &LogbookFeed::failed, this, [this](const QString& m) { report(m, true); });
    connect(feed, &LogbookFeed::importReported, this,
            [this](const QString& file, int records, int added, int already,
                   const QStringList& messages) {
                report(tr("%1: %2 records read, %3 added, %4 already in the log, %5 skipped")
                           .arg(file)
                           .arg(records)
                           .arg(added)
                           .arg(already)
                           .arg(records - added - already));
                importReport_->setPlainText(messages.join('\n'));
                importReport_->setVisible(!messages.isEmpty());
            });
}

void LogbookWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    link_->list();
    filter_->setFocus();
}

void LogbookWindow::report(const QString& text, bool bad) {
    status_->setStyleSheet(bad ? "color: #c0392b; font-weight: bold;" : "");
    status_->setText(text);
}

void LogbookWindow::importFrom(const QString& path) {
    importReport_->hide();
    report(tr("Importing %1\u2026").arg(path));
    link_->importAdif(path);
}

void LogbookWindow::exportAdifTo(const QString& path) {
    link_->exportAdif(path);
}

void LogbookWindow::exportCsvTo(const QString& path) {
    link_->exportCsv(path);
}

CallbookDialog* LogbookWindow::openCallbookSettings() {
    auto* dialog = new CallbookDialog(link_, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this,
            [this] { report(tr("Callbook settings saved; the next lookup uses them.")); });
    dialog->open();
    return dialog;
}

void LogbookWindow::deleteSelected() {
    std::vector<int64_t> ids;
    for (const QModelIndex& row : table_->selectionModel()->selectedRows())
        ids.push_back(model_->contact(proxy_->mapToSource(row).row()).id);
    if (ids.empty()) return;
    if (QMessageBox::question(this, tr("Delete"),
                              tr("Delete %1 contact%2 from the logbook?")
                                  .arg(ids.size())
                                  .arg(ids.size() == 1 ? "" : "s")) != QMessageBox::Yes)
        return;
    link_->remove(ids);
}

}  // namespace veloran
