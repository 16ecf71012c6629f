// An environment variable with another value for a while.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace zarvex::testing {

/// Sets, or with a null value removes, a variable of this process; restores it in the end.
class EnvironmentVariable {
public:
    EnvironmentVariable(char const* name, char const* value) : m_name(name) {
        if (char const* const before = std::getenv(name))
            m_before = before;
        Set(value);
    }

    ~EnvironmentVariable() { Set(m_before ? m_before->c_str() : nullptr); }

    EnvironmentVariable(EnvironmentVariable const&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable const&) = delete;

private:
    void Set(char const* value) const {
        if (value != nullptr)
            setenv(m_name, value, true);
        else
            unsetenv(m_name);
    }

    char const* m_name;
    std::optional<std::string> m_before;
};

} // namespace zarvex::testing
