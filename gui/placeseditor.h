// The places list editor: every place of the places file in a table, its
// name and coordinates editable, places added and removed. Save hands the
// list to the core thread, which rewrites the file as the main window's
// add-place sheet does.
#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "data/locations.h"
#include "gui/corethread.h"
#include "gui/uibridge.h"

class QLabel;
class QPushButton;
class QTableWidget;

namespace veloran {

class PlacesEditor : public QDialog {
    Q_OBJECT
  public:
    PlacesEditor(UiBridge* bridge, CorePost post, QWidget* parent = nullptr);

    void open() override;
    void save();

  private:
    void show(const std::vector<Location>& places);
    // Marks a coordinate that is not a number in range; true when all are.
    bool check();

    CorePost post_;
    std::vector<Location> partial_;  // lines of fewer than five fields, kept as they are
    QTableWidget* table_;
    QLabel* status_;
    QPushButton* save_;
};

}  // namespace veloran
