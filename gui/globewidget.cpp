// Draws the globe scene with a handful of buffers and two small shader
// programs into a kept offscreen picture, labels on top with QPainter; each
// frame copies that picture to the window and adds the main satellite's
// pulse, so a frame for the pulse alone costs one copy.
#include "gui/globewidget.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QImage>
#include <QMouseEvent>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLPaintDevice>
#include <QOpenGLShaderProgram>
#include <QPainter>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/throb.h"
#include "gui/displaylistpainter.h"

namespace veloran {
namespace {

// Each triangle costs a software renderer its set-up: 64 columns keep the
// outline within half a pixel at the usual distances.
constexpr int kSphereColumns = 64, kSphereRows = 32;
constexpr float kFieldOfViewDegs = 40.0f;
// Throb steps when more than 4 ticks of 1/60 s have passed: a pulse frame
// every 250 ms moves the main satellite's brightness on each time, a cycle
// of four seconds. Such a frame only copies the kept picture.
constexpr int kThrobIntervalMs = 250;

const char* kEarthVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec2 texCoord;
uniform mat4 mvp;
uniform vec4 placement;  // xyz centre, w radius
uniform vec3 sunDirection;
out float sun;
out vec2 uv;
void main() {
    // Linear across each triangle, so the rasterizer interpolates it
    // exactly: no normal to normalize per pixel.
    sun = dot(position, sunDirection);
    uv = texCoord;
    gl_Position = mvp * vec4(placement.xyz + position * placement.w, 1.0);
})";

// One fetch per pixel: the day picture in rgb and the night lights'
// brightness in alpha.
const char* kEarthFragment = R"(#version 330 core
in float sun;
in vec2 uv;
uniform sampler2D earthImage;
uniform float ambient;
uniform int textured;     // 0: the flat colour below
uniform float cityLights; // 0 or the night lights' strength
uniform vec3 flatColour;
out vec4 colour;
void main() {
    // A twilight band about 6 degrees wide either side of the terminator.
    float day = smoothstep(-0.1, 0.1, sun);
    vec4 texel = textured == 1 ? texture(earthImage, uv) : vec4(flatColour, 0.0);
    vec3 lit = texel.rgb * (0.35 + 0.85 * max(sun, 0.0));
    vec3 dark = texel.rgb * ambient + vec3(1.0, 0.85, 0.6) * (texel.a * cityLights);
    colour = vec4(mix(dark, lit, day), 1.0);
})";

const char* kLineVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 vertexColour;
uniform mat4 mvp;
uniform float pointSize;
uniform float brightness;
out vec4 tint;
void main() {
    tint = vec4(vertexColour.rgb * brightness, vertexColour.a);
    gl_PointSize = pointSize;
    gl_Position = mvp * vec4(position, 1.0);
})";

const char* kLineFragment = R"(#version 330 core
in vec4 tint;
out vec4 colour;
void main() { colour = tint; })";

QSurfaceFormat GlobeFormat() {
    QSurfaceFormat format;
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    format.setSamples(0);
    return format;
}

QString FindImage(const QString& name) {
    for (const QString& folder : DisplayListPainter::imageFolders()) {
        const QString path = folder + "/" + name;
        if (QFile::exists(path)) return path;
    }
    return QString();
}

// Whether the point lies behind the unit sphere as seen from `eye`.
bool BehindEarth(const QVector3D& eye, const QVector3D& point) {
    const QVector3D d = point - eye;
    const float len = d.length();
    if (len <= 0.0f) return false;
    const QVector3D u = d / len;
    const float b = QVector3D::dotProduct(eye, u);
    const float c = eye.lengthSquared() - 1.0f;
    const float disc = b * b - c;
    if (disc < 0.0f) return false;
    const float t = -b - std::sqrt(disc);
    return t > 0.0f && t < len - 1e-3f;
}

}  // namespace

GlobeWindow::GlobeWindow(std::shared_ptr<GlobeSceneExchange> exchange)
    : exchange_(std::move(exchange)) {
    setFormat(GlobeFormat());
    // Keys stay with the main window (F11, Escape, the tab shortcuts).
    setFlag(Qt::WindowDoesNotAcceptFocus);
    throbTimer_.setInterval(kThrobIntervalMs);
    connect(&throbTimer_, &QTimer::timeout, this, [this] {
        Throb();
        if (scene_ != nullptr && scene_->mainPoint >= 0) update();
    });
}

