// Sequences of calls of the public operations that a seed decides: nothing may be met but the libraries' own
// warnings.
//
// ZX3D_FUZZ_SECONDS    how long to go on; 60 without
// ZX3D_FUZZ_SEED       the first sequence's seed; 1 without. Each sequence has the next one.
// ZX3D_FUZZ_STEPS      how many steps a sequence has; 80 without
//
// To repeat a finding: ZX3D_FUZZ_SEED of the sequence, and ZX3D_FUZZ_SECONDS=0, which makes one sequence.
#include "World.h"

#include <harness/Trouble.h>

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <sanitizer/asan_interface.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace zarvex::fuzz {

namespace {

using bgfx::RendererType;

std::uint64_t Setting(char const* name, std::uint64_t otherwise) {
    char const* const value = std::getenv(name);
    return value != nullptr ? std::strtoull(value, nullptr, 10) : otherwise;
}

std::string steps; ///< of the sequence that runs

void PrintSteps() {
    std::fprintf(stderr, "%s\n", steps.c_str());
}

/// All that was met, other than what the libraries say themselves, what a debug build of bgfx says of values
/// that are set twice before a draw, as a sequence may do, and what Qt says of a window whose state changes
/// while the window manager is about to map it.
std::vector<std::string> TakeFindings() {
    testing::Trouble::Take("was already set for this draw call");
    testing::Trouble::Take("setNetWmStateOnUnmappedWindow() called on mapped window");
    std::vector<std::string> findings = testing::Trouble::Take();
    std::erase_if(findings,
                  [](std::string const& trouble) { return trouble.starts_with("zarvex.zx3dqt: "); });
    return findings;
}

void RunSequence(std::uint64_t seed, std::vector<RendererType::Enum> const& backends) {
    steps = "steps of seed " + std::to_string(seed) + ':';
    std::fprintf(stderr, "sequence of seed %llu\n", static_cast<unsigned long long>(seed));
    World world(seed, backends);
    for (std::uint64_t left = Setting("ZX3D_FUZZ_STEPS", 80); left > 0 && !::testing::Test::HasFailure();
         --left) {
        steps += ' ';
        steps += world.NextStep();
        steps += ';';
        world.TakeStep();
        for (std::string const& finding : TakeFindings())
            ADD_FAILURE() << finding;
    }
    steps += " end";
}

class SequenceTest : public ::testing::TestWithParam<RendererType::Enum> {};

} // namespace

TEST_P(SequenceTest, FindsNothing) {
    __sanitizer_set_death_callback(PrintSteps);
    std::vector<RendererType::Enum> backends{GetParam()};
    for (RendererType::Enum const other : {RendererType::Noop, RendererType::OpenGL, RendererType::Vulkan})
        backends.push_back(other);
    QElapsedTimer timer;
    timer.start();
    auto const milliseconds = static_cast<qint64>(1000 * Setting("ZX3D_FUZZ_SECONDS", 60));
    std::uint64_t seed = Setting("ZX3D_FUZZ_SEED", 1);
    int sequences = 0;
    do {
        RunSequence(seed++, backends);
        for (std::string const& finding : TakeFindings())
            ADD_FAILURE() << finding;
        ++sequences;
    } while (!HasFailure() && timer.elapsed() < milliseconds);
    if (HasFailure())
        PrintSteps();
    std::printf("%d sequences\n", sequences);
}

INSTANTIATE_TEST_SUITE_P(Backends, SequenceTest, ::testing::Values(RendererType::Noop, RendererType::Vulkan),
                         [](auto const& row) { return row.param == RendererType::Noop ? "Noop" : "Vulkan"; });

} // namespace zarvex::fuzz
