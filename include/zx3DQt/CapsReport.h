// What the running renderer and GPU can do, for people and for tools.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <bgfx/bgfx.h>

#include <QJsonObject>
#include <QString>

namespace zarvex::zx3DQt {

/// Whether a GPU draws, which bgfx must know by its maker, and not the processor: several samples for each
/// pixel cost little then. False where bgfx is not told the maker, as by Mesa's OpenGL on GPUs of AMD. Pure;
/// any thread.
ZX3DQT_EXPORT bool HasGpu(bgfx::Caps const& caps);

/// The capabilities as JSON: renderer, GPUs, limits, and support bits by texture format. Bit sets and ids are
/// strings of hexadecimal digits; limits are numbers of signed 32 bits. Pure; any thread.
ZX3DQT_EXPORT QJsonObject ToJson(bgfx::Caps const& caps);

/// The same as text of many lines. Limits are unsigned. Pure; any thread.
ZX3DQT_EXPORT QString ToString(bgfx::Caps const& caps);

} // namespace zarvex::zx3DQt
