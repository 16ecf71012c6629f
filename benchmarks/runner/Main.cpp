// Runs one workload on one backend: a process of its own for each, so that none inherits another's memory.
#include "runner/Measurement.h"
#include "runner/Memory.h"
#include "runner/Report.h"
#include "runner/Scene.h"
#include "runner/Stage.h"
#include "workloads/Workloads.h"

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <optional>

#include <malloc.h>
#include <unistd.h>

using namespace zarvex;
using namespace zarvex::benchmarks;

namespace {

struct Options {
    WorkloadKind kind;
    QString variant, backend, jsonFile;
    std::optional<Side> profiledSide, sideWithMemory;
    std::size_t frames = 0;
    bool comparesSamples = false;
};

[[noreturn]] void Fail(QString const& message) {
    std::fprintf(stderr, "zx3d_bench: %s\n", qPrintable(message));
    std::exit(2);
}

bgfx::RendererType::Enum ToRendererType(QString const& backend) {
    if (backend == "Noop")
        return bgfx::RendererType::Noop;
    if (backend == "OpenGL")
        return bgfx::RendererType::OpenGL;
    if (backend == "Vulkan")
        return bgfx::RendererType::Vulkan;
    Fail("no backend " + backend + "; there are Noop, OpenGL and Vulkan");
}

void ListWorkloads() {
    for (WorkloadKind const& kind : AllWorkloads()) {
        for (std::string const& variant : kind.variants)
            std::printf("%s %s %s\n", kind.name.c_str(), variant.c_str(), kind.title.c_str());
    }
}

WorkloadKind FindWorkload(std::string const& name, std::string const& variant) {
    for (WorkloadKind const& kind : AllWorkloads()) {
        if (kind.name == name && std::count(kind.variants.begin(), kind.variants.end(), variant) != 0)
            return kind;
    }
    Fail(QString::fromStdString("no workload " + name + " " + variant + "; --list shows what there is"));
}

/// Empty when the option is not there.
std::optional<Side> ParseSide(QCommandLineParser const& parser, QString const& option) {
    QString const side = parser.value(option);
    if (side == "library")
        return Side::Library;
    if (side == "floor")
        return Side::Floor;
    if (parser.isSet(option))
        Fail("no side " + side + "; there are library and floor");
    return std::nullopt;
}

/// As many as are asked for, or the usual number of what is to be done.
std::size_t ParseFrames(QCommandLineParser const& parser, Options const& options) {
    std::size_t frames = options.backend == "Noop" ? 500 : 100;
    if (options.sideWithMemory)
        frames = 10000;
    if (parser.isSet("frames"))
        frames = parser.value("frames").toULongLong();
    if (frames == 0)
        Fail("a number of frames that is not 0, please");
    return frames;
}

/// Without a QApplication, which would insist on a display.
Options ParseArguments(int& argc, char* argv[]) {
    QCoreApplication const application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Times frames drawn with the library and by hand on bgfx, in turn.");
    parser.addHelpOption();
    parser.addOptions({
        {"list", "Show the workloads and their variants."},
        {"header", "Show the table's header."},
        {"frames", "Timed frames of each; 100, and 500 on Noop. With --memory all frames; 10000.", "number"},
        {"samples",
         "Compare so many samples for each pixel with one, both drawn with the library: what smooth edges "
         "cost. "
         "Not for W8.",
         "number"},
        {"json", "Append the result to a file.", "file"},
        {"profile", "Only draw, with the library or the floor, for a profiler to watch.", "side"},
        {"memory", "Measure no time, but whether memory grows, of the library or the floor.", "side"},
    });
    parser.addPositionalArgument("workload", "W0, W1 ...");
    parser.addPositionalArgument("variant", "As --list shows.");
    parser.addPositionalArgument("backend", "Noop, OpenGL or Vulkan.");
    parser.process(application);
    if (parser.isSet("list")) {
        ListWorkloads();
        std::exit(0);
    }
    if (parser.isSet("header")) {
        if (parser.isSet("memory"))
            PrintMemoryHeader();
        else
            PrintTableHeader();
        std::exit(0);
    }
    QStringList const arguments = parser.positionalArguments();
    if (arguments.size() != 3)
        parser.showHelp(2);
    Options options{FindWorkload(arguments[0].toStdString(), arguments[1].toStdString()),
                    arguments[1],
                    arguments[2],
                    parser.value("json"),
                    ParseSide(parser, "profile"),
                    ParseSide(parser, "memory")};
    options.frames = ParseFrames(parser, options);
    options.comparesSamples = parser.isSet("samples");
    if (options.comparesSamples)
        Scene::CompareSamples(parser.value("samples").toUInt());
    return options;
}

/// Lets malloc keep what is freed. Otherwise the one side's frames decide whether the other side's memory
/// goes back to the system in between, and comes back page by page.
void KeepFreedMemory() {
    mallopt(M_MMAP_MAX, 0); // blocks of 32 MiB and more would get pages of their own whatever the threshold
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_ARENA_MAX, 1); // others hold 64 MiB at most, and are given back whatever the threshold
}

