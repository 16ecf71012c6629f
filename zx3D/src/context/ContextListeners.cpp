// The list of listeners.
#include "ContextListeners.h"

#include <zx3D/ContextListener.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>

namespace zarvex::zx3D {

namespace {

struct Listeners {
    std::map<std::uint64_t, ContextListener*> byAge; ///< ages grow: the newest is the last
    std::uint64_t constructed = 0;
};

Listeners& GetListeners() {
    // Never destroyed: listeners of static storage duration may be destroyed later.
    static Listeners& listeners = *new Listeners;
    return listeners;
}

} // namespace

ContextListener::ContextListener() {
    Listeners& listeners = GetListeners();
    listeners.byAge.emplace(++listeners.constructed, this);
}

ContextListener::~ContextListener() {
    std::erase_if(GetListeners().byAge, [this](auto const& entry) { return entry.second == this; });
}

void NotifyContextStopping() {
    // Looks anew after each, who may have changed the list. Who came meanwhile follows in the next pass.
    auto& listeners = GetListeners().byAge;
    std::uint64_t told = 0; // this age and all before it
    while (!listeners.empty() && listeners.rbegin()->first > told) {
        std::uint64_t const newest = listeners.rbegin()->first;
        for (auto next = listeners.end(); next != listeners.begin();) {
            auto const [age, listener] = *std::prev(next);
            if (age <= told)
                break;
            listener->OnContextStopping();
            next = listeners.lower_bound(age);
        }
        told = newest;
    }
}

} // namespace zarvex::zx3D
