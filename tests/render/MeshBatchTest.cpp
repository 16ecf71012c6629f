// Meshes that stay on the GPU: against what the renderer draws immediately, and against computed pictures.
#include "RenderTest.h"
#include "SoftwareCamera.h"
#include "SphereMesh.h"

#include <harness/Trouble.h>

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/MeshBatch.h>

#include <zx3D/Owned.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numbers>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::BGFXLightingContext;
using zx3DQt::BGFXMaterial;
using zx3DQt::BGFXPointLightSource;
using zx3DQt::MeshBatch;
using zx3DQt::MeshInstance;
using zx3DQt::MeshShading;
using zx3DQt::MeshStyle;
using zx3DQt::MeshVertices;
using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;

namespace {

constexpr QColor kBackground(20, 30, 40);

/// Normals have 16 bits, and the sums are rounded in another order.
constexpr int kTolerance = 2;

std::uint32_t Rgba(QColor const& color) {
    return ToColor(color).ToRGBA();
}

struct Mesh {
    std::vector<bx::Vec3> positions;
    std::vector<bx::Vec3> normals;
    std::vector<std::uint32_t> colors;
    std::vector<QVector2D> textureCoordinates;
    std::vector<std::uint32_t> indices;

    MeshVertices Vertices() const { return {positions, normals, colors, textureCoordinates}; }

    void Add(bx::Vec3 const& position, bx::Vec3 const& normal, QColor const& color) {
        positions.push_back(position);
        normals.push_back(normal);
        colors.push_back(Rgba(color));
    }
};

/// A sphere of some hundred triangles in colours that change over it.
Mesh Sphere(int steps) {
    Mesh mesh;
    for (MeshPart const& part : CreateSphereMesh(steps, zx3D::Color())) {
        auto const first = static_cast<std::uint32_t>(mesh.positions.size());
        for (Vertex const& vertex : part.vertices) {
            auto const channel = [](float part) { return static_cast<int>(155.0f + 100.0f * part); };
            bx::Vec3 const& p = vertex.position;
            mesh.Add(p, p, QColor(channel(p.x), channel(p.y), channel(p.z)));
        }
        for (std::uint16_t const index : part.indices)
            mesh.indices.push_back(first + index);
    }
    return mesh;
}

/// A rectangle between depths, counter-clockwise where x goes to the right and y up.
Mesh Rectangle(float left, float bottom, float right, float top, float depth = 0.0f) {
    Mesh mesh;
    for (auto const& [x, y] : {std::pair{left, bottom}, {right, bottom}, {right, top}, {left, top}})
        mesh.Add({x, y, depth}, {0.0f, 0.0f, 1.0f}, Qt::white);
    mesh.indices = {0, 1, 2, 0, 2, 3};
    return mesh;
}

/// The same as triangles with vertices of their own, whose normals are the triangles'.
Mesh Faceted(Mesh const& mesh) {
    Mesh faceted;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
        std::array<bx::Vec3, 3> const corners{mesh.positions[mesh.indices[i]],
                                              mesh.positions[mesh.indices[i + 1]],
                                              mesh.positions[mesh.indices[i + 2]]};
        bx::Vec3 const normal = bx::cross(bx::sub(corners[1], corners[0]), bx::sub(corners[2], corners[0]));
        for (std::size_t k = 0; k < 3; ++k) {
            faceted.positions.push_back(corners[k]);
            faceted.normals.push_back(normal);
            faceted.colors.push_back(mesh.colors[mesh.indices[i + k]]);
            faceted.indices.push_back(static_cast<std::uint32_t>(i + k));
        }
    }
    return faceted;
}

BGFXPointLightSource Light(int number, QVector4D const& position, QColor const& color) {
    return {"u_light" + std::to_string(number), position, QColor(10, 5, 0), color, color.lighter(140)};
}

/// The first is far away, the others are places around a sphere.
void AddLights(BGFXLightingContext& lights, int count) {
    for (int i = 0; i < count; ++i) {
        QVector4D const position = i == 0 ? QVector4D(1.0f, 2.0f, -3.0f, 0.0f)
                                          : QVector4D(i % 2 == 0 ? 2.0f : -2.0f, i - 3.5f, -2.5f, 1.0f);
        BGFXPointLightSource light = Light(i, position, QColor::fromHsv(40 * i, 100, 200 / count + 20));
        light.CreateUniforms();
        lights.Add(std::move(light));
    }
}

