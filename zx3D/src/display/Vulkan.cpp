// Three calls of Vulkan's loader, where there is one.
#include "Vulkan.h"

#include <dlfcn.h>

#include <cstdint>

namespace zarvex::zx3D {

namespace {

// As Vulkan declares them: nothing else here needs its headers.
struct InstanceCreateInfo {
    std::int32_t structureType = 1;
    void const* next = nullptr;
    std::uint32_t flags = 0;
    void const* applicationInfo = nullptr;
    std::uint32_t layerCount = 0;
    char const* const* layers = nullptr;
    std::uint32_t extensionCount = 0;
    char const* const* extensions = nullptr;
};
using Instance = struct InstanceOfVulkan*;
using Result = std::int32_t;

template<typename Function>
Function* Find(void* library, char const* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

} // namespace

bool HasVulkan() {
    void* const library = dlopen("libvulkan.so.1", RTLD_LAZY);
    if (library == nullptr)
        return false;
    auto* const create =
        Find<Result(InstanceCreateInfo const*, void const*, Instance*)>(library, "vkCreateInstance");
    auto* const enumerate =
        Find<Result(Instance, std::uint32_t*, void*)>(library, "vkEnumeratePhysicalDevices");
    auto* const destroy = Find<void(Instance, void const*)>(library, "vkDestroyInstance");
    if (create == nullptr || enumerate == nullptr || destroy == nullptr)
        return false;
    InstanceCreateInfo const info;
    Instance instance = nullptr;
    if (create(&info, nullptr, &instance) != 0)
        return false;
    std::uint32_t count = 0;
    enumerate(instance, &count, nullptr);
    destroy(instance, nullptr);
    return count != 0;
}

} // namespace zarvex::zx3D
