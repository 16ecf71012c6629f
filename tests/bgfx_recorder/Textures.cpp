// Textures and frame buffers, reading back and blits.
#include "State.h"
#include "Version.h"

#include <algorithm>

namespace recorder {

namespace {

/// Bytes per pixel of the uncompressed formats that renderers commonly create.
uint32_t PixelSize(bgfx::TextureFormat::Enum format) {
    using F = bgfx::TextureFormat;
    switch (format) {
    case F::A8:
    case F::R8:
        return 1;
    case F::RG8:
    case F::R16F:
    case F::D16:
        return 2;
    case F::RGBA16F:
        return 8;
    case F::RGBA32F:
        return 16;
    default:
        return 4;
    }
}

Resource Texture(uint16_t width, uint16_t height, bgfx::TextureFormat::Enum format) {
    Resource texture;
    texture.note = std::to_string(width) + " x " + std::to_string(height) + " " + Text(format);
    texture.width = width;
    texture.height = height;
    texture.format = format;
    return texture;
}

bgfx::FrameBufferHandle AddFrameBuffer(Recording& call, std::vector<bgfx::TextureHandle> const& textures,
                                       bool giveAway) {
    Resource frameBuffer;
    for (bgfx::TextureHandle const texture : textures) {
        Resource* const attached = call.Require(call.Now().textures, texture);
        if (attached == nullptr) {
            continue;
        }
        frameBuffer.note = attached->note;
        frameBuffer.parts.push_back(texture.idx);
        // A texture that is given away keeps one owner: the frame buffer instead of its creator.
        if (giveAway && !attached->ownedByFrameBuffer) {
            attached->ownedByFrameBuffer = true;
        } else {
            ++attached->owners;
        }
    }
    std::vector<uint16_t> const parts = frameBuffer.parts;
    bgfx::FrameBufferHandle const handle = call.Now().frameBuffers.Add(std::move(frameBuffer));
    if (!bgfx::isValid(handle)) { // what was given away goes all the same
        for (uint16_t const texture : parts) {
            call.Now().ReleaseTexture({texture});
        }
    }
    return call.Result(handle);
}

std::string Joined(std::vector<bgfx::TextureHandle> const& textures, bool giveAway) {
    std::string text;
    for (bgfx::TextureHandle const texture : textures) {
        text += Text(texture) + ", ";
    }
    return text + Text(giveAway);
}

bgfx::FrameBufferHandle CreateFrameBuffer(std::vector<bgfx::TextureHandle> const& textures, bool giveAway) {
    Recording call("createFrameBuffer", Joined(textures, giveAway));
    if (!call.IsRunning()) {
        return call.Result(bgfx::FrameBufferHandle BGFX_INVALID_HANDLE);
    }
    return AddFrameBuffer(call, textures, giveAway);
}

void Blit(Recording& call, bgfx::TextureHandle destination, bgfx::TextureHandle source) {
    if (call.IsRunning()) {
        call.Require(call.Now().textures, destination);
        call.Require(call.Now().textures, source);
        ++call.Now().numBlits;
    }
}

/// bgfx can give a native window one surface at a time, and lets go of it only when a frame has ended.
void CheckWindow(Recording& call, void* window) {
    auto const taken = call.Now().frameBuffers.FindIf(
        [window](Resource const& frameBuffer) { return frameBuffer.window == window; });
    if (bgfx::isValid(taken)) {
        call.Error(Window(window) + " has " + Text(taken) + " already");
    } else if (call.Now().windowsLeaving.count(window) != 0) {
        call.Error(Window(window) + " lost its frame buffer in this very frame");
    }
}

} // namespace

} // namespace recorder

