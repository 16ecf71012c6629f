// W6: 1,000 labels of 8 digits: in a font that has drawn them before, and in one that was just loaded.
#include "runner/Scene.h"
#include "workloads/RandomScene.h"
#include "workloads/TextByHand.h"
#include "workloads/Variants.h"
#include "workloads/Workloads.h"

#include <zx3D/Text.h>

#include <QColor>
#include <QString>

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zarvex::benchmarks {

namespace {

constexpr std::size_t kDigits = 8;
constexpr int kPixelSize = 14;

struct Label {
    float x = 0.0f; ///< pixels to the top left
    float y = 0.0f;
    std::string digits;
    QColor color;
};

std::vector<Label> RandomLabels(std::size_t count) {
    Random random(6);
    std::vector<Label> labels(count);
    for (Label& label : labels) {
        label.x = std::floor(random.Between(0.0f, 1200.0f));
        label.y = std::floor(random.Between(0.0f, 700.0f));
        for (std::size_t i = 0; i < kDigits; ++i)
            label.digits += random.HexDigit();
        zx3D::Color const color = random.BrightColor();
        label.color = QColor::fromRgbF(color.red, color.green, color.blue);
    }
    return labels;
}

class LabelsScene : public Scene {
public:
    LabelsScene(std::size_t count, bool isFontNew) : m_isFontNew(isFontNew), m_labels(RandomLabels(count)) {
        for (Label const& label : m_labels)
            m_texts.push_back(QString::fromStdString(label.digits));
        LoadForLibrary();
        LoadByHand();
    }

    ~LabelsScene() override { zx3D::DestroyFont(m_font); }

    // Of a font that was just loaded the most is not written for bgfx.
    std::size_t GetByteCount() const override {
        std::size_t glyphs = 0; // fewer than digits: two f become one
        for (std::vector<PlacedGlyph> const& label : m_placed)
            glyphs += label.size();
        return m_isFontNew ? 0 : glyphs * TextByHand::kBytesPerGlyph;
    }

private:
    void LoadForLibrary() {
        zx3D::DestroyFont(m_font);
        m_font = zx3D::LoadDefaultFont(kPixelSize).value();
    }

    void LoadByHand() {
        m_handFont.emplace(kPixelSize);
        m_placed.clear();
        for (Label const& label : m_labels)
            m_placed.push_back(m_handFont->Shape(label.digits));
    }

    void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) override {
        if (m_isFontNew)
            LoadForLibrary();
        for (std::size_t i = 0; i < m_labels.size(); ++i)
            renderer.RenderText(view, QPointF(m_labels[i].x, m_labels[i].y), m_texts[i], m_font,
                                m_labels[i].color, Qt::AlignLeft | Qt::AlignTop);
    }

    void DrawByHand(bgfx::ViewId view) override {
        if (m_isFontNew)
            LoadByHand();
        for (std::size_t i = 0; i < m_labels.size(); ++i)
            m_text.Submit(view, m_labels[i].x, m_labels[i].y, m_labels[i].color, m_placed[i],
                          m_handFont->GetPage());
    }

    bool m_isFontNew;
    std::vector<Label> m_labels;
    std::vector<QString> m_texts;
    zx3D::FontHandle m_font;
    std::optional<ShortTextFont> m_handFont;
    std::vector<std::vector<PlacedGlyph>> m_placed;
    TextByHand m_text{kDigits};
};

} // namespace

WorkloadKind Labels() {
    constexpr std::size_t count = 1000;
    std::vector<std::string> variants = SizeVariants();
    variants.push_back("new");
    return {.name = "W6",
            .title = "1,000 labels",
            .variants = std::move(variants),
            .create = [](std::string const& variant) {
                bool const isFontNew = variant == "new";
                return std::make_unique<LabelsScene>(isFontNew ? count : PartOf(count, variant), isFontNew);
            }};
}

} // namespace zarvex::benchmarks
