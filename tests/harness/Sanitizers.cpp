// What the sanitizers need to tell our faults from those of drivers.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

/// Stands in for the system's: no library is unloaded. What a driver's globals point to would otherwise be
/// reported as leaked, by an unknown module, once bgfx has unloaded the driver.
extern "C" [[gnu::visibility("default")]] int dlclose(void*) {
    return 0;
}

/// Leaks of libraries that are not ours, each with its reason.
extern "C" [[gnu::visibility("default")]] char const* __lsan_default_suppressions() {
    return
        // Connects Qt to the session bus and keeps the connection's tables to the end.
        "leak:libdbus-1.so\n";
}

#endif
