// Variants that several workloads have.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zarvex::benchmarks {

/// Sizes: what a frame costs should grow with them.
std::vector<std::string> SizeVariants();
std::size_t PartOf(std::size_t count, std::string const& sizeVariant);

/// Ways to expand sprites: "compute" and "cpu".
std::vector<std::string> ExpansionVariants();

/// Whether the variant is "compute". Otherwise takes compute shaders away from what bgfx can do, so that the
/// library, too, expands on the CPU.
bool UseCompute(std::string const& expansionVariant);

} // namespace zarvex::benchmarks
