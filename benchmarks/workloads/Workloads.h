// The workloads. To add one: a file of its own here, its declaration below, and a line in Workloads.cpp.
#pragma once

#include "runner/Workload.h"

#include <vector>

namespace zarvex::benchmarks {

WorkloadKind EmptyFrame();
WorkloadKind ThinLines();
WorkloadKind WideLines();
WorkloadKind ThinPoints();
WorkloadKind PointSprites();
WorkloadKind LitMesh();
WorkloadKind CapturedPictures();
WorkloadKind Coordinates();
WorkloadKind Labels();
WorkloadKind ManyCalls();

std::vector<WorkloadKind> AllWorkloads();

} // namespace zarvex::benchmarks
