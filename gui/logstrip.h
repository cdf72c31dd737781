// The quick-entry strip under the main window's panels: during a pass the
// operator types the call and the reports and presses Enter; the satellite,
// mode, frequencies, time and our own call and grid come from the station.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QTimer;

namespace veloran {

class LogbookLink;

class LogStrip : public QWidget {
    Q_OBJECT
  public:
    explicit LogStrip(LogbookLink* link, QWidget* parent = nullptr);

    // Saves what is typed (Enter in any field does the same).
    void save();

  private:
    void callEdited(const QString& text);
    void clearEntry();

    LogbookLink* link_;
    QLineEdit *call_, *rstSent_, *rstRcvd_, *grid_, *name_, *qth_, *comment_;
    QLabel *country_, *status_;
    QTimer* lookupPause_;  // the callsign service is asked once typing stops
};

}  // namespace veloran
