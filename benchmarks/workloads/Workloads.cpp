// The list that the command line chooses from.
#include "workloads/Workloads.h"

namespace zarvex::benchmarks {

std::vector<WorkloadKind> AllWorkloads() {
    return {EmptyFrame(), ThinLines(), WideLines(),   ThinPoints(),       PointSprites(),
            LitMesh(),    Labels(),    Coordinates(), CapturedPictures(), ManyCalls()};
}

} // namespace zarvex::benchmarks