GlobeWindow::~GlobeWindow() {
    QObject::disconnect(contextGone_);
    if (glReady_ && isValid()) {
        makeCurrent();
        releaseGl();
        doneCurrent();
    }
}

GlobeWidget::GlobeWidget(std::shared_ptr<GlobeSceneExchange> exchange, QWidget* parent)
    : QWidget(parent), view_(new GlobeWindow(std::move(exchange))) {
    setObjectName("globeView");
    setAccessibleName(tr("3D globe"));
    setMinimumSize(320, 240);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(QWidget::createWindowContainer(view_, this));
    connect(view_, &GlobeWindow::distanceChangedByWheel, this,
            &GlobeWidget::distanceChangedByWheel);
    connect(view_, &GlobeWindow::pointOfViewChangedByDrag, this,
            &GlobeWidget::pointOfViewChangedByDrag);
}

QImage GlobeWidget::grabFramebuffer(bool wholeFrame) {
    const QDeadlineTimer deadline(10000);
    while (!view_->isValid() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return view_->renderImage(wholeFrame);
}

bool GlobeWidget::openGlAvailable() {
    QOpenGLContext context;
    context.setFormat(GlobeFormat());
    if (!context.create()) return false;
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!surface.isValid() || !context.makeCurrent(&surface)) return false;
    const QSurfaceFormat made = context.format();
    context.doneCurrent();
    return made.version() >= qMakePair(3, 3);
}

void GlobeWindow::setPointOfView(int pov) {
    pov_ = std::clamp(pov, 0, 3);
    redraw();
}

void GlobeWindow::setFreeCamera(double yaw, double pitch) {
    pov_ = 0;
    yaw_ = static_cast<float>(yaw);
    pitch_ = std::clamp(static_cast<float>(pitch), -1.5f, 1.5f);
    redraw();
}

void GlobeWindow::setDistance(double earthRadii) {
    distance_ = std::clamp(earthRadii, kGlobeMinDistance, kGlobeMaxDistance);
    redraw();
}

void GlobeWindow::setAmbient(int percent) {
    ambient_ = 0.6f * static_cast<float>(std::clamp(percent, 0, 100)) / 100.0f;
    redraw();
}

void GlobeWindow::setResolution(int index) {
    resolution_ = std::clamp(index, 0, kGlobeWireFrame);
    redraw();
}

void GlobeWindow::sceneReady() {
    redraw();
}

void GlobeWindow::redraw() {
    pictureStale_ = true;
    update();
}

void GlobeWindow::exposeEvent(QExposeEvent* event) {
    QOpenGLWindow::exposeEvent(event);
    // The pulse runs only while the globe can be seen.
    if (isExposed())
        throbTimer_.start();
    else
        throbTimer_.stop();
}

void GlobeWindow::releaseGl() {
    if (!glReady_) return;
    glDeleteVertexArrays(1, &sphereVao_);
    glDeleteVertexArrays(1, &lineVao_);
    const unsigned buffers[] = {sphereVbo_, sphereIbo_, lineVbo_};
    glDeleteBuffers(3, buffers);
    glDeleteTextures(1, &earthTexture_);
    delete earthProgram_;
    delete lineProgram_;
    earthProgram_ = lineProgram_ = nullptr;
    picture_.reset();
    image_.reset();
    labelDevice_.reset();
    earthTexture_ = 0;
    lineBufferBytes_ = 0;
    uploadedScene_ = nullptr;
    loadedResolution_ = -1;
    glReady_ = false;
}

void GlobeWindow::initializeGL() {
    glReady_ = false;
    initializeOpenGLFunctions();
    // Each new context gets its own connection; the destructor cuts it
    // before QOpenGLWidget's own destructor destroys the context.
    QObject::disconnect(contextGone_);
    contextGone_ = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGl();
        doneCurrent();
    });
    earthProgram_ = new QOpenGLShaderProgram;
    earthProgram_->addShaderFromSourceCode(QOpenGLShader::Vertex, kEarthVertex);
    earthProgram_->addShaderFromSourceCode(QOpenGLShader::Fragment, kEarthFragment);
    earthProgram_->link();
    lineProgram_ = new QOpenGLShaderProgram;
    lineProgram_->addShaderFromSourceCode(QOpenGLShader::Vertex, kLineVertex);
    lineProgram_->addShaderFromSourceCode(QOpenGLShader::Fragment, kLineFragment);
    lineProgram_->link();
    glGenVertexArrays(1, &sphereVao_);
    glGenVertexArrays(1, &lineVao_);
    glGenBuffers(1, &sphereVbo_);
    glGenBuffers(1, &sphereIbo_);
    glGenBuffers(1, &lineVbo_);
    glGenTextures(1, &earthTexture_);
    buildSphere();
    glBindVertexArray(lineVao_);
    glBindBuffer(GL_ARRAY_BUFFER, lineVbo_);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(GlobeVertex), nullptr);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(1, 4, GL_FLOAT, GL_FALSE, sizeof(GlobeVertex),
                          reinterpret_cast<void*>(offsetof(GlobeVertex, r)));
    glEnableVertexAttribArray(1);
    glBindVertexArray(0);
    glReady_ = true;
}

