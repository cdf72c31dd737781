// The element-set download dialog: the source (the AMSAT bulletin, the
// CelesTrak groups as TLE or OMM, one satellite by catalogue number, the
// user's own addresses), replace or merge, and "insist" for a fetch the
// two-hour rule would hold back. It also shows whether automatic updates
// stopped after a server's refusal and lets the operator resume them. The
// download itself runs on the core thread; the dialog only posts it.
#pragma once

#include <QDialog>
#include <memory>

#include "gui/corethread.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace veloran {

class UiBridge;
struct KepsSourcesSnapshot;

class KepsDownloadDialog : public QDialog {
    Q_OBJECT
  public:
    KepsDownloadDialog(UiBridge* bridge, CorePost post, QWidget* parent = nullptr);

    // Asks the core for the sources and shows the dialog; "insist" is off
    // on every opening.
    void open() override;
    // How often the station fetches by itself (0: never), for the
    // automatic updates' line.
    void setAutomaticHours(double hours) { automaticHours_ = hours; }
    // The address the dialog would fetch now; empty when none is chosen.
    QString chosenURL() const;

  signals:
    // A download was handed to the core.
    void downloadStarted(const QString& url);

  private:
    void showSources(std::shared_ptr<const KepsSourcesSnapshot> snapshot);
    void updateControls();
    void addUserURL();
    void removeUserURL();
    void saveUserURLs();
    void download();

    CorePost post_;
    QListWidget* sources_;
    QSpinBox* catalog_;
    QComboBox* catalogForm_;
    QLineEdit* newURL_;
    QPushButton *addURL_, *removeURL_, *resume_, *download_;
    QLabel *urlLine_, *urlProblem_, *autoState_;
    QRadioButton *replace_, *merge_;
    QCheckBox* insist_;
    QStringList userURLs_;
    double automaticHours_ = 0;
};

}  // namespace veloran
