// The capabilities report as text and as JSON.
#include <zx3DQt/CapsReport.h>

#include <zx3D/BgfxVersion.h>

#include <QJsonArray>
#include <QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace zarvex::zx3DQt;

namespace {

using bgfx::RendererType;

struct LimitName {
    char const* key;
    char const* label;
    std::uint32_t bgfx::Caps::Limits::* value;
};

using L = bgfx::Caps::Limits;

constexpr LimitName kLimits[] = {
    {"maxDrawCalls", "Max Draw Calls: ", &L::maxDrawCalls},
    {"maxBlits", "Max Blits: ", &L::maxBlits},
    {"maxTextureSize", "Max Texture Size: ", &L::maxTextureSize},
    {"maxTextureLayers", "Max Texture Layers: ", &L::maxTextureLayers},
    {"maxViews", "Max Views: ", &L::maxViews},
    {"maxFrameBuffers", "Max Frame Buffers: ", &L::maxFrameBuffers},
    {"maxFBAttachments", "Max FB Attachments: ", &L::maxFBAttachments},
    {"maxPrograms", "Max Programs: ", &L::maxPrograms},
    {"maxShaders", "Max Shaders: ", &L::maxShaders},
    {"maxTextures", "Max Textures: ", &L::maxTextures},
    {"maxTextureSamplers", "Max Texture Samplers: ", &L::maxTextureSamplers},
    {"maxComputeBindings", "Max Compute Bindings: ", &L::maxComputeBindings},
    {"maxVertexLayouts", "Max Vertex Layouts: ", &L::maxVertexLayouts},
    {"maxVertexStreams", "Max Vertex Streams: ", &L::maxVertexStreams},
    {"maxIndexBuffers", "Max Index Buffers: ", &L::maxIndexBuffers},
    {"maxVertexBuffers", "Max Vertex Buffers: ", &L::maxVertexBuffers},
    {"maxDynamicIndexBuffers", "Max Dynamic Index Buffers: ", &L::maxDynamicIndexBuffers},
    {"maxDynamicVertexBuffers", "Max Dynamic Vertex Buffers: ", &L::maxDynamicVertexBuffers},
    {"maxUniforms", "Max Uniforms: ", &L::maxUniforms},
    {"maxOcclusionQueries", "Max Occlusion Queries: ", &L::maxOcclusionQueries},
    {"maxEncoders", "Max Encoders: ", &L::maxEncoders},
    {"minResourceCbSize", "Min Resource Cb Size: ", &L::minResourceCbSize},
    {"transientVbSize", "Transient Vb Size: ", zarvex::zx3D::kTransientVbSize<L>},
    {"transientIbSize", "Transient Ib Size: ", zarvex::zx3D::kTransientIbSize<L>},
};

/// A record in which every value differs from every other.
bgfx::Caps SampleCaps() {
    bgfx::Caps caps = {};
    caps.rendererType = RendererType::Vulkan;
    caps.supported = 0xABCDEF0123ULL;
    caps.vendorId = 0x10DE;
    caps.deviceId = 0x0A0B;
    caps.homogeneousDepth = true;
    caps.numGPUs = 2;
    caps.gpu[0] = {0x8086, 0x0001};
    caps.gpu[1] = {0x10DE, 0x0A0B};
    std::uint32_t value = 1000;
    for (LimitName const& limit : kLimits)
        caps.limits.*limit.value = value++;
    caps.formats[3] = 0x1F;
    caps.formats[bgfx::TextureFormat::Count - 1] = 0xFFFF;
    return caps;
}

std::string ExpectedLimits() {
    std::string text = "Limits:\n";
    std::uint32_t value = 1000;
    for (LimitName const& limit : kLimits)
        text += std::string("  ") + limit.label + std::to_string(value++) + "\n";
    return text;
}

std::string RendererLine(bgfx::Caps const& caps) {
    return ToString(caps).section('\n', 0, 0).toStdString();
}

constexpr std::pair<RendererType::Enum, char const*> kRenderers[] = {
    {RendererType::Noop, "No Rendering"},
    {RendererType::Agc, "AGC"},
    {RendererType::Direct3D11, "Direct3D 11.0"},
    {RendererType::Direct3D12, "Direct3D 12.0"},
    {RendererType::Gnm, "GNM"},
    {RendererType::Metal, "Metal"},
    {RendererType::Nvn, "NVN"},
    {RendererType::OpenGLES, "OpenGL ES 2.0+"},
    {RendererType::OpenGL, "OpenGL 2.1+"},
    {RendererType::Vulkan, "Vulkan"},
};

constexpr std::pair<std::uint16_t, char const*> kVendors[] = {
    {0x0000, "None (Autoselect)"},
    {0x0001, "Software Rasterizer"},
    {0x1002, "AMD"},
    {0x106B, "Apple"},
    {0x10DE, "NVIDIA"},
    {0x13B5, "ARM"},
    {0x1414, "Microsoft"},
    {0x8086, "Intel"},
    {0x1234, "Unknown"},
};

} // namespace

