// The modes editor's outline, form, undo and save.

#include "gui/modeseditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "app/appcontroller.h"
#include "data/modes.h"
#include "gui/uibridge.h"

namespace veloran {

namespace {

constexpr int kHoursPerDay = 24;
constexpr int kHoursPerRow = 8;

QString title(const SatRec& sat) {
    if (std::strcmp(sat.name, kBetweenPassesName) == 0)
        return QObject::tr("Between passes (%1)").arg(kBetweenPassesName);
    if (std::strcmp(sat.name, kOnExitName) == 0)
        return QObject::tr("On exit (%1)").arg(kOnExitName);
    // A block kept for a satellite the element sets do not hold.
    if (sat.db_index < 0) return QObject::tr("%1 (no element set)").arg(sat.name);
    return QString::fromUtf8(sat.name);
}

QLineEdit* numberEdit(const char* name) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    edit->setAccessibleName(name);
    edit->setAlignment(Qt::AlignRight);
    return edit;
}

// A number as typed, in either decimal point: '.' is what the file keeps,
// ',' what a European keyboard offers.
bool readNumber(const QString& text, double* value) {
    bool ok = false;
    const double v = QString(text).replace(',', '.').trimmed().toDouble(&ok);
    if (ok && std::isfinite(v)) *value = v;
    return ok && std::isfinite(v);
}

}  // namespace

