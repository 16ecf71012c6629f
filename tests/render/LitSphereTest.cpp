// A sphere under materials and lights, every pixel against the formula in double precision.
#include "RenderTest.h"
#include "SoftwareSphere.h"
#include "SphereMesh.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr int kSteps = 128; ///< squares of about a pixel
constexpr zx3D::Color kWhite{1.0f, 1.0f, 1.0f, 1.0f};
constexpr QColor kBackground(20, 30, 40);

struct LitSphere {
    SoftwareMaterial material;
    QMatrix4x4 model = QMatrix4x4();
    zx3D::Color color = kWhite; ///< of the vertices
};

SoftwareCamera const kParallelCamera{.place = {1.0, 2.0, -4.0}, .target = {}, .halfHeight = 1.1};
SoftwareCamera const kPerspectiveCamera{.place = {-1.5, 1.0, -3.5}, .target = {}, .angle = 33.0};
std::vector<SoftwareCamera> const kCameras{kParallelCamera, kPerspectiveCamera};

SoftwareMaterial const kCopper{QColor(200, 120, 90), QColor(210, 130, 80), QColor(180, 190, 200),
                               QColor(10, 0, 20), 24.0f};

SoftwareLight const kPointLight{
    {2.0f, 3.0f, -2.5f, 1.0f}, QColor(30, 40, 50), QColor(200, 190, 170), QColor(220, 200, 180)};
SoftwareLight const kDirectedLight{
    {-1.0f, 0.4f, -0.8f, 0.0f}, QColor(10, 20, 10), QColor(40, 130, 60), QColor(70, 240, 100)};
/// At (1, -2, -0.5).
SoftwareLight const kLightFromBelow{
    {2.0f, -4.0f, -1.0f, 2.0f}, QColor(0, 0, 30), QColor(60, 50, 220), Qt::black};
std::vector<SoftwareLight> const kThreeLights{kPointLight, kDirectedLight, kLightFromBelow};

/// One at each corner of a cube, each of a colour and sharpness of its own.
std::vector<SoftwareLight> EightLights() {
    std::vector<SoftwareLight> lights;
    for (int i = 0; i < 8; ++i) {
        auto const side = [i](int bit) { return (i >> bit & 1) != 0 ? 1.0f : -1.0f; };
        QColor const color = QColor::fromHsv(45 * i, 255, 150);
        lights.push_back({{1.2f * side(0), 1.5f * side(1), -1.0f + 0.6f * side(2), i % 2 == 0 ? 1.0f : 0.0f},
                          QColor(1 + i, 2, 3),
                          color,
                          color.darker(150)});
    }
    return lights;
}

/// The lamp that the viewer carries when there is no light.
SoftwareLight const kHeadlight{QVector4D(), QColor::fromRgbF(0.3f, 0.3f, 0.3f),
                               QColor::fromRgbF(0.7f, 0.7f, 0.7f), Qt::white};

class LitSphereTest : public RenderTest {
protected:
    LitSphereTest() : RenderTest(QSize(200, 160)) {}

    /// bgfx keeps the values of uniforms as long as it runs.
    ~LitSphereTest() override {
        SetLights({});
        m_lights.Submit();
        Submit(SoftwareMaterial{Qt::transparent, Qt::transparent, Qt::transparent, Qt::transparent, 0.0f});
        TakeOverUniforms(m_renderer);
    }

    /// Makes these the lights of the context.
    void SetLights(std::vector<SoftwareLight> const& lights);

    /// The picture of the spheres under the context's lights.
    QImage Draw(SoftwareCamera const& camera, std::vector<LitSphere> const& spheres,
                std::optional<zx3DQt::BGFXRenderState> state = std::nullopt);

    /// Expects the picture of the spheres to be the one under these lights.
    void Check(SoftwareCamera const& camera, std::vector<LitSphere> const& spheres,
               std::vector<SoftwareLight> const& lights);

    zx3DQt::BGFXLightingContext m_lights;

private:
    void Submit(SoftwareMaterial const& material);
    void Draw(zx3DQt::BGFXViewContext const& view, LitSphere const& sphere,
              std::optional<zx3DQt::BGFXRenderState> state);

    std::vector<zx3DQt::BGFXMaterial> m_materials; ///< of the frame
};

void LitSphereTest::SetLights(std::vector<SoftwareLight> const& lights) {
    m_lights.ClearAll();
    for (SoftwareLight const& light : lights) {
        zx3DQt::BGFXPointLightSource source("u_light" + std::to_string(m_lights.GetCount()), light.position,
                                            light.ambient, light.diffuse, light.specular);
        source.CreateUniforms();
        m_lights.Add(std::move(source));
    }
}

