// Polygons by the tessellator of GLU, which sweeps a line over the outlines in double precision.
#include "../frame/Logging.h"

#include <zx3DQt/Polygons.h>

#include <zx3D/Vertex.h>

#include <GL/glu.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <new>

namespace zarvex::zx3DQt {

namespace {

bool IsFinite(PolygonOutline const& outline) {
    return std::all_of(outline.begin(), outline.end(), [](QVector3D const& position) {
        return std::isfinite(position.x()) && std::isfinite(position.y()) && std::isfinite(position.z());
    });
}

/// Feeds outlines to the tessellator and takes its triangles. Nothing is thrown through it, which is C.
class Tessellation {
public:
    explicit Tessellation(FillRule rule) : m_tessellator(gluNewTess()) {
        if (m_tessellator == nullptr)
            throw std::bad_alloc();
        GLUtesselator* const tessellator = m_tessellator.get();
        gluTessProperty(tessellator, GLU_TESS_WINDING_RULE,
                        rule == FillRule::EvenOdd ? GLU_TESS_WINDING_ODD : GLU_TESS_WINDING_NONZERO);
        SetCallback(GLU_TESS_VERTEX_DATA, &TakeVertex);
        SetCallback(GLU_TESS_COMBINE_DATA, &Combine);
        SetCallback(GLU_TESS_ERROR_DATA, &TakeError);
        SetCallback(GLU_TESS_EDGE_FLAG_DATA, &IgnoreEdgeFlag); // so there are neither fans nor strips
    }

    PolygonTriangles Run(zx3D::DataSpan<PolygonOutline const> outlines) {
        GLUtesselator* const tessellator = m_tessellator.get();
        gluTessBeginPolygon(tessellator, this);
        for (std::uint64_t i = 0; i < outlines.count && !m_failed; ++i) {
            if (!IsFinite(outlines.data[i]))
                continue;
            gluTessBeginContour(tessellator);
            for (QVector3D const& position : outlines.data[i])
                AddVertex({position.x(), position.y(), position.z()});
            gluTessEndContour(tessellator);
        }
        gluTessEndPolygon(tessellator);
        if (m_failed)
            throw std::bad_alloc();
        return std::move(m_result);
    }

private:
    /// What the tessellator knows a vertex by. It stays where it is.
    struct Vertex {
        std::array<double, 3> position;
        std::uint32_t index;
    };

    struct Delete {
        void operator()(GLUtesselator* tessellator) const { gluDeleteTess(tessellator); }
    };

    template<typename Function>
    void SetCallback(GLenum which, Function* function) {
        gluTessCallback(m_tessellator.get(), which, reinterpret_cast<_GLUfuncptr>(function));
    }

    void AddVertex(std::array<double, 3> const& position) {
        Vertex* const vertex = NewVertex(position);
        gluTessVertex(m_tessellator.get(), vertex->position.data(), vertex);
    }

    Vertex* NewVertex(std::array<double, 3> const& position) {
        m_vertices.push_back({position, static_cast<std::uint32_t>(m_vertices.size())});
        m_result.positions.push_back({static_cast<float>(position[0]), static_cast<float>(position[1]),
                                      static_cast<float>(position[2])});
        return &m_vertices.back();
    }

    template<typename Act>
    void Try(Act&& act) {
        try {
            act();
        } catch (std::bad_alloc const&) {
            m_failed = true;
        }
    }

    static void TakeVertex(void* vertex, void* self) {
        auto& tessellation = *static_cast<Tessellation*>(self);
        tessellation.Try(
            [&] { tessellation.m_result.indices.push_back(static_cast<Vertex*>(vertex)->index); });
    }

    /// Where outlines cross.
    static void Combine(GLdouble position[3], void* neighbours[4], GLfloat[4], void** vertex, void* self) {
        auto& tessellation = *static_cast<Tessellation*>(self);
        *vertex = neighbours[0]; // where there is no memory: any
        tessellation.Try([&] { *vertex = tessellation.NewVertex({position[0], position[1], position[2]}); });
    }

    static void TakeError(GLenum error, void* self) {
        if (error == GLU_OUT_OF_MEMORY)
            static_cast<Tessellation*>(self)->m_failed = true;
    }

    static void IgnoreEdgeFlag(GLboolean, void*) {}

    std::unique_ptr<GLUtesselator, Delete> m_tessellator;
    std::deque<Vertex> m_vertices;
    PolygonTriangles m_result;
    bool m_failed = false;
};

} // namespace

PolygonTriangles TriangulatePolygon(zx3D::DataSpan<PolygonOutline const> outlines, FillRule rule) {
    if (outlines.IsEmpty())
        return {};
    auto const refused = std::count_if(outlines.data, outlines.data + outlines.count,
                                       [](PolygonOutline const& outline) { return !IsFinite(outline); });
    if (refused > 0)
        LogWarning("polygon.not-finite", [&] {
            return QString("%1 of %2 outlines are left out: they are not finite")
                .arg(refused)
                .arg(outlines.count);
        });
    return Tessellation(rule).Run(outlines);
}

void DrawPolygon(BGFXRenderer const& renderer, BGFXViewContext const& view, PolygonTriangles const& triangles,
                 zx3D::Color const& color, BGFXRenderState state) {
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    constexpr std::size_t most = std::numeric_limits<std::uint16_t>::max() / 3 * 3; // corners of a call
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
    for (std::size_t first = 0; first < triangles.indices.size(); first += most) {
        std::size_t const count = std::min(most, triangles.indices.size() - first);
        vertices.clear();
        indices.clear();
        for (std::size_t i = 0; i < count; ++i) {
            QVector3D const& position = triangles.positions[triangles.indices[first + i]];
            vertices.push_back({{position.x(), position.y(), position.z()}, color});
            indices.push_back(static_cast<std::uint16_t>(i));
        }
        renderer.DrawTriangles(view, vertices, indices, std::nullopt, state);
    }
}

void DrawPolygon(BGFXRenderer const& renderer, BGFXViewContext const& view,
                 zx3D::DataSpan<PolygonOutline const> outlines, zx3D::Color const& color,
                 BGFXRenderState state, FillRule rule) {
    DrawPolygon(renderer, view, TriangulatePolygon(outlines, rule), color, state);
}

} // namespace zarvex::zx3DQt