ModesEditor::ModesEditor(CorePost post, QWidget* parent) : QDialog(parent), post_(std::move(post)) {
    setObjectName("modesWindow");
    setWindowTitle(tr("Modes"));
    resize(1160, 700);

    outline_ = new QTreeWidget;
    outline_->setObjectName("modesOutline");
    outline_->setHeaderLabels({tr("Satellite / mode"), tr("Uplink"), tr("Downlink"), tr("Mode")});
    // Every column wide enough for what it can hold, and the outline never
    // narrower than its columns: a frequency or a mode cut off in the middle
    // reads as another one.
    outline_->header()->setStretchLastSection(false);
    outline_->header()->setSectionResizeMode(QHeaderView::Fixed);
    outline_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Frequencies line up on the right, the mode name sits clear of them.
    for (int column : {1, 2}) outline_->headerItem()->setTextAlignment(column, Qt::AlignRight);
    outline_->headerItem()->setTextAlignment(3, Qt::AlignHCenter);
    connect(outline_, &QTreeWidget::currentItemChanged, this, &ModesEditor::chosen);
    connect(outline_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        // A channel renamed in place in the outline.
        if (filling_ || column != 0 || item->parent() == nullptr) return;
        channel_->setText(item->text(0));
        channel_->textEdited(item->text(0));
    });

    // The chosen mode.
    modeBox_ = new QGroupBox(tr("Mode"));
    auto* modeForm = new QFormLayout(modeBox_);
    channel_ = new QLineEdit;
    channel_->setObjectName("channel");
    channel_->setMaxLength(63);
    modeForm->addRow(tr("Channel name:"), channel_);
    const struct {
        const char* name;
        const char* label;
        double ModeRec::*member;
        int decimals;
    } numbers[] = {
        {"uplink", "Uplink (MHz):", &ModeRec::upFreq, 6},
        {"downlink", "Downlink (MHz):", &ModeRec::downFreq, 6},
        {"beacon", "Beacon (MHz):", &ModeRec::beaconFreq, 6},
        {"txVrtrUp", "Transverter up (MHz):", &ModeRec::txVrtrUp, 6},
        {"txVrtrDn", "Transverter down (MHz):", &ModeRec::txVrtrDn, 6},
        {"beamUp", "Beam width up (°):", &ModeRec::beamUpWidthDegs, 2},
        {"beamDown", "Beam width down (°):", &ModeRec::beamDwnWidthDegs, 2},
    };
    commMode_ = new QComboBox;
    commMode_->setObjectName("commMode");
    for (int m = 0; m <= kLastCommMode; ++m) {
        char name[kModeNameSize];
        ModeToStr(m, name);
        commMode_->addItem(QString::fromLatin1(name), m);
    }
    for (const auto& n : numbers) {
        Field field{numberEdit(n.name), n.member, n.decimals};
        numbers_.push_back(field);
        modeForm->addRow(tr(n.label), field.edit);
        connect(field.edit, &QLineEdit::textEdited, this, [this, field] { numberEdited(field); });
        if (n.member == &ModeRec::beaconFreq)
            modeForm->addRow(tr("Communication mode:"), commMode_);
    }
    tone_ = new QSpinBox;
    tone_->setObjectName("tone");
    tone_->setRange(0, 99999);
    cTone_ = new QSpinBox;
    cTone_->setObjectName("ctcssTone");
    cTone_->setRange(0, 99999);
    modeForm->addRow(tr("Tone:"), tone_);
    modeForm->addRow(tr("CTCSS tone:"), cTone_);
    connect(channel_, &QLineEdit::textEdited, this, [this](const QString& text) {
        ModeRec* mode = currentMode();
        if (mode == nullptr) return;
        remember();
        std::snprintf(mode->channel, sizeof mode->channel, "%s", text.toUtf8().constData());
        if (QTreeWidgetItem* item = outline_->currentItem(); item && item->parent()) {
            filling_ = true;
            item->setText(0, text);
            filling_ = false;
        }
        changed();
    });
    connect(commMode_, &QComboBox::activated, this, [this](int index) {
        if (ModeRec* mode = currentMode()) {
            remember();
            mode->commMode = static_cast<int16_t>(index);
            if (QTreeWidgetItem* item = outline_->currentItem())
                item->setText(3, commMode_->currentText());
            changed();
        }
    });
    for (QSpinBox* box : {tone_, cTone_})
        connect(box, &QSpinBox::valueChanged, this, [this, box](int value) {
            ModeRec* mode = currentMode();
            if (filling_ || mode == nullptr) return;
            remember();
            (box == tone_ ? mode->gTone : mode->gCTone) = value;
            changed();
        });

    // The satellite's own settings.
    satBox_ = new QGroupBox(tr("Satellite"));
    auto* satForm = new QFormLayout(satBox_);
    speakName_ = new QLineEdit;
    speakName_->setObjectName("speakName");
    speakName_->setPlaceholderText(tr("as spoken; empty: the name"));
    enabled_ = new QCheckBox(tr("Enabled"));
    enabled_->setObjectName("enabled");
    priority_ = new QSpinBox;
    priority_->setObjectName("priority");
    priority_->setRange(0, 99);
    hasB_ = new QCheckBox(tr("Attitude known"));
    hasB_->setObjectName("hasBVals");
    bLat_ = numberEdit("bLat");
    bLon_ = numberEdit("bLon");
    startMA_ = new QSpinBox;
    startMA_->setObjectName("startMA");
    startMA_->setRange(0, 256);
    endMA_ = new QSpinBox;
    endMA_->setObjectName("endMA");
    endMA_->setRange(0, 256);
    auto* attitude = new QHBoxLayout;
    attitude->addWidget(hasB_);
    attitude->addWidget(new QLabel(tr("BLat")));
    attitude->addWidget(bLat_);
    attitude->addWidget(new QLabel(tr("BLon")));
    attitude->addWidget(bLon_);
    auto* window = new QHBoxLayout;
    window->addWidget(startMA_);
    window->addWidget(new QLabel(tr("to")));
    window->addWidget(endMA_);
    window->addWidget(new QLabel(tr("(256ths of an orbit; 0 and 0: always on)")));
    window->addStretch();
    auto* hours = new QGridLayout;
    hours->setSpacing(2);
    for (int h = 0; h < kHoursPerDay; ++h) {
        auto* box = new QCheckBox(QString("%1").arg(h, 2, 10, QChar('0')));
        box->setObjectName(QString("hour%1").arg(h));
        hours_.push_back(box);
        hours->addWidget(box, h / kHoursPerRow, h % kHoursPerRow);
        connect(box, &QCheckBox::clicked, this, &ModesEditor::satelliteEdited);
    }
    satForm->addRow(tr("Speak name:"), speakName_);
    satForm->addRow(QString(), enabled_);
    satForm->addRow(tr("Priority:"), priority_);
    satForm->addRow(tr("Antenna attitude:"), attitude);
    satForm->addRow(tr("Mean anomaly window:"), window);
    satForm->addRow(tr("Track hours (local):"), hours);
    connect(speakName_, &QLineEdit::textEdited, this, &ModesEditor::satelliteEdited);
    connect(enabled_, &QCheckBox::clicked, this, &ModesEditor::satelliteEdited);
    connect(hasB_, &QCheckBox::clicked, this, &ModesEditor::satelliteEdited);
    connect(bLat_, &QLineEdit::textEdited, this, &ModesEditor::satelliteEdited);
    connect(bLon_, &QLineEdit::textEdited, this, &ModesEditor::satelliteEdited);
    for (QSpinBox* box : {priority_, startMA_, endMA_})
        connect(box, &QSpinBox::valueChanged, this, &ModesEditor::satelliteEdited);

    // Satellite and mode buttons under the outline.
    auto* satButtons = new QHBoxLayout;
    auto* buttons = new QHBoxLayout;
    auto button = [this](QHBoxLayout* row, const QString& text, const char* name, auto slot) {
        auto* b = new QPushButton(text);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        row->addWidget(b);
        return b;
    };
    button(satButtons, tr("Add Satellite…"), "addSatellite", &ModesEditor::chooseSatelliteToAdd);
    deleteSatellite_ = button(satButtons, tr("Delete Satellite"), "deleteSatellite",
                              &ModesEditor::deleteSatellite);
    satButtons->addStretch();
    button(buttons, tr("Add Mode"), "addMode", &ModesEditor::addMode);
    button(buttons, tr("Duplicate"), "duplicateMode", &ModesEditor::duplicateMode);
    button(buttons, tr("Delete Mode"), "deleteMode", &ModesEditor::deleteMode);
    button(buttons, tr("Up"), "modeUp", [this] { moveMode(-1); });
    button(buttons, tr("Down"), "modeDown", [this] { moveMode(1); });
    buttons->addStretch();

    auto* left = new QWidget;
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(outline_);
    leftLayout->addLayout(satButtons);
    leftLayout->addLayout(buttons);
    auto* right = new QWidget;
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(modeBox_);
    rightLayout->addWidget(satBox_);
    rightLayout->addStretch();
    split_ = new QSplitter;
    split_->addWidget(left);
    split_->addWidget(right);
    split_->setStretchFactor(0, 1);

    status_ = new QLabel;
    status_->setObjectName("modesStatus");
    auto* box = new QDialogButtonBox;
    undoButton_ = box->addButton(tr("Undo"), QDialogButtonBox::ResetRole);
    undoButton_->setObjectName("undo");
    undoButton_->setShortcut(QKeySequence::Undo);
    save_ = box->addButton(QDialogButtonBox::Save);
    save_->setObjectName("saveModes");
    box->addButton(QDialogButtonBox::Close);
    connect(undoButton_, &QPushButton::clicked, this, &ModesEditor::undo);
    connect(save_, &QPushButton::clicked, this, &ModesEditor::save);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(status_, 1);
    bottom->addWidget(box);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(split_, 1);
    layout->addLayout(bottom);
    changed();
}

