// Sizes and ways to expand sprites.
#include "workloads/Variants.h"

#include <bgfx/bgfx.h>

namespace zarvex::benchmarks {

std::vector<std::string> SizeVariants() {
    return {"100%", "10%", "1%"};
}

std::size_t PartOf(std::size_t count, std::string const& sizeVariant) {
    return count * std::stoul(sizeVariant) / 100;
}

std::vector<std::string> ExpansionVariants() {
    return {"compute", "cpu"};
}

bool UseCompute(std::string const& expansionVariant) {
    bool const useCompute = expansionVariant == "compute";
    if (!useCompute) // bgfx keeps its capabilities in one record of the process
        const_cast<bgfx::Caps&>(*bgfx::getCaps()).supported &= ~BGFX_CAPS_COMPUTE;
    return useCompute;
}

} // namespace zarvex::benchmarks
