// What differs between bgfx's versions, from 122 to 155, in the functions that are recorded. A parameter that
// came later has no name here: all callers leave it at its default.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

// From 127 on the name of a marker or a view may come with its length, after the name.
#if BGFX_API_VERSION < 127
#define RECORDER_NAME_LENGTH
#else
#define RECORDER_NAME_LENGTH , int32_t
#endif

// From 137 on a texture can be made of a native one, given last.
#if BGFX_API_VERSION < 137
#define RECORDER_NATIVE_TEXTURE
#else
#define RECORDER_NATIVE_TEXTURE , uint64_t
#endif

// From 145 on one layer of a texture is read, given after the memory.
#if BGFX_API_VERSION < 145
#define RECORDER_LAYER
#else
#define RECORDER_LAYER , uint16_t
#endif

namespace recorder {

// From 131 on the resolution has a format for the depth, too.
#if BGFX_API_VERSION < 131
inline constexpr auto kColorFormat = &bgfx::Resolution::format;
#else
inline constexpr auto kColorFormat = &bgfx::Resolution::formatColor;
#endif

// From 138 on a frame takes flags, of which the first says what the only parameter said before: capture.
#if BGFX_API_VERSION < 138
using FrameFlags = bool;
inline constexpr FrameFlags kCaptureFrame = true;
#else
using FrameFlags = uint8_t;
inline constexpr FrameFlags kCaptureFrame = BGFX_FRAME_DEBUG_CAPTURE;
#endif

// From 152 on a view may begin left of its frame buffer and above.
#if BGFX_API_VERSION < 152
using ViewPosition = uint16_t;
#else
using ViewPosition = int16_t;
#endif

} // namespace recorder
