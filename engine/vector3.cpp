// Single-precision rotations for the 3D pieces of the engine.

#include "engine/vector3.h"

#include <cmath>

namespace veloran {

Matrix4x4F MatrixIdentity() {
    Matrix4x4F m{};
    for (int i = 0; i < 4; ++i) m.value[i][i] = 1.0f;
    return m;
}

Matrix4x4F MatrixRotateX(float radians) {
    Matrix4x4F m = MatrixIdentity();
    const float c = std::cos(radians), s = std::sin(radians);
    m.value[1][1] = c;
    m.value[1][2] = s;
    m.value[2][1] = -s;
    m.value[2][2] = c;
    return m;
}

Matrix4x4F MatrixRotateY(float radians) {
    Matrix4x4F m = MatrixIdentity();
    const float c = std::cos(radians), s = std::sin(radians);
    m.value[0][0] = c;
    m.value[0][2] = -s;
    m.value[2][0] = s;
    m.value[2][2] = c;
    return m;
}

Matrix4x4F MatrixRotateZ(float radians) {
    Matrix4x4F m = MatrixIdentity();
    const float c = std::cos(radians), s = std::sin(radians);
    m.value[0][0] = c;
    m.value[0][1] = s;
    m.value[1][0] = -s;
    m.value[1][1] = c;
    return m;
}

Matrix4x4F MatrixMultiply(const Matrix4x4F* a, const Matrix4x4F* b) {
    Matrix4x4F m{};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            for (int k = 0; k < 4; ++k) m.value[i][j] += a->value[i][k] * b->value[k][j];
    return m;
}

Matrix4x4F MatrixRotateAboutPoint(const Point3F* origin, float xAngle, float yAngle, float zAngle) {
    Matrix4x4F m = MatrixIdentity();
    m.value[3][0] = -origin->x;
    m.value[3][1] = -origin->y;
    m.value[3][2] = -origin->z;
    const Matrix4x4F rx = MatrixRotateX(xAngle), ry = MatrixRotateY(yAngle),
                     rz = MatrixRotateZ(zAngle);
    m = MatrixMultiply(&m, &rx);
    m = MatrixMultiply(&m, &ry);
    m = MatrixMultiply(&m, &rz);
    Matrix4x4F back = MatrixIdentity();
    back.value[3][0] = origin->x;
    back.value[3][1] = origin->y;
    back.value[3][2] = origin->z;
    return MatrixMultiply(&m, &back);
}

Point3F TransformPoint(const Point3F* p, const Matrix4x4F* m) {
    const auto& v = m->value;
    return Point3F{p->x * v[0][0] + p->y * v[1][0] + p->z * v[2][0] + v[3][0],
                   p->x * v[0][1] + p->y * v[1][1] + p->z * v[2][1] + v[3][1],
                   p->x * v[0][2] + p->y * v[1][2] + p->z * v[2][2] + v[3][2]};
}

Vector3F TransformVector(const Vector3F* p, const Matrix4x4F* m) {
    const auto& v = m->value;
    return Vector3F{p->x * v[0][0] + p->y * v[1][0] + p->z * v[2][0],
                    p->x * v[0][1] + p->y * v[1][1] + p->z * v[2][1],
                    p->x * v[0][2] + p->y * v[1][2] + p->z * v[2][2]};
}

Vector3F Normalize(const Vector3F* v) {
    const float length = std::sqrt(v->x * v->x + v->y * v->y + v->z * v->z);
    if (length == 0.0f) return *v;
    return Vector3F{v->x / length, v->y / length, v->z / length};
}

float Dot(const Vector3F* a, const Vector3F* b) {
    return a->x * b->x + a->y * b->y + a->z * b->z;
}

Vector3F PointDifference(const Point3F* to, const Point3F* from) {
    return Vector3F{to->x - from->x, to->y - from->y, to->z - from->z};
}

}  // namespace veloran
