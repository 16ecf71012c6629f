// A font as the application loaded it, with the faces that stand in for it.
#pragma once

#include "Face.h"
#include "SystemFonts.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace zarvex::zx3D {

/// A face at a size, and, found when a text first needs them, faces for the characters that it lacks.
class Font {
public:
    /// The loader and the system's fonts outlive the font. Names the font unlike all others, past ones
    /// included.
    Font(std::uint32_t id, std::unique_ptr<Face> face, FaceLoader& loader, SystemFonts& systemFonts);

    std::uint32_t GetId() const { return m_id; }

    /// The face that was loaded: number 0.
    Face const& GetPrimaryFace() const { return *m_faces.front(); }

    std::vector<std::unique_ptr<Face>> const& GetFaces() const { return m_faces; }

    /// The number of the face to draw a character with: the first that has it among the primary one, the
    /// system's fonts by similarity, and the default font. 0 when none has it.
    std::uint32_t FindFace(char32_t codePoint);

    bool HasGlyph(std::uint32_t face, char32_t codePoint) const { return m_faces[face]->HasGlyph(codePoint); }

private:
    std::uint32_t FindFallback(char32_t codePoint);
    std::uint32_t LoadFallback(int position);
    std::uint32_t LoadDefaultFace();
    std::uint32_t Add(std::unique_ptr<Face> face);

    std::uint32_t m_id;
    FaceLoader& m_loader;
    SystemFonts& m_systemFonts;
    FontLook m_look;
    std::vector<std::unique_ptr<Face>> m_faces;
    std::unordered_map<char32_t, std::uint32_t> m_faceOfCodePoint; // of those that the primary face lacks
    std::unordered_map<int, std::uint32_t> m_faceOfPosition;       // 0: cannot be used
    std::uint32_t m_defaultFace = 0;
    bool m_triedDefaultFace = false;
};

} // namespace zarvex::zx3D