void ModesEditor::open() {
    post_([](CoreSide& s) {
        s.ui->showModesForEditing(s.app->modesForEditing(), s.app->satellitesWithoutModes());
    });
    QDialog::open();
}

void ModesEditor::showRecords(std::shared_ptr<const ModesForEditing> modes) {
    // The pseudo-records first: they drive the radio outside every pass.
    const std::vector<SatRec>& records = modes->records;
    records_.clear();
    const size_t n = records.size();
    if (n >= 2) {
        records_.push_back(records[n - 2]);
        records_.push_back(records[n - 1]);
    }
    records_.insert(records_.end(), records.begin(),
                    records.begin() + static_cast<long>(n >= 2 ? n - 2 : n));
    dirty_.assign(records_.size(), false);
    undo_.clear();
    deleted_.clear();
    withoutModes_ = modes->withoutModes;
    status_->clear();
    rebuildOutline(0, -1);
    changed();
}

void ModesEditor::rebuildOutline(int satellite, int mode) {
    filling_ = true;
    outline_->clear();
    QTreeWidgetItem* current = nullptr;
    for (size_t i = 0; i < records_.size(); ++i) {
        const SatRec& sat = records_[i];
        auto* top = new QTreeWidgetItem(outline_, {title(sat)});
        top->setData(0, Qt::UserRole, static_cast<int>(i));
        if (i < 2) {
            QFont bold = top->font(0);
            bold.setItalic(true);
            top->setFont(0, bold);
        }
        if (static_cast<int>(i) == satellite && mode < 0) current = top;
        for (int m = 0; m < sat.numberOfActiveChannels && m < kMaxModes; ++m) {
            const ModeRec& rec = sat.modes[m];
            char name[kModeNameSize];
            ModeToStr(rec.commMode, name);
            auto* child = new QTreeWidgetItem(
                top, {QString::fromUtf8(rec.channel), QString::number(rec.upFreq, 'f', 6),
                      QString::number(rec.downFreq, 'f', 6), QString::fromLatin1(name)});
            child->setFlags(child->flags() | Qt::ItemIsEditable);
            child->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
            child->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
            child->setTextAlignment(3, Qt::AlignCenter);
            child->setData(0, Qt::UserRole, m);
            if (static_cast<int>(i) == satellite && m == mode) current = child;
        }
    }
    filling_ = false;
    fitColumns();
    if (current != nullptr) {
        if (current->parent()) current->parent()->setExpanded(true);
        outline_->setCurrentItem(current);
    }
    chosen();
}

