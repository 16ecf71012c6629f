// Runs one workload on one backend: a process of its own for each, so that none inherits another's memory.
#include "runner/Measurement.h"
#include "runner/Report.h"
#include "runner/Stage.h"
#include "workloads/Workloads.h"

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>

#include <malloc.h>

using namespace zarvex;
using namespace zarvex::benchmarks;

namespace {

struct Options {
    WorkloadKind kind;
    QString variant, backend, jsonFile, profiledSide;
    std::size_t frames = 0;
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

/// Without a QApplication, which would insist on a display.
Options ParseArguments(int& argc, char* argv[]) {
    QCoreApplication const application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Times frames drawn with the library and by hand on bgfx, in turn.");
    parser.addHelpOption();
    parser.addOptions({
        {"list", "Show the workloads and their variants."},
        {"header", "Show the table's header."},
        {"frames", "Timed frames of each; 100, and 500 on Noop.", "number"},
        {"json", "Append the result to a file.", "file"},
        {"profile", "Only draw, with the library or the floor, for a profiler to watch.", "side"},
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
        PrintTableHeader();
        std::exit(0);
    }
    QStringList const arguments = parser.positionalArguments();
    if (arguments.size() != 3)
        parser.showHelp(2);
    Options options{FindWorkload(arguments[0].toStdString(), arguments[1].toStdString()), arguments[1],
                    arguments[2], parser.value("json"), parser.value("profile")};
    options.frames = arguments[2] == "Noop" ? 500 : 100;
    if (parser.isSet("frames"))
        options.frames = parser.value("frames").toULongLong();
    if (options.frames == 0)
        Fail("a number of frames that is not 0, please");
    return options;
}

/// Lets malloc keep what is freed. Otherwise the one side's frames decide whether the other side's memory
/// goes back to the system in between, and comes back page by page.
void KeepFreedMemory() {
    constexpr int never = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, never);
    mallopt(M_TRIM_THRESHOLD, never);
}

void Profile(Workload& workload, Options const& options) {
    for (std::size_t i = 0; i < options.frames; ++i) {
        if (options.profiledSide == "library")
            workload.RunLibrary();
        else
            workload.RunFloor();
    }
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
    KeepFreedMemory();
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    Options const options = ParseArguments(argc, argv);
    QApplication const application(argc, argv);
    bgfx::RendererType::Enum const renderer = ToRendererType(options.backend);
    zx3D::Context::PreferRenderer(renderer);
    if (!zx3DQt::Init(false) || bgfx::getRendererType() != renderer)
        Fail(options.backend + " does not start");

    bool succeeded = true;
    {
        std::unique_ptr<Workload> const workload = options.kind.create(options.variant.toStdString());
        if (options.profiledSide.isEmpty())
            succeeded = Measure(*workload, options);
        else
            Profile(*workload, options);
    }
    zx3DQt::Shutdown();
    return succeeded ? 0 : 1;
}
