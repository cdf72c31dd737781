// The modes editor: an outline of the satellites (and the between-passes and
// on-exit records) with their modes, and a form for the chosen one. It edits
// copies the core sent; Save hands the changed records back to the core
// thread, which rewrites the modes file and tunes with the new modes at once.
#pragma once

#include <QDialog>
#include <QStringList>
#include <memory>
#include <vector>

#include "engine/satrec.h"
#include "gui/corethread.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;

namespace veloran {

struct ModesForEditing;

class ModesEditor : public QDialog {
    Q_OBJECT
  public:
    ModesEditor(CorePost post, QWidget* parent = nullptr);

    // Asks the core for the records and shows the window.
    void open() override;
    // The core's copies arrive here (queued from the core thread).
    void showRecords(std::shared_ptr<const ModesForEditing> modes);
    void save();
    void undo();
    // Adds a satellite with one mode: a name of the element sets without
    // modes, or a new one-word name. False (and a word on the status line)
    // for a name that is taken or cannot key a block.
    bool addSatellite(const QString& name);
    // Deletes the chosen satellite's block; BetweenPasses and OnExit stay.
    void deleteSatellite();

  private:
    struct Field {
        QLineEdit* edit;
        double ModeRec::*member;
        int decimals;
    };

    void rebuildOutline(int satellite, int mode);
    // Widens the outline's columns to what they hold.
    void fitColumns();
    void chosen();
    void showFields();
    // A field was typed in: stored when it reads as a number, else marked.
    void numberEdited(const Field& field);
    void satelliteEdited();
    void remember();  // before every change of a record, for undo
    void changed();
    void chooseSatelliteToAdd();
    void addMode();
    void duplicateMode();
    void deleteMode();
    void moveMode(int step);
    SatRec* currentSatellite();
    ModeRec* currentMode();

    CorePost post_;
    // One step back: a record as it was before an edit, a record added, or
    // a record deleted, with the lists as they were.
    struct Step {
        enum Kind { kEdit, kAdd, kDelete } kind;
        int index;
        SatRec record;  // kEdit: before the change; kDelete: the one deleted
        bool dirty;
        QStringList deleted, withoutModes;
    };

    std::vector<SatRec> records_;  // BetweenPasses, OnExit, then the satellites
    std::vector<bool> dirty_;
    std::vector<Step> undo_;
    QStringList deleted_;       // satellites whose blocks go on the next save
    QStringList withoutModes_;  // the element sets' satellites that can be added
    int satellite_ = -1, mode_ = -1;
    bool filling_ = false;

    QTreeWidget* outline_;
    QLineEdit* channel_;
    std::vector<Field> numbers_;
    QComboBox* commMode_;
    QSpinBox *tone_, *cTone_, *priority_, *startMA_, *endMA_;
    QLineEdit *speakName_, *bLat_, *bLon_;
    QCheckBox *enabled_, *hasB_;
    std::vector<QCheckBox*> hours_;
    QLabel* status_;
    QPushButton *save_, *undoButton_, *deleteSatellite_;
    QWidget *modeBox_, *satBox_;
    QSplitter* split_;
};

}  // namespace veloran
