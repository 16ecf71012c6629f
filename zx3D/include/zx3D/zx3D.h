// The whole of zx3D: context, surfaces, shader programs and value types.
#pragma once

#include <zx3D/Annotations.h>
#include <zx3D/BgfxVersion.h>
#include <zx3D/Color.h>
#include <zx3D/Context.h>
#include <zx3D/ContextListener.h>
#include <zx3D/ContextOptions.h>
#include <zx3D/DataSpan.h>
#include <zx3D/EmbeddedShader.h>
#include <zx3D/FrameBuffer.h>
#include <zx3D/FrameListener.h>
#include <zx3D/Line.h>
#include <zx3D/Message.h>
#include <zx3D/Owned.h>
#include <zx3D/ProgramFactory.h>
#include <zx3D/TaggedValueType.h>
#include <zx3D/Text.h>
#include <zx3D/TextHandles.h>
#include <zx3D/Vertex.h>

/// @namespace zarvex::zx3D
/// The bgfx context, surfaces on native windows, shader programs, text, and the values that geometry is
/// handed over in. Knows nothing of Qt.

/// @namespace zarvex
/// Two libraries, one namespace each.
