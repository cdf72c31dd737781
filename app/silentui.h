// A user interface with no window: every outlet call is dropped. The
// command-line tools and the benchmarks start from it.
#pragma once

#include "app/interfaces.h"

namespace veloran {

class SilentUserInterface : public UserInterface {
  public:
    void removeAllSatelliteItems() override {}
    void addSatelliteItem(const std::string&) override {}
    void setKepsDateText(const std::string&) override {}
    void alert(const std::string&, const std::string&, const std::string&) override {}
    void beep() override {}
    void removeAllChannelItems() override {}
    void addChannelItem(const std::string&) override {}
    void selectChannelItem(int) override {}
    void setVfoSlider(double) override {}
    void removeAllLocationItems() override {}
    void addLocationItem(const std::string&) override {}
    void showLocation(const std::string&, const std::string&, const std::string&) override {}
    void closeLocationSheet() override {}
    void showSettings(const SiteRec&) override {}
};

}  // namespace veloran
