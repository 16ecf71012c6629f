// Vulkan on this machine.
#pragma once

namespace zarvex::zx3D {

/// Whether Vulkan has a device. Its loader stays loaded.
bool HasVulkan();

} // namespace zarvex::zx3D