class MeshBatchTest : public RenderTest {
protected:
    MeshBatchTest() : RenderTest(QSize(128, 96)) {}

    /// bgfx keeps the values of uniforms as long as it runs.
    ~MeshBatchTest() override {
        BGFXLightingContext lights;
        AddLights(lights, 8);
        lights.Submit();
        TakeOverUniforms(m_renderer);
        lights.ClearAll();
        lights.Submit();
        BGFXMaterial none("u_material");
        none.CreateUniforms();
        none.Submit();
        TakeOverUniforms(m_renderer);
    }

    using Record = std::function<void(zx3DQt::BGFXViewContext const&)>;

    QImage DrawOn(OffscreenTarget& target, std::optional<SoftwareCamera> const& camera,
                  Record const& record) {
        EXPECT_TRUE(m_renderer.StartFrame(target.GetFrameBuffer()));
        m_renderer.SetModelTransform(QMatrix4x4());
        zx3DQt::BGFXViewContext view = PixelView(target.GetViewport(), kBackground);
        if (camera)
            camera->SetUp(view);
        view.Submit(target.GetFrameBuffer());
        DrawRect(view, QRectF(0, 0, 0, 0), kBackground); // bgfx clears views that are drawn into
        record(view);
        return ReadBack(target.GetFrameBuffer());
    }

    QImage Draw(std::optional<SoftwareCamera> const& camera, Record const& record) {
        return DrawOn(m_target, camera, record);
    }

    /// Lit as the renderer does it.
    void DrawImmediately(zx3DQt::BGFXViewContext const& view, Mesh const& mesh, MeshStyle const& style,
                         QMatrix4x4 const& transform) {
        std::vector<Vertex> vertices;
        for (std::size_t i = 0; i < mesh.positions.size(); ++i) {
            std::uint32_t const rgba = mesh.colors[i];
            QColor const color(rgba >> 24, rgba >> 16 & 255, rgba >> 8 & 255, rgba & 255);
            vertices.emplace_back(mesh.positions[i], mesh.normals[i], ToColor(style.color.value_or(color)));
        }
        std::vector<std::uint16_t> const indices(mesh.indices.begin(), mesh.indices.end());
        m_renderer.SetModelTransform(transform);
        if (style.material != nullptr)
            style.material->Submit();
        if (style.lights != nullptr)
            style.lights->Submit();
        m_renderer.DrawTriangles(view, vertices, indices, std::nullopt, zx3DQt::BGFXRenderer::STATE_OPAQUE);
    }

    /// Expects pictures that differ by no more than rounding, but for some pixels at outlines: where an edge
    /// goes through a pixel's centre, and where the renderer takes a normal that is seen at a grazing angle
    /// for one of the other side.
    static void ExpectSame(QImage const& actual, QImage const& expected) {
        constexpr int most = 12;
        int differing = 0;
        for (int y = 0; y < actual.height(); ++y) {
            for (int x = 0; x < actual.width(); ++x) {
                QColor const a = actual.pixelColor(x, y);
                QColor const b = expected.pixelColor(x, y);
                differing +=
                    std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                              std::abs(a.blue() - b.blue()), std::abs(a.alpha() - b.alpha())}) > kTolerance;
            }
        }
        if (differing > most) {
            EXPECT_TRUE(Matches(actual, expected, {kTolerance, 0})) << differing << " pixels";
        }
        EXPECT_GT(CountDifferences(actual, FilledImage(actual.size(), kBackground)), 1000);
    }

    /// Expects a batch of the mesh to be as the renderer's picture of the same.
    void Check(Mesh const& mesh, SoftwareCamera const& camera, MeshStyle const& style,
               QMatrix4x4 const& transform = {}) {
        MeshBatch batch;
        batch.Set(mesh.Vertices(), mesh.indices);
        QImage const kept =
            Draw(camera, [&](auto const& view) { batch.Draw(m_renderer, view, style, transform); });
        Mesh const immediate = style.shading == MeshShading::Flat ? Faceted(mesh) : mesh;
        QImage const expected =
            Draw(camera, [&](auto const& view) { DrawImmediately(view, immediate, style, transform); });
        ExpectSame(kept, expected);
    }
};

