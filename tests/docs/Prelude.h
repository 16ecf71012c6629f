// What the snippets of the documentation take for granted: an application with a window, a view and something
// to draw. Never linked.
#pragma once

#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QtWidgets>

#include <vector>

using namespace zarvex;

extern zx3DQt::BGFXWindow window;
extern zx3DQt::BGFXRenderer renderer;
extern zx3DQt::BGFXViewContext view;
extern zx3D::FrameBuffer frameBuffer;
extern QPaintEvent* const event;

extern std::vector<zx3D::Line> lines;
extern std::vector<QVector3D> positions;
extern std::vector<zx3D::Vertex::Pos3fColorRGBA> points;
extern std::vector<zx3D::Vertex::Pos3fColorRGBA> vertices;
extern std::vector<zx3D::Vertex::Pos3fNormal3fColorRGBA> litVertices;
extern std::vector<std::uint16_t> indices;
extern zx3DQt::CameraController controller;
extern zx3DQt::Picker picker;
extern zx3DQt::PointBatch cloud;
extern std::vector<zx3DQt::ColoredPoint> scan;
extern zx3DQt::LineBatch edges;
extern zx3DQt::LineBatch contours;
extern zx3DQt::LabelBatch names;
extern std::vector<zx3DQt::LineSegment> segments;
extern std::vector<zx3DQt::LineVertex> track;
extern zx3DQt::MeshBatch part;
extern std::vector<bx::Vec3> corners, normals;
extern std::vector<std::uint32_t> triangles;
extern zx3DQt::BGFXLightingContext lights;
extern zx3DQt::BGFXMaterial steel;
extern zx3D::FontHandle font;
extern QVector3D eye, centre, up;