void ModesEditor::fitColumns() {
    const QFontMetrics text(outline_->font());
    const QFontMetrics header(outline_->header()->font());
    // The item's margins and the header's sort indicator room.
    const int pad = text.horizontalAdvance(QStringLiteral("MM"));
    const int indent = outline_->indentation();
    // Widest what a column can hold: frequencies up to the 10 GHz band,
    // and the longest mode name.
    int widths[4] = {
        text.horizontalAdvance(tr("Between passes (%1)").arg(kBetweenPassesName)) + indent,
        text.horizontalAdvance(QStringLiteral("10368.000000")),
        text.horizontalAdvance(QStringLiteral("10368.000000")),
        text.horizontalAdvance(QStringLiteral("SIMP_SSB"))};
    for (int t = 0; t < outline_->topLevelItemCount(); ++t) {
        const QTreeWidgetItem* top = outline_->topLevelItem(t);
        widths[0] = std::max(widths[0], text.horizontalAdvance(top->text(0)) + indent);
        for (int c = 0; c < top->childCount(); ++c)
            for (int column = 0; column < 4; ++column)
                widths[column] =
                    std::max(widths[column], text.horizontalAdvance(top->child(c)->text(column)) +
                                                 (column == 0 ? 2 * indent : 0));
    }
    // A very long channel name is cut rather than pushing the form away.
    widths[0] = std::min(widths[0], text.averageCharWidth() * 36);
    int total = 0;
    for (int column = 0; column < 4; ++column) {
        const int width = std::max(widths[column],
                                   header.horizontalAdvance(outline_->headerItem()->text(column))) +
                          pad;
        outline_->setColumnWidth(column, width);
        total += width;
    }
    const int needed =
        total + 2 * outline_->frameWidth() + outline_->verticalScrollBar()->sizeHint().width();
    outline_->setMinimumWidth(needed);
    // A window already open is laid out again only later; move the split
    // now so that no column is drawn cut meanwhile.
    const QList<int> sizes = split_->sizes();
    if (sizes.size() == 2 && sizes[0] > 0 && sizes[0] < needed)
        split_->setSizes({needed, std::max(0, sizes[0] + sizes[1] - needed)});
}

