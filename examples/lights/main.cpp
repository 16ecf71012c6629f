// Materials and moving lights: a sphere and a torus, whose materials the sliders beside the view change.
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QGroupBox>
#include <QLoggingCategory>
#include <QSlider>
#include <QTimer>
#include <QVBoxLayout>

#include <array>
#include <cmath>
#include <numbers>
#include <optional>
#include <utility>
#include <vector>

using namespace zarvex;

using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;

constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;

// ---- Meshes. Their vertices are white: materials multiply the vertex colours.

struct Mesh {
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
};

Vertex MakeVertex(QVector3D const& position, QVector3D const& normal) {
    return Vertex({position.x(), position.y(), position.z()}, {normal.x(), normal.y(), normal.z()},
                  {1.0f, 1.0f, 1.0f, 1.0f});
}

// A surface over u and v, each from 0 to 1, in columns and rows of squares.
template<typename Surface>
Mesh MakeMesh(int columns, int rows, Surface surface) {
    Mesh mesh;
    for (int row = 0; row <= rows; ++row) {
        for (int column = 0; column <= columns; ++column)
            mesh.vertices.push_back(
                surface(static_cast<float>(column) / columns, static_cast<float>(row) / rows));
    }
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            int const a = row * (columns + 1) + column;
            int const b = a + columns + 1;
            for (int const index : {a, a + 1, b, a + 1, b + 1, b})
                mesh.indices.push_back(static_cast<std::uint16_t>(index));
        }
    }
    return mesh;
}

QVector3D OnCircle(float turns) {
    return {std::cos(kTurn * turns), std::sin(kTurn * turns), 0.0f};
}

Mesh MakeSphere(float radius) {
    return MakeMesh(72, 36, [radius](float u, float v) {
        float const polar = 0.5f * kTurn * v;
        QVector3D const normal = std::sin(polar) * OnCircle(u) + QVector3D(0.0f, 0.0f, std::cos(polar));
        return MakeVertex(radius * normal, normal);
    });
}

Mesh MakeTorus(float ringRadius, float tubeRadius) {
    return MakeMesh(96, 48, [=](float u, float v) {
        QVector3D const ring = OnCircle(u);
        QVector3D const normal = std::cos(kTurn * v) * ring + QVector3D(0.0f, 0.0f, std::sin(kTurn * v));
        return MakeVertex(ringRadius * ring + tubeRadius * normal, normal);
    });
}

Mesh MakeDisc(float radius) {
    return MakeMesh(96, 1, [radius](float u, float v) {
        return MakeVertex(radius * v * OnCircle(u), QVector3D(0.0f, 0.0f, 1.0f));
    });
}

// ---- Materials and lights.

// What the sliders of a material say: the hue in degrees, the shininess as it is, the rest in percent.
struct MaterialSettings {
    int hue;
    int ambient;
    int diffuse;
    int specular;
    int shininess;
    int emission;
};

QColor Scaled(QColor const& color, float factor) {
    return QColor::fromRgbF(factor * color.redF(), factor * color.greenF(), factor * color.blueF());
}

// A lamp that circles around the z axis.
struct Lamp {
    char const* name; // by which the lighting program knows it
    QColor color;
    float radius;
    float height;
    float turnsPerSecond;
    float start; // turns
};

constexpr std::array kLamps{Lamp{"u_light0", QColor(255, 196, 120), 2.3f, 1.9f, 0.06f, 0.55f},
                            Lamp{"u_light1", QColor(96, 150, 255), 2.7f, 1.2f, -0.09f, 0.02f}};

QVector3D Place(Lamp const& lamp, float seconds) {
    return lamp.radius * OnCircle(lamp.start + lamp.turnsPerSecond * seconds) +
           QVector3D(0.0f, 0.0f, lamp.height);
}

// The lighting program reads the material whose name is "u_material".
zx3DQt::BGFXMaterial MakeMaterial(MaterialSettings const& settings) {
    QColor const color = QColor::fromHsv(settings.hue, 190, 255);
    zx3DQt::BGFXMaterial material("u_material", Scaled(color, 0.01f * settings.ambient),
                                  Scaled(color, 0.01f * settings.diffuse),
                                  Scaled(Qt::white, 0.01f * settings.specular),
                                  Scaled(color, 0.01f * settings.emission), settings.shininess);
    material.CreateUniforms();
    return material;
}

zx3DQt::BGFXMaterial MakePlateMaterial() {
    zx3DQt::BGFXMaterial material("u_material", QColor(40, 44, 52), QColor(96, 102, 114),
                                  QColor(150, 150, 150), Qt::black, 30.0f);
    material.CreateUniforms();
    return material;
}