TEST(CapsReportTest, TheTextIsWhole) {
    std::string const expected = "Renderer Type: Vulkan (" + std::to_string(int(RendererType::Vulkan)) +
                                 ")\n"
                                 "Supported Features: 0xabcdef0123\n"
                                 "Active GPU:\n"
                                 "  Vendor: NVIDIA (0x10de)\n"
                                 "  Device ID: 0xa0b\n"
                                 "Homogeneous Depth: true\n"
                                 "Origin Bottom Left: false\n"
                                 "Number of GPUs: 2\n"
                                 "Available GPUs:\n"
                                 "  GPU[0]:\n"
                                 "    Vendor: Intel (0x8086)\n"
                                 "    Device ID: 0x1\n"
                                 "  GPU[1] [ACTIVE]:\n"
                                 "    Vendor: NVIDIA (0x10de)\n"
                                 "    Device ID: 0xa0b\n" +
                                 ExpectedLimits() +
                                 "Texture Format Support:\n"
                                 "  Format[3]: 0x1f\n"
                                 "  Format[" +
                                 std::to_string(int(bgfx::TextureFormat::Count) - 1) + "]: 0xffff\n";
    EXPECT_EQ(ToString(SampleCaps()).toStdString(), expected);
}

TEST(CapsReportTest, TheJsonHasExactlyItsKeys) {
    QJsonObject const json = ToJson(SampleCaps());
    QStringList const expected{"activeGPU",        "availableGPUs", "formats",          "homogeneousDepth",
                               "limits",           "numGPUs",       "originBottomLeft", "rendererType",
                               "rendererTypeName", "supported"};
    EXPECT_EQ(json.keys(), expected);
}

TEST(CapsReportTest, TheJsonHoldsTheScalars) {
    QJsonObject const json = ToJson(SampleCaps());
    EXPECT_EQ(json["rendererType"], QJsonValue(int(RendererType::Vulkan)));
    EXPECT_EQ(json["rendererTypeName"], QJsonValue("Vulkan"));
    EXPECT_EQ(json["supported"], QJsonValue("abcdef0123"));
    EXPECT_EQ(json["homogeneousDepth"], QJsonValue(true));
    EXPECT_EQ(json["originBottomLeft"], QJsonValue(false));
    EXPECT_EQ(json["numGPUs"], QJsonValue(2));
    EXPECT_EQ(json["activeGPU"],
              QJsonValue(QJsonObject{{"vendorId", "10de"}, {"vendorName", "NVIDIA"}, {"deviceId", "a0b"}}));
}

TEST(CapsReportTest, TheJsonListsTheGpus) {
    QJsonArray const expected{
        QJsonObject{{"vendorId", "8086"}, {"vendorName", "Intel"}, {"deviceId", "1"}, {"isActive", false}},
        QJsonObject{{"vendorId", "10de"}, {"vendorName", "NVIDIA"}, {"deviceId", "a0b"}, {"isActive", true}}};
    EXPECT_EQ(ToJson(SampleCaps())["availableGPUs"], QJsonValue(expected));
}

TEST(CapsReportTest, TheJsonHoldsEveryLimitAsANumber) {
    QJsonObject const limits = ToJson(SampleCaps())["limits"].toObject();
    EXPECT_EQ(limits.size(), qsizetype(std::size(kLimits)));
    int value = 1000;
    for (LimitName const& limit : kLimits)
        EXPECT_EQ(limits[limit.key], QJsonValue(value++)) << limit.key;
}

TEST(CapsReportTest, RenderersHaveTheirNames) {
    for (auto const& [type, name] : kRenderers) {
        bgfx::Caps caps = {};
        caps.rendererType = type;
        EXPECT_EQ(ToJson(caps)["rendererTypeName"].toString().toStdString(), name);
        EXPECT_EQ(RendererLine(caps),
                  std::string("Renderer Type: ") + name + " (" + std::to_string(int(type)) + ")");
    }
}

TEST(CapsReportTest, AnyOtherRendererIsUnknownWithItsNumber) {
    bgfx::Caps caps = {};
    caps.rendererType = RendererType::Count;
    std::string const number = std::to_string(int(RendererType::Count));
    EXPECT_EQ(ToJson(caps)["rendererTypeName"], QJsonValue("Unknown"));
    EXPECT_EQ(ToJson(caps)["rendererType"], QJsonValue(int(RendererType::Count)));
    EXPECT_EQ(RendererLine(caps), "Renderer Type: Unknown (" + number + ")");
}