void GlobeWindow::buildSphere() {
    // Columns run east from the 180-degree meridian, as the pictures do;
    // rows run south from the North Pole.
    std::vector<float> vertices;
    vertices.reserve((kSphereColumns + 1) * (kSphereRows + 1) * 5);
    for (int row = 0; row <= kSphereRows; ++row) {
        const float v = static_cast<float>(row) / kSphereRows;
        const double lat = (0.5 - v) * M_PI;
        for (int col = 0; col <= kSphereColumns; ++col) {
            const float u = static_cast<float>(col) / kSphereColumns;
            const double lonWest = M_PI - 2.0 * M_PI * u;
            const Point3F p = GlobePoint(lat, lonWest, 1.0);
            vertices.insert(vertices.end(), {p.x, p.y, p.z, u, v});
        }
    }
    std::vector<unsigned> indices;
    indices.reserve(kSphereColumns * kSphereRows * 6);
    for (int row = 0; row < kSphereRows; ++row) {
        for (int col = 0; col < kSphereColumns; ++col) {
            const unsigned a = row * (kSphereColumns + 1) + col, b = a + kSphereColumns + 1;
            indices.insert(indices.end(), {a, b, a + 1, a + 1, b, b + 1});
        }
    }
    sphereIndexCount_ = static_cast<int>(indices.size());
    glBindVertexArray(sphereVao_);
    glBindBuffer(GL_ARRAY_BUFFER, sphereVbo_);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size() * sizeof(float)),
                 vertices.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, sphereIbo_);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(indices.size() * sizeof(unsigned)), indices.data(),
                 GL_STATIC_DRAW);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 5 * sizeof(float), nullptr);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 5 * sizeof(float),
                          reinterpret_cast<void*>(3 * sizeof(float)));
    glEnableVertexAttribArray(1);
    glBindVertexArray(0);
}

void GlobeWindow::loadTextures() {
    loadedResolution_ = resolution_;
    texturesMissing_ = true;
    if (resolution_ == kGlobeWireFrame) return;
    static const int kWidths[] = {1024, 2048, 4096};
    const int width = kWidths[resolution_];
    const auto load = [width](const QString& path, QImage::Format format) {
        QImage image(path);
        if (image.isNull()) return image;
        if (image.width() != width || image.height() != width / 2)
            image = image.scaled(width, width / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return image.convertToFormat(format);
    };
    QImage day = load(FindImage(QString("map_%1.jpg").arg(width)), QImage::Format_RGBA8888);
    if (day.isNull()) return;
    // The night lights ride in the day picture's alpha: the shader reads
    // both with one fetch. Without the night picture the nights stay dark.
    const QImage night = load(FindImage("night.jpg"), QImage::Format_Grayscale8);
    for (int y = 0; y < day.height(); ++y) {
        uchar* out = day.scanLine(y);
        const uchar* lights = night.isNull() ? nullptr : night.constScanLine(y);
        for (int x = 0; x < day.width(); ++x) out[4 * x + 3] = lights != nullptr ? lights[x] : 0;
    }
    glBindTexture(GL_TEXTURE_2D, earthTexture_);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, day.width(), day.height(), 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, day.constBits());
    glGenerateMipmap(GL_TEXTURE_2D);
    // The nearest mipmap level, filtered within it: half the texel reads of
    // blending two levels, which a software renderer feels on every pixel.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    texturesMissing_ = false;
}

