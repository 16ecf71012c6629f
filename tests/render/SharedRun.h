// One run of the library for all tests of a suite: starting OpenGL in software takes most of a second.
#pragma once

#include <harness/LibraryRun.h>

#include <bgfx/bgfx.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <iosfwd>

namespace zarvex::testing {

/// How many objects of some kinds bgfx holds.
struct ObjectCounts {
    std::uint16_t frameBuffers = 0;
    std::uint16_t textures = 0;
    std::uint16_t vertexBuffers = 0;
    std::uint16_t indexBuffers = 0;
    std::uint16_t dynamicVertexBuffers = 0;
    std::uint16_t dynamicIndexBuffers = 0;

    friend bool operator==(ObjectCounts const&, ObjectCounts const&) = default;
};

std::ostream& operator<<(std::ostream& stream, ObjectCounts const& counts);

/// A test with the library running, a row per backend. The run goes on with the suite's next test of the same
/// backend, which starts from reset views.
///
/// Fails when bgfx holds other objects after the test than before. What bgfx reports as leaked when the run
/// ends fails the suite. A test that needs a run of its own derives from BackendTest.
class SharedRunTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {
protected:
    SharedRunTest();
    ~SharedRunTest() override;

    static void TearDownTestSuite();

private:
    ObjectCounts m_countsBefore;
};

} // namespace zarvex::testing
