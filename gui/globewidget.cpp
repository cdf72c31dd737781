// Draws the globe scene with a handful of buffers and two small shader
// programs; labels go on top with QPainter.
#include "gui/globewidget.h"

#include <QFile>
#include <QImage>
#include <QMouseEvent>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/throb.h"
#include "gui/displaylistpainter.h"

namespace veloran {
namespace {

constexpr int kSphereColumns = 96, kSphereRows = 48;
constexpr float kFieldOfViewDegs = 40.0f;
// Throb steps when more than 4 ticks of 1/60 s have passed: a repaint every
// 200 ms moves the main satellite's brightness on each time, a pulse of
// about three seconds, while the idle window stays near its CPU budget.
constexpr int kThrobIntervalMs = 200;

const char* kEarthVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec2 texCoord;
uniform mat4 mvp;
uniform vec4 placement;  // xyz centre, w radius
out vec3 normal;
out vec2 uv;
void main() {
    normal = position;
    uv = texCoord;
    gl_Position = mvp * vec4(placement.xyz + position * placement.w, 1.0);
})";

const char* kEarthFragment = R"(#version 330 core
in vec3 normal;
in vec2 uv;
uniform sampler2D dayImage;
uniform sampler2D nightImage;
uniform vec3 sunDirection;
uniform float ambient;
uniform int textured;     // 0: the flat colour below
uniform int cityLights;   // the night picture on the dark side
uniform vec3 flatColour;
out vec4 colour;
void main() {
    float sun = dot(normalize(normal), sunDirection);
    // A twilight band about 6 degrees wide either side of the terminator.
    float day = smoothstep(-0.1, 0.1, sun);
    vec3 base = textured == 1 ? texture(dayImage, uv).rgb : flatColour;
    vec3 lit = base * (0.35 + 0.85 * max(sun, 0.0));
    vec3 dark = base * ambient;
    if (cityLights == 1) dark += texture(nightImage, uv).rgb * 0.9;
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
bool Hidden(const QVector3D& eye, const QVector3D& point) {
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

GlobeWidget::GlobeWidget(std::shared_ptr<GlobeSceneExchange> exchange, QWidget* parent)
    : QOpenGLWidget(parent), exchange_(std::move(exchange)) {
    setObjectName("globeView");
    setAccessibleName(tr("3D globe"));
    setFormat(GlobeFormat());
    setMinimumSize(320, 240);
    setFocusPolicy(Qt::StrongFocus);
    throbTimer_.setInterval(kThrobIntervalMs);
    connect(&throbTimer_, &QTimer::timeout, this, [this] {
        Throb();
        update();
    });
}

GlobeWidget::~GlobeWidget() {
    QObject::disconnect(contextGone_);
    if (glReady_ && context() != nullptr) {
        makeCurrent();
        releaseGl();
        doneCurrent();
    }
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

void GlobeWidget::setPointOfView(int pov) {
    pov_ = std::clamp(pov, 0, 3);
    update();
}

void GlobeWidget::setDistance(double earthRadii) {
    distance_ = std::clamp(earthRadii, kGlobeMinDistance, kGlobeMaxDistance);
    update();
}

void GlobeWidget::setAmbient(int percent) {
    ambient_ = 0.6f * static_cast<float>(std::clamp(percent, 0, 100)) / 100.0f;
    update();
}

void GlobeWidget::setResolution(int index) {
    resolution_ = std::clamp(index, 0, kGlobeWireFrame);
    update();
}

void GlobeWidget::sceneReady() {
    update();
}

void GlobeWidget::showEvent(QShowEvent* event) {
    QOpenGLWidget::showEvent(event);
    throbTimer_.start();
}

void GlobeWidget::hideEvent(QHideEvent* event) {
    throbTimer_.stop();
    QOpenGLWidget::hideEvent(event);
}

void GlobeWidget::releaseGl() {
    if (!glReady_) return;
    glDeleteVertexArrays(1, &sphereVao_);
    glDeleteVertexArrays(1, &lineVao_);
    const unsigned buffers[] = {sphereVbo_, sphereIbo_, lineVbo_};
    glDeleteBuffers(3, buffers);
    const unsigned textures[] = {dayTexture_, nightTexture_};
    glDeleteTextures(2, textures);
    delete earthProgram_;
    delete lineProgram_;
    earthProgram_ = lineProgram_ = nullptr;
    dayTexture_ = nightTexture_ = 0;
    lineBufferBytes_ = 0;
    loadedResolution_ = -1;
    glReady_ = false;
}

void GlobeWidget::initializeGL() {
    // Moving the widget to another top-level window (full screen) gives it a
    // new context: everything is made again here.
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
    glGenTextures(1, &dayTexture_);
    glGenTextures(1, &nightTexture_);
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

void GlobeWidget::buildSphere() {
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

void GlobeWidget::loadTextures() {
    loadedResolution_ = resolution_;
    texturesMissing_ = false;
    if (resolution_ == kGlobeWireFrame) return;
    static const int kWidths[] = {1024, 2048, 4096};
    const int width = kWidths[resolution_];
    const auto upload = [this, width](unsigned texture, const QString& path) {
        QImage image(path);
        if (image.isNull()) return false;
        if (image.width() != width)
            image = image.scaled(width, width / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        image = image.convertToFormat(QImage::Format_RGBA8888);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.width(), image.height(), 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, image.constBits());
        glGenerateMipmap(GL_TEXTURE_2D);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        return true;
    };
    texturesMissing_ = !upload(dayTexture_, FindImage(QString("map_%1.jpg").arg(width)));
    upload(nightTexture_, FindImage("night.jpg"));
}

QMatrix4x4 GlobeWidget::viewMatrix(const GlobeScene* scene) const {
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

void GlobeWidget::paintGL() {
    if (const GlobeScene* fresh = exchange_->take(); fresh != nullptr) {
        if (scene_ == nullptr) {
            // The first scene: the free camera starts over the station.
            const double lat = std::asin(std::clamp(fresh->site.y, -1.0f, 1.0f));
            yaw_ = static_cast<float>(std::atan2(fresh->site.x, -fresh->site.z));
            pitch_ = static_cast<float>(lat);
        }
        scene_ = fresh;
    }
    const GlobeScene* scene = scene_;
    if (!glReady_) return;
    if (loadedResolution_ != resolution_) loadTextures();
    ++frames_;

    glClearColor(0.01f, 0.01f, 0.04f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_PROGRAM_POINT_SIZE);

    const float aspect = height() > 0 ? static_cast<float>(width()) / height() : 1.0f;
    QMatrix4x4 projection;
    projection.perspective(kFieldOfViewDegs, aspect, 0.02f, 200.0f);
    const QMatrix4x4 view = viewMatrix(scene);
    const QMatrix4x4 mvp = projection * view;
    const QVector3D eye = view.inverted().map(QVector3D(0, 0, 0));
    mvp_ = mvp;
    eye_ = eye;

    const Vector3F sun = scene != nullptr ? scene->sunDirection : Vector3F{0.0f, 0.0f, -1.0f};
    const bool wire = resolution_ == kGlobeWireFrame;
    earthProgram_->bind();
    earthProgram_->setUniformValue("mvp", mvp);
    earthProgram_->setUniformValue("sunDirection", QVector3D(sun.x, sun.y, sun.z));
    earthProgram_->setUniformValue("ambient", ambient_);
    earthProgram_->setUniformValue("dayImage", 0);
    earthProgram_->setUniformValue("nightImage", 1);
    earthProgram_->setUniformValue("placement", QVector4D(0, 0, 0, 1));
    earthProgram_->setUniformValue("textured", wire || texturesMissing_ ? 0 : 1);
    earthProgram_->setUniformValue("cityLights",
                                   !wire && scene != nullptr && scene->options.cityLights ? 1 : 0);
    earthProgram_->setUniformValue(
        "flatColour", wire ? QVector3D(0.3f, 0.75f, 1.0f) : QVector3D(0.12f, 0.28f, 0.55f));
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, dayTexture_);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, nightTexture_);
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
        earthProgram_->setUniformValue("cityLights", 0);
        earthProgram_->setUniformValue("ambient", 0.04f);
        earthProgram_->setUniformValue("flatColour", QVector3D(0.72f, 0.71f, 0.68f));
        earthProgram_->setUniformValue(
            "placement", QVector4D(scene->moon.x, scene->moon.y, scene->moon.z, scene->moonRadius));
        glDrawElements(GL_TRIANGLES, sphereIndexCount_, GL_UNSIGNED_INT, nullptr);
    }
    glBindVertexArray(0);

    if (scene != nullptr) {
        lineProgram_->bind();
        lineProgram_->setUniformValue("mvp", mvp);
        lineProgram_->setUniformValue("brightness", 1.0f);
        lineProgram_->setUniformValue("pointSize", 3.0f);
        glBindVertexArray(lineVao_);
        glBindBuffer(GL_ARRAY_BUFFER, lineVbo_);
        const size_t lineBytes = scene->lines.size() * sizeof(GlobeVertex);
        const size_t pointBytes = scene->points.size() * sizeof(GlobeVertex);
        const size_t cityBytes = scene->cityLights.size() * sizeof(GlobeVertex);
        const size_t need = lineBytes + pointBytes + cityBytes;
        if (need > lineBufferBytes_) {
            lineBufferBytes_ = need + need / 2;
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(lineBufferBytes_), nullptr,
                         GL_DYNAMIC_DRAW);
        }
        if (need > 0) {
            glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(lineBytes),
                            scene->lines.data());
            glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(lineBytes),
                            static_cast<GLsizeiptr>(pointBytes), scene->points.data());
            glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(lineBytes + pointBytes),
                            static_cast<GLsizeiptr>(cityBytes), scene->cityLights.data());
        }
        const GLint lineCount = static_cast<GLint>(scene->lines.size());
        const GLint pointCount = static_cast<GLint>(scene->points.size());
        glDrawArrays(GL_LINES, 0, lineCount);
        if (!scene->cityLights.empty() && resolution_ == kGlobeWireFrame) {
            lineProgram_->setUniformValue("pointSize", 2.0f);
            glDrawArrays(GL_POINTS, lineCount + pointCount,
                         static_cast<GLsizei>(scene->cityLights.size()));
        }
        lineProgram_->setUniformValue("pointSize", 6.0f);
        glDrawArrays(GL_POINTS, lineCount, pointCount);
        if (scene->mainPoint >= 0) {
            // The main satellite pulses, larger, over its steady dot.
            lineProgram_->setUniformValue("pointSize", 11.0f);
            lineProgram_->setUniformValue("brightness", 0.4f + ThrobSatelliteBrightness());
            glDrawArrays(GL_POINTS, lineCount + scene->mainPoint, 1);
        }
        glBindVertexArray(0);
        lineProgram_->release();
    }
    glDisable(GL_DEPTH_TEST);
    if (scene != nullptr && scene->options.labels) drawLabels(scene, mvp, eye);
}