SoftwareCamera const kParallelCamera{.place = {1.0, 2.0, -4.0}, .target = {}, .halfHeight = 1.1};
SoftwareCamera const kPerspectiveCamera{.place = {-1.5, 1.0, -3.5}, .target = {}, .angle = 33.0};

QMatrix4x4 Bent(bool isMirrored) {
    QMatrix4x4 transform;
    transform.translate(0.1f, -0.05f, 0.1f);
    transform.rotate(35.0f, 1.0f, 2.0f, 0.5f);
    transform.scale(isMirrored ? -1.0f : 1.0f, 0.6f, 0.8f);
    return transform;
}

} // namespace

TEST_P(MeshBatchTest, LightIsThatOfTheRenderersTriangles) {
    BGFXMaterial copper("u_material", QColor(200, 120, 90), QColor(210, 130, 80), QColor(180, 190, 200),
                        QColor(10, 0, 20), 24.0f);
    copper.CreateUniforms();
    Mesh const mesh = Sphere(10);
    for (SoftwareCamera const& camera : {kParallelCamera, kPerspectiveCamera}) {
        for (int const count : {1, 2, 3, 8}) {
            SCOPED_TRACE(count);
            BGFXLightingContext lights;
            AddLights(lights, count);
            for (MeshShading const shading : {MeshShading::Smooth, MeshShading::Flat})
                Check(mesh, camera, {.shading = shading, .lights = &lights, .material = &copper},
                      Bent(count % 2 == 0));
            lights.ClearAll();
            lights.Submit();
            TakeOverUniforms(m_renderer);
        }
    }
}

TEST_P(MeshBatchTest, WithoutAMaterialTheColorsAreTheSurface) {
    Mesh const mesh = Sphere(10);
    BGFXLightingContext lights;
    AddLights(lights, 1);
    for (SoftwareCamera const& camera : {kParallelCamera, kPerspectiveCamera}) {
        for (bool const isMirrored : {false, true}) {
            Check(mesh, camera, {.lights = &lights}, Bent(isMirrored));
            Check(mesh, camera, {.shading = MeshShading::Flat, .lights = &lights}, Bent(isMirrored));
            Check(mesh, camera, {.color = QColor(250, 200, 100), .lights = &lights}, Bent(isMirrored));
        }
    }
}

TEST_P(MeshBatchTest, WithoutLightsTheViewerCarriesOne) {
    Mesh const mesh = Sphere(10);
    for (SoftwareCamera const& camera : {kParallelCamera, kPerspectiveCamera}) {
        Check(mesh, camera, {});
        Check(mesh, camera, {.shading = MeshShading::Flat}, Bent(true));
    }
}

TEST_P(MeshBatchTest, BothSidesAreLitWhateverTheWindingIs) {
    // From within, and with triangles of either winding, or of both.
    SoftwareCamera const inside{.place = {0.2, 0.1, -0.4}, .target = {-0.3, 0.2, 1.0}, .angle = 70.0};
    Mesh outward = Faceted(Sphere(3));
    Mesh inward = outward;
    Mesh mixed = outward;
    for (std::size_t i = 0; i < outward.indices.size(); i += 3) {
        std::swap(inward.indices[i], inward.indices[i + 1]);
        if (i % 2 == 0)
            std::swap(mixed.indices[i], mixed.indices[i + 1]);
    }
    BGFXLightingContext lights;
    AddLights(lights, 1);
    for (Mesh const* const mesh : {&outward, &inward, &mixed}) {
        for (SoftwareCamera const& camera : {inside, kParallelCamera, kPerspectiveCamera})
            Check(*mesh, camera, {.lights = &lights});
    }
}

