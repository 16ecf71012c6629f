// One owner for a bgfx object.
#pragma once

#include <zx3D/Context.h>

#include <bgfx/bgfx.h>

#include <utility>

namespace zarvex::zx3D {

/// Owns the bgfx object that a handle names, as `std::unique_ptr` owns what a pointer points to:
///
///     zx3D::Owned<bgfx::TextureHandle> texture(bgfx::createTexture2D(...));
///     if (texture)
///         bgfx::setTexture(0, sampler, texture.Get());
///
/// Lifetime: the object goes with its owner, or with the context, whichever is first. A handle means
/// something only in the run of the context in which it was made (`ContextRun`): after `Context::Shutdown`
/// the owner is empty, whatever bgfx then uses the same number for. What refers to another object by its
/// handle does not own it: a frame buffer that was told to destroy its textures owns those, not they
/// themselves.
///
/// Thread: the one that calls bgfx's API.
template<typename Handle>
class Owned {
public:
    /// Owns nothing.
    Owned() = default;

    /// Takes over what was just created in the present run; an invalid handle makes an empty owner.
    explicit Owned(Handle handle) : m_handle(handle), m_run(ContextRun::Current()) {}

    ~Owned() { Reset(); }

    /// Takes over what the other owns, which is empty afterwards.
    Owned(Owned&& other) noexcept : m_handle(other.m_handle), m_run(other.m_run) {
        other.m_handle = BGFX_INVALID_HANDLE;
    }

    /// Destroys what it owned, and takes over.
    Owned& operator=(Owned&& other) noexcept {
        Owned taken(std::move(other));
        std::swap(m_handle, taken.m_handle);
        std::swap(m_run, taken.m_run);
        return *this;
    }

    /// The handle; invalid when there is no object, or the run that it was made in is over.
    Handle Get() const { return m_run.IsCurrent() ? m_handle : Handle(BGFX_INVALID_HANDLE); }

    /// True while there is an object.
    explicit operator bool() const { return bgfx::isValid(Get()); }

    /// Destroys the object, if there is one.
    void Reset() {
        if (Handle const handle = Release(); bgfx::isValid(handle))
            bgfx::destroy(handle);
    }

    /// Gives the object up without destroying it: the caller owns it now. The result of `Get`.
    [[nodiscard]] Handle Release() {
        Handle const handle = Get();
        m_handle = BGFX_INVALID_HANDLE;
        return handle;
    }

private:
    Handle m_handle = BGFX_INVALID_HANDLE;
    ContextRun m_run;
};

} // namespace zarvex::zx3D
