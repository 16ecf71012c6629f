// Materials and lights that come and go: nothing is left behind, and those that stay go on to work.
#include "OffscreenTarget.h"
#include "RenderTest.h"

#include <harness/TroubleCallback.h>

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::BGFXLightingContext;
using zx3DQt::BGFXMaterial;
using zx3DQt::BGFXPointLightSource;

namespace {

// More uniforms than bgfx holds, were any left behind. Each cycle draws, which takes long under a sanitizer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kCycles = 200;
#else
constexpr int kCycles = 1000;
#endif

BGFXMaterial CreateMaterial(std::string const& name, QColor const& ambient) {
    BGFXMaterial material(name, ambient, Qt::black, Qt::black, Qt::black, 1.0f);
    material.CreateUniforms();
    return material;
}

/// A light without a direction, so that a surface has its material's ambient colour.
BGFXPointLightSource CreateLight(std::string const& name, QColor const& ambient = Qt::white) {
    BGFXPointLightSource light(name, {0.0f, 0.0f, -1.0f, 0.0f}, ambient, Qt::black, Qt::black);
    light.CreateUniforms();
    return light;
}

/// A small target and a renderer.
class Canvas {
public:
    /// Its colour after a white surface under the material and the lights that are in effect.
    QColor Draw() {
        using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;
        zx3D::Color const white{1.0f, 1.0f, 1.0f, 1.0f};
        bx::Vec3 const normal(0.0f, 0.0f, -1.0f);
        Vertex const vertices[] = {{{0.0f, 0.0f, 0.5f}, normal, white},
                                   {{16.0f, 0.0f, 0.5f}, normal, white},
                                   {{0.0f, 16.0f, 0.5f}, normal, white}};
        std::uint16_t const indices[] = {0, 1, 2};
        m_renderer.DrawTriangles(m_view, vertices, indices);
        return ReadBack(m_target.GetFrameBuffer()).pixelColor(1, 1);
    }

    /// Begins the frame of the next draw.
    void Start() {
        ASSERT_TRUE(m_renderer.StartFrame(m_target.GetFrameBuffer()));
        m_renderer.SetModelTransform(QMatrix4x4());
        m_view = PixelView(m_target.GetViewport());
        m_view.Submit(m_target.GetFrameBuffer());
    }

private:
    OffscreenTarget m_target{QSize(8, 8)};
    zx3DQt::BGFXRenderer m_renderer;
    zx3DQt::BGFXViewContext m_view;
};

/// How many uniforms bgfx has when everything so far is done.
int CountUniforms() {
    bgfx::frame();
    bgfx::frame();
    return bgfx::getStats()->numUniforms;
}

/// Starts and stops the library on the row's backend.
class LightingLifeTimeTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {
protected:
    LightingLifeTimeTest() { Start(); }
    ~LightingLifeTimeTest() override { Stop(); }

    void Start() {
        zx3D::Context::PreferRenderer(GetParam());
        EXPECT_TRUE(zx3DQt::Init(false, std::make_unique<TroubleCallback>()));
        EXPECT_EQ(bgfx::getRendererType(), GetParam());
        m_canvas.emplace();
        m_canvas->Start();
        m_canvas->Draw(); // what every lit draw needs is there now
        m_countBefore = CountUniforms();
    }

    void Stop() {
        m_canvas.reset();
        zx3DQt::Shutdown(); // leaked uniforms are trouble
    }

    /// The colour of a white surface under the material and the lights.
    QColor Draw(BGFXMaterial const& material, BGFXLightingContext const& lights) {
        m_canvas->Start();
        material.Submit();
        lights.Submit();
        return m_canvas->Draw();
    }

    std::optional<Canvas> m_canvas;
    int m_countBefore = 0;
};

} // namespace

TEST_P(LightingLifeTimeTest, CyclesOfManyFramesLeaveNothingBehind) {
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        QColor const color(cycle % 256, 100, 255 - cycle % 256);
        BGFXMaterial const material = CreateMaterial("u_material", color);
        // No program reads these: they come and go with their object.
        BGFXMaterial const other = CreateMaterial("u_other", color);
        BGFXLightingContext lights;
        lights.Add(CreateLight("u_light0"));
        lights.Add(CreateLight("u_lamp" + std::to_string(cycle)));
        other.Submit();
        ASSERT_EQ(Draw(material, lights), color) << cycle;
        if (cycle % 100 == 0) {
            ASSERT_EQ(CountUniforms(), m_countBefore + 5 + 4) << cycle;
        }
        if (cycle % 3 == 0) {
            lights.ClearAll();
            Draw(material, lights);
        }
    }
    EXPECT_EQ(CountUniforms(), m_countBefore);
}

TEST_P(LightingLifeTimeTest, CyclesWithinAFrameLeaveNothingBehind) {
    for (int cycle = 0; cycle < 1000; ++cycle) {
        BGFXMaterial material = CreateMaterial("u_other", Qt::red);
        BGFXPointLightSource light = CreateLight("u_lamp");
        light.DestroyUniforms();
        light.DestroyUniforms();
        if (cycle % 20 == 0) // bgfx gives handles back with the frame
            bgfx::frame();
    }
    EXPECT_EQ(CountUniforms(), m_countBefore);
}

