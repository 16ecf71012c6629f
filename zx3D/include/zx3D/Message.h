// What the library has to say to people, and to whom it says it.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace zarvex::zx3D {

/// How much a message matters.
enum class MessageLevel : std::uint8_t {
    Debug,    ///< for those who look for a fault in the library
    Info,     ///< what is worth knowing; nothing is wrong
    Warning,  ///< something was asked for and could not be done, or was left out
    Critical, ///< nothing can be done any more
};

/// One message. Plain; the texts live until the handler returns.
struct Message {
    MessageLevel level = MessageLevel::Info; ///< how much it matters
    std::string_view name; ///< stable, for programs: subject and cause, such as "surface.too-large"
    std::string_view text; ///< for people, in one line, without a line end; UTF-8
};

/// Takes messages, from any thread.
using MessageHandler = std::function<void(Message const&)>;

/// What keeps a message from being repeated in every frame: it is said once per cause, and again when the
/// cause came back after it had gone. One thread at a time.
class OncePerCause {
public:
    /// Calls `say` unless the cause has been told of since it last went.
    template<typename Say>
    void Raise(Say&& say) {
        if (m_isRaised)
            return;
        m_isRaised = true;
        say();
    }

    /// The cause is gone.
    void Clear() { m_isRaised = false; }

private:
    bool m_isRaised = false;
};

} // namespace zarvex::zx3D
