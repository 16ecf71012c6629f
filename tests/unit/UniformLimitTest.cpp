// A renderer where bgfx has few uniforms left: it has all that it needs, or says so and draws nothing. Never
// is a shader made that bgfx cannot give its uniforms.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace zarvex;

namespace {

/// All uniforms of bgfx but some.
class UniformHog {
public:
    explicit UniformHog(std::size_t left) {
        do
            m_taken.push_back(bgfx::createUniform(("u_hog" + std::to_string(m_taken.size())).c_str(),
                                                  bgfx::UniformType::Vec4));
        while (bgfx::isValid(m_taken.back()));
        m_taken.pop_back();
        for (std::size_t i = 0; i < left; ++i) {
            bgfx::destroy(m_taken.back());
            m_taken.pop_back();
        }
        bgfx::frame();
    }
    ~UniformHog() {
        for (bgfx::UniformHandle const uniform : m_taken)
            bgfx::destroy(uniform);
    }

private:
    std::vector<bgfx::UniformHandle> m_taken;
};

/// Whether a renderer has its programs where so many uniforms are left.
bool IsReadyWith(std::size_t left) {
    zx3D::Context::PreferRenderer(bgfx::RendererType::Noop);
    EXPECT_TRUE(zx3D::Context::Initialize(zx3D::ContextOptions::Create(
        nullptr, 64, 64, nullptr, zx3D::ContextOptions::ThreadMode::MultiThreaded, false)));
    bool isReady = false;
    {
        UniformHog const hog(left);
        zx3DQt::BGFXRenderer renderer;
        renderer.Initialize();
        isReady = bgfx::isValid(renderer.GetBasicProgram());
        EXPECT_EQ(bgfx::isValid(renderer.GetFullscreenTextureProgram()), isReady) << left;
        EXPECT_LE(bgfx::getStats()->numUniforms, 512);
    }
    zx3D::Context::Shutdown();
    return isReady;
}

} // namespace

TEST(UniformLimitTest, ARendererHasAllItsProgramsOrNone) {
    for (std::size_t const left : {0, 8, 30, 44, 45, 46, 47, 48, 49})
        EXPECT_FALSE(IsReadyWith(left)) << left;
    for (std::size_t const left : {50, 51, 52, 60, 512})
        EXPECT_TRUE(IsReadyWith(left)) << left;
}
