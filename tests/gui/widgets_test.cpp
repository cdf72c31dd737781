// The track-list model's colours, check box and sorting, and the map's
// zoom, restored rectangle and follow.

#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>

#include "gui/mapwidget.h"
#include "gui/tracklistmodel.h"

namespace veloran {
namespace {

SatelliteSlot Row(const char* name, int32_t checkbox, const char* maxe) {
    SatelliteSlot slot;
    slot.satelliteName = name;
    slot.checkbox = checkbox;
    slot.maxe = maxe;
    return slot;
}

TEST(TrackListModel, ColoursCheckBoxesAndSortedClicks) {
    TrackListModel model;
    const RowColour colours[] = {RowColour::kGrey, RowColour::kRed, RowColour::kGreen,
                                 RowColour::kBlue, RowColour::kBlack};
    model.setRows({Row("AO-7", 0, "12.5"), Row("FO-29", 1, "9.5"), Row("ISS", 1, "-3.0"),
                   Row("SO-50", 1, "71.2"), Row("RS-44", 1, "30.0")},
                  {colours, colours + 5});
    const int name = TrackListModel::columnOfKey("satelliteName");
    const int check = TrackListModel::columnOfKey("checkbox");
    ASSERT_EQ(check, 0);
    for (int row = 0; row < 5; ++row) {
        const QColor shown = model.data(model.index(row, name), Qt::ForegroundRole).value<QColor>();
        EXPECT_EQ(shown, TrackListModel::textColour(colours[row], false)) << row;
    }
    // Each colour reads differently from the others.
    for (int a = 0; a < 5; ++a)
        for (int b = a + 1; b < 5; ++b)
            EXPECT_NE(TrackListModel::textColour(colours[a], false),
                      TrackListModel::textColour(colours[b], false));
    EXPECT_EQ(model.data(model.index(0, check), Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(model.data(model.index(1, check), Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_FALSE(model.data(model.index(1, name), Qt::CheckStateRole).isValid());
    EXPECT_TRUE(model.flags(model.index(0, check)) & Qt::ItemIsUserCheckable);
    EXPECT_FALSE(model.flags(model.index(0, name)) & Qt::ItemIsUserCheckable);
    EXPECT_EQ(model.headerData(name, Qt::Horizontal, Qt::UserRole).toString(), "satelliteName");

    // Sorted by maximum elevation, numbers as numbers: ISS (-3.0) first,
    // SO-50 (71.2) last; clicks still name the core's rows.
    model.sort(TrackListModel::columnOfKey("maxe"), Qt::AscendingOrder);
    EXPECT_EQ(model.data(model.index(0, name), Qt::DisplayRole).toString(), "ISS");
    EXPECT_EQ(model.coreRow(0), 2);
    EXPECT_EQ(model.coreRow(4), 3);
    EXPECT_EQ(model.data(model.index(0, name), Qt::ForegroundRole).value<QColor>(),
              TrackListModel::textColour(RowColour::kGreen, false));

    QSignalSpy toggled(&model, &TrackListModel::checkToggled);
    EXPECT_TRUE(model.setData(model.index(0, check), Qt::Unchecked, Qt::CheckStateRole));
    ASSERT_EQ(toggled.count(), 1);
    EXPECT_EQ(toggled[0][0].toInt(), 2);  // ISS's row in the core's list
    EXPECT_EQ(toggled[0][1].toInt(), 0);
    EXPECT_FALSE(model.setData(model.index(0, name), "x", Qt::EditRole));

    // Back to the core's order.
    model.sort(-1);
    EXPECT_EQ(model.coreRow(0), 0);
}

TEST(TrackListWidget, ColumnLayoutSurvivesARestart) {
    QByteArray saved;
    {
        TrackListWidget widget;
        widget.table()->horizontalHeader()->moveSection(1, 4);
        widget.table()->horizontalHeader()->resizeSection(2, 77);
        saved = widget.saveColumnLayout();
    }
    TrackListWidget widget;
    EXPECT_TRUE(widget.restoreColumnLayout(saved));
    EXPECT_EQ(widget.table()->horizontalHeader()->visualIndex(1), 4);
    EXPECT_EQ(widget.table()->horizontalHeader()->sectionSize(2), 77);
    EXPECT_FALSE(widget.restoreColumnLayout(QByteArray("not a layout")));
    EXPECT_EQ(widget.table()->horizontalHeader()->visualIndex(1), 4);
}

std::shared_ptr<DisplayList> MapList(int width) {
    auto list = std::make_shared<DisplayList>();
    list->width = static_cast<float>(width);
    list->height = static_cast<float>(width / 2);
    list->addFillRect({0, 0, list->width, list->height}, {1, 1, 1, 1}, "background");
    return list;
}

TEST(MapWidget, ZoomKeepsTheCentreAndRestoresTheStoredRectangle) {
    MapWidget map;
    map.resize(600, 400);
    map.show();
    QApplication::processEvents();

    // The first list scrolls to the stored rectangle (y up): its top left
    // corner goes to the view's top left.
    auto first = MapList(2048);
    first->scrollToRect = true;
    const QSize viewport = map.scrollArea()->viewport()->size();
    first->scrollRect = {700, 300, static_cast<float>(viewport.width()),
                         static_cast<float>(viewport.height())};
    map.setList(first);
    QApplication::processEvents();
    EXPECT_EQ(map.mapWidth(), 2048);
    QRectF visible = map.visibleRect();
    EXPECT_EQ(visible.x(), 700);
    EXPECT_EQ(visible.y(), 300);
    const QPointF centre = visible.center();

    // Zooming in keeps the same place of the Earth in the middle.
    map.zoomMap(4096, 2.0);
    QApplication::processEvents();
    EXPECT_EQ(map.canvas()->size(), QSize(4096, 2048));
    visible = map.visibleRect();
    EXPECT_NEAR(visible.center().x(), centre.x() * 2, 2);
    EXPECT_NEAR(visible.center().y(), centre.y() * 2, 2);

    // The buttons follow the core's rules, and clicks reach the core.
    map.setZoomButtons(false, true);
    auto* in = map.findChild<QToolButton*>("zoomin");
    auto* out = map.findChild<QToolButton*>("zoomout");
    ASSERT_TRUE(in && out);
    EXPECT_FALSE(in->isEnabled());
    EXPECT_TRUE(out->isEnabled());
    QSignalSpy zoomOut(&map, &MapWidget::zoomOutClicked);
    out->click();
    EXPECT_EQ(zoomOut.count(), 1);

    // Following centres the view on the list's point (y up).
    auto follow = MapList(4096);
    follow->centreOnPoint = true;
    follow->centre = {3000, 500};
    map.setList(follow);
    visible = map.visibleRect();
    EXPECT_NEAR(visible.center().x(), 3000, 1);
    EXPECT_NEAR(visible.center().y(), 500, 1);
}

}  // namespace
}  // namespace veloran
