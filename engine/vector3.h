// Single-precision points, vectors and 4x4 rotation matrices for the 3D
// pieces of the engine (site point, antenna squint). Row vectors, matrices
// applied on the right, right-handed rotations, as 3D scene libraries use.
#pragma once

namespace veloran {

struct Point3F {
    float x, y, z;
};

struct Vector3F {
    float x, y, z;
};

struct Matrix4x4F {
    float value[4][4];
};

Matrix4x4F MatrixIdentity();
Matrix4x4F MatrixRotateX(float radians);
Matrix4x4F MatrixRotateY(float radians);
Matrix4x4F MatrixRotateZ(float radians);
// Rotation about X, then Y, then Z, about `origin` (points move, vectors turn).
Matrix4x4F MatrixRotateAboutPoint(const Point3F* origin, float xAngle, float yAngle, float zAngle);
// a then b.
Matrix4x4F MatrixMultiply(const Matrix4x4F* a, const Matrix4x4F* b);

Point3F TransformPoint(const Point3F* p, const Matrix4x4F* m);
// Vectors ignore the translation part.
Vector3F TransformVector(const Vector3F* v, const Matrix4x4F* m);
// A zero vector stays zero.
Vector3F Normalize(const Vector3F* v);
float Dot(const Vector3F* a, const Vector3F* b);
Vector3F PointDifference(const Point3F* to, const Point3F* from);

}  // namespace veloran