QMatrix4x4 GlobeWindow::viewMatrix(const GlobeScene* scene) const {
    QVector3D eye;
    QVector3D up(0.0f, 1.0f, 0.0f);
    const float d = static_cast<float>(distance_);
    const auto vec = [](const auto& p) { return QVector3D(p.x, p.y, p.z); };
    if (scene != nullptr && pov_ == 1) {
        eye = vec(scene->site).normalized() * d;
    } else if (scene != nullptr && pov_ == 2 && scene->hasMain) {
        // Behind and a little above the satellite, the Earth ahead of it.
        const QVector3D sat = vec(scene->mainSat);
        const QVector3D back = -vec(scene->mainVelocity);
        eye = sat + (back + sat.normalized() * 0.6f).normalized() * (d * 0.5f);
        up = sat.normalized();
    } else if (scene != nullptr && pov_ == 3) {
        eye = vec(scene->sunDirection).normalized() * d;
    } else {
        eye = QVector3D(std::cos(pitch_) * std::sin(yaw_), std::sin(pitch_),
                        -std::cos(pitch_) * std::cos(yaw_)) *
              d;
    }
    if (std::fabs(QVector3D::dotProduct(eye.normalized(), up)) > 0.99f) up = QVector3D(0, 0, -1);
    QMatrix4x4 view;
    view.lookAt(eye, QVector3D(0, 0, 0), up);
    return view;
}

void GlobeWindow::paintGL() {
    drawFrame(defaultFramebufferObject());
}

void GlobeWindow::drawFrame(unsigned target) {
    if (const GlobeScene* fresh = exchange_->take(); fresh != nullptr) {
        if (scene_ == nullptr) {
            // The first scene: the free camera starts over the station.
            const double lat = std::asin(std::clamp(fresh->site.y, -1.0f, 1.0f));
            yaw_ = static_cast<float>(std::atan2(fresh->site.x, -fresh->site.z));
            pitch_ = static_cast<float>(lat);
        }
        if (fresh != scene_) pictureStale_ = true;
        scene_ = fresh;
    }
    const GlobeScene* scene = scene_;
    if (!glReady_) return;
    const QSize pixels = size() * devicePixelRatio();
    if (pixels.isEmpty()) return;
    if (loadedResolution_ != resolution_) {
        loadTextures();
        pictureStale_ = true;
    }
    if (!picture_ || picture_->size() != pixels) {
        picture_ = std::make_unique<QOpenGLFramebufferObject>(
            pixels, QOpenGLFramebufferObject::CombinedDepthStencil);
        pictureStale_ = true;
    }

    const float aspect = static_cast<float>(pixels.width()) / pixels.height();
    QMatrix4x4 projection;
    projection.perspective(kFieldOfViewDegs, aspect, 0.02f, 200.0f);
    const QMatrix4x4 view = viewMatrix(scene);
    const QMatrix4x4 mvp = projection * view;
    const QVector3D eye = view.inverted().map(QVector3D(0, 0, 0));
    mvp_ = mvp;
    eye_ = eye;

    if (pictureStale_) {
        picture_->bind();
        glViewport(0, 0, pixels.width(), pixels.height());
        drawScene(scene, mvp, eye, pixels);
        pictureStale_ = false;
        ++frames_;
    }

    // The kept picture, then the pulse over it. The copy obeys the scissor
    // test, which the label painter may have used.
    glDisable(GL_SCISSOR_TEST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, picture_->handle());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, target);
    glBlitFramebuffer(0, 0, pixels.width(), pixels.height(), 0, 0, pixels.width(), pixels.height(),
                      GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, target);
    glViewport(0, 0, pixels.width(), pixels.height());
    if (scene == nullptr || scene->mainPoint < 0 || scene->mainPoint >= uploadedPoints_) return;
    const QVector3D sat(scene->mainSat.x, scene->mainSat.y, scene->mainSat.z);
    if (BehindEarth(eye, sat)) return;
    // The main satellite pulses, larger, over its steady dot.
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    // The picture stays opaque: alpha only weighs the colours.
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    glEnable(GL_PROGRAM_POINT_SIZE);
    lineProgram_->bind();
    lineProgram_->setUniformValue("mvp", mvp);
    lineProgram_->setUniformValue("pointSize", 11.0f);
    lineProgram_->setUniformValue("brightness", 0.4f + ThrobSatelliteBrightness());
    glBindVertexArray(lineVao_);
    glDrawArrays(GL_POINTS, uploadedLines_ + scene->mainPoint, 1);
    glBindVertexArray(0);
    lineProgram_->release();
}

