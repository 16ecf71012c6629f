// W7: a grid of 400 stippled lines with 80 numbers, and three axes of two pixels with cones at their ends.
#include "runner/Floor.h"
#include "runner/Scene.h"
#include "workloads/TextByHand.h"
#include "workloads/WideLinesByHand.h"
#include "workloads/Workloads.h"

#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/CoordinateGrid.h>
#include <zx3DQt/Shapes.h>

#include <zx3D/Text.h>

#include <QRectF>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

namespace zarvex::benchmarks {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr int kPixelSize = 14;
constexpr std::size_t kLongestNumber = 8;
constexpr float kGridSpacing = 0.05f;
constexpr float kNumberSpacing = 0.25f;
constexpr float kAxisLength = 2.5f;
constexpr std::uint16_t kAxisWidth = 2;
constexpr int kConeSegments = 32;
constexpr QColor kGridColor(110, 120, 140);
constexpr QColor kNumberColor(200, 205, 215);
QRectF const kGridRect(-5.0, -5.0, 10.0, 10.0);
QRectF const kAxesRect(-kAxisLength, -kAxisLength, 2.0 * kAxisLength, 2.0 * kAxisLength);

/// Dashes as 16 bits for the program, and 1 for their length.
constexpr std::uint16_t kGridPattern = 0xf0f0;
constexpr std::uint16_t kNegativePattern = 0x0f0f;
constexpr std::uint16_t kSolidPattern = 0xffff;

zx3D::Color ToColor(QColor const& color) {
    return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

/// Two significant digits: the same text on both sides.
std::string ToText(float value) {
    char text[16];
    std::snprintf(text, sizeof(text), "%.2g", static_cast<double>(value));
    return text;
}

zx3DQt::CoordinateGridStyle GridStyle(float spacing, zx3D::FontHandle font) {
    zx3DQt::CoordinateGridStyle style;
    style.gridSpacing = QVector2D(spacing, spacing);
    style.gridMargins = QVector2D(0.0f, 0.0f);
    style.lineColor = kGridColor;
    style.frameTickLabels.emplace();
    style.frameTickLabels->font = font;
    style.frameTickLabels->color = kNumberColor;
    auto const toText = [](float value) { return QString::fromStdString(ToText(value)); };
    style.frameTickLabels->tickLabelFunctions = {toText, toText};
    return style;
}

zx3DQt::CoordinateAxesStyle AxesStyle() {
    zx3DQt::CoordinateAxesStyle style;
    style.lineWidths = {kAxisWidth, kAxisWidth, kAxisWidth};
    style.arrowHeads.emplace();
    return style;
}

/// Positions of the grid's lines, one step after the other as the library takes them.
std::vector<float> Steps(float spacing) {
    std::vector<float> steps;
    for (float position = std::trunc(-5.0f / spacing) * spacing; position < 5.0f; position += spacing)
        steps.push_back(position);
    return steps;
}

std::vector<zx3D::Line> GridLines() {
    zx3D::Color const color = ToColor(kGridColor);
    std::vector<zx3D::Line> lines;
    for (float const x : Steps(kGridSpacing)) {
        if (x != 0.0f)
            lines.push_back({{x, 5.0f, 0.0f}, {x, -5.0f, 0.0f}, color});
    }
    for (float const y : Steps(kGridSpacing)) {
        if (y != 0.0f)
            lines.push_back({{-5.0f, -y, 0.0f}, {5.0f, -y, 0.0f}, color});
    }
    return lines;
}

struct Number {
    bx::Vec3 place{0.0f, 0.0f, 0.0f}; ///< of the lower left, in the world
    float value = 0.0f;
};

std::vector<Number> Numbers() {
    std::vector<Number> numbers;
    for (float const x : Steps(kNumberSpacing))
        numbers.push_back({{x + 1.0f, -5.0f, 0.1f}, x});
    for (float const y : Steps(kNumberSpacing))
        numbers.push_back({{-5.0f + 1.0f, -y, 0.1f}, -y});
    return numbers;
}

struct HalfAxis {
    zx3D::Line line;
    std::uint16_t pattern;
};

/// In the library's order: the dashed halves, then the solid ones.
std::vector<HalfAxis> HalfAxes() {
    constexpr float l = kAxisLength;
    std::array<bx::Vec3, 6> const ends{{{-l, 0.0f, 0.0f},
                                        {0.0f, l, 0.0f},
                                        {0.0f, 0.0f, -l},
                                        {l, 0.0f, 0.0f},
                                        {0.0f, -l, 0.0f},
                                        {0.0f, 0.0f, l}}};
    std::vector<HalfAxis> axes;
    for (std::size_t i = 0; i < ends.size(); ++i) {
        zx3D::Color const color = ToColor(zx3DQt::CoordinateAxesStyle::defaultColors[i % 3]);
        axes.push_back({{ends[i], {0.0f, 0.0f, 0.0f}, color}, i < 3 ? kNegativePattern : kSolidPattern});
    }
    return axes;
}

struct Mesh {
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
};

/// A closed cone of height 0.3 with its tip 2 from the origin.
Mesh Cone(int axis, float sign) {
    std::array<QVector3D, 3> const unit{{{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}}};
    QVector3D const direction = sign * unit[static_cast<std::size_t>(axis)];
    QVector3D const u = QVector3D::crossProduct(direction, unit[axis == 0 ? 1 : 0]);
    QVector3D const w = QVector3D::crossProduct(u, direction);
    zx3D::Color const color =
        ToColor(zx3DQt::CoordinateAxesArrowHeadStyle::defaultColors[static_cast<std::size_t>(axis)]);
    auto const vertex = [&color](QVector3D const& p) { return Vertex{{p.x(), p.y(), p.z()}, color}; };
    QVector3D const base = 1.7f * direction;
    Mesh cone{{vertex(2.0f * direction), vertex(base)}, {}};
    for (int i = 0; i < kConeSegments; ++i) {
        float const angle = 6.2831855f * static_cast<float>(i) / kConeSegments;
        cone.vertices.push_back(vertex(base + 0.1f * (u * std::cos(angle) + w * std::sin(angle))));
    }
    auto const onEdge = [](int i) { return static_cast<std::uint16_t>(i % kConeSegments + 2); };
    for (int i = 0; i < kConeSegments; ++i)
        cone.indices.insert(cone.indices.end(), {onEdge(i), onEdge(i + 1), 0});
    for (int i = 0; i < kConeSegments; ++i)
        cone.indices.insert(cone.indices.end(), {onEdge(i), 1, onEdge(i + 1)});
    return cone;
}

std::vector<Mesh> Cones() {
    std::vector<Mesh> cones;
    for (int axis = 0; axis < 3; ++axis) {
        cones.push_back(Cone(axis, 1.0f));
        cones.push_back(Cone(axis, -1.0f));
    }
    return cones;
}

/// Space for both, filled.
void SetTransientBuffers(bgfx::VertexLayout const& layout, std::vector<Vertex> const& vertices,
                         std::vector<std::uint16_t> const& indices) {
    bgfx::TransientVertexBuffer vertexBuffer;
    bgfx::TransientIndexBuffer indexBuffer;
    bgfx::allocTransientBuffers(&vertexBuffer, layout, static_cast<std::uint32_t>(vertices.size()),
                                &indexBuffer, static_cast<std::uint32_t>(indices.size()));
    std::copy(vertices.begin(), vertices.end(), reinterpret_cast<Vertex*>(vertexBuffer.data));
    std::copy(indices.begin(), indices.end(), reinterpret_cast<std::uint16_t*>(indexBuffer.data));
    bgfx::setVertexBuffer(0, &vertexBuffer);
    bgfx::setIndexBuffer(&indexBuffer);
}

/// The grid's lines as vertices and indices.
Mesh ToMesh(std::vector<zx3D::Line> const& lines) {
    Mesh mesh;
    for (zx3D::Line const& line : lines) {
        mesh.vertices.insert(mesh.vertices.end(),
                             {Vertex{line.start, line.color}, Vertex{line.end, line.color}});
        for (int i = 0; i < 2; ++i)
            mesh.indices.push_back(static_cast<std::uint16_t>(mesh.indices.size()));
    }
    return mesh;
}

class CoordinateScene : public Scene {
public:
    CoordinateScene() : Scene({4.0f, 3.0f, 5.0f}) {}

    ~CoordinateScene() override { zx3D::DestroyFont(m_font); }

private:
    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        zx3DQt::DrawCoordinateGridLines(renderer, view, kGridRect, m_gridStyle);
        zx3DQt::DrawCoordinateGridFrameTickLabels(renderer, view, view, kGridRect, m_numberStyle);
        zx3DQt::DrawCoordinateAxes(renderer, view, view, kAxesRect, m_axesStyle);
    }

    void DrawByHand(bgfx::ViewId view) override {
        m_wideLines.DestroyBuffers();
        SubmitGrid(view);
        for (Number const& number : m_numbers)
            Submit(view, number);
        for (HalfAxis const& axis : m_axes)
            m_wideLines.Submit(view, {&axis.line, 1}, kAxisWidth, axis.pattern);
        for (Mesh const& cone : m_cones)
            Submit(view, cone);
    }

    void SubmitGrid(bgfx::ViewId view) const {
        SetTransientBuffers(m_layout, m_grid.vertices, m_grid.indices);
        m_viewport.Set(1280.0f, 720.0f);
        m_stipple.Set(kGridPattern, 1.0f);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_LINES);
        bgfx::submit(view, m_lineProgram);
    }

