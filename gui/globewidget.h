// The 3D globe on OpenGL 3.3 core: the Earth textured by day and lit by its
// cities at night, the Moon shaded, and the scene's lines, points and labels
// as the core built them. The camera (point of view, distance, drag and
// wheel) and the ambient light are the widget's own; the scene arrives
// through the exchange and is never waited for.
#pragma once

#include <QMatrix4x4>
#include <QOpenGLExtraFunctions>
#include <QOpenGLWidget>
#include <QPoint>
#include <QTimer>
#include <memory>
#include <vector>

#include "views/globeexchange.h"

class QOpenGLShaderProgram;

namespace veloran {

class GlobeWidget : public QOpenGLWidget, protected QOpenGLExtraFunctions {
    Q_OBJECT
  public:
    explicit GlobeWidget(std::shared_ptr<GlobeSceneExchange> exchange, QWidget* parent = nullptr);
    ~GlobeWidget() override;

    // True when an OpenGL 3.3 core context can be made on this display.
    static bool openGlAvailable();

    void setPointOfView(int pov);
    // The free orbit's camera: longitude-like turn and height angle, radians.
    void setFreeCamera(double yaw, double pitch);
    void setDistance(double earthRadii);
    void setAmbient(int percent);  // night side's light, 0..100
    // 0..2 the texture widths 1024, 2048, 4096; 3 the wire frame.
    void setResolution(int index);
    double distance() const { return distance_; }
    // Frames drawn since creation.
    long framesDrawn() const { return frames_; }
    // Where a scene point appeared in the last frame, widget pixels; the
    // camera's position in the scene.
    QPointF screenPoint(const QVector3D& point) const;
    QVector3D eye() const { return eye_; }

  signals:
    // The wheel moved the camera; Earth radii.
    void distanceChangedByWheel(double earthRadii);
    // A drag in another point of view turned the camera into the free orbit.
    void pointOfViewChangedByDrag(int pov);

  public slots:
    // A newer scene may be waiting in the exchange.
    void sceneReady();

  protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void releaseGl();
    void buildSphere();
    void loadTextures();
    QMatrix4x4 viewMatrix(const GlobeScene* scene) const;
    // Puts the scene's visible segments, its points and city lights into
    // the line buffer, in that order.
    void uploadLines(const GlobeScene* scene, const QVector3D& eye);
    void drawLabels(const GlobeScene* scene, const QMatrix4x4& mvp, const QVector3D& eye);

    std::shared_ptr<GlobeSceneExchange> exchange_;
    const GlobeScene* scene_ = nullptr;  // owned by the exchange, ours until the next take()
    QOpenGLShaderProgram* earthProgram_ = nullptr;
    QOpenGLShaderProgram* lineProgram_ = nullptr;
    unsigned sphereVao_ = 0, sphereVbo_ = 0, sphereIbo_ = 0;
    unsigned lineVao_ = 0, lineVbo_ = 0;
    unsigned earthTexture_ = 0;  // day in rgb, night lights in alpha
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

}  // namespace veloran