QImage GlobeWindow::renderImage(bool wholeFrame) {
    if (!isValid() || !glReady_) return QImage();
    makeCurrent();
    const QSize pixels = size() * devicePixelRatio();
    if (!image_ || image_->size() != pixels)
        image_ = std::make_unique<QOpenGLFramebufferObject>(pixels);
    if (wholeFrame) pictureStale_ = true;
    drawFrame(image_->handle());
    const QImage image = image_->toImage();
    doneCurrent();
    return image;
}

void GlobeWindow::drawScene(const GlobeScene* scene, const QMatrix4x4& mvp, const QVector3D& eye,
                            const QSize& pixels) {
    glClearColor(0.01f, 0.01f, 0.04f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    // The spheres' far halves are never seen: culled, they cost no pixels.
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    // The spheres are opaque: no blending, which would read every pixel back.
    glDisable(GL_BLEND);
    glEnable(GL_PROGRAM_POINT_SIZE);

    const Vector3F sun = scene != nullptr ? scene->sunDirection : Vector3F{0.0f, 0.0f, -1.0f};
    const bool wire = resolution_ == kGlobeWireFrame;
    earthProgram_->bind();
    earthProgram_->setUniformValue("mvp", mvp);
    earthProgram_->setUniformValue("sunDirection", QVector3D(sun.x, sun.y, sun.z));
    earthProgram_->setUniformValue("ambient", ambient_);
    earthProgram_->setUniformValue("earthImage", 0);
    earthProgram_->setUniformValue("placement", QVector4D(0, 0, 0, 1));
    earthProgram_->setUniformValue("textured", wire || texturesMissing_ ? 0 : 1);
    earthProgram_->setUniformValue(
        "cityLights", !wire && scene != nullptr && scene->options.cityLights ? 0.9f : 0.0f);
    earthProgram_->setUniformValue(
        "flatColour", wire ? QVector3D(0.3f, 0.75f, 1.0f) : QVector3D(0.12f, 0.28f, 0.55f));
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, earthTexture_);
    glBindVertexArray(sphereVao_);
    if (wire) {
        // The wire frame hides its far side behind a dark sphere.
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        earthProgram_->setUniformValue("flatColour", QVector3D(0.0f, 0.0f, 0.0f));
        earthProgram_->setUniformValue("placement", QVector4D(0, 0, 0, 0.995f));
        glDrawElements(GL_TRIANGLES, sphereIndexCount_, GL_UNSIGNED_INT, nullptr);
        earthProgram_->setUniformValue("flatColour", QVector3D(0.3f, 0.75f, 1.0f));
        earthProgram_->setUniformValue("placement", QVector4D(0, 0, 0, 1));
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    }
    glDrawElements(GL_TRIANGLES, sphereIndexCount_, GL_UNSIGNED_INT, nullptr);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    if (scene != nullptr && scene->hasMoon) {
        earthProgram_->setUniformValue("textured", 0);
        earthProgram_->setUniformValue("cityLights", 0.0f);
        earthProgram_->setUniformValue("ambient", 0.04f);
        earthProgram_->setUniformValue("flatColour", QVector3D(0.72f, 0.71f, 0.68f));
        earthProgram_->setUniformValue(
            "placement", QVector4D(scene->moon.x, scene->moon.y, scene->moon.z, scene->moonRadius));
        glDrawElements(GL_TRIANGLES, sphereIndexCount_, GL_UNSIGNED_INT, nullptr);
    }
    glBindVertexArray(0);

    if (scene != nullptr) {
        glEnable(GL_BLEND);
        // The picture stays opaque: alpha only weighs the colours.
        glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
        lineProgram_->bind();
        lineProgram_->setUniformValue("mvp", mvp);
        lineProgram_->setUniformValue("brightness", 1.0f);
        lineProgram_->setUniformValue("pointSize", 3.0f);
        glBindVertexArray(lineVao_);
        glBindBuffer(GL_ARRAY_BUFFER, lineVbo_);
        // The vertices go up only when the scene or the camera changed: a
        // frame for the pulse alone draws what the buffer holds.
        if (scene != uploadedScene_ || eye != uploadedEye_) uploadLines(scene, eye);
        glDrawArrays(GL_LINES, 0, uploadedLines_);
        if (uploadedCities_ > 0 && resolution_ == kGlobeWireFrame) {
            lineProgram_->setUniformValue("pointSize", 2.0f);
            glDrawArrays(GL_POINTS, uploadedLines_ + uploadedPoints_, uploadedCities_);
        }
        lineProgram_->setUniformValue("pointSize", 6.0f);
        glDrawArrays(GL_POINTS, uploadedLines_, uploadedPoints_);
        glBindVertexArray(0);
        lineProgram_->release();
    }
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    if (scene != nullptr && scene->options.labels) drawLabels(scene, mvp, eye, pixels);
}

