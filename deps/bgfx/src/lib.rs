// Empty on purpose: cargo accepts no package without a target, and this one only names a dependency.
