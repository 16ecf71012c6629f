// Handing on to the watch.
#include "Warnings.h"

#include <harness/Trouble.h>

void ExpectWarning(std::string_view name) {
    zarvex::testing::ExpectWarning(name);
}

std::vector<std::string> TakeWarnings(std::string_view name) {
    return zarvex::testing::TakeWarnings(name);
}