namespace bgfx {

using recorder::Arguments;
using recorder::Hexadecimal;
using recorder::Recording;
using recorder::Resource;
using recorder::Running;

TextureHandle createTexture2D(uint16_t width, uint16_t height, bool hasMips, uint16_t numLayers,
                              TextureFormat::Enum format, uint64_t flags,
                              Memory const* memory RECORDER_NATIVE_TEXTURE) {
    Recording call("createTexture2D",
                   Arguments(width, height, hasMips, numLayers, format, Hexadecimal(flags)));
    if (!call.IsRunning()) {
        return call.Result(TextureHandle BGFX_INVALID_HANDLE);
    }
    call.Payload(call.Records().Consume(memory, "createTexture2D"));
    return call.Result(call.Now().textures.Add(recorder::Texture(width, height, format)));
}

TextureHandle createTexture2D(BackbufferRatio::Enum ratio, bool hasMips, uint16_t numLayers,
                              TextureFormat::Enum format, uint64_t flags) {
    Recording call("createTexture2D", Arguments(ratio, hasMips, numLayers, format, Hexadecimal(flags)));
    if (!call.IsRunning()) {
        return call.Result(TextureHandle BGFX_INVALID_HANDLE);
    }
    Stats const& stats = call.Records().stats;
    return call.Result(call.Now().textures.Add(recorder::Texture(stats.width, stats.height, format)));
}

void updateTexture2D(TextureHandle handle, uint16_t layer, uint8_t mip, uint16_t x, uint16_t y,
                     uint16_t width, uint16_t height, Memory const* memory, uint16_t pitch) {
    Recording call("updateTexture2D", Arguments(handle, layer, mip, x, y, width, height, pitch));
    if (!call.IsRunning()) {
        return;
    }
    call.Payload(call.Records().Consume(memory, "updateTexture2D"));
    Resource const* const texture = call.Require(call.Now().textures, handle);
    if (texture != nullptr && (x + width > texture->width || y + height > texture->height)) {
        call.Error("the rectangle leaves " + texture->note);
    }
}

uint32_t readTexture(TextureHandle handle, void* data RECORDER_LAYER, uint8_t mip) {
    Recording call("readTexture", Arguments(handle, mip));
    if (!call.IsRunning()) {
        return call.Result(uint32_t(0));
    }
    Running& now = call.Now();
    recorder::Settings const& settings = call.Records().settings;
    uint32_t const frame = now.frame + settings.readLatency;
    if (Resource const* const texture = call.Require(now.textures, handle)) {
        std::size_t const size =
            std::size_t(texture->width) * texture->height * recorder::PixelSize(texture->format);
        recorder::Bytes pixels =
            settings.pixels ? settings.pixels(handle, texture->width, texture->height) : recorder::Bytes();
        pixels.resize(size);
        now.reads.push_back({frame, data, std::move(pixels)});
    }
    return call.Result(frame + now.numberOffset);
}

void setName(TextureHandle handle, char const* name, int32_t length) {
    Recording call("setName", Arguments(handle, recorder::Name(name, length)));
    if (call.IsRunning()) {
        call.Require(call.Now().textures, handle);
    }
}

void destroy(TextureHandle handle) {
    Recording call("destroy", Arguments(handle));
    if (!call.IsRunning()) {
        return;
    }
    Resource const* const texture = call.Require(call.Now().textures, handle);
    if (texture == nullptr) {
        return;
    }
    if (texture->ownedByFrameBuffer) {
        call.Error(recorder::Text(handle) + " belongs to its frame buffer");
        return;
    }
    call.Now().ReleaseTexture(handle);
}

void calcTextureSize(TextureInfo& info, uint16_t width, uint16_t height, uint16_t depth, bool cubeMap,
                     bool hasMips, uint16_t numLayers, TextureFormat::Enum format) {
    info = {};
    info.format = format;
    info.storageSize = recorder::PixelSize(format) * width * height * depth * numLayers;
    info.width = width;
    info.height = height;
    info.depth = depth;
    info.numLayers = numLayers;
    info.numMips = 1;
    info.cubeMap = cubeMap;
    info.bitsPerPixel = static_cast<uint8_t>(8 * recorder::PixelSize(format));
    static_cast<void>(hasMips); // those are not counted
}

bool isTextureValid(uint16_t, bool, uint16_t, TextureFormat::Enum format, uint64_t) {
    return format < TextureFormat::Count;
}

void Attachment::init(TextureHandle texture, Access::Enum accessTo, uint16_t firstLayer, uint16_t layerCount,
                      uint16_t mipLevel, uint8_t resolveFlags) {
    access = accessTo;
    handle = texture;
    mip = mipLevel;
    layer = firstLayer;
    numLayers = layerCount;
    resolve = resolveFlags;
}

FrameBufferHandle createFrameBuffer(uint16_t width, uint16_t height, TextureFormat::Enum format,
                                    uint64_t flags) {
    Recording call("createFrameBuffer", Arguments(width, height, format, Hexadecimal(flags)));
    if (!call.IsRunning()) {
        return call.Result(FrameBufferHandle BGFX_INVALID_HANDLE);
    }
    TextureHandle const texture = call.Now().textures.Add(recorder::Texture(width, height, format));
    return recorder::AddFrameBuffer(call, {texture}, true);
}

FrameBufferHandle createFrameBuffer(uint8_t count, TextureHandle const* handles, bool destroyTextures) {
    return recorder::CreateFrameBuffer({handles, handles + count}, destroyTextures);
}

FrameBufferHandle createFrameBuffer(uint8_t count, Attachment const* attachments, bool destroyTextures) {
    std::vector<TextureHandle> handles;
    std::transform(attachments, attachments + count, std::back_inserter(handles),
                   [](Attachment const& attachment) { return attachment.handle; });
    return recorder::CreateFrameBuffer(handles, destroyTextures);
}

FrameBufferHandle createFrameBuffer(void* window, uint16_t width, uint16_t height, TextureFormat::Enum format,
                                    TextureFormat::Enum depthFormat) {
    Recording call("createFrameBuffer",
                   Arguments(recorder::Window(window), width, height, format, depthFormat));
    if (!call.IsRunning()) {
        return call.Result(FrameBufferHandle BGFX_INVALID_HANDLE);
    }
    recorder::CheckWindow(call, window);
    Resource frameBuffer = recorder::Texture(width, height, format);
    frameBuffer.window = window;
    return call.Result(call.Now().frameBuffers.Add(std::move(frameBuffer)));
}

void setName(FrameBufferHandle handle, char const* name, int32_t length) {
    Recording call("setName", Arguments(handle, recorder::Name(name, length)));
    if (call.IsRunning()) {
        call.Require(call.Now().frameBuffers, handle);
    }
}

TextureHandle getTexture(FrameBufferHandle handle, uint8_t attachment) {
    Recording call("getTexture", Arguments(handle, attachment));
    Resource const* const frameBuffer =
        call.IsRunning() ? call.Require(call.Now().frameBuffers, handle) : nullptr;
    bool const has = frameBuffer != nullptr && attachment < frameBuffer->parts.size();
    return call.Result(has ? TextureHandle{frameBuffer->parts[attachment]}
                           : TextureHandle BGFX_INVALID_HANDLE);
}

void destroy(FrameBufferHandle handle) {
    Recording call("destroy", Arguments(handle));
    if (!call.IsRunning()) {
        return;
    }
    Resource const* const found = call.Require(call.Now().frameBuffers, handle);
    if (found == nullptr) {
        return;
    }
    Resource const frameBuffer = *found;
    call.Now().frameBuffers.Remove(handle);
    if (frameBuffer.window != nullptr) {
        call.Now().windowsLeaving.insert(frameBuffer.window);
    }
    for (uint16_t const texture : frameBuffer.parts) {
        call.Now().ReleaseTexture({texture});
    }
}

void blit(ViewId view, TextureHandle destination, uint16_t destinationX, uint16_t destinationY,
          TextureHandle source, uint16_t sourceX, uint16_t sourceY, uint16_t width, uint16_t height) {
    Recording call("blit", Arguments(view, destination, destinationX, destinationY, source, sourceX, sourceY,
                                     width, height));
    recorder::Blit(call, destination, source);
}

void blit(ViewId view, TextureHandle destination, uint8_t destinationMip, uint16_t destinationX,
          uint16_t destinationY, uint16_t destinationZ, TextureHandle source, uint8_t sourceMip,
          uint16_t sourceX, uint16_t sourceY, uint16_t sourceZ, uint16_t width, uint16_t height,
          uint16_t depth) {
    Recording call("blit",
                   Arguments(view, destination, destinationMip, destinationX, destinationY, destinationZ,
                             source, sourceMip, sourceX, sourceY, sourceZ, width, height, depth));
    recorder::Blit(call, destination, source);
}

void requestScreenShot(FrameBufferHandle handle, char const* filePath) {
    Recording call("requestScreenShot", Arguments(handle, filePath));
}

} // namespace bgfx