void GlobeWindow::uploadLines(const GlobeScene* scene, const QVector3D& eye) {
    // A software renderer pays for every segment it sets up, seen or not:
    // segments wholly behind the Earth stay home. The hidden region (the
    // Earth and its shadow from the eye) is convex, so a segment with both
    // ends in it is hidden all along.
    visible_.clear();
    const std::vector<GlobeVertex>& lines = scene->lines;
    for (size_t i = 0; i + 1 < lines.size(); i += 2) {
        const GlobeVertex& a = lines[i];
        const GlobeVertex& b = lines[i + 1];
        if (BehindEarth(eye, QVector3D(a.x, a.y, a.z)) &&
            BehindEarth(eye, QVector3D(b.x, b.y, b.z)))
            continue;
        visible_.push_back(a);
        visible_.push_back(b);
    }
    uploadedLines_ = static_cast<int>(visible_.size());
    uploadedPoints_ = static_cast<int>(scene->points.size());
    uploadedCities_ = static_cast<int>(scene->cityLights.size());
    visible_.insert(visible_.end(), scene->points.begin(), scene->points.end());
    visible_.insert(visible_.end(), scene->cityLights.begin(), scene->cityLights.end());
    const size_t need = visible_.size() * sizeof(GlobeVertex);
    if (need > lineBufferBytes_) {
        lineBufferBytes_ = need + need / 2;
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(lineBufferBytes_), nullptr,
                     GL_DYNAMIC_DRAW);
    }
    if (need > 0)
        glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(need), visible_.data());
    uploadedScene_ = scene;
    uploadedEye_ = eye;
}

void GlobeWindow::drawLabels(const GlobeScene* scene, const QMatrix4x4& mvp, const QVector3D& eye,
                             const QSize& pixels) {
    // The painter draws into the bound framebuffer, the kept picture.
    if (!labelDevice_) labelDevice_ = std::make_unique<QOpenGLPaintDevice>();
    labelDevice_->setSize(pixels);
    labelDevice_->setDevicePixelRatio(devicePixelRatio());
    QPainter painter(labelDevice_.get());
    painter.setRenderHint(QPainter::TextAntialiasing);
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    for (const GlobeLabel& label : scene->labels) {
        const QVector3D at(label.at.x, label.at.y, label.at.z);
        if (BehindEarth(eye, at)) continue;
        if ((mvp * QVector4D(at, 1.0f)).w() <= 0.0f) continue;
        const QPointF p = screenPoint(at);
        painter.setPen(QColor::fromRgbF(label.r, label.g, label.b));
        painter.drawText(p + QPointF(7.0, -5.0), QString::fromUtf8(label.text));
    }
}

QPointF GlobeWindow::screenPoint(const QVector3D& point) const {
    const QVector4D clip = mvp_ * QVector4D(point, 1.0f);
    if (clip.w() <= 0.0f) return QPointF(-1.0, -1.0);
    return QPointF((clip.x() / clip.w() * 0.5 + 0.5) * width(),
                   (0.5 - clip.y() / clip.w() * 0.5) * height());
}

void GlobeWindow::mousePressEvent(QMouseEvent* event) {
    lastDrag_ = event->position().toPoint();
}

void GlobeWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return;
    const QPoint p = event->position().toPoint();
    const QPoint delta = p - lastDrag_;
    lastDrag_ = p;
    if (pov_ != 0) {
        // Dragging takes the camera over from wherever it looks from now.
        const QVector3D eye = viewMatrix(scene_).inverted().map(QVector3D(0, 0, 0)).normalized();
        yaw_ = std::atan2(eye.x(), -eye.z());
        pitch_ = std::asin(std::clamp(eye.y(), -1.0f, 1.0f));
        pov_ = 0;
        emit pointOfViewChangedByDrag(0);
    }
    yaw_ -= delta.x() * 0.008f;
    pitch_ = std::clamp(pitch_ + delta.y() * 0.008f, -1.5f, 1.5f);
    redraw();
}

void GlobeWindow::wheelEvent(QWheelEvent* event) {
    const double steps = event->angleDelta().y() / 120.0;
    setDistance(distance_ * std::pow(0.9, steps));
    emit distanceChangedByWheel(distance_);
    event->accept();
}

}  // namespace veloran
