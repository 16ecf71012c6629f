// The library, running on a backend for the length of a test.
#pragma once

#include <bgfx/bgfx.h>
#include <gtest/gtest.h>

#include <string>

namespace zarvex::testing {

/// The backends that every test with pixels has a row for.
inline auto AllBackends() {
    return ::testing::Values(bgfx::RendererType::OpenGL, bgfx::RendererType::Vulkan);
}

/// "OpenGL" or "Vulkan": the name of a test's row.
std::string NameOf(bgfx::RendererType::Enum backend);

/// Starts the library on a backend and stops it at the end. What bgfx reports meanwhile is trouble.
class LibraryRun {
public:
    /// Fails the test when the library does not start on exactly this backend.
    explicit LibraryRun(bgfx::RendererType::Enum backend);
    ~LibraryRun();

    LibraryRun(LibraryRun const&) = delete;
    LibraryRun& operator=(LibraryRun const&) = delete;
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