TEST_P(LightingLifeTimeTest, TheOrderOfDestructionDoesNotMatter) {
    for (int order = 0; order < 6; ++order) {
        std::vector<std::unique_ptr<BGFXMaterial>> materials;
        std::vector<std::unique_ptr<BGFXPointLightSource>> lights;
        for (std::string const name : {"u_a", "u_b", "u_a"}) {
            materials.push_back(std::make_unique<BGFXMaterial>(CreateMaterial(name, Qt::red)));
            lights.push_back(std::make_unique<BGFXPointLightSource>(CreateLight(name)));
        }
        // Five of a material, and a light's position: it shares its colours' with the material.
        EXPECT_EQ(CountUniforms(), m_countBefore + 2 * 6);
        int const first = order % 3;
        for (int const i : {first, (first + 1 + order / 3) % 3, (first + 2 - order / 3) % 3}) {
            materials[static_cast<std::size_t>(i)].reset();
            lights[static_cast<std::size_t>(2 - i)].reset();
        }
        EXPECT_EQ(CountUniforms(), m_countBefore);
    }
}

TEST_P(LightingLifeTimeTest, MovedOnesWorkAndLeaveNothingBehind) {
    {
        std::optional<BGFXMaterial> source = CreateMaterial("u_material", Qt::green);
        BGFXMaterial const material(std::move(*source));
        source.reset();
        BGFXLightingContext lights;
        BGFXPointLightSource lamp = CreateLight("u_light0");
        BGFXPointLightSource other(std::move(lamp));
        lights.Add(std::move(other));
        EXPECT_EQ(Draw(material, lights), QColor(Qt::green));
    }
    EXPECT_EQ(CountUniforms(), m_countBefore);
}

TEST_P(LightingLifeTimeTest, OfTwoMaterialsOfOneNameEitherMayGoFirst) {
    BGFXLightingContext lights;
    lights.Add(CreateLight("u_light0"));
    for (bool const firstGoes : {true, false}) {
        auto first = std::make_unique<BGFXMaterial>(CreateMaterial("u_material", Qt::red));
        auto second = std::make_unique<BGFXMaterial>(CreateMaterial("u_material", Qt::blue));
        EXPECT_EQ(Draw(*first, lights), QColor(Qt::red));
        EXPECT_EQ(Draw(*second, lights), QColor(Qt::blue));
        (firstGoes ? first : second).reset();
        EXPECT_EQ(Draw(*(firstGoes ? second : first), lights), QColor(firstGoes ? Qt::blue : Qt::red));
    }
    lights.ClearAll();
    EXPECT_EQ(CountUniforms(), m_countBefore);
}

TEST_P(LightingLifeTimeTest, ALightThatIsGoneStaysDarkWhenAFrameWasLeftEmpty) {
    BGFXMaterial const material = CreateMaterial("u_material", Qt::white);
    BGFXLightingContext lights;
    lights.Add(CreateLight("u_light0", Qt::blue));
    lights.Add(CreateLight("u_light1", Qt::red));
    EXPECT_EQ(Draw(material, lights), QColor(255, 0, 255));
    lights.ClearAll();
    lights.Add(CreateLight("u_light0", Qt::blue));
    lights.Submit();
    bgfx::frame(); // nothing was drawn after it
    EXPECT_EQ(Draw(material, lights), QColor(Qt::blue));
}

TEST_P(LightingLifeTimeTest, ALightThatIsClearedTwiceIsTurnedOffOnce) {
    BGFXMaterial const material = CreateMaterial("u_material", Qt::white);
    BGFXLightingContext lights;
    for (int i = 0; i < 2; ++i) {
        lights.Add(CreateLight("u_light0", Qt::blue));
        lights.ClearAll();
    }
    Draw(material, lights); // bgfx's checks refuse a uniform that is set twice for a draw
}

TEST_P(LightingLifeTimeTest, OnesThatAreCreatedAnewWithinAFrameWork) {
    BGFXMaterial material = CreateMaterial("u_material", Qt::red);
    BGFXLightingContext lights;
    lights.Add(CreateLight("u_light0"));
    EXPECT_EQ(Draw(material, lights), QColor(Qt::red));
    material.DestroyUniforms();
    material.SetAmbient(Qt::blue);
    material.CreateUniforms();
    lights.ClearAll();
    lights.Add(CreateLight("u_light0"));
    EXPECT_EQ(Draw(material, lights), QColor(Qt::blue));
}

TEST_P(LightingLifeTimeTest, OnesThatOutliveTheLibraryWorkInTheNextRun) {
    BGFXMaterial material = CreateMaterial("u_material", Qt::red);
    BGFXPointLightSource light = CreateLight("u_light0");
    BGFXLightingContext forgotten;
    forgotten.Add(CreateLight("u_light0"));
    for (QColor const& color : {QColor(Qt::red), QColor(Qt::blue)}) {
        Stop();
        Start();
        EXPECT_EQ(CountUniforms(), m_countBefore);
        material.SetAmbient(color);
        material.CreateUniforms();
        light.CreateUniforms();
        m_canvas->Start();
        material.Submit();
        light.Submit();
        EXPECT_EQ(m_canvas->Draw(), color);
    }
    forgotten.ClearAll(); // of a run that is over
    material.DestroyUniforms();
    light.DestroyUniforms();
    EXPECT_EQ(CountUniforms(), m_countBefore);
}

TEST_P(LightingLifeTimeTest, ObjectsOfAnEarlierRunTakeNothingFromThisOne) {
    auto material = std::make_unique<BGFXMaterial>(CreateMaterial("u_material", Qt::red));
    auto lights = std::make_unique<BGFXLightingContext>();
    lights->Add(CreateLight("u_light0"));
    Stop();
    Start();
    BGFXMaterial const newMaterial = CreateMaterial("u_material", Qt::green);
    BGFXLightingContext newLights;
    newLights.Add(CreateLight("u_light0"));
    int const count = CountUniforms();
    material.reset();
    lights.reset();
    EXPECT_EQ(CountUniforms(), count);
    EXPECT_EQ(Draw(newMaterial, newLights), QColor(Qt::green));
}

ZX3D_INSTANTIATE_BACKENDS(LightingLifeTimeTest);
