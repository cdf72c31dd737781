// The element-set download dialog.

#include "gui/kepsdownload.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QVBoxLayout>
#include <sstream>

#include "app/appcontroller.h"
#include "data/kepssources.h"
#include "gui/uibridge.h"

namespace veloran {

namespace {

// What a list item stands for.
enum SourceKind { kBuiltIn = 0, kUserURL = 1, kByCatalog = 2 };
constexpr int kUrlRole = Qt::UserRole;
constexpr int kKindRole = Qt::UserRole + 1;

// The largest catalogue number CelesTrak's queries take (nine digits).
constexpr int kMaxCatalog = 999999999;

void RequestSources(const CorePost& post) {
    post([](CoreSide& s) {
        KepsSourcesSnapshot snapshot;
        snapshot.sources = KepsSources(s.defaults);
        std::istringstream words(s.defaults->stringForKey(prefkeys::kKepsUserURLs));
        std::string url;
        while (words >> url) snapshot.userURLs.push_back(url);
        snapshot.chosenURL = ChosenKepsURL(s.defaults);
        snapshot.autoStopped = s.defaults->stringForKey(prefkeys::kKepsAutoStopped);
        s.ui->showKepsSources(std::move(snapshot));
    });
}

}  // namespace

KepsDownloadDialog::KepsDownloadDialog(UiBridge* bridge, CorePost post, QWidget* parent)
    : QDialog(parent), post_(std::move(post)) {
    setObjectName("kepsDownloadDialog");
    setWindowTitle(tr("Download Element Sets"));
    auto* column = new QVBoxLayout(this);

    column->addWidget(new QLabel(tr("Source")));
    sources_ = new QListWidget;
    sources_->setObjectName("kepsSourceList");
    sources_->setAccessibleName(tr("Element-set sources"));
    sources_->setMinimumWidth(420);
    sources_->setMinimumHeight(220);
    column->addWidget(sources_, 1);
    urlLine_ = new QLabel;
    urlLine_->setObjectName("kepsSourceURL");
    urlLine_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    urlLine_->setWordWrap(true);
    QFont small = urlLine_->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    urlLine_->setFont(small);
    column->addWidget(urlLine_);

    auto* catalogRow = new QHBoxLayout;
    catalog_ = new QSpinBox;
    catalog_->setObjectName("kepsCatalogNumber");
    catalog_->setAccessibleName(tr("Catalogue number"));
    catalog_->setRange(1, kMaxCatalog);
    catalog_->setValue(25544);
    catalogForm_ = new QComboBox;
    catalogForm_->setObjectName("kepsCatalogForm");
    catalogForm_->addItems({tr("TLE"), tr("OMM")});
    catalogRow->addWidget(new QLabel(tr("Catalogue number")));
    catalogRow->addWidget(catalog_);
    catalogRow->addWidget(catalogForm_);
    catalogRow->addStretch(1);
    column->addLayout(catalogRow);

    auto* urlRow = new QHBoxLayout;
    newURL_ = new QLineEdit;
    newURL_->setObjectName("kepsNewURL");
    newURL_->setPlaceholderText(tr("https://… an address of your own"));
    newURL_->setAccessibleName(tr("New source address"));
    addURL_ = new QPushButton(tr("Add"));
    addURL_->setObjectName("kepsAddURL");
    addURL_->setAutoDefault(false);
    removeURL_ = new QPushButton(tr("Remove"));
    removeURL_->setObjectName("kepsRemoveURL");
    removeURL_->setAutoDefault(false);
    removeURL_->setToolTip(tr("Removes the chosen address of your own"));
    urlRow->addWidget(newURL_, 1);
    urlRow->addWidget(addURL_);
    urlRow->addWidget(removeURL_);
    column->addLayout(urlRow);
    urlProblem_ = new QLabel;
    urlProblem_->setObjectName("kepsURLProblem");
    urlProblem_->setWordWrap(true);
    urlProblem_->hide();
    column->addWidget(urlProblem_);

    auto* how = new QGroupBox(tr("The element sets you have"));
    auto* howRow = new QVBoxLayout(how);
    replace_ = new QRadioButton(tr("Replace them with the downloaded ones"));
    replace_->setObjectName("kepsReplace");
    merge_ = new QRadioButton(tr("Merge: keep them, the newer epoch winning per satellite"));
    merge_->setObjectName("kepsMerge");
    replace_->setChecked(true);
    howRow->addWidget(replace_);
    howRow->addWidget(merge_);
    column->addWidget(how);

    insist_ =
        new QCheckBox(tr("Insist: fetch even if this address was fetched in the last two "
                         "hours"));
    insist_->setObjectName("kepsInsist");
    insist_->setToolTip(
        tr("Servers ask programs to fetch the same address at most once every "
           "two hours, and block those that do not. Insist only when you know "
           "the sets have changed."));
    column->addWidget(insist_);

    auto* autoRow = new QHBoxLayout;
    autoState_ = new QLabel;
    autoState_->setObjectName("kepsAutoState");
    autoState_->setWordWrap(true);
    resume_ = new QPushButton(tr("Resume Automatic Updates"));
    resume_->setObjectName("kepsResumeAuto");
    resume_->setAutoDefault(false);
    resume_->setToolTip(tr("A download by hand resumes them too"));
    autoRow->addWidget(autoState_, 1);
    autoRow->addWidget(resume_);
    column->addLayout(autoRow);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    download_ = buttons->addButton(tr("Download"), QDialogButtonBox::AcceptRole);
    download_->setObjectName("kepsDownloadButton");
    download_->setDefault(true);
    column->addWidget(buttons);

    connect(bridge, &UiBridge::kepsSourcesShown, this, &KepsDownloadDialog::showSources);
    connect(sources_, &QListWidget::currentRowChanged, this, [this] { updateControls(); });
    connect(sources_, &QListWidget::itemDoubleClicked, this, [this] { download(); });
    connect(catalog_, &QSpinBox::valueChanged, this, [this] { updateControls(); });
    connect(catalogForm_, &QComboBox::currentIndexChanged, this, [this] { updateControls(); });
    connect(newURL_, &QLineEdit::returnPressed, this, &KepsDownloadDialog::addUserURL);
    connect(newURL_, &QLineEdit::textChanged, this, [this] { updateControls(); });
    connect(addURL_, &QPushButton::clicked, this, &KepsDownloadDialog::addUserURL);
    connect(removeURL_, &QPushButton::clicked, this, &KepsDownloadDialog::removeUserURL);
    connect(resume_, &QPushButton::clicked, this, [this] {
        post_([](CoreSide& s) { s.defaults->removeKey(prefkeys::kKepsAutoStopped); });
        RequestSources(post_);
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &KepsDownloadDialog::download);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    updateControls();
}

void KepsDownloadDialog::open() {
    insist_->setChecked(false);
    sources_->clear();  // the chosen source is selected when the list comes back
    urlProblem_->hide();
    RequestSources(post_);
    QDialog::open();
}

void KepsDownloadDialog::showSources(std::shared_ptr<const KepsSourcesSnapshot> snapshot) {
    const QString chosen = QString::fromStdString(snapshot->chosenURL);
    const int builtIn = static_cast<int>(snapshot->sources.size() - snapshot->userURLs.size());
    const QListWidgetItem* was = sources_->currentItem();
    const bool byCatalog = was != nullptr && was->data(kKindRole).toInt() == kByCatalog;
    const QString current = was != nullptr ? was->data(kUrlRole).toString() : chosen;
    sources_->clear();
    userURLs_.clear();
    int select = 0;
    for (int i = 0; i < static_cast<int>(snapshot->sources.size()); ++i) {
        const KepsSource& source = snapshot->sources[static_cast<size_t>(i)];
        const QString url = QString::fromStdString(source.url);
        auto* item = new QListWidgetItem(QString::fromStdString(source.name), sources_);
        item->setData(kUrlRole, url);
        item->setData(kKindRole, i < builtIn ? kBuiltIn : kUserURL);
        item->setToolTip(url);
        if (i >= builtIn) userURLs_ << url;
        if (url == current && !byCatalog) select = sources_->count() - 1;
        // CelesTrak's single-satellite query follows its groups.
        if (i == builtIn - 1) {
            auto* byNumber =
                new QListWidgetItem(tr("CelesTrak: one satellite by catalogue number"), sources_);
            byNumber->setData(kKindRole, kByCatalog);
            byNumber->setToolTip(tr("Merge keeps your other satellites"));
            if (byCatalog) select = sources_->row(byNumber);
        }
    }
    sources_->setCurrentRow(select);
    if (snapshot->autoStopped.empty()) {
        autoState_->setText(automaticHours_ > 0
                                ? tr("Automatic updates: every %1 hours.").arg(automaticHours_)
                                : tr("Automatic updates: off (start with --keps-update-hours N)."));
        resume_->hide();
    } else {
        autoState_->setText(tr("Automatic updates are stopped: %1.")
                                .arg(QString::fromStdString(snapshot->autoStopped)));
        resume_->show();
    }
    autoState_->setProperty("stopped", !snapshot->autoStopped.empty());
    updateControls();
}

QString KepsDownloadDialog::chosenURL() const {
    const QListWidgetItem* item = sources_->currentItem();
    if (item == nullptr) return QString();
    if (item->data(kKindRole).toInt() == kByCatalog)
        return QString::fromStdString(
            CelestrakCatalogURL(catalog_->value(), catalogForm_->currentIndex() == 1));
    return item->data(kUrlRole).toString();
}

void KepsDownloadDialog::updateControls() {
    const QListWidgetItem* item = sources_->currentItem();
    const int kind = item != nullptr ? item->data(kKindRole).toInt() : kBuiltIn;
    catalog_->setEnabled(kind == kByCatalog);
    catalogForm_->setEnabled(kind == kByCatalog);
    removeURL_->setEnabled(kind == kUserURL);
    addURL_->setEnabled(!newURL_->text().trimmed().isEmpty());
    download_->setEnabled(item != nullptr);
    urlLine_->setText(chosenURL());
}

void KepsDownloadDialog::addUserURL() {
    const QString url = newURL_->text().trimmed();
    if (url.isEmpty()) return;
    std::string why;
    if (url.contains(QRegularExpression("\\s")) || !CheckDownloadURL(url.toStdString(), &why)) {
        urlProblem_->setText(why.empty() ? tr("An address holds no blanks.")
                                         : QString::fromStdString(why) + ".");
        urlProblem_->show();
        return;
    }
    urlProblem_->hide();
    newURL_->clear();
    if (!userURLs_.contains(url)) userURLs_ << url;
    saveUserURLs();
    // The new address becomes the one chosen in the list once it is back.
    auto* item = new QListWidgetItem(url, sources_);
    item->setData(kUrlRole, url);
    item->setData(kKindRole, kUserURL);
    sources_->setCurrentItem(item);
    RequestSources(post_);
}

void KepsDownloadDialog::removeUserURL() {
    const QListWidgetItem* item = sources_->currentItem();
    if (item == nullptr || item->data(kKindRole).toInt() != kUserURL) return;
    const QString url = item->data(kUrlRole).toString();
    userURLs_.removeAll(url);
    saveUserURLs();
    post_([gone = url.toStdString()](CoreSide& s) {
        if (s.defaults->stringForKey(prefkeys::kKepsSourceURL) == gone)
            s.defaults->removeKey(prefkeys::kKepsSourceURL);
    });
    delete sources_->takeItem(sources_->currentRow());
    sources_->setCurrentRow(0);
    RequestSources(post_);
}

void KepsDownloadDialog::saveUserURLs() {
    post_([urls = userURLs_.join(' ').toStdString()](CoreSide& s) {
        if (urls.empty())
            s.defaults->removeKey(prefkeys::kKepsUserURLs);
        else
            s.defaults->setString(prefkeys::kKepsUserURLs, urls);
    });
}

void KepsDownloadDialog::download() {
    const QListWidgetItem* item = sources_->currentItem();
    const QString url = chosenURL();
    if (item == nullptr || url.isEmpty()) return;
    const bool oneSatellite = item->data(kKindRole).toInt() == kByCatalog;
    const bool merge = merge_->isChecked();
    const DownloadTrigger trigger =
        insist_->isChecked() ? DownloadTrigger::Forced : DownloadTrigger::User;
    post_([u = url.toStdString(), oneSatellite, merge, trigger](CoreSide& s) {
        // One satellite is fetched once; the chosen source stays for the
        // next download and the automatic updates.
        if (oneSatellite) {
            s.app->startDownloadingURL(u, trigger, merge);
            return;
        }
        if (u == kAmsatKepsURL)
            s.defaults->removeKey(prefkeys::kKepsSourceURL);
        else
            s.defaults->setString(prefkeys::kKepsSourceURL, u);
        s.app->startDownloadingURL(trigger, merge);
    });
    emit downloadStarted(url);
    accept();
}

}  // namespace veloran
