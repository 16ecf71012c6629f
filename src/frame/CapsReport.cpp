// The capabilities report, as JSON and as text.
#include <zx3DQt/CapsReport.h>

#include <zx3D/BgfxVersion.h>

#include <QIODevice>
#include <QJsonArray>
#include <QTextStream>

#include <algorithm>

namespace zarvex::zx3DQt {

namespace {

using Limits = bgfx::Caps::Limits;

struct LimitEntry {
    char const* key;   ///< in JSON
    char const* label; ///< in text
    std::uint32_t Limits::* value;
};

constexpr LimitEntry kLimits[] = {
    {"maxDrawCalls", "Max Draw Calls: ", &Limits::maxDrawCalls},
    {"maxBlits", "Max Blits: ", &Limits::maxBlits},
    {"maxTextureSize", "Max Texture Size: ", &Limits::maxTextureSize},
    {"maxTextureLayers", "Max Texture Layers: ", &Limits::maxTextureLayers},
    {"maxViews", "Max Views: ", &Limits::maxViews},
    {"maxFrameBuffers", "Max Frame Buffers: ", &Limits::maxFrameBuffers},
    {"maxFBAttachments", "Max FB Attachments: ", &Limits::maxFBAttachments},
    {"maxPrograms", "Max Programs: ", &Limits::maxPrograms},
    {"maxShaders", "Max Shaders: ", &Limits::maxShaders},
    {"maxTextures", "Max Textures: ", &Limits::maxTextures},
    {"maxTextureSamplers", "Max Texture Samplers: ", &Limits::maxTextureSamplers},
    {"maxComputeBindings", "Max Compute Bindings: ", &Limits::maxComputeBindings},
    {"maxVertexLayouts", "Max Vertex Layouts: ", &Limits::maxVertexLayouts},
    {"maxVertexStreams", "Max Vertex Streams: ", &Limits::maxVertexStreams},
    {"maxIndexBuffers", "Max Index Buffers: ", &Limits::maxIndexBuffers},
    {"maxVertexBuffers", "Max Vertex Buffers: ", &Limits::maxVertexBuffers},
    {"maxDynamicIndexBuffers", "Max Dynamic Index Buffers: ", &Limits::maxDynamicIndexBuffers},
    {"maxDynamicVertexBuffers", "Max Dynamic Vertex Buffers: ", &Limits::maxDynamicVertexBuffers},
    {"maxUniforms", "Max Uniforms: ", &Limits::maxUniforms},
    {"maxOcclusionQueries", "Max Occlusion Queries: ", &Limits::maxOcclusionQueries},
    {"maxEncoders", "Max Encoders: ", &Limits::maxEncoders},
    {"minResourceCbSize", "Min Resource Cb Size: ", &Limits::minResourceCbSize},
    {"transientVbSize", "Transient Vb Size: ", zx3D::kTransientVbSize<Limits>},
    {"transientIbSize", "Transient Ib Size: ", zx3D::kTransientIbSize<Limits>},
};

char const* RendererName(bgfx::RendererType::Enum type) {
    switch (type) {
    case bgfx::RendererType::Noop:
        return "No Rendering";
    case bgfx::RendererType::Agc:
        return "AGC";
    case bgfx::RendererType::Direct3D11:
        return "Direct3D 11.0";
    case bgfx::RendererType::Direct3D12:
        return "Direct3D 12.0";
    case bgfx::RendererType::Gnm:
        return "GNM";
    case bgfx::RendererType::Metal:
        return "Metal";
    case bgfx::RendererType::Nvn:
        return "NVN";
    case bgfx::RendererType::OpenGLES:
        return "OpenGL ES 2.0+";
    case bgfx::RendererType::OpenGL:
        return "OpenGL 2.1+";
    case bgfx::RendererType::Vulkan:
        return "Vulkan";
    default:
        return "Unknown";
    }
}

char const* VendorName(std::uint16_t vendorId) {
    switch (vendorId) {
    case BGFX_PCI_ID_NONE:
        return "None (Autoselect)";
    case BGFX_PCI_ID_SOFTWARE_RASTERIZER:
        return "Software Rasterizer";
    case BGFX_PCI_ID_AMD:
        return "AMD";
    case BGFX_PCI_ID_APPLE:
        return "Apple";
    case BGFX_PCI_ID_NVIDIA:
        return "NVIDIA";
    case BGFX_PCI_ID_ARM:
        return "ARM";
    case BGFX_PCI_ID_MICROSOFT:
        return "Microsoft";
    case BGFX_PCI_ID_INTEL:
        return "Intel";
    default:
        return "Unknown";
    }
}

QString Hex(std::uint64_t value) {
    return QString::number(value, 16);
}

char const* TrueOrFalse(bool value) {
    return value ? "true" : "false";
}

int GpuCount(bgfx::Caps const& caps) {
    return std::min<int>(caps.numGPUs, static_cast<int>(std::size(caps.gpu)));
}

bool IsActive(bgfx::Caps const& caps, bgfx::Caps::GPU const& gpu) {
    return gpu.vendorId == caps.vendorId && gpu.deviceId == caps.deviceId;
}

QJsonObject GpuToJson(std::uint16_t vendorId, std::uint16_t deviceId) {
    return {{"vendorId", Hex(vendorId)}, {"vendorName", VendorName(vendorId)}, {"deviceId", Hex(deviceId)}};
}

QJsonArray GpusToJson(bgfx::Caps const& caps) {
    QJsonArray gpus;
    for (int i = 0; i < GpuCount(caps); ++i) {
        QJsonObject gpu = GpuToJson(caps.gpu[i].vendorId, caps.gpu[i].deviceId);
        gpu.insert("isActive", IsActive(caps, caps.gpu[i]));
        gpus.append(gpu);
    }
    return gpus;
}

QJsonObject LimitsToJson(Limits const& limits) {
    QJsonObject object;
    for (LimitEntry const& entry : kLimits)
        object.insert(entry.key, static_cast<std::int32_t>(limits.*entry.value));
    return object;
}

QJsonObject FormatsToJson(bgfx::Caps const& caps) {
    QJsonObject formats;
    for (int i = 0; i < bgfx::TextureFormat::Count; ++i) {
        if (caps.formats[i] != 0)
            formats.insert(QString::number(i), Hex(caps.formats[i]));
    }
    return formats;
}

void WriteGpus(QTextStream& stream, bgfx::Caps const& caps) {
    stream << "Available GPUs:\n";
    for (int i = 0; i < GpuCount(caps); ++i) {
        bgfx::Caps::GPU const& gpu = caps.gpu[i];
        stream << "  GPU[" << i << "]" << (IsActive(caps, gpu) ? " [ACTIVE]" : "") << ":\n"
               << "    Vendor: " << VendorName(gpu.vendorId) << " (0x" << Hex(gpu.vendorId) << ")\n"
               << "    Device ID: 0x" << Hex(gpu.deviceId) << "\n";
    }
}

void WriteLimits(QTextStream& stream, Limits const& limits) {
    stream << "Limits:\n";
    for (LimitEntry const& entry : kLimits)
        stream << "  " << entry.label << limits.*entry.value << "\n";
}

void WriteFormats(QTextStream& stream, bgfx::Caps const& caps) {
    stream << "Texture Format Support:\n";
    for (int i = 0; i < bgfx::TextureFormat::Count; ++i) {
        if (caps.formats[i] != 0)
            stream << "  Format[" << i << "]: 0x" << Hex(caps.formats[i]) << "\n";
    }
}

} // namespace

bool HasGpu(bgfx::Caps const& caps) {
    if (caps.vendorId == BGFX_PCI_ID_NONE || caps.vendorId == BGFX_PCI_ID_SOFTWARE_RASTERIZER)
        return false;
    // In the list, which OpenGL does not have, what runs on the processor has another maker than here.
    auto const* const end = caps.gpu + GpuCount(caps);
    return caps.numGPUs == 0 ||
           std::any_of(caps.gpu, end, [&caps](bgfx::Caps::GPU const& gpu) { return IsActive(caps, gpu); });
}

QJsonObject ToJson(bgfx::Caps const& caps) {
    QJsonObject object;
    object.insert("rendererType", static_cast<int>(caps.rendererType));
    object.insert("rendererTypeName", RendererName(caps.rendererType));
    object.insert("supported", Hex(caps.supported));
    object.insert("activeGPU", GpuToJson(caps.vendorId, caps.deviceId));
    object.insert("homogeneousDepth", caps.homogeneousDepth);
    object.insert("originBottomLeft", caps.originBottomLeft);
    object.insert("numGPUs", caps.numGPUs);
    object.insert("availableGPUs", GpusToJson(caps));
    object.insert("limits", LimitsToJson(caps.limits));
    object.insert("formats", FormatsToJson(caps));
    return object;
}

QString ToString(bgfx::Caps const& caps) {
    QString text;
    QTextStream stream(&text, QIODevice::ReadWrite);
    stream << "Renderer Type: " << RendererName(caps.rendererType) << " ("
           << static_cast<int>(caps.rendererType) << ")\n"
           << "Supported Features: 0x" << Hex(caps.supported) << "\n"
           << "Active GPU:\n"
           << "  Vendor: " << VendorName(caps.vendorId) << " (0x" << Hex(caps.vendorId) << ")\n"
           << "  Device ID: 0x" << Hex(caps.deviceId) << "\n"
           << "Homogeneous Depth: " << TrueOrFalse(caps.homogeneousDepth) << "\n"
           << "Origin Bottom Left: " << TrueOrFalse(caps.originBottomLeft) << "\n"
           << "Number of GPUs: " << static_cast<int>(caps.numGPUs) << "\n";
    WriteGpus(stream, caps);
    WriteLimits(stream, caps.limits);
    WriteFormats(stream, caps);
    stream.flush();
    return text;
}

} // namespace zarvex::zx3DQt
