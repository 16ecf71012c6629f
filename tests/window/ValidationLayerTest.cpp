// Vulkan's validation layer is there, and what it says fails a test.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"
#include "harness/Trouble.h"
#include "render/EnvironmentVariable.h"

namespace zarvex::testing {

TEST(ValidationLayerTest, ItsMessagesAreTrouble) {
    // Has it say something about programs without faults, too.
    EnvironmentVariable const enables("VK_LAYER_ENABLES", "VK_VALIDATION_FEATURE_ENABLE_BEST_PRACTICES_EXT");
    LibraryRun const run(bgfx::RendererType::Vulkan);
    Trouble::Expect(" Validation, ");
    CornerWindow window(Qt::darkCyan);
    ShowAndWait(window);
    ExpectPicture(window);
}

} // namespace zarvex::testing