void LitSphereTest::Submit(SoftwareMaterial const& material) {
    zx3DQt::BGFXMaterial& created =
        m_materials.emplace_back("u_material", material.ambient, material.diffuse, material.specular,
                                 material.emission, material.shininess);
    created.CreateUniforms();
    created.Submit();
}

void LitSphereTest::Draw(zx3DQt::BGFXViewContext const& view, LitSphere const& sphere,
                         std::optional<zx3DQt::BGFXRenderState> state) {
    m_renderer.SetModelTransform(sphere.model);
    for (MeshPart const& part : CreateSphereMesh(kSteps, sphere.color)) {
        Submit(sphere.material);
        m_lights.Submit();
        m_renderer.DrawTriangles(view, part.vertices, part.indices, std::nullopt, state);
    }
}

QImage LitSphereTest::Draw(SoftwareCamera const& camera, std::vector<LitSphere> const& spheres,
                           std::optional<zx3DQt::BGFXRenderState> state) {
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), kBackground);
    camera.SetUp(view);
    view.Submit(m_target.GetFrameBuffer());
    for (LitSphere const& sphere : spheres)
        Draw(view, sphere, state);
    QImage const image = Present();
    m_materials.clear();
    return image;
}

/// Red, green and blue of a sphere that a ray meets.
std::optional<Vector3> ColorAlong(Ray const& ray, SoftwareCamera const& camera, LitSphere const& sphere,
                                  std::vector<SoftwareLight> const& lights) {
    std::optional<SurfacePoint> const point = SoftwareSphere(sphere.model).Meet(ray);
    if (!point)
        return std::nullopt;
    Vector3 const toViewer = camera.IsParallel() ? -1.0 * ray.direction : camera.place - point->position;
    return Illuminate(sphere.material, lights, *point, toViewer);
}

void LitSphereTest::Check(SoftwareCamera const& camera, std::vector<LitSphere> const& spheres,
                          std::vector<SoftwareLight> const& lights) {
    QImage const image = Draw(camera, spheres);
    QImage expected = Canvas(kBackground);
    int insideCount = 0;
    int edgeCount = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            QPointF const center(x + 0.5, y + 0.5);
            for (LitSphere const& sphere : spheres) {
                auto const isCovered = [&](QPointF pixel) {
                    return SoftwareSphere(sphere.model)
                        .Meet(camera.RayThrough(pixel, image.size()))
                        .has_value();
                };
                Coverage const coverage = SampledCoverage(center, isCovered);
                if (coverage == Coverage::Inside)
                    expected.setPixelColor(x, y,
                                           ToBytes(*ColorAlong(camera.RayThrough(center, image.size()),
                                                               camera, sphere, lights)));
                if (coverage == Coverage::Edge)
                    expected.setPixelColor(x, y, image.pixelColor(x, y));
                insideCount += coverage == Coverage::Inside;
                edgeCount += coverage == Coverage::Edge;
            }
        }
    }
    EXPECT_TRUE(Matches(image, expected));
    EXPECT_GT(insideCount, 5000);
    EXPECT_LT(edgeCount, 40);
}

} // namespace

TEST_P(LitSphereTest, OneLightShinesByTheFormula) {
    for (SoftwareCamera const& camera : kCameras) {
        for (SoftwareLight const& light : kThreeLights) {
            SetLights({light});
            Check(camera, {{kCopper}}, {light});
        }
    }
}

TEST_P(LitSphereTest, ThreeLightsAddUp) {
    SetLights(kThreeLights);
    for (SoftwareCamera const& camera : kCameras)
        Check(camera, {{kCopper}}, kThreeLights);
}

TEST_P(LitSphereTest, EightLightsAddUp) {
    SetLights(EightLights());
    for (SoftwareCamera const& camera : kCameras)
        Check(camera, {{kCopper}}, EightLights());
}

TEST_P(LitSphereTest, ALightWithoutAPlaceShinesFromTheViewer) {
    SoftwareLight light = kPointLight;
    light.position = QVector4D();
    SetLights({light});
    for (SoftwareCamera const& camera : kCameras)
        Check(camera, {{kCopper}}, {light});
}

