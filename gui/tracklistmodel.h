// The track list as a Qt table: a model over value copies of the core's
// rows and their colours, and the tab that shows it with the automatic
// selection check box, add and delete. Clicks travel back as row numbers of
// the core's own list, whatever order the user sorted the table in.
#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <QCheckBox>
#include <QHash>
#include <QPushButton>
#include <QTableView>
#include <QWidget>
#include <vector>

#include "app/tracklist.h"

namespace veloran {

// The settings key the table's column layout (order, widths, sort) is
// kept under.
inline constexpr const char* kTrackListColumnsKey = "trackListColumns";

struct TrackColumn {
    const char* key;     // the SatelliteSlot key the column shows
    const char* header;  // its title
};

class TrackListModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    using QAbstractTableModel::QAbstractTableModel;

    // The columns, check box first; their keys are the SatelliteSlot keys.
    static const std::vector<TrackColumn>& columns();
    static int columnOfKey(const char* key);

    // A new snapshot: one colour per row (missing colours read black). The
    // selection follows each satellite by name.
    void setRows(std::vector<SatelliteSlot> rows, std::vector<RowColour> colours);
    // The row's place in the core's list, -1 for none.
    int coreRow(int row) const;
    const SatelliteSlot* slotAt(int row) const;
    RowColour colourAt(int row) const;
    static QColor textColour(RowColour colour, bool nightTheme);
    void setNightTheme(bool on);
    // The satellite column's tool tips (long name, catalogue number) by
    // short name.
    void setNameTips(QHash<QString, QString> tips);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Only the check box is editable: ticking it reports checkToggled.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    // A column, or -1 for the core's own order (next pass first).
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

  signals:
    // The check box of the core's row `coreRow` now reads `checkbox`.
    void checkToggled(int coreRow, int checkbox);

  private:
    void applyOrder();

    std::vector<SatelliteSlot> rows_;
    std::vector<RowColour> colours_;
    std::vector<int> order_;  // shown row -> core row
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
    bool nightTheme_ = false;
    QHash<QString, QString> nameTips_;
};

class TrackListWidget : public QWidget {
    Q_OBJECT
  public:
    explicit TrackListWidget(QWidget* parent = nullptr);
    TrackListModel* model() const { return model_; }
    QTableView* table() const { return table_; }

    // The header's state (column order, widths, sort column), to keep in
    // the settings under kTrackListColumnsKey; false for a layout that does
    // not fit the columns (it is then ignored).
    QByteArray saveColumnLayout() const;
    bool restoreColumnLayout(const QByteArray& state);
    // The selected row of the core's list, -1 when none is selected.
    int selectedRow() const;

  public slots:
    void setRows(std::vector<SatelliteSlot> rows, std::vector<RowColour> colours);
    void setTrackListChecked(bool on);
    void deselectAllRows();
    void setNightTheme(bool on);

  signals:
    // The automatic-selection check box ("trackListEnabled").
    void trackListToggled(bool on);
    void addClicked();
    // The selected row of the core's list, -1 when none is selected.
    void deleteClicked(int coreRow);
    // A click on a row with its check box's value after it: equal to the
    // satellite's enabled flag for a click on the row, the new value when
    // the check box was toggled.
    void singleClicked(int coreRow, int checkbox);
    void doubleClicked(int coreRow);
    // A column was moved, resized or chosen for sorting.
    void columnLayoutChanged();

  private:
    TrackListModel* model_;
    QTableView* table_;
    QCheckBox* trackList_;
    QPushButton* add_;
    QPushButton* delete_;
    QWidget* controls_;
    bool sized_ = false;       // the user has set a column width, or restored a layout
    bool autoSizing_ = false;  // our own widening is under way
};

}  // namespace veloran
