// The track list: the satellites the user follows, one row each, ordered by
// their next pass. In track-list mode the controller picks the main
// satellite from these rows; the table widget only shows them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/userdefaults.h"
#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

class AppController;

// One row: display texts and numbers under the table's column keys.
struct SatelliteSlot {
    int32_t checkbox = 1;  // the row's enabled check box
    std::string satelliteName;
    int32_t pri = 5;                               // selection priority
    std::string pass;                              // "In view", "Next pass" or "No pass"
    std::string aostime;                           // AOS date and time (UTC or local)
    std::string length;                            // pass length, hh:mm:ss
    std::string azimuth, elevation, deltae, maxe;  // degrees, deltae "rising"/"falling"
    std::string latitude, longitude;               // sub-satellite point, degrees, "N"/"S", "E"/"W"
    std::string altitude, deltaa, range;           // km or mi; deltaa "up"/"down"
    std::string phase;                             // mean anomaly in 256ths of a revolution
    std::string squint;                            // degrees, empty without attitude
    std::string planarcr, maxetime, apogtime, lostime, timetoe;  // time to the event, hh:mm:ss
    std::string velocity;                                        // range rate, km/s or mi/s
    std::string eclipse;                                         // "Eclipsed" or "Sunlit"
    int32_t index = 0;                                           // table entry, 0-based
    int32_t orbit = 0;                                           // revolution number
    std::string pathLoss;                                        // dB

    // The sort keys compare uses, taken by loadIt.
    bool inView = false;
    bool passPredicted = false;
    uint32_t secondsToAOS = 0;
    uint32_t secondsToLOS = 0;

    // Fills the row from a satellite record; times in UTC or shifted by
    // timeDiff seconds, distances in km or miles.
    void loadIt(const SatRec& rec, int32_t timeDiff, bool displayUTC, bool displayKM);
    // The text under a column key (numbers as decimal text); empty for an
    // unknown key.
    std::string valueForKey(const std::string& key) const;
    // Ordering as an operator reads a pass schedule: satellites in view
    // first, the one setting soonest on top; then by next AOS, soonest
    // first; satellites with no predicted pass last; then by name.
    // Negative, zero or positive.
    int compare(const SatelliteSlot& other) const;
};

// The colour a row's text is shown in.
enum class RowColour { kGrey, kRed, kGreen, kBlue, kBlack };
// Grey unless the pass is wanted and the satellite enabled; red in view;
// green rising within a minute; blue for the main satellite; else black.
RowColour RowColourFor(const SatRec& rec, bool isMainSatellite);

// The row record passed to and from the controller.
struct TrackRow {
    uint32_t index;  // table entry, 0-based
    int32_t checkbox;
    std::string satelliteName;
};

// The track-list table widget.
class TrackListUi {
  public:
    virtual ~TrackListUi() = default;
    virtual void reloadRows(const std::vector<SatelliteSlot>& /*rows*/) {}
    virtual void deselectAllRows() {}
    virtual void setTrackListChecked(bool /*on*/) {}
    virtual void beep() {}
};

class SatelliteTableController {
  public:
    SatelliteTableController(AppController* app, UserDefaults* defaults, TrackListUi* ui);

    // Empties the list and reads "trackListEnabled" into the check box and
    // the controller. The runner then calls updateTrackList every second.
    void awakeFromNib();
    // The track-list check box: automatic selection on or off, stored.
    void toggleTrackList(bool on);
    // The satellite of pop-up item popupIndex (item k is entry k - 1).
    void addSatellite(int popupIndex);
    // The selected row, -1 for none.
    void deleteRow(int row);
    // A click on a row; checkboxValue is the row's check box after it.
    void singleClick(int row, int32_t checkboxValue);
    void doubleClick(int row);
    // The every-second refresh; the first call restores the saved list.
    void updateTrackList();
    // Saves the list as "trackList_string".
    void applicationWillTerminate();

    bool getSatelliteFromList(int row, TrackRow* out) const;
    void emptyIt();
    const std::vector<SatelliteSlot>& rows() const { return satelliteArray; }

  private:
    void appendRow(const SatRec& rec);

    AppController* appController;
    UserDefaults* defaults_;
    TrackListUi* ui_;
    std::vector<SatelliteSlot> satelliteArray;
    bool mFirstTime = true;
    SiteRec site{};
};

}  // namespace veloran
