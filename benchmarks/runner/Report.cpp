// The table's columns and the fields of the JSON object.
#include "runner/Report.h"

#include <cstdio>
#include <fstream>
#include <ostream>

namespace zarvex::benchmarks {

namespace {

void PrintTimes(Summary const& summary) {
    std::printf("  %8.3f %8.3f %8.3f", summary.median, summary.min, summary.max);
}

std::ostream& operator<<(std::ostream& stream, Summary const& summary) {
    return stream << R"({"median": )" << summary.median << R"(, "min": )" << summary.min << R"(, "max": )"
                  << summary.max << '}';
}

} // namespace

void PrintTableHeader() {
    std::printf("%-4s %-8s %-7s  %26s  %26s  %8s  %8s %8s\n", "", "", "", "library, ms: median min max",
                "floor, ms: median min max", "memcpy", "library", "library");
    std::printf("%-4s %-8s %-7s  %26s  %26s  %8s  %8s %8s\n", "", "variant", "backend", "", "", "ms",
                "/ floor", "/ memcpy");
}

void PrintTableRow(Report const& report) {
    std::printf("%-4s %-8s %-7s", report.workload.c_str(), report.variant.c_str(), report.backend.c_str());
    PrintTimes(Summarize(report.frames.first));
    PrintTimes(Summarize(report.frames.second));
    double const toFloor = MedianRatio(report.frames.first, report.frames.second);
    if (report.againstMemcpy.first.empty()) {
        std::printf("  %8s  %8.3f %8s\n", "-", toFloor, "-");
        return;
    }
    std::printf("  %8.3f  %8.3f %8.3f\n", Summarize(report.againstMemcpy.second).median, toFloor,
                MedianRatio(report.againstMemcpy.first, report.againstMemcpy.second));
}

bool AppendJson(Report const& report, std::string const& file) {
    std::ofstream json(file, std::ios::app);
    json << R"({"workload": ")" << report.workload << R"(", "title": ")" << report.title
         << R"(", "variant": ")" << report.variant << R"(", "backend": ")" << report.backend
         << R"(", "frames": )" << report.frames.first.size() << R"(, "library": )"
         << Summarize(report.frames.first) << R"(, "floor": )" << Summarize(report.frames.second)
         << R"(, "libraryToFloor": )" << MedianRatio(report.frames.first, report.frames.second);
    if (!report.againstMemcpy.first.empty()) {
        json << R"(, "memcpy": )" << Summarize(report.againstMemcpy.second) << R"(, "memcpyBytes": )"
             << report.bytes << R"(, "libraryToMemcpy": )"
             << MedianRatio(report.againstMemcpy.first, report.againstMemcpy.second);
    }
    json << R"(, "draws": )" << report.comparison.library.draws << R"(, "dispatches": )"
         << report.comparison.library.dispatches << R"(, "transientVertexBytes": )"
         << report.comparison.library.transientVertexBytes << R"(, "transientIndexBytes": )"
         << report.comparison.library.transientIndexBytes << R"(, "drawnPixels": )"
         << report.comparison.drawnPixels << R"(, "differentPixels": )" << report.comparison.differentPixels
         << "}\n";
    return json.good();
}

} // namespace zarvex::benchmarks