TEST_P(MeshBatchTest, TheFrontIsWhereTheCornersAreCounterClockwise) {
    Mesh const mesh = Rectangle(-1.0f, -1.0f, 1.0f, 1.0f);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    for (MeshShading const shading : {MeshShading::Unlit, MeshShading::Smooth}) {
        for (std::uint64_t const flags : {std::uint64_t{0}, std::uint64_t{BGFX_STATE_FRONT_CCW}}) {
            for (bool const isBack : {false, true}) {
                MeshStyle const style{.shading = shading,
                                      .color = QColor(Qt::red),
                                      .backColor = QColor(Qt::blue),
                                      .state = zx3DQt::BGFXRenderer::STATE_OPAQUE | flags};
                QImage const image = Draw(std::nullopt, [&](zx3DQt::BGFXViewContext view) {
                    view.SetProjectionMatrix({}); // x to the right, y up
                    view.Submit(m_target.GetFrameBuffer());
                    QMatrix4x4 turn;
                    turn.translate(0.0f, 0.0f, 0.5f);
                    turn.rotate(isBack ? 180.0f : 0.0f, 0.0f, 1.0f, 0.0f);
                    batch.Draw(m_renderer, view, style, turn);
                });
                EXPECT_TRUE(Matches(image, Canvas(isBack ? Qt::blue : Qt::red)));
            }
        }
    }
}

TEST_P(MeshBatchTest, ATextureIsUprightAndMultipliesTheColors) {
    QColor const texels[] = {Qt::red, QColor(0, 200, 0), Qt::blue, QColor(255, 255, 0)};
    std::vector<std::uint8_t> bytes;
    for (QColor const& texel : texels) {
        for (int const channel : {texel.red(), texel.green(), texel.blue(), 255})
            bytes.push_back(static_cast<std::uint8_t>(channel));
    }
    zx3D::Owned const texture(bgfx::createTexture2D(
        2, 2, false, 1, bgfx::TextureFormat::RGBA8, BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP,
        bgfx::copy(bytes.data(), static_cast<std::uint32_t>(bytes.size()))));
    Mesh mesh = Rectangle(0.0f, 0.0f, 128.0f, 96.0f, 0.5f); // pixels, y down
    mesh.textureCoordinates = {{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}};
    mesh.colors.assign(4, Rgba(QColor(255, 255, 51)));
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    QImage expected = Canvas();
    for (int i = 0; i < 4; ++i) {
        QColor const color(texels[i].red(), texels[i].green(), texels[i].blue() / 5);
        Fill(expected, QRect(64 * (i % 2), 48 * (i / 2), 64, 48), color);
    }
    // The viewer's light falls straight on it.
    for (MeshShading const shading : {MeshShading::Unlit, MeshShading::Smooth, MeshShading::Flat}) {
        QImage const image = Draw(std::nullopt, [&](auto const& view) {
            batch.Draw(m_renderer, view, {.shading = shading, .texture = texture.Get()});
        });
        EXPECT_TRUE(Matches(image, expected));
    }
}

TEST_P(MeshBatchTest, InstancesAreWhereTheirTransformsPutThem) {
    // A pixel each, in rows that begin anywhere in the textures' rows.
    Mesh const mesh = Rectangle(0.0f, 0.0f, 1.0f, 1.0f, 0.5f);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    std::vector<MeshInstance> instances;
    QImage expected = Canvas(kBackground);
    auto const at = [&](int x, int y, QColor const& color) {
        expected.setPixelColor(x, y, color);
        QMatrix4x4 transform;
        transform.translate(static_cast<float>(x), static_cast<float>(y));
        return MeshInstance(transform, Rgba(color));
    };
    for (int i = 0; i < 128 * 96; i += 3)
        instances.push_back(at(i % 128, i / 128, QColor(i % 256, i / 128, 255)));
    batch.SetInstances(instances);
    auto const draw = [&] {
        return Draw(std::nullopt,
                    [&](auto const& view) { batch.Draw(m_renderer, view, {.shading = MeshShading::Unlit}); });
    };
    EXPECT_TRUE(Matches(draw(), expected, kExact));
    std::vector<MeshInstance> changed;
    for (int i = 1500; i < 3100; ++i)
        changed.push_back(at(3 * i % 128, 3 * i / 128, QColor(0, i % 256, 7)));
    batch.UpdateInstances(1500, changed);
    EXPECT_TRUE(Matches(draw(), expected, kExact));
}