void ModesEditor::chosen() {
    QTreeWidgetItem* item = outline_->currentItem();
    if (item == nullptr) {
        satellite_ = mode_ = -1;
    } else if (item->parent() == nullptr) {
        satellite_ = item->data(0, Qt::UserRole).toInt();
        mode_ = -1;
    } else {
        satellite_ = item->parent()->data(0, Qt::UserRole).toInt();
        mode_ = item->data(0, Qt::UserRole).toInt();
    }
    // The between-passes and on-exit records always stay.
    deleteSatellite_->setEnabled(satellite_ >= 2);
    showFields();
}

SatRec* ModesEditor::currentSatellite() {
    return satellite_ >= 0 && satellite_ < static_cast<int>(records_.size()) ? &records_[satellite_]
                                                                             : nullptr;
}

ModeRec* ModesEditor::currentMode() {
    SatRec* sat = currentSatellite();
    return sat != nullptr && mode_ >= 0 && mode_ < sat->numberOfActiveChannels ? &sat->modes[mode_]
                                                                               : nullptr;
}

void ModesEditor::showFields() {
    filling_ = true;
    const SatRec* sat = currentSatellite();
    const ModeRec* mode = currentMode();
    modeBox_->setEnabled(mode != nullptr);
    satBox_->setEnabled(sat != nullptr);
    const ModeRec empty{};
    const ModeRec& m = mode ? *mode : empty;
    channel_->setText(QString::fromUtf8(m.channel));
    for (const Field& f : numbers_) {
        f.edit->setText(QString::number(m.*(f.member), 'f', f.decimals));
        f.edit->setStyleSheet("");
    }
    commMode_->setCurrentIndex(m.commMode >= 0 && m.commMode <= kLastCommMode ? m.commMode : 0);
    tone_->setValue(m.gTone);
    cTone_->setValue(m.gCTone);
    if (sat != nullptr) {
        speakName_->setText(QString::fromUtf8(sat->speakName));
        enabled_->setChecked(sat->enabled != 0);
        priority_->setValue(sat->priority);
        hasB_->setChecked(sat->hasBVals != 0);
        bLat_->setText(QString::number(sat->bLatDegs, 'f', 6));
        bLon_->setText(QString::number(sat->bLonDegs, 'f', 6));
        startMA_->setValue(sat->startMA);
        endMA_->setValue(sat->endMA);
        for (int h = 0; h < kHoursPerDay; ++h)
            hours_[h]->setChecked(h < static_cast<int>(std::strlen(sat->trackHours)) &&
                                  sat->trackHours[h] == '1');
    }
    filling_ = false;
}

void ModesEditor::numberEdited(const Field& field) {
    ModeRec* mode = currentMode();
    if (mode == nullptr) return;
    double value = 0;
    if (!readNumber(field.edit->text(), &value) || value < 0) {
        // Marked, never stored: the record keeps the last good number.
        field.edit->setStyleSheet("color: red");
        status_->setText(tr("\"%1\" is not a number.").arg(field.edit->text()));
        return;
    }
    field.edit->setStyleSheet("");
    status_->clear();
    remember();
    mode->*(field.member) = value;
    if (QTreeWidgetItem* item = outline_->currentItem()) {
        if (field.member == &ModeRec::upFreq) item->setText(1, QString::number(value, 'f', 6));
        if (field.member == &ModeRec::downFreq) item->setText(2, QString::number(value, 'f', 6));
    }
    changed();
}

void ModesEditor::satelliteEdited() {
    SatRec* sat = currentSatellite();
    if (filling_ || sat == nullptr) return;
    remember();
    std::snprintf(sat->speakName, sizeof sat->speakName, "%s",
                  speakName_->text().trimmed().toUtf8().constData());
    sat->enabled = enabled_->isChecked() ? 1 : 0;
    sat->priority = static_cast<int16_t>(priority_->value());
    sat->hasBVals = hasB_->isChecked() ? 1 : 0;
    bool good = true;
    for (auto [edit, member] :
         {std::pair{bLat_, &SatRec::bLatDegs}, std::pair{bLon_, &SatRec::bLonDegs}}) {
        double value = 0;
        const bool ok = readNumber(edit->text(), &value);
        edit->setStyleSheet(ok ? "" : "color: red");
        if (ok) sat->*member = value;
        good = good && ok;
    }
    status_->setText(good ? QString() : tr("The attitude must be a number of degrees."));
    sat->startMA = startMA_->value();
    sat->endMA = endMA_->value();
    for (int h = 0; h < kHoursPerDay; ++h) sat->trackHours[h] = hours_[h]->isChecked() ? '1' : '0';
    sat->trackHours[kHoursPerDay] = '\0';
    changed();
}

