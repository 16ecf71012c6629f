// The list of listeners.
#include "ContextListeners.h"

#include <zx3D/ContextListener.h>

#include <set>

namespace zarvex::zx3D {

namespace {

std::set<ContextListener*>& GetListeners() {
    // Never destroyed: listeners of static storage duration may be destroyed later.
    static std::set<ContextListener*>& listeners = *new std::set<ContextListener*>;
    return listeners;
}

} // namespace

ContextListener::ContextListener() {
    GetListeners().insert(this);
}

ContextListener::~ContextListener() {
    GetListeners().erase(this);
}

void NotifyContextStopping() {
    for (ContextListener* const listener : GetListeners())
        listener->OnContextStopping();
}

} // namespace zarvex::zx3D
