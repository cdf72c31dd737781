// The map tab view's second tab: the globe's controls above the globe. The
// OpenGL view is made the first time the tab is shown, once a context has
// been made to work; without OpenGL the tab says so in one line. The
// controls show the options the core stored, as the first scene brings them,
// and post every change to the core, which saves it.
#pragma once

#include <QWidget>
#include <memory>

#include "gui/corethread.h"
#include "views/globeexchange.h"

class QCheckBox;
class QComboBox;
class QSlider;
class QVBoxLayout;

namespace veloran {

class GlobeWidget;

class GlobeTab : public QWidget {
    Q_OBJECT
  public:
    GlobeTab(std::shared_ptr<GlobeSceneExchange> exchange, CorePost post,
             QWidget* parent = nullptr);

    // The globe, or null before the tab was first shown or without OpenGL.
    GlobeWidget* globe() const { return globe_; }
    // Full screen shows the globe alone.
    void setControlsShown(bool shown);

  public slots:
    // The core published a scene: the view repaints; the first one sets
    // the controls.
    void sceneReady();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void createView();
    void showOptions(const GlobeOptions& options);
    GlobeOptions controlOptions() const;
    void optionsChanged();

    std::shared_ptr<GlobeSceneExchange> exchange_;
    CorePost post_;
    QVBoxLayout* layout_;
    QWidget* controls_;
    QWidget* boxes_;
    QComboBox *pov_, *resolution_;
    QSlider *distance_, *ambient_;
    QCheckBox *trackList_, *coverage_, *labels_, *grid_, *skyTrack_, *groundTrack_, *planes_,
        *cityLights_;
    GlobeWidget* globe_ = nullptr;
    bool tried_ = false;
    bool optionsKnown_ = false;
};

}  // namespace veloran
