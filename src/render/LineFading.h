// What lines that fade are drawn with.
#pragma once

#include "FadePlace.h"
#include "Programs.h"

#include <zx3D/Message.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <QMatrix4x4>

namespace zarvex::zx3DQt {

/// The uniforms of a call whose lines fade.
struct FadeUniforms {
    QMatrix4x4 place;
    FadeRange range;
};

/// The programs and uniforms of fading lines, created when the first are drawn.
class LineFading {
public:
    /// True when there is everything. What cannot be created is warned of and tried again with the next call.
    bool Start();

    /// The fading counterpart of a program that draws lines.
    bgfx::ProgramHandle GetProgram(Program program) const {
        return program == Program::RectangleSprite ? m_wideProgram : m_thinProgram;
    }

    /// For the next submission.
    void SetUniforms(FadeUniforms const& uniforms) const;

private:
    void Create();

    bool m_isReady = false;
    zx3D::OncePerCause m_missing;
    // The factory's.
    bgfx::ProgramHandle m_thinProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_wideProgram = BGFX_INVALID_HANDLE;
    zx3D::Owned<bgfx::UniformHandle> m_place;
    zx3D::Owned<bgfx::UniformHandle> m_range;
};

} // namespace zarvex::zx3DQt
