// A renderer without compute shaders.
#include "DrawingCheck.h"
#include "WithoutCompute.h"

#include <harness/LibraryRun.h>
#include <harness/Trouble.h>

#include <zx3D/ProgramFactory.h>

#include <QColor>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class NoComputeTest : public BackendTest {
private:
    WithoutCompute const m_withoutCompute;
};

} // namespace

TEST_P(NoComputeTest, ComputeProgramsAreThereButInvalid) {
    for (char const* const name : {"cs_point_sprite", "cs_rectangle_sprite"}) {
        std::optional<bgfx::ProgramHandle> const program = zx3D::ProgramFactory::Get().CreateProgram(name);
        ASSERT_TRUE(program.has_value());
        EXPECT_FALSE(bgfx::isValid(*program));
    }
}

TEST_P(NoComputeTest, UnknownComputeProgramsAreStillUnknown) {
    EXPECT_FALSE(zx3D::ProgramFactory::Get().CreateProgram("cs_nowhere").has_value());
    EXPECT_EQ(Trouble::Take().size(), 1u);
}

TEST_P(NoComputeTest, TheRendererDraws) {
    ExpectDrawingWorks(Qt::red);
}

ZX3D_INSTANTIATE_BACKENDS(NoComputeTest);