// A lamp is seen by its own light only.
zx3DQt::BGFXMaterial MakeLampMaterial(Lamp const& lamp) {
    zx3DQt::BGFXMaterial material("u_material", Qt::black, Qt::black, Qt::black, lamp.color, 1.0f);
    material.CreateUniforms();
    return material;
}

class LitView : public zx3DQt::BGFXNativeWidget {
public:
    enum Body { Sphere, Torus };

    LitView() {
        setMinimumSize(320, 240);
        SetMaterial(Sphere, m_settings[Sphere]);
        SetMaterial(Torus, m_settings[Torus]);
        m_clock.start();
        m_timer.callOnTimeout(this, [this] { update(); });
        m_timer.start(16);
    }

    MaterialSettings const& GetMaterial(Body body) const { return m_settings[body]; }

    void SetMaterial(Body body, MaterialSettings const& settings) {
        m_settings[body] = settings;
        m_materials[body].emplace(MakeMaterial(settings)); // frees the uniforms of the one before
    }

    void SetLampOn(std::size_t lamp, bool isOn) { m_isLampOn[lamp] = isOn; }

protected:
    void paintEvent(QPaintEvent* event) override {
        BGFXNativeWidget::paintEvent(event);
        zx3DQt::BGFXRenderer& renderer = GetRenderer();
        if (!renderer.StartFrame(GetFrameBuffer()))
            return;
        float const seconds = 0.001f * static_cast<float>(m_clock.elapsed());
        zx3DQt::BGFXViewContext const view = MakeView();
        view.Submit(GetFrameBuffer());
        renderer.UpdateViewPositionUniform(view.ComputeViewPosition());

        SubmitLamps(seconds);
        DrawMeshes(view, seconds);
        if (event != nullptr) // not while a picture is taken
            renderer.PresentCurrentAndSubmitNextFrame(false);
    }

private:
    zx3DQt::BGFXViewContext MakeView() const {
        zx3DQt::BGFXViewContext view(
            1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x10151dff, 1.0f, 0});
        view.SetViewport(GetViewport());
        auto const aspectRatio = static_cast<float>(view.ComputeViewportAspectRatio());
        QMatrix4x4 camera;
        camera.translate(0.0f, -0.35f, -7.3f / std::min(aspectRatio, 1.0f));
        camera.rotate(-62.0f, 1.0f, 0.0f, 0.0f);
        view.SetViewMatrix(camera);
        // Depths from -1 to 1 or from 0 to 1, as the running renderer has them.
        bx::mtxProj(view.GetProjectionMatrix().data(), 40.0f, aspectRatio, 1.0f, 40.0f,
                    bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
        return view;
    }

    // Lights are replaced to move them. Those that are not added again are turned off; when there is none,
    // the viewer carries one.
    void SubmitLamps(float seconds) {
        m_lights.ClearAll();
        for (std::size_t i = 0; i < kLamps.size(); ++i) {
            if (!m_isLampOn[i])
                continue;
            Lamp const& lamp = kLamps[i];
            zx3DQt::BGFXPointLightSource light = zx3DQt::BGFXPointLightSourceBuilder()
                                                     .SetName(lamp.name)
                                                     .SetPosition(QVector4D(Place(lamp, seconds), 1.0f))
                                                     .SetAmbient(Scaled(lamp.color, 0.35f))
                                                     .SetDiffuse(Scaled(lamp.color, 0.8f))
                                                     .SetSpecular(lamp.color)
                                                     .Build();
            light.CreateUniforms();
            m_lights.Add(std::move(light));
        }
        m_lights.Submit();
    }

    void DrawMeshes(zx3DQt::BGFXViewContext const& view, float seconds) {
        static Mesh const sphere = MakeSphere(1.0f);
        static Mesh const torus = MakeTorus(0.8f, 0.32f);
        static Mesh const plate = MakeDisc(2.75f);
        QMatrix4x4 transform;
        DrawMesh(view, plate, m_plateMaterial, transform);
        transform.translate(-1.35f, 0.0f, 0.95f);
        transform.scale(0.85f);
        DrawMesh(view, sphere, *m_materials[Sphere], transform);
        transform.setToIdentity();
        transform.translate(1.35f, 0.0f, 1.25f);
        transform.rotate(15.0f * seconds, 0.0f, 0.0f, 1.0f);
        transform.rotate(60.0f, 1.0f, 0.0f, 0.0f);
        DrawMesh(view, torus, *m_materials[Torus], transform);
        for (std::size_t i = 0; i < kLamps.size(); ++i) {
            transform.setToIdentity();
            transform.translate(Place(kLamps[i], seconds));
            transform.scale(0.07f);
            if (m_isLampOn[i])
                DrawMesh(view, sphere, m_lampMaterials[i], transform);
        }
    }