TEST_P(MeshBatchTest, InstancesAreLitAsWhatIsDrawnThere) {
    Mesh const mesh = Sphere(8);
    BGFXMaterial copper("u_material", QColor(200, 120, 90), QColor(210, 130, 80), QColor(180, 190, 200),
                        QColor(10, 0, 20), 24.0f);
    copper.CreateUniforms();
    BGFXLightingContext lights;
    AddLights(lights, 1);
    QMatrix4x4 left;
    left.translate(-0.5f, 0.2f, 0.0f);
    left.rotate(40.0f, 1.0f, 1.0f, 0.0f);
    left.scale(0.5f, 0.3f, 0.4f);
    QMatrix4x4 right;
    right.translate(0.5f, -0.3f, 0.1f);
    right.scale(-0.4f, 0.5f, 0.5f);
    MeshInstance const instances[] = {MeshInstance(left), MeshInstance(right)};
    QMatrix4x4 turn;
    turn.rotate(20.0f, 0.0f, 0.0f, 1.0f);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    batch.SetInstances(instances);
    for (MeshStyle const& style :
         {MeshStyle{.lights = &lights}, MeshStyle{.lights = &lights, .material = &copper},
          MeshStyle{.shading = MeshShading::Flat, .lights = &lights, .material = &copper}}) {
        Mesh const immediate = style.shading == MeshShading::Flat ? Faceted(mesh) : mesh;
        QImage const kept =
            Draw(kPerspectiveCamera, [&](auto const& view) { batch.Draw(m_renderer, view, style, turn); });
        ExpectSame(kept, Draw(kPerspectiveCamera, [&](auto const& view) {
                       DrawImmediately(view, immediate, style, turn * left);
                       DrawImmediately(view, immediate, style, turn * right);
                   }));
    }
}

