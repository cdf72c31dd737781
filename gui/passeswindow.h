// The passes window: every pass of the track list, of one satellite or of
// all, over 1 to 10 days from the current (virtual) time, with the sky plot
// of the selected pass beside the table. The core only copies the elements
// out; worker threads search, and the rows appear as each satellite is done.
#pragma once

#include <QWidget>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "gui/corethread.h"
#include "gui/passesmodel.h"

class QComboBox;
class QSpinBox;
class QDoubleSpinBox;
class QTableView;
class QLabel;
class QTimer;

namespace veloran {

class SkyWidget;

// What one search works on: copies taken on the core thread.
struct PassInputs {
    struct Satellite {
        QString name;
        int index;  // 0-based entry of the satellite table
        KepRec kep;
        double nodeRate, perigeeRate;  // rad/day, as the record holds them
        QString tip;                   // long name and catalogue number
    };
    SiteRec site{};
    uint32_t now = 0;   // the tick instant, time value
    double nowDay = 0;  // the same instant as an epoch day
    KepRec sunKep{};
    double sunNodeRate = 0, sunPerigeeRate = 0;
    std::vector<Satellite> satellites;
    QStringList allNames;  // every satellite, for the chooser
};

// Carries results from the core thread and the workers to the window.
class PassesFeed : public QObject {
    Q_OBJECT
  signals:
    void inputsReady(int generation, std::shared_ptr<const PassInputs> inputs);
    void rowsFound(int generation, std::vector<PassRow> rows);
    void nowIs(uint32_t now);
};

class PassesWindow : public QWidget {
    Q_OBJECT
  public:
    enum Scope { kTrackList, kAll, kOne };
    explicit PassesWindow(CorePost post, QWidget* parent = nullptr);
    ~PassesWindow() override;

    PassesModel* model() const { return model_; }
    // Passes still to come from the workers of the current search.
    bool searching() const { return pending_ > 0; }

  public slots:
    // Searches again from the core's current time.
    void refresh();

  signals:
    // Double-click: the user wants the time slider at this pass's AOS.
    void aosChosen(uint32_t aos);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void start(int generation, std::shared_ptr<const PassInputs> inputs);
    void addRows(int generation, std::vector<PassRow> rows);
    void stopWorkers();
    void showSelectedPass();
    void exportFile(bool calendar);

    CorePost post_;
    std::shared_ptr<PassesFeed> feed_;
    PassesModel* model_;
    PassesFilter* filter_;
    QComboBox *scope_, *satellite_;
    QSpinBox* days_;
    QDoubleSpinBox* minElevation_;
    QTableView* table_;
    SkyWidget* sky_;
    QLabel* status_;
    QTimer* clock_;
    int generation_ = 0;
    int pending_ = 0;
    std::shared_ptr<const PassInputs> inputs_;
    std::shared_ptr<std::atomic<bool>> cancelled_;
    std::vector<std::thread> workers_;
};

}  // namespace veloran
