// One string at a point of a view.
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Text.h>

#include "../frame/ColorConversion.h"
#include "Alignment.h"
#include "Drawing.h"

#include <QStringEncoder>
#include <QVarLengthArray>

namespace zarvex::zx3DQt {

namespace {

/// Ends with a zero; takes no memory from the heap for labels of usual length.
using Utf8Text = QVarLengthArray<char, 512>;

/// The bytes of `QString::toUtf8`.
Utf8Text ToUtf8(QString const& text) {
    QStringEncoder encode(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    Utf8Text utf8(encode.requiredSpace(text.size()) + 1);
    *encode.appendToBuffer(utf8.data(), text) = '\0';
    if (encode.hasError()) {
        QByteArray const otherwise = text.toUtf8(); // which replaces halves of surrogates by something else
        utf8 = Utf8Text(otherwise.cbegin(), otherwise.cend() + 1);
    }
    return utf8;
}

} // namespace

void BGFXRenderer::RenderText(BGFXViewContext const& view,
                              std::pair<QPointF const, int> const& positionAndDepth, QString const& text,
                              zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment,
                              float angle) const {
    m_drawing->GetCounter().AddCall();
    auto const& [position, depth] = positionAndDepth;
    zx3D::TextBufferHandle const buffer = zx3D::CreateTextBuffer(zx3D::TextBufferType::Transient, font);
    zx3D::SetPenPosition(buffer, static_cast<float>(position.x()), static_cast<float>(position.y()));
    zx3D::SetTextColor(buffer, QColorToColor(color).ToRGBA());
    zx3D::AppendText(buffer, ToUtf8(text).constData(), nullptr);
    zx3D::AlignText(buffer, HorizontalFactor(alignment), VerticalFactor(alignment));
    zx3D::SetTextAngle(buffer, angle);
    zx3D::SubmitTextBuffer(buffer, view, depth);
    zx3D::DestroyTextBuffer(buffer);
}

void BGFXRenderer::RenderText(BGFXViewContext const& view, QPointF const& position, QString const& text,
                              zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment,
                              float angle) const {
    RenderText(view, std::pair<QPointF const, int>(position, 0), text, font, color, alignment, angle);
}

void BGFXRenderer::RenderText(BGFXViewContext const& view, bx::Vec3 const& worldPosition, QString const& text,
                              zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment,
                              float angle) const {
    if (std::optional<QPointF> const position = view.ProjectToViewport(worldPosition))
        RenderText(view, *position, text, font, color, alignment, angle);
}

void BGFXRenderer::RenderText(BGFXViewContext const& view,
                              std::pair<QPointF const, int> const& positionAndDepth, QString const& text,
                              zx3D::FontHandle font, QColor const& color,
                              QFlags<Qt::AlignmentFlag> alignment) const {
    RenderText(view, positionAndDepth, text, font, color, alignment, 0.0f);
}

void BGFXRenderer::RenderText(BGFXViewContext const& view, QPointF const& position, QString const& text,
                              zx3D::FontHandle font, QColor const& color,
                              QFlags<Qt::AlignmentFlag> alignment) const {
    RenderText(view, position, text, font, color, alignment, 0.0f);
}

void BGFXRenderer::RenderText(BGFXViewContext const& view, bx::Vec3 const& worldPosition, QString const& text,
                              zx3D::FontHandle font, QColor const& color,
                              QFlags<Qt::AlignmentFlag> alignment) const {
    RenderText(view, worldPosition, text, font, color, alignment, 0.0f);
}

void BGFXRenderer::DrawAnnotations(BGFXViewContext const& view, zx3D::Annotations const& annotations,
                                   zx3D::AnnotationDepth depth) const {
    m_drawing->GetCounter().AddCall();
    if (annotations.Submit(view, depth).leftOut > 0)
        m_drawing->GetCounter().LeaveOut(LeftOutReason::NoTransientSpace);
}

} // namespace zarvex::zx3DQt
