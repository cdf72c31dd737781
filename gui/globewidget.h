// The 3D globe on OpenGL 3.3 core: the Earth textured by day and lit by its
// cities at night, the Moon shaded, and the scene's lines, points and labels
// as the core built them. The camera (point of view, distance, drag and
// wheel) and the ambient light are the view's own; the scene arrives
// through the exchange and is never waited for.
//
// The drawing lives in a window of its own inside the widget: its frames go
// straight to the screen, and the rest of the main window keeps painting
// without OpenGL, so neither makes the other repaint.
#pragma once

#include <QImage>
#include <QMatrix4x4>
#include <QOpenGLExtraFunctions>
#include <QOpenGLWindow>
#include <QPoint>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <vector>

#include "views/globeexchange.h"

class QOpenGLFramebufferObject;
class QOpenGLPaintDevice;
class QOpenGLShaderProgram;

namespace veloran {

class GlobeWindow : public QOpenGLWindow, protected QOpenGLExtraFunctions {
    Q_OBJECT
  public:
    explicit GlobeWindow(std::shared_ptr<GlobeSceneExchange> exchange);
    ~GlobeWindow() override;

    void setPointOfView(int pov);
    // The free orbit's camera: longitude-like turn and height angle, radians.
    void setFreeCamera(double yaw, double pitch);
    void setDistance(double earthRadii);
    void setAmbient(int percent);  // night side's light, 0..100
    // 0..2 the texture widths 1024, 2048, 4096; 3 the wire frame.
    void setResolution(int index);
    double distance() const { return distance_; }
    // Whole pictures drawn since creation (frames for the pulse alone copy
    // the last one and are not counted).
    long framesDrawn() const { return frames_; }
    QPointF screenPoint(const QVector3D& point) const;
    QVector3D eye() const { return eye_; }
    // A frame drawn offscreen and read back; null until the window has been
    // shown. `wholeFrame` false draws only what a pulse frame draws.
    QImage renderImage(bool wholeFrame = true);

  signals:
    void distanceChangedByWheel(double earthRadii);
    void pointOfViewChangedByDrag(int pov);

  public slots:
    void sceneReady();

  protected:
    void initializeGL() override;
    void paintGL() override;
    void exposeEvent(QExposeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    // Something the picture shows changed: draw it again at the next frame.
    void redraw();
    void releaseGl();
    void buildSphere();
    void loadTextures();
    QMatrix4x4 viewMatrix(const GlobeScene* scene) const;
    void drawFrame(unsigned target);
    void drawScene(const GlobeScene* scene, const QMatrix4x4& mvp, const QVector3D& eye,
                   const QSize& pixels);
    // Puts the scene's visible segments, its points and city lights into
    // the line buffer, in that order.
    void uploadLines(const GlobeScene* scene, const QVector3D& eye);
    void drawLabels(const GlobeScene* scene, const QMatrix4x4& mvp, const QVector3D& eye,
                    const QSize& pixels);

    std::shared_ptr<GlobeSceneExchange> exchange_;
    const GlobeScene* scene_ = nullptr;  // owned by the exchange, ours until the next take()
    QOpenGLShaderProgram* earthProgram_ = nullptr;
    QOpenGLShaderProgram* lineProgram_ = nullptr;
    unsigned sphereVao_ = 0, sphereVbo_ = 0, sphereIbo_ = 0;
    unsigned lineVao_ = 0, lineVbo_ = 0;
    unsigned earthTexture_ = 0;                          // day in rgb, night lights in alpha
    std::unique_ptr<QOpenGLFramebufferObject> picture_;  // the scene without the pulse
    std::unique_ptr<QOpenGLFramebufferObject> image_;    // renderImage's target
    std::unique_ptr<QOpenGLPaintDevice> labelDevice_;
    bool pictureStale_ = true;
    int sphereIndexCount_ = 0;
    size_t lineBufferBytes_ = 0;
    std::vector<GlobeVertex> visible_;  // what went into the line buffer last
    const GlobeScene* uploadedScene_ = nullptr;
    QVector3D uploadedEye_;
    int uploadedLines_ = 0, uploadedPoints_ = 0, uploadedCities_ = 0;
    bool glReady_ = false;
    bool texturesMissing_ = true;
    int pov_ = 0;
    int resolution_ = 1;
    int loadedResolution_ = -1;
    double distance_ = 4.0;
    float ambient_ = 0.2f;
    float yaw_ = 0.0f, pitch_ = 0.35f;  // free orbit, radians
    QPoint lastDrag_;
    QTimer throbTimer_;
    long frames_ = 0;
    QMetaObject::Connection contextGone_;
    QMatrix4x4 mvp_;
    QVector3D eye_;
};

// The globe as a widget for the tab and the tests.
class GlobeWidget : public QWidget {
    Q_OBJECT
  public:
    explicit GlobeWidget(std::shared_ptr<GlobeSceneExchange> exchange, QWidget* parent = nullptr);

    // True when an OpenGL 3.3 core context can be made on this display.
    static bool openGlAvailable();

    GlobeWindow* view() const { return view_; }
    void setPointOfView(int pov) { view_->setPointOfView(pov); }
    void setFreeCamera(double yaw, double pitch) { view_->setFreeCamera(yaw, pitch); }
    void setDistance(double earthRadii) { view_->setDistance(earthRadii); }
    void setAmbient(int percent) { view_->setAmbient(percent); }
    void setResolution(int index) { view_->setResolution(index); }
    double distance() const { return view_->distance(); }
    long framesDrawn() const { return view_->framesDrawn(); }
    // Where a scene point appeared in the last frame, widget pixels; the
    // camera's position in the scene.
    QPointF screenPoint(const QVector3D& point) const { return view_->screenPoint(point); }
    QVector3D eye() const { return view_->eye(); }
    // Draws a frame and returns it; waits (at most a few seconds) for the
    // window system to show the view first. Null if it never does.
    QImage grabFramebuffer(bool wholeFrame = true);

  signals:
    // The wheel moved the camera; Earth radii.
    void distanceChangedByWheel(double earthRadii);
    // A drag in another point of view turned the camera into the free orbit.
    void pointOfViewChangedByDrag(int pov);

  public slots:
    // A newer scene may be waiting in the exchange.
    void sceneReady() { view_->sceneReady(); }

  private:
    GlobeWindow* view_;  // owned by its container
};

}  // namespace veloran