void ModesEditor::remember() {
    if (satellite_ < 0) return;
    undo_.push_back({Step::kEdit, satellite_, records_[satellite_], dirty_[satellite_], deleted_,
                     withoutModes_});
    dirty_[satellite_] = true;
}

void ModesEditor::changed() {
    undoButton_->setEnabled(!undo_.empty());
    bool any = !deleted_.isEmpty();
    for (bool d : dirty_) any = any || d;
    save_->setEnabled(any);
}

void ModesEditor::undo() {
    if (undo_.empty()) return;
    const Step step = std::move(undo_.back());
    undo_.pop_back();
    const auto at = records_.begin() + step.index;
    const auto dirtyAt = dirty_.begin() + step.index;
    int mode = -1;
    switch (step.kind) {
        case Step::kEdit:
            records_[step.index] = step.record;
            dirty_[step.index] = step.dirty;
            mode = std::min<int>(mode_, step.record.numberOfActiveChannels - 1);
            break;
        case Step::kAdd:
            records_.erase(at);
            dirty_.erase(dirtyAt);
            break;
        case Step::kDelete:
            records_.insert(at, step.record);
            dirty_.insert(dirtyAt, step.dirty);
            break;
    }
    deleted_ = step.deleted;
    withoutModes_ = step.withoutModes;
    status_->clear();
    rebuildOutline(std::min<int>(step.index, static_cast<int>(records_.size()) - 1), mode);
    changed();
}

void ModesEditor::chooseSatelliteToAdd() {
    auto* ask = new QDialog(this);
    ask->setObjectName("addSatelliteDialog");
    ask->setWindowTitle(tr("Add Satellite"));
    ask->setAttribute(Qt::WA_DeleteOnClose);
    ask->setMinimumWidth(ask->fontMetrics().averageCharWidth() * 56);
    auto* name = new QComboBox;
    name->setObjectName("newSatelliteName");
    name->setEditable(true);
    name->setInsertPolicy(QComboBox::NoInsert);
    name->addItems(withoutModes_);
    name->setCurrentIndex(-1);
    name->lineEdit()->setPlaceholderText(tr("Name, one word"));
    name->setMinimumContentsLength(24);
    auto* note = new QLabel(withoutModes_.isEmpty()
                                ? tr("Every satellite of the element sets has modes; type the "
                                     "name of another one.")
                                : tr("Pick a satellite of the element sets that has no modes, "
                                     "or type the name of another one."));
    note->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* layout = new QVBoxLayout(ask);
    layout->addWidget(note);
    layout->addWidget(name);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, ask, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, ask, [this, ask, name, note] {
        if (addSatellite(name->currentText().trimmed()))
            ask->accept();
        else
            note->setText(status_->text());
    });
    ask->open();
}

bool ModesEditor::addSatellite(const QString& name) {
    const QByteArray utf8 = name.toUtf8();
    if (!IsModesBlockName(utf8.toStdString())) {
        status_->setText(name.isEmpty() ? tr("Type the satellite's name.")
                                        : tr("\"%1\" cannot name a satellite: one word, "
                                             "without blanks, please.")
                                              .arg(name));
        return false;
    }
    for (const SatRec& sat : records_)
        if (utf8 == sat.name) {
            status_->setText(tr("%1 already has modes.").arg(name));
            return false;
        }
    auto rec = std::make_unique<SatRec>();
    NewModesBlock(rec.get(), utf8.constData());
    rec->db_index = withoutModes_.contains(name) ? 0 : -1;
    // At the end of the outline, where the user sees it.
    const int at = static_cast<int>(records_.size());
    undo_.push_back({Step::kAdd, at, SatRec{}, false, deleted_, withoutModes_});
    withoutModes_.removeAll(name);
    records_.insert(records_.begin() + at, *rec);
    dirty_.insert(dirty_.begin() + at, true);
    status_->setText(tr("%1 added with one mode; Save writes it to the modes file.").arg(name));
    rebuildOutline(at, 0);
    changed();
    return true;
}