TEST_P(LitSphereTest, NormalsFollowScalesThatDifferByAxis) {
    SetLights(kThreeLights);
    for (float const mirror : {1.0f, -1.0f}) {
        QMatrix4x4 model;
        model.translate(0.1f, -0.15f, 0.2f);
        model.rotate(35.0f, 1.0f, 2.0f, 0.5f);
        model.scale(1.2f * mirror, 0.5f, 0.8f);
        for (SoftwareCamera const& camera : kCameras)
            Check(camera, {{kCopper, model}}, kThreeLights);
    }
}

TEST_P(LitSphereTest, TheInsideIsLitLikeTheOutside) {
    SoftwareCamera const camera{.place = {0.2, 0.1, -0.4}, .target = {-0.3, 0.2, 1.0}, .angle = 80.0};
    std::vector<SoftwareLight> const lights{
        {{0.4f, 0.5f, 0.1f, 1.0f}, QColor(30, 40, 50), QColor(200, 190, 170), QColor(120, 100, 80)}};
    SetLights(lights);
    Check(camera, {{kCopper}}, lights);
}

TEST_P(LitSphereTest, VertexColorsMultiplyTheMaterial) {
    zx3D::Color const color{0.25f, 1.0f, 0.5f, 1.0f};
    auto const multiplied = [&color](QColor const& of) {
        return QColor::fromRgbF(of.redF() * color.red, of.greenF() * color.green, of.blueF() * color.blue);
    };
    SoftwareMaterial expected = kCopper;
    expected.ambient = multiplied(kCopper.ambient);
    expected.diffuse = multiplied(kCopper.diffuse);
    SetLights(kThreeLights);
    QImage const image = Draw(kParallelCamera, {{kCopper, QMatrix4x4(), color}});
    EXPECT_TRUE(Matches(image, Draw(kParallelCamera, {{expected}})));
}

TEST_P(LitSphereTest, AShininessBelowOneCountsAsOne) {
    SoftwareMaterial dull = kCopper;
    dull.shininess = 0.25f;
    SoftwareMaterial expected = kCopper;
    expected.shininess = 1.0f;
    SetLights({kPointLight});
    EXPECT_TRUE(Matches(Draw(kParallelCamera, {{dull}}), Draw(kParallelCamera, {{expected}}), kExact));
}

TEST_P(LitSphereTest, TheDiffuseAlphaMultipliesTheVertices) {
    SoftwareMaterial glass = kCopper;
    glass.diffuse.setAlpha(160);
    SetLights(kThreeLights);
    QImage const image = Draw(kParallelCamera, {{glass, QMatrix4x4(), {1.0f, 1.0f, 1.0f, 0.5f}}},
                              zx3DQt::BGFXRenderer::STATE_OPAQUE);
    EXPECT_NEAR(image.pixelColor(100, 80).alpha(), 80, 1);
}

TEST_P(LitSphereTest, EachDrawHasItsMaterial) {
    SoftwareMaterial const jade{QColor(20, 120, 60), QColor(40, 200, 120), QColor(90, 90, 90), Qt::black,
                                80.0f};
    std::vector<LitSphere> spheres{{kCopper}, {jade}};
    spheres[0].model.translate(-0.6f, 0.0f);
    spheres[1].model.translate(0.6f, 0.0f);
    for (LitSphere& sphere : spheres)
        sphere.model.scale(0.5f);
    SetLights(kThreeLights);
    Check(kPerspectiveCamera, spheres, kThreeLights);
}

TEST_P(LitSphereTest, ALightThatIsGoneNoLongerShines) {
    SetLights(kThreeLights);
    Check(kParallelCamera, {{kCopper}}, kThreeLights);
    std::vector<SoftwareLight> const fewer{kPointLight, kDirectedLight};
    SetLights(fewer);
    Check(kParallelCamera, {{kCopper}}, fewer);
    SetLights({kLightFromBelow});
    Check(kParallelCamera, {{kCopper}}, {kLightFromBelow});
}

TEST_P(LitSphereTest, WithoutTheLastLightTheViewerCarriesOne) {
    SetLights(kThreeLights);
    Check(kParallelCamera, {{kCopper}}, kThreeLights);
    SetLights({});
    for (SoftwareCamera const& camera : kCameras)
        Check(camera, {{kCopper}}, {kHeadlight});
}

TEST_P(LitSphereTest, ALightThatIsReplacedIsWhereTheNewOneIs) {
    for (float const x : {-2.0f, 0.0f, 2.0f}) {
        SoftwareLight light = kPointLight;
        light.position.setX(x);
        SetLights({light});
        Check(kParallelCamera, {{kCopper}}, {light});
    }
}

ZX3D_INSTANTIATE_BACKENDS(LitSphereTest);
