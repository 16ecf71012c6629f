// Suppressions for libraries that are not ours, each with its reason.
#include "Sanitizers.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

#include <cstddef>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <link.h>

// The sanitizer's run-time library looks for it in the executable.
extern "C" [[gnu::visibility("default")]] char const* __lsan_default_suppressions() {
    return
        // Connects Qt to the session bus and keeps the connection's tables to the end.
        "leak:libdbus-1.so\n";
}

namespace zarvex::testing {

void PinLoadedLibraries() {
    std::vector<std::string> names;
    auto const note = [](dl_phdr_info* library, std::size_t, void* list) {
        static_cast<std::vector<std::string>*>(list)->emplace_back(library->dlpi_name);
        return 0;
    };
    dl_iterate_phdr(note, &names); // holds the loader's lock meanwhile
    for (std::string const& name : names)
        dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace zarvex::testing

#else

void zarvex::testing::PinLoadedLibraries() {}

#endif
