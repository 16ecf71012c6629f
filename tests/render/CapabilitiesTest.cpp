// The capabilities report on running renderers.
#include "SharedRun.h"

#include <zx3DQt/CapsReport.h>

#include <QJsonArray>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class CapabilitiesTest : public SharedRunTest {
protected:
    QString RendererName() const {
        return GetParam() == bgfx::RendererType::OpenGL ? "OpenGL 2.1+" : "Vulkan";
    }

    /// The vendor's name as the text of the report gives it.
    QString VendorInText() const {
        QString const text = zx3DQt::ToString(m_caps);
        QString const label = "\n  Vendor: ";
        qsizetype const start = text.indexOf(label) + label.size();
        return text.mid(start, text.indexOf(" (0x", start) - start);
    }

    bgfx::Caps const& m_caps = *bgfx::getCaps();
};

} // namespace

TEST_P(CapabilitiesTest, NamesTheRenderer) {
    QString const firstLine = zx3DQt::ToString(m_caps).section('\n', 0, 0);
    EXPECT_EQ(firstLine, QString("Renderer Type: %1 (%2)").arg(RendererName()).arg(int{GetParam()}));
    QJsonObject const json = zx3DQt::ToJson(m_caps);
    EXPECT_EQ(json["rendererType"].toInt(-1), int{GetParam()});
    EXPECT_EQ(json["rendererTypeName"].toString(), RendererName());
    EXPECT_EQ(json["homogeneousDepth"].toBool(), GetParam() == bgfx::RendererType::OpenGL);
    EXPECT_EQ(json["originBottomLeft"].toBool(), GetParam() == bgfx::RendererType::OpenGL);
}

TEST_P(CapabilitiesTest, TextAndJsonAgreeOnTheGpus) {
    QJsonObject const json = zx3DQt::ToJson(m_caps);
    QJsonObject const gpu = json["activeGPU"].toObject();
    EXPECT_FALSE(gpu["vendorName"].toString().isEmpty());
    EXPECT_EQ(gpu["vendorName"].toString(), VendorInText());
    EXPECT_EQ(gpu["vendorId"].toString().toUInt(nullptr, 16), m_caps.vendorId);
    EXPECT_EQ(gpu["deviceId"].toString().toUInt(nullptr, 16), m_caps.deviceId);
    EXPECT_EQ(json["availableGPUs"].toArray().size(), m_caps.numGPUs);
    EXPECT_EQ(zx3DQt::ToString(m_caps).count("  GPU["), m_caps.numGPUs);
}

TEST_P(CapabilitiesTest, OffersMipmapsOfTheFormatsThatCanHaveThem) {
    auto const offers = [this](bgfx::TextureFormat::Enum format) {
        return (m_caps.formats[format] & BGFX_CAPS_FORMAT_TEXTURE_MIP_AUTOGEN) != 0;
    };
    for (bgfx::TextureFormat::Enum const format : {bgfx::TextureFormat::R8, bgfx::TextureFormat::RGBA8,
                                                   bgfx::TextureFormat::RGBA32F, bgfx::TextureFormat::D16})
        EXPECT_TRUE(offers(format)) << format;
    if (GetParam() == bgfx::RendererType::Vulkan)
        return; // of integers bgfx promises them there, too
    for (bgfx::TextureFormat::Enum const format :
         {bgfx::TextureFormat::RGBA8U, bgfx::TextureFormat::R32I, bgfx::TextureFormat::BC1})
        EXPECT_FALSE(offers(format)) << format;
}

TEST_P(CapabilitiesTest, ListsWhatTheLibraryDependsOn) {
    QJsonObject const json = zx3DQt::ToJson(m_caps);
    EXPECT_GE(json["limits"].toObject()["maxTextureSize"].toInt(), 2048);
    EXPECT_GE(json["limits"].toObject()["maxViews"].toInt(), 128);
    EXPECT_TRUE(json["formats"].toObject().contains(QString::number(bgfx::TextureFormat::RGBA8)));
    EXPECT_TRUE(json["formats"].toObject().contains(QString::number(bgfx::TextureFormat::D16)));
    EXPECT_TRUE(
        zx3DQt::ToString(m_caps).contains(QString("\n  Format[%1]: 0x").arg(bgfx::TextureFormat::RGBA8)));
}

ZX3D_INSTANTIATE_BACKENDS(CapabilitiesTest);
