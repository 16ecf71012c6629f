// What a measurement says, for people and for programs.
#pragma once

#include "runner/Measurement.h"

#include <string>

namespace zarvex::benchmarks {

struct Report {
    std::string workload, title, variant, backend;
    Pair frames;        ///< library, floor
    Pair againstMemcpy; ///< library, memcpy; may be empty
    std::size_t bytes = 0;
    Comparison comparison;
};

void PrintTableHeader();
void PrintTableRow(Report const& report);

/// Appends the report as one line, a JSON object. Returns whether it could be written.
bool AppendJson(Report const& report, std::string const& file);

} // namespace zarvex::benchmarks