void GlobeWidget::drawLabels(const GlobeScene* scene, const QMatrix4x4& mvp, const QVector3D& eye) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    for (const GlobeLabel& label : scene->labels) {
        const QVector3D at(label.at.x, label.at.y, label.at.z);
        if (Hidden(eye, at)) continue;
        if ((mvp * QVector4D(at, 1.0f)).w() <= 0.0f) continue;
        const QPointF p = screenPoint(at);
        painter.setPen(QColor::fromRgbF(label.r, label.g, label.b));
        painter.drawText(p + QPointF(7.0, -5.0), QString::fromUtf8(label.text));
    }
}

QPointF GlobeWidget::screenPoint(const QVector3D& point) const {
    const QVector4D clip = mvp_ * QVector4D(point, 1.0f);
    if (clip.w() <= 0.0f) return QPointF(-1.0, -1.0);
    return QPointF((clip.x() / clip.w() * 0.5 + 0.5) * width(),
                   (0.5 - clip.y() / clip.w() * 0.5) * height());
}

void GlobeWidget::mousePressEvent(QMouseEvent* event) {
    lastDrag_ = event->position().toPoint();
}

void GlobeWidget::mouseMoveEvent(QMouseEvent* event) {
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
    update();
}

void GlobeWidget::wheelEvent(QWheelEvent* event) {
    const double steps = event->angleDelta().y() / 120.0;
    setDistance(distance_ * std::pow(0.9, steps));
    emit distanceChangedByWheel(distance_);
    event->accept();
}

}  // namespace veloran
