// Fallback faces.
#include "Font.h"

namespace zarvex::zx3D {

namespace {

constexpr std::size_t kMaxFaces = 32; // of the system's
constexpr std::size_t kMaxKnownCodePoints = 1 << 16;

} // namespace

Font::Font(std::uint32_t id, std::unique_ptr<Face> face, FaceLoader& loader, SystemFonts& systemFonts)
    : m_id(id),
      m_loader(loader),
      m_systemFonts(systemFonts),
      m_look{face->GetFamily(), face->IsBold(), face->IsItalic()} {
    m_faces.push_back(std::move(face));
}

std::uint32_t Font::FindFace(char32_t codePoint) {
    if (GetPrimaryFace().HasGlyph(codePoint))
        return 0;
    if (auto const known = m_faceOfCodePoint.find(codePoint); known != m_faceOfCodePoint.end())
        return known->second;
    if (m_faceOfCodePoint.size() == kMaxKnownCodePoints)
        m_faceOfCodePoint.clear();
    std::uint32_t const face = FindFallback(codePoint);
    m_faceOfCodePoint.emplace(codePoint, face);
    return face;
}

std::uint32_t Font::FindFallback(char32_t codePoint) {
    std::optional<int> position = m_systemFonts.FindFallback(m_look, codePoint, 0);
    while (position) {
        // The file may offer other characters than fontconfig's cache says.
        std::uint32_t const face = LoadFallback(*position);
        if (face != 0 && HasGlyph(face, codePoint))
            return face;
        position = m_systemFonts.FindFallback(m_look, codePoint, *position + 1);
    }
    std::uint32_t const face = LoadDefaultFace();
    return HasGlyph(face, codePoint) ? face : 0;
}

std::uint32_t Font::LoadFallback(int position) {
    auto const [known, isNew] = m_faceOfPosition.emplace(position, 0);
    if (isNew && m_faces.size() < kMaxFaces) {
        if (std::optional<SystemFont> font = m_systemFonts.LoadFallback(m_look, position)) {
            known->second =
                Add(m_loader.Load(std::move(font->data), font->faceIndex, GetPrimaryFace().GetPixelSize()));
        }
    }
    return known->second;
}

std::uint32_t Font::LoadDefaultFace() {
    if (!m_triedDefaultFace) {
        m_triedDefaultFace = true;
        m_defaultFace = Add(m_loader.Load(DefaultFontData(), 0, GetPrimaryFace().GetPixelSize()));
    }
    return m_defaultFace;
}

std::uint32_t Font::Add(std::unique_ptr<Face> face) {
    if (face == nullptr)
        return 0;
    m_faces.push_back(std::move(face));
    return static_cast<std::uint32_t>(m_faces.size() - 1);
}

} // namespace zarvex::zx3D