    void Submit(bgfx::ViewId view, Number const& number) {
        QPointF const place = m_stage.GetView().TransformToViewport(number.place);
        m_text.Submit(view, static_cast<float>(std::round(place.x())),
                      static_cast<float>(std::round(place.y())) - kPixelSize, kNumberColor,
                      GlyphsOf(ToText(number.value)), m_handFont.GetPage());
    }

    /// A text that was drawn before is not shaped again.
    std::vector<PlacedGlyph> const& GlyphsOf(std::string const& text) {
        auto const [entry, isNew] = m_shapedTexts.try_emplace(text);
        if (isNew)
            entry->second = m_handFont.Shape(text);
        return entry->second;
    }

    void Submit(bgfx::ViewId view, Mesh const& cone) const {
        SetTransientBuffers(m_layout, cone.vertices, cone.indices);
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
        bgfx::submit(view, m_basicProgram);
    }

    zx3D::FontHandle m_font = zx3D::LoadDefaultFont(kPixelSize).value();
    zx3DQt::CoordinateGridStyle m_gridStyle = GridStyle(kGridSpacing, m_font);
    zx3DQt::CoordinateGridStyle m_numberStyle = GridStyle(kNumberSpacing, m_font);
    zx3DQt::CoordinateAxesStyle m_axesStyle = AxesStyle();

    ShortTextFont m_handFont{kPixelSize};
    TextByHand m_text{kLongestNumber};
    Mesh m_grid = ToMesh(GridLines());
    std::vector<Number> m_numbers = Numbers();
    std::unordered_map<std::string, std::vector<PlacedGlyph>> m_shapedTexts;
    std::vector<HalfAxis> m_axes = HalfAxes();
    std::vector<Mesh> m_cones = Cones();
    WideLinesByHand m_wideLines;
    bgfx::VertexLayout const& m_layout = Vertex::Layout();
    bgfx::ProgramHandle m_lineProgram = Program("vs_line_opengl_stipple", "fs_line_opengl_stipple");
    bgfx::ProgramHandle m_basicProgram = Program("vs_basic", "fs_basic");
    Vec4Uniform m_viewport{"u_viewport"};
    Vec4Uniform m_stipple{"u_lineStipple"};
};

} // namespace

WorkloadKind Coordinates() {
    return {.name = "W7",
            .title = "grid, numbers and axes",
            .variants = {"compute"},
            .create = [](std::string const&) { return std::make_unique<CoordinateScene>(); }};
}

} // namespace zarvex::benchmarks
