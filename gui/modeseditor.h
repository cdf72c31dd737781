// The modes editor: an outline of the satellites (and the between-passes and
// on-exit records) with their modes, and a form for the chosen one. It edits
// copies the core sent; Save hands the changed records back to the core
// thread, which rewrites the modes file and tunes with the new modes at once.
#pragma once

#include <QDialog>
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
class QTreeWidget;
class QTreeWidgetItem;

namespace veloran {

class ModesEditor : public QDialog {
    Q_OBJECT
  public:
    ModesEditor(CorePost post, QWidget* parent = nullptr);

    // Asks the core for the records and shows the window.
    void open() override;
    // The core's copies arrive here (queued from the core thread).
    void showRecords(std::shared_ptr<const std::vector<SatRec>> records);
    void save();
    void undo();

  private:
    struct Field {
        QLineEdit* edit;
        double ModeRec::*member;
        int decimals;
    };

    void rebuildOutline(int satellite, int mode);
    void chosen();
    void showFields();
    // A field was typed in: stored when it reads as a number, else marked.
    void numberEdited(const Field& field);
    void satelliteEdited();
    void remember();  // before every change, for undo
    void changed();
    void addMode();
    void duplicateMode();
    void deleteMode();
    void moveMode(int step);
    SatRec* currentSatellite();
    ModeRec* currentMode();

    CorePost post_;
    std::vector<SatRec> records_;
    std::vector<bool> dirty_;
    std::vector<std::pair<int, SatRec>> undo_;  // record index and its state before a change
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
    QPushButton *save_, *undoButton_;
    QWidget *modeBox_, *satBox_;
};

}  // namespace veloran
