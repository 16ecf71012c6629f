// The draw operations, one after the other.
#include "DemoScene.h"

#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/CoordinateGrid.h>
#include <zx3DQt/Shapes.h>

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace viewer {

using namespace zarvex;

namespace {

constexpr float kReach = 7.0f; ///< of the grid

QVector3D OnGround(QVector2D const& stand, float x, float y, float z) {
    return {stand.x() + x, stand.y() + y, z};
}

} // namespace

DemoScene::DemoScene()
    : m_gold("u_material", QColor(206, 146, 60), QColor(206, 146, 60), QColor(255, 226, 160), Qt::black,
             60.0f) {}

Box DemoScene::GetBox() {
    return {{-5.6f, -5.6f, -1.0f}, {5.6f, 5.6f, 2.0f}};
}

void DemoScene::CreateUniformsOnce() {
    if (std::exchange(m_hasUniforms, true))
        return;
    m_gold.CreateUniforms();
}

void DemoScene::Draw(Canvas const& canvas) {
    CreateUniformsOnce();
    DrawGridAndAxes(canvas);
    DrawShapes(canvas);
    DrawTriangles(canvas);
    DrawLinesAndPoints(canvas);
    DrawTitles(canvas);
}

void DemoScene::DrawGridAndAxes(Canvas const& canvas) const {
    QRectF const ground(-kReach, -kReach, 2.0 * kReach, 2.0 * kReach);
    zx3DQt::CoordinateGridStyle grid;
    grid.gridSpacing = {1.0f, 1.0f};
    grid.gridMargins = {0.0f, 0.0f};
    grid.lineColor = QColor(72, 80, 94);
    grid.lineWidth = canvas.pixelRatio;
    grid.lineStipplePattern = {0xFFFF, 1};
    grid.frameTickLabels.emplace().font = canvas.fonts.Get(11.0f * canvas.pixelRatio);
    grid.frameTickLabels->color = QColor(176, 186, 202);
    grid.frameTickLabels->enabledAxes = {zx3DQt::X}; // those of y would lie over the exhibits
    grid.frameTickLabels->minimumGap = 4.0f * canvas.pixelRatio;
    zx3DQt::DrawCoordinateGrid(canvas.renderer, canvas.surfaces, canvas.labels, ground, grid);

    std::array<QColor, 3> const colors{QColor(240, 96, 100), QColor(124, 214, 98), QColor(98, 160, 255)};
    zx3DQt::CoordinateAxesStyle axes;
    axes.colors = colors;
    axes.lineWidths.fill(std::round(2.0f * canvas.pixelRatio));
    axes.arrowHeads.emplace().colors = colors;
    axes.arrowHeads->light.emplace();
    axes.labels.emplace().colors = colors;
    axes.labels->placement = zx3DQt::CoordinateAxesLabelStyle::Placement::BeyondHeads;
    axes.labels->font = canvas.fonts.Get(13.0f * canvas.pixelRatio);
    zx3DQt::DrawCoordinateAxes(canvas.renderer, canvas.surfaces, canvas.labels, QRectF(-1.8, -1.8, 3.6, 3.6),
                               axes);
}

void DemoScene::DrawLinesAndPoints(Canvas const& canvas) const {
    canvas.DrawLines(canvas.surfaces, m_geometry.hyperboloid, 1.0f, {}, Canvas::kSolid);
    for (DemoGeometry::Arch const& arch : m_geometry.arches)
        canvas.DrawLines(canvas.surfaces, arch.lines, arch.width, {}, Canvas::kSolid);
    for (DemoGeometry::StippledLine const& rib : m_geometry.fan)
        canvas.DrawLines(canvas.surfaces, rib.lines, rib.width, rib.pattern, Canvas::kSolid);

    canvas.renderer.DrawPoints(canvas.surfaces, m_geometry.sphere);
    for (DemoGeometry::Sprite const& sprite : m_geometry.spiral) {
        canvas.renderer.DrawPoints(canvas.surfaces,
                                   zx3D::DataSpan<DemoGeometry::Vertex const>(&sprite.point, 1),
                                   static_cast<std::uint16_t>(std::lround(sprite.size * canvas.pixelRatio)));
    }
}

void DemoScene::DrawTriangles(Canvas const& canvas) const {
    canvas.renderer.DrawTriangles(canvas.surfaces, m_geometry.cube.vertices, m_geometry.cube.indices,
                                  std::nullopt, Canvas::kSolid);

    QMatrix4x4 standing;
    standing.translate(OnGround(Stand::kLitTriangles, 0.0f, 0.0f, 1.35f));
    standing.rotate(62.0f, 1.0f, 0.0f, 0.0f);
    standing.scale(0.8f);
    m_gold.Submit();
    canvas.renderer.SetModelTransform(standing);
    canvas.renderer.DrawTriangles(canvas.surfaces, m_geometry.knot.vertices, m_geometry.knot.indices,
                                  std::nullopt, Canvas::kSolid);
    canvas.renderer.SetModelTransform(QMatrix4x4());
}

void DemoScene::DrawShapes(Canvas const& canvas) const {
    auto const state = Canvas::kSolid;
    QVector2D const stand = Stand::kShapes;
    constexpr float lift = 0.02f; // one above the other
    zx3DQt::DrawRectangle(canvas.renderer, canvas.surfaces, stand, {1.75f, 1.75f},
                          {0.20f, 0.25f, 0.33f, 1.0f}, lift, state);
    zx3DQt::DrawCircle(canvas.renderer, canvas.surfaces, stand, 1.6f, DemoColor(0.1f), 2.0f * lift, state);
    zx3DQt::DrawCircle(canvas.renderer, canvas.surfaces, stand, 1.15f, DemoColor(0.35f), 3.0f * lift, state);
    zx3DQt::DrawCircle(canvas.renderer, canvas.surfaces, stand, 0.7f, DemoColor(0.65f), 4.0f * lift, state);
    for (int i = 0; i < 8; ++i) {
        float const angle = 2.0f * std::numbers::pi_v<float> * static_cast<float>(i) / 8.0f;
        float const height = i % 2 == 0 ? 1.3f : 0.8f;
        zx3DQt::DrawCone(canvas.renderer, canvas.surfaces, QVector3D(0.0f, 0.0f, 1.0f),
                         OnGround(stand, 1.38f * std::cos(angle), 1.38f * std::sin(angle), height), height,
                         0.22, 32, DemoColor(static_cast<float>(i) / 7.0f));
    }
}

void DemoScene::DrawTitles(Canvas const& canvas) const {
    std::pair<QVector2D, char const*> const titles[] = {
        {Stand::kThinLines, "Thin lines"},       {Stand::kWideLines, "Wide lines"},
        {Stand::kStipples, "Stipples"},          {Stand::kPoints, "Points"},
        {Stand::kSprites, "Point sprites"},      {Stand::kTriangles, "Triangles"},
        {Stand::kLitTriangles, "Lit triangles"}, {Stand::kShapes, "Shapes"},
    };
    // In front of the exhibit, from wherever one looks.
    QVector3D towards = TowardsViewer(canvas.camera) - 0.001f * ScreenUp(canvas.camera);
    towards.setZ(0.0f);
    towards.normalize();
    for (auto const& [stand, title] : titles) {
        QVector3D const place = OnGround(stand, 1.9f * towards.x(), 1.9f * towards.y(), 0.0f);
        if (auto const pixel = canvas.Project(place))
            canvas.DrawLabel(*pixel, title, QColor(226, 232, 240), 13.0f, Qt::AlignCenter);
    }
    QPointF const corner(18.0 * canvas.pixelRatio, 16.0 * canvas.pixelRatio);
    canvas.DrawLabel(corner, "zx3DQt draws", QColor(240, 244, 250), 22.0f, Qt::AlignLeft | Qt::AlignTop);
    canvas.DrawLabel(corner + QPointF(0.0, 32.0 * canvas.pixelRatio),
                     "text in any script: Ωμέγα · Жизнь · שלום · مرحبا · ﬁ · x²±½", QColor(176, 186, 202),
                     13.0f, Qt::AlignLeft | Qt::AlignTop);
}

} // namespace viewer