void ModesEditor::deleteSatellite() {
    if (satellite_ < 2 || satellite_ >= static_cast<int>(records_.size())) return;
    const SatRec& sat = records_[satellite_];
    const QString name = QString::fromUtf8(sat.name);
    undo_.push_back({Step::kDelete, satellite_, sat, dirty_[satellite_], deleted_, withoutModes_});
    if (!deleted_.contains(name)) deleted_ << name;
    if (sat.db_index >= 0 && !withoutModes_.contains(name)) withoutModes_ << name;
    const int at = satellite_;
    records_.erase(records_.begin() + at);
    dirty_.erase(dirty_.begin() + at);
    status_->setText(
        tr("%1 deleted; Save removes it from the modes file, Undo brings it back.").arg(name));
    rebuildOutline(std::min<int>(at, static_cast<int>(records_.size()) - 1), -1);
    changed();
}

void ModesEditor::addMode() {
    SatRec* sat = currentSatellite();
    if (sat == nullptr || sat->numberOfActiveChannels >= kMaxModes) return;
    remember();
    ModeRec& mode = sat->modes[sat->numberOfActiveChannels];
    mode = ModeRec{};
    std::snprintf(mode.channel, sizeof mode.channel, "%s", tr("New mode").toUtf8().constData());
    ++sat->numberOfActiveChannels;
    rebuildOutline(satellite_, sat->numberOfActiveChannels - 1);
    changed();
}

void ModesEditor::duplicateMode() {
    SatRec* sat = currentSatellite();
    const ModeRec* mode = currentMode();
    if (mode == nullptr || sat->numberOfActiveChannels >= kMaxModes) return;
    remember();
    const int at = mode_ + 1;
    std::copy_backward(sat->modes + at, sat->modes + sat->numberOfActiveChannels,
                       sat->modes + sat->numberOfActiveChannels + 1);
    sat->modes[at] = sat->modes[mode_];
    ++sat->numberOfActiveChannels;
    rebuildOutline(satellite_, at);
    changed();
}

void ModesEditor::deleteMode() {
    SatRec* sat = currentSatellite();
    if (currentMode() == nullptr) return;
    remember();
    std::copy(sat->modes + mode_ + 1, sat->modes + sat->numberOfActiveChannels, sat->modes + mode_);
    --sat->numberOfActiveChannels;
    rebuildOutline(satellite_, std::min<int>(mode_, sat->numberOfActiveChannels - 1));
    changed();
}

void ModesEditor::moveMode(int step) {
    SatRec* sat = currentSatellite();
    const int to = mode_ + step;
    if (currentMode() == nullptr || to < 0 || to >= sat->numberOfActiveChannels) return;
    remember();
    std::swap(sat->modes[mode_], sat->modes[to]);
    rebuildOutline(satellite_, to);
    changed();
}

void ModesEditor::save() {
    auto edited = std::make_shared<std::vector<SatRec>>();
    for (size_t i = 0; i < records_.size(); ++i)
        if (dirty_[i]) edited->push_back(records_[i]);
    // A satellite deleted and added again is written, not deleted.
    std::vector<std::string> deleted;
    for (const QString& name : deleted_) {
        const QByteArray utf8 = name.toUtf8();
        bool listed = false;
        for (const SatRec& sat : records_) listed = listed || utf8 == sat.name;
        if (!listed) deleted.push_back(utf8.toStdString());
    }
    if (edited->empty() && deleted.empty()) return;
    post_([edited, deleted](CoreSide& s) {
        if (s.app->saveEditedModes(edited->data(), static_cast<int>(edited->size()), deleted))
            s.ui->showModesForEditing(s.app->modesForEditing(), s.app->satellitesWithoutModes());
    });
    status_->setText(tr("Saving…"));
}

}  // namespace veloran
