// What the running renderer and GPU can do, for people and for tools.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <bgfx/bgfx.h>

#include <QJsonObject>
#include <QString>

namespace zarvex::zx3DQt {

/// The capabilities as JSON: renderer, GPUs, limits, and support bits by texture format. Bit sets and ids are
/// strings of hexadecimal digits; limits are numbers of signed 32 bits. Pure; any thread.
ZX3DQT_EXPORT QJsonObject ToJson(bgfx::Caps const& caps);

/// The same as text of many lines. Limits are unsigned. Pure; any thread.
ZX3DQT_EXPORT QString ToString(bgfx::Caps const& caps);

} // namespace zarvex::zx3DQt