TEST(CapsReportTest, VendorsHaveTheirNames) {
    for (auto const& [id, name] : kVendors) {
        bgfx::Caps caps = {};
        caps.vendorId = id;
        EXPECT_EQ(ToJson(caps)["activeGPU"].toObject()["vendorName"].toString().toStdString(), name);
        EXPECT_EQ(ToString(caps).section('\n', 3, 3),
                  QString("  Vendor: %1 (0x%2)").arg(QString(name), QString::number(id, 16)));
    }
}

TEST(CapsReportTest, WithoutGpusTheListsAreEmpty) {
    bgfx::Caps caps = SampleCaps();
    caps.numGPUs = 0;
    EXPECT_TRUE(ToJson(caps)["availableGPUs"].toArray().isEmpty());
    EXPECT_TRUE(ToString(caps).contains("Number of GPUs: 0\nAvailable GPUs:\nLimits:\n"));
}

TEST(CapsReportTest, MoreThanFourGpusListFour) {
    bgfx::Caps caps = SampleCaps();
    caps.numGPUs = 200;
    EXPECT_EQ(ToJson(caps)["availableGPUs"].toArray().size(), 4);
    EXPECT_EQ(ToJson(caps)["numGPUs"], QJsonValue(200));
    EXPECT_EQ(ToString(caps).count("  GPU["), 4);
    EXPECT_TRUE(ToString(caps).contains("Number of GPUs: 200\n"));
}

TEST(CapsReportTest, EveryEntryEqualToTheActiveGpuIsMarked) {
    bgfx::Caps caps = SampleCaps();
    caps.numGPUs = 3;
    caps.gpu[0] = caps.gpu[1];
    caps.gpu[2] = {caps.vendorId, 0x9999};
    EXPECT_EQ(ToString(caps).count(" [ACTIVE]"), 2);
    QJsonArray const gpus = ToJson(caps)["availableGPUs"].toArray();
    EXPECT_EQ(gpus[0].toObject()["isActive"], QJsonValue(true));
    EXPECT_EQ(gpus[1].toObject()["isActive"], QJsonValue(true));
    EXPECT_EQ(gpus[2].toObject()["isActive"], QJsonValue(false));
}

TEST(CapsReportTest, LimitsBeyond31BitsAreNegativeInJsonAndUnsignedInText) {
    bgfx::Caps caps = SampleCaps();
    caps.limits.maxTextureSize = 4294967295u;
    caps.limits.maxBlits = 2147483648u;
    QJsonObject const limits = ToJson(caps)["limits"].toObject();
    EXPECT_EQ(limits["maxTextureSize"], QJsonValue(-1));
    EXPECT_EQ(limits["maxBlits"], QJsonValue(-2147483647 - 1));
    EXPECT_TRUE(ToString(caps).contains("  Max Texture Size: 4294967295\n"));
    EXPECT_TRUE(ToString(caps).contains("  Max Blits: 2147483648\n"));
}

TEST(CapsReportTest, OnlySupportedFormatsAppear) {
    QJsonObject const formats = ToJson(SampleCaps())["formats"].toObject();
    QString const last = QString::number(bgfx::TextureFormat::Count - 1);
    EXPECT_EQ(formats.size(), 2);
    EXPECT_EQ(formats["3"], QJsonValue("1f"));
    EXPECT_EQ(formats[last], QJsonValue("ffff"));
}

TEST(CapsReportTest, WithoutFormatsTheListIsEmpty) {
    bgfx::Caps const caps = {};
    EXPECT_TRUE(ToJson(caps)["formats"].toObject().isEmpty());
    EXPECT_TRUE(ToString(caps).endsWith("Texture Format Support:\n"));
}

TEST(CapsReportTest, AGpuIsOneOfAMakerThatBgfxKnows) {
    bgfx::Caps caps = SampleCaps();
    EXPECT_TRUE(HasGpu(caps));
    caps.numGPUs = 0; // as on OpenGL
    EXPECT_TRUE(HasGpu(caps));
    for (std::uint16_t const none : {BGFX_PCI_ID_NONE, BGFX_PCI_ID_SOFTWARE_RASTERIZER}) {
        caps.vendorId = none;
        EXPECT_FALSE(HasGpu(caps));
    }
}

TEST(CapsReportTest, AVulkanDriverThatDrawsOnTheProcessorIsNoGpu) {
    bgfx::Caps caps = SampleCaps();
    caps.numGPUs = 1;
    caps.vendorId = 5; // the lower half of what Mesa's has
    caps.deviceId = 0;
    caps.gpu[0] = {BGFX_PCI_ID_SOFTWARE_RASTERIZER, 0};
    EXPECT_FALSE(HasGpu(caps));
}