    // Before every draw: bgfx applies what was set in the order in which it draws.
    void DrawMesh(zx3DQt::BGFXViewContext const& view, Mesh const& mesh, zx3DQt::BGFXMaterial const& material,
                  QMatrix4x4 const& transform) {
        material.Submit();
        GetRenderer().DrawTriangles(view, mesh.vertices, mesh.indices,
                                    GetRenderer().SetModelTransform(transform),
                                    zx3DQt::BGFXRenderer::STATE_OPAQUE);
    }

    std::array<MaterialSettings, 2> m_settings{
        {{.hue = 12, .ambient = 40, .diffuse = 80, .specular = 60, .shininess = 60, .emission = 0},
         {.hue = 175, .ambient = 40, .diffuse = 75, .specular = 75, .shininess = 32, .emission = 0}}};
    std::array<std::optional<zx3DQt::BGFXMaterial>, 2> m_materials;
    zx3DQt::BGFXMaterial m_plateMaterial = MakePlateMaterial();
    std::array<zx3DQt::BGFXMaterial, 2> m_lampMaterials{MakeLampMaterial(kLamps[0]),
                                                        MakeLampMaterial(kLamps[1])};
    std::array<bool, kLamps.size()> m_isLampOn{true, true};
    zx3DQt::BGFXLightingContext m_lights;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

// ---- The panel beside the view.

// A slider for one value of a body's material.
void AddSlider(QFormLayout& layout, QString const& text, LitView& view, LitView::Body body,
               int MaterialSettings::* value, int lowest, int highest) {
    auto* const slider = new QSlider(Qt::Horizontal);
    slider->setRange(lowest, highest);
    slider->setValue(view.GetMaterial(body).*value);
    slider->setMinimumWidth(140);
    QObject::connect(slider, &QSlider::valueChanged, &view, [&view, body, value](int position) {
        MaterialSettings settings = view.GetMaterial(body);
        settings.*value = position;
        view.SetMaterial(body, settings);
    });
    layout.addRow(text, slider);
}

QGroupBox* MakeMaterialBox(QString const& title, LitView& view, LitView::Body body) {
    auto* const box = new QGroupBox(title);
    auto* const layout = new QFormLayout(box);
    AddSlider(*layout, "Hue", view, body, &MaterialSettings::hue, 0, 359);
    AddSlider(*layout, "Ambient", view, body, &MaterialSettings::ambient, 0, 100);
    AddSlider(*layout, "Diffuse", view, body, &MaterialSettings::diffuse, 0, 100);
    AddSlider(*layout, "Specular", view, body, &MaterialSettings::specular, 0, 100);
    AddSlider(*layout, "Shininess", view, body, &MaterialSettings::shininess, 1, 128);
    AddSlider(*layout, "Emission", view, body, &MaterialSettings::emission, 0, 100);
    return box;
}

QGroupBox* MakeLampBox(LitView& view) {
    auto* const box = new QGroupBox("Lights");
    auto* const layout = new QVBoxLayout(box);
    char const* const names[] = {"Warm", "Cool"};
    for (std::size_t i = 0; i < kLamps.size(); ++i) {
        auto* const check = new QCheckBox(names[i]);
        check->setChecked(true);
        QObject::connect(check, &QCheckBox::toggled, &view, [&view, i](bool on) { view.SetLampOn(i, on); });
        layout->addWidget(check);
    }
    return box;
}

// Edges are smooth where a GPU draws; --samples=1, or another number, decides otherwise.
std::uint32_t ChooseSampleCount(QStringList const& arguments) {
    QString const asked = arguments.filter("--samples=").value(0).section('=', 1);
    if (!asked.isEmpty())
        return asked.toUInt();
    return zx3DQt::HasGpu(*bgfx::getCaps()) ? 4 : 1;
}

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    QApplication application(argc, argv);
    bool const openGL = application.arguments().contains("--opengl");
    // The name of a picture as an argument: it is saved, with twice the pixels of the widget.
    QString const picture = application.arguments().filter(".png").value(0);
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(true)) // wait for the display's refresh
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        QWidget window; // goes before Shutdown
        window.setWindowTitle("zx3DQt: lights");
        auto* const view = new LitView;
        view->SetSampleCount(ChooseSampleCount(application.arguments()));
        view->SetDepthFormat(bgfx::TextureFormat::D32F);
        auto* const panel = new QVBoxLayout;
        panel->addWidget(MakeMaterialBox("Sphere", *view, LitView::Sphere));
        panel->addWidget(MakeMaterialBox("Torus", *view, LitView::Torus));
        panel->addWidget(MakeLampBox(*view));
        panel->addStretch();
        auto* const layout = new QHBoxLayout(&window);
        layout->addWidget(view, 1);
        layout->addLayout(panel);
        window.resize(960, 560);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = view->RenderPicture({.size = 2 * view->size(), .pixelRatio = 2.0}).save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