TEST_P(MeshBatchTest, EdgesAreSmoothWithSeveralSamples) {
    OffscreenTarget target(QSize(128, 96), {.sampleCount = 4});
    Mesh const mesh = Sphere(10);
    BGFXLightingContext lights;
    AddLights(lights, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    QImage const kept = DrawOn(target, kPerspectiveCamera,
                               [&](auto const& view) { batch.Draw(m_renderer, view, {.lights = &lights}); });
    QImage const expected = DrawOn(target, kPerspectiveCamera, [&](auto const& view) {
        DrawImmediately(view, mesh, {.lights = &lights}, {});
    });
    ExpectSame(kept, expected);
    QImage const single = Draw(kPerspectiveCamera,
                               [&](auto const& view) { batch.Draw(m_renderer, view, {.lights = &lights}); });
    EXPECT_GT(CountDifferences(kept, single), 100) << "the outline";
}

TEST_P(MeshBatchTest, LargeMeshesAreWholeAndUpdatedEverywhere) {
    // A square of its own colour for each pixel, in pieces.
    constexpr int size = 256;
    OffscreenTarget target(QSize(size, size));
    Mesh mesh;
    QImage expected(size, size, QImage::Format_RGBA8888);
    auto const paint = [&](int pixel, QColor const& color) {
        for (int corner = 0; corner < 4; ++corner)
            mesh.colors[4 * pixel + corner] = Rgba(color);
        expected.setPixelColor(pixel % size, pixel / size, color);
    };
    mesh.colors.resize(4 * size * size);
    for (int i = 0; i < size * size; ++i) {
        auto const x = static_cast<float>(i % size);
        auto const y = static_cast<float>(i / size);
        for (auto const& [right, down] : {std::pair{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}})
            mesh.positions.push_back({x + right, y + down, 0.5f});
        for (std::uint32_t const corner : {0u, 1u, 2u, 0u, 2u, 3u})
            mesh.indices.push_back(4 * static_cast<std::uint32_t>(i) + corner);
        paint(i, QColor(i % size, i / size, i * 37 % 256));
    }
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    auto const draw = [&] {
        return DrawOn(target, std::nullopt, [&](auto const& view) {
            batch.Draw(m_renderer, view, {.shading = MeshShading::Unlit});
        });
    };
    QImage image = draw();
    EXPECT_TRUE(Matches(image, expected.convertToFormat(image.format()), kExact));
    for (auto const& [first, count] : {std::pair{0, 1}, {16'000, 2000}, {40'000, 25'536}}) {
        for (int i = first; i < first + count; ++i)
            paint(i, QColor(255, i % 256, first % 256));
        MeshVertices part = mesh.Vertices();
        part.positions = {part.positions.data + 4 * first, 4u * static_cast<unsigned>(count)};
        part.colors = {part.colors.data + 4 * first, 4u * static_cast<unsigned>(count)};
        batch.Update(4 * static_cast<std::uint64_t>(first), part);
    }
    image = draw();
    EXPECT_TRUE(Matches(image, expected.convertToFormat(image.format()), kExact));
}

TEST_P(MeshBatchTest, WhatIsAppendedIsDrawnWithWhatWasThere) {
    MeshBatch batch;
    QImage expected = Canvas(kBackground);
    QImage image;
    for (int i = 0; i < 40; ++i) {
        QRect const rect(3 * i, 2 * i, 5, 7);
        QColor const color(6 * i, 255 - 6 * i, 100);
        Mesh mesh = Rectangle(rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height(), 0.5f);
        mesh.normals.clear();
        mesh.colors.assign(4, Rgba(color));
        batch.Append(mesh.Vertices(), mesh.indices);
        Fill(expected, rect, color);
        if (i % 3 == 0)
            image = Draw(std::nullopt, [&](auto const& view) { batch.Draw(m_renderer, view); });
    }
    EXPECT_TRUE(Matches(image, expected, kExact)) << "lit by the viewer, straight on";
}

TEST_P(MeshBatchTest, FarFromTheWorldsOriginAMillimetreIsAMillimetre) {
    // A cube of 10 mm, 500 km east and 5,400 km north, turns; 1,000 pixels are 20 mm.
    constexpr zx3DQt::WorldPosition place{500'000.0, 5'400'000.0, 100.0};
    constexpr double half = 0.005;
    OffscreenTarget target(QSize(1000, 1000));
    Mesh mesh;
    for (int i = 0; i < 8; ++i) {
        auto const side = [i](int bit) { return static_cast<float>(i & bit ? half : -half); };
        mesh.Add({side(1), side(2), side(4)}, {side(1), side(2), side(4)}, Qt::white);
    }
    for (std::uint32_t const first : {0u, 4u})
        mesh.indices.insert(mesh.indices.end(),
                            {first, first + 1, first + 2, first + 2, first + 1, first + 3});
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    batch.SetOrigin(place);
    for (int degrees = 0; degrees < 90; degrees += 29) {
        QImage const image = DrawOn(target, std::nullopt, [&](zx3DQt::BGFXViewContext view) {
            view.SetOrigin({place.x - 0.25, place.y + 0.125, place.z});
            view.SetProjectionMatrix(zx3DQt::BGFXViewContext::ComputeOrthoProjection(
                QRectF(0.24, -0.135, 0.02, 0.02), -1.0f, 1.0f, 0.0f));
            view.Submit(target.GetFrameBuffer());
            QMatrix4x4 turn;
            turn.rotate(static_cast<float>(degrees), 0.0f, 0.0f, 1.0f);
            batch.Draw(m_renderer, view, {.shading = MeshShading::Unlit}, turn);
        });
        double const angle = degrees * std::numbers::pi / 180.0;
        int wrong = 0;
        for (int row = 0; row < 1000; ++row) {
            for (int column = 0; column < 1000; ++column) {
                double const x = (column + 0.5) / 1000.0 * 0.02 - 0.01;
                double const y = (row + 0.5) / 1000.0 * 0.02 - 0.01;
                double const alongX = std::abs(x * std::cos(angle) + y * std::sin(angle));
                double const alongY = std::abs(-x * std::sin(angle) + y * std::cos(angle));
                double const beyond = (std::max(alongX, alongY) - half) / 0.02 * 1000.0; // pixels
                if (std::abs(beyond) > 0.1)
                    wrong += (image.pixel(column, row) == qRgb(255, 255, 255)) != (beyond < 0.0) ? 1 : 0;
            }
        }
        EXPECT_EQ(wrong, 0) << "pixels further than a tenth from the outline, at " << degrees << " degrees";
    }
}

ZX3D_INSTANTIATE_BACKENDS(MeshBatchTest);
