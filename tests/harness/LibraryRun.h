// The library, running on a backend for the length of a test.
#pragma once

#include <bgfx/bgfx.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zarvex::testing {

/// The backends that every test with pixels has a row for.
inline auto AllBackends() {
    return ::testing::Values(bgfx::RendererType::OpenGL, bgfx::RendererType::Vulkan);
}

/// "OpenGL" or "Vulkan": the name of a test's row.
std::string NameOf(bgfx::RendererType::Enum backend);

/// Starts the library on a backend; stops it at the end and fails the test for every trouble met meanwhile.
class LibraryRun {
public:
    /// Fails the test when the library does not start on exactly this backend.
    explicit LibraryRun(bgfx::RendererType::Enum backend);
    ~LibraryRun();

    LibraryRun(LibraryRun const&) = delete;
    LibraryRun& operator=(LibraryRun const&) = delete;

    /// The test provokes a trouble whose text contains this: it must be met before the run's end, and is then
    /// no failure.
    void ExpectTrouble(std::string text) { m_expected.push_back(std::move(text)); }

private:
    std::vector<std::string> m_expected;
};

/// A test with the library running, a row per backend.
class BackendTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {
protected:
    LibraryRun m_run{GetParam()};
};

/// Registers a row per backend for a fixture derived from BackendTest.
#define ZX3D_INSTANTIATE_BACKENDS(fixture)                                                                   \
    INSTANTIATE_TEST_SUITE_P(Backends, fixture, zarvex::testing::AllBackends(),                              \
                             [](auto const& row) { return zarvex::testing::NameOf(row.param); })

} // namespace zarvex::testing