/// What malloc keeps for each thread of freed blocks counts as handed out, and fills as chance has it. It can
/// only be told from outside to keep nothing: starts the program again.
void RestartWithoutMallocCaches(char* argv[]) {
    char const* const variable = "GLIBC_TUNABLES";
    QByteArray const tunables = qgetenv(variable);
    QByteArray const noCaches = "glibc.malloc.tcache_count=0";
    if (tunables.contains(noCaches))
        return;
    qputenv(variable, tunables.isEmpty() ? noCaches : tunables + ":" + noCaches);
    execv("/proc/self/exe", argv);
    Fail("cannot start again");
}

bool CheckMemory(Workload& workload, Options const& options) {
    if (options.frames <= FramesUntilSteady())
        Fail(QString("more than %1 frames, please").arg(FramesUntilSteady()));
    Side const side = *options.sideWithMemory;
    MemoryReport const report{options.kind.name, options.variant.toStdString(), options.backend.toStdString(),
                              side, MeasureMemory(workload, side, options.frames)};
    PrintMemoryRow(report);
    return report.growth.IsSteady();
}

/// Edges may fall on either side of a pixel's centre when the floor's sums round another way.
bool IsSamePicture(Comparison const& comparison) {
    return comparison.differentPixels <= comparison.drawnPixels / 10000;
}

bool Measure(Workload& workload, Options const& options) {
    Report report;
    report.workload = options.kind.name;
    report.title = options.kind.title;
    report.variant = options.variant.toStdString();
    report.backend = options.backend.toStdString();
    report.bytes = workload.GetByteCount();
    report.comparison = Compare(workload);
    report.frames = MeasureFrames(workload, options.frames, options.kind.warmUpFrames);
    if (DrawsNothing() && report.bytes != 0)
        report.againstMemcpy = MeasureAgainstMemcpy(workload, options.frames, options.kind.warmUpFrames);
    PrintTableRow(report);

    if (!options.jsonFile.isEmpty() && !AppendJson(report, options.jsonFile.toStdString()))
        Fail("cannot write " + options.jsonFile);
    if (options.comparesSamples) // which are different work, and different pictures
        return true;
    if (!report.comparison.sameWork)
        std::printf("     The two sides give bgfx different work.\n");
    if (report.comparison.differentPixels != 0)
        std::printf("     %zu of %zu pixels differ, by %d at most; see bench-library.png, bench-floor.png.\n",
                    report.comparison.differentPixels, report.comparison.drawnPixels,
                    report.comparison.largestDifference);
    return report.comparison.sameWork && IsSamePicture(report.comparison);
}

} // namespace

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    Options const options = ParseArguments(argc, argv);
    if (options.sideWithMemory)
        RestartWithoutMallocCaches(argv);
    else
        KeepFreedMemory();
    QApplication const application(argc, argv);
    bgfx::RendererType::Enum const renderer = ToRendererType(options.backend);
    zx3D::Context::PreferRenderer(renderer);
    if (!zx3DQt::Init(false) || bgfx::getRendererType() != renderer)
        Fail(options.backend + " does not start");

    bool succeeded = true;
    {
        std::unique_ptr<Workload> const workload = options.kind.create(options.variant.toStdString());
        if (options.profiledSide)
            Draw(*workload, *options.profiledSide, options.frames);
        else if (options.sideWithMemory)
            succeeded = CheckMemory(*workload, options);
        else
            succeeded = Measure(*workload, options);
    }
    zx3DQt::Shutdown();
    return succeeded ? 0 : 1;
}
