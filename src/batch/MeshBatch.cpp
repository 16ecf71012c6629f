// Meshes on the GPU: what is taken, and what is drawn of it.
#include <zx3DQt/MeshBatch.h>

#include "../frame/Logging.h"
#include "../picking/IdPass.h"
#include "../picking/PickCollection.h"
#include "../render/Drawing.h"
#include "MeshInstances.h"
#include "MeshPass.h"
#include "MeshStore.h"
#include "ModelMatrix.h"
#include "VertexCount.h"
#include "WorldPlace.h"

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Picker.h>

#include <zx3D/Context.h>
#include <zx3D/Message.h>
#include <zx3D/ProgramFactory.h>

#include <QString>

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

/// Whether each attribute that there is has the positions' length.
bool HasOneLength(MeshVertices const& vertices) {
    std::uint64_t const count = vertices.positions.IsEmpty() ? 0 : vertices.positions.count;
    auto const fits = [count](auto const& span) { return span.IsEmpty() || span.count == count; };
    bool const isFine = fits(vertices.normals) && fits(vertices.colors) && fits(vertices.textureCoordinates);
    if (!isFine)
        LogWarning("mesh-batch.lengths", [&] {
            return QString("A mesh is refused: it has %1 positions, %2 normals, %3 colours and %4 texture "
                           "coordinates")
                .arg(count)
                .arg(vertices.normals.count)
                .arg(vertices.colors.count)
                .arg(vertices.textureCoordinates.count);
        });
    return isFine;
}

bool IsInRange(char const* things, std::uint64_t first, std::uint64_t count, std::uint64_t all) {
    if (first <= all && count <= all - first)
        return true;
    LogWarning("mesh-batch.range", [&] {
        return QString("%1 %2 to %3 are not updated: the batch has %4")
            .arg(things)
            .arg(first)
            .arg(first + count - 1)
            .arg(all);
    });
    return false;
}

} // namespace

class MeshBatch::Data {
public:
    explicit Data(bool keepsData) : mesh(keepsData), instances(keepsData) {}

    void Append(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices) {
        if (HasOneLength(vertices) && !vertices.positions.IsEmpty() && HasAttributesOf(vertices))
            mesh.Append(vertices, indices.IsEmpty() ? zx3D::DataSpan<std::uint32_t const>() : indices);
    }

    void Update(std::uint64_t first, MeshVertices const& vertices) {
        if (HasOneLength(vertices) && !vertices.positions.IsEmpty() && HasAttributesOf(vertices) &&
            IsInRange("Vertices", first, vertices.positions.count, mesh.GetVertexCount()))
            mesh.Update(first, vertices);
    }

    void Clear() {
        mesh.Clear();
        instances.Clear();
    }

    bool IsLost() const { return mesh.IsLost() || instances.IsLost(); }

    /// Around the mesh in all its places, in the batch's coordinates.
    Bounds GetBounds() const;

    void Draw(Drawing& drawing, BGFXViewContext const& view, MeshStyle const& style,
              QMatrix4x4 const& transform);
    void DrawNumbers(IdPass& ids, MeshStyle const& style, QMatrix4x4 const& transform) const;
    void Collect(PickCollection& collection) const;

    WorldPosition origin;
    MeshStore mesh;
    MeshInstances instances;
    zx3D::OncePerCause lost;

private:
    bool HasAttributesOf(MeshVertices const& vertices) const;
    float GetReach() const;
    void Upload(Drawing& drawing);
    void CheckTexture(MeshStyle const& style);

    zx3D::OncePerCause m_noTextureCoordinates;
};

bool MeshBatch::Data::HasAttributesOf(MeshVertices const& vertices) const {
    if (mesh.GetVertexCount() == 0 || MeshFormat(vertices) == mesh.GetFormat())
        return true;
    LogWarning("mesh-batch.attributes", [] {
        return QString("Vertices are refused: those of the batch have, or have not, normals or texture "
                       "coordinates");
    });
    return false;
}

/// How far from an instance's place the mesh may be.
float MeshBatch::Data::GetReach() const {
    Bounds const bounds = mesh.GetBounds();
    auto const farther = [](float a, float b) { return std::max(std::abs(a), std::abs(b)); };
    QVector3D const corner(farther(bounds.minimum.x(), bounds.maximum.x()),
                           farther(bounds.minimum.y(), bounds.maximum.y()),
                           farther(bounds.minimum.z(), bounds.maximum.z()));
    return instances.GetScale() * corner.length();
}

Bounds MeshBatch::Data::GetBounds() const {
    if (instances.GetCount() == 0 || mesh.GetTriangleCount() == 0)
        return mesh.GetBounds();
    Bounds bounds = instances.GetBounds();
    if (!bounds.IsEmpty()) {
        float const reach = GetReach();
        bounds.minimum -= QVector3D(reach, reach, reach);
        bounds.maximum += QVector3D(reach, reach, reach);
    }
    return bounds;
}

void MeshBatch::Data::Upload(Drawing& drawing) {
    std::uint64_t const before = drawing.GetUploadBudget().GetLeft();
    std::uint64_t left = before;
    bool const hasBuffers = mesh.Upload(left);
    if (!hasBuffers || !instances.Upload(left))
        drawing.GetCounter().LeaveOut(LeftOutReason::NoBuffer);
    drawing.GetUploadBudget().Take(before - left);
    drawing.GetCounter().AddPrimitives(0, before - left);
}

void MeshBatch::Data::CheckTexture(MeshStyle const& style) {
    if (!bgfx::isValid(style.texture) || mesh.GetFormat().HasTextureCoordinates())
        return m_noTextureCoordinates.Clear();
    m_noTextureCoordinates.Raise([] {
        LogWarning("mesh-batch.no-texture-coordinates", [] {
            return QString("A mesh is drawn without its texture: it has no texture coordinates");
        });
    });
}

void MeshBatch::Data::Draw(Drawing& drawing, BGFXViewContext const& view, MeshStyle const& style,
                           QMatrix4x4 const& transform) {
    FrameCounter& counter = drawing.GetCounter();
    counter.AddCall();
    Upload(drawing);
    CheckTexture(style);
    BatchUniforms& uniforms = BatchUniforms::Get();
    if (!uniforms.Create())
        return counter.LeaveOut(LeftOutReason::NoProgram);

    bool const hasInstances = instances.GetCount() > 0;
    QMatrix4x4 const model = ModelMatrix(origin, view.GetOrigin(), transform);
    QMatrix4x4 const toClip = view.GetProjectionMatrix() * view.GetViewMatrix() * model;
    MeshPass pass(view, style, mesh.GetFormat(), model, hasInstances);
    std::uint32_t const modelId = bgfx::setTransform(model.constData(), 1);

    auto const submit = [&](MeshPiece const& piece, std::uint32_t count) {
        auto const program = pass.ProgramFor(piece);
        if (!program)
            return counter.LeaveOut(LeftOutReason::NoProgram);
        bgfx::setTransform(modelId, 1);
        bgfx::setState(pass.GetState());
        piece.SetBuffers();
        pass.SetUniforms(uniforms, piece);
        bgfx::submit(view, *program, 0, BGFX_DISCARD_ALL);
        counter.AddPrimitives(std::uint64_t{piece.GetUploadedIndexCount() / 3} * count, 0);
    };
    if (!hasInstances) {
        ViewVolume const volume(toClip, 0.0f, 0.0f, 0.0f);
        for (MeshPiece const& piece : mesh.GetPieces()) {
            if (piece.GetUploadedIndexCount() > 0 && volume.MayShow(piece.GetBounds()))
                submit(piece, 1);
        }
        return;
    }
    instances.ForEachVisible(ViewVolume(toClip, 0.0f, 0.0f, GetReach()),
                             [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t count,
                                 std::uint32_t rowLength, std::uint64_t /*instance*/) {
                                 for (MeshPiece const& piece : mesh.GetPieces()) {
                                     if (piece.GetUploadedIndexCount() == 0)
                                         continue;
                                     SetInstanceCount(count);
                                     bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
                                     uniforms.Set(BatchUniform::Range, static_cast<float>(first),
                                                  static_cast<float>(rowLength));
                                     submit(piece, count);
                                 }
                             });
}

void MeshBatch::Data::DrawNumbers(IdPass& ids, MeshStyle const& style, QMatrix4x4 const& transform) const {
    BGFXViewContext const& view = ids.GetView();
    bool const hasInstances = instances.GetCount() > 0;
    auto const program = zx3D::ProgramFactory::Get().CreateProgram(
        hasInstances ? "vs_pick_mesh_instances" : "vs_pick_mesh", "fs_pick_mesh");
    BatchUniforms& uniforms = BatchUniforms::Get();
    if (!program || !uniforms.Create() || !HasTriangleIndices())
        return ids.LeaveOut();
    QMatrix4x4 const model = ModelMatrix(origin, view.GetOrigin(), transform);
    QMatrix4x4 const toClip = view.GetProjectionMatrix() * view.GetViewMatrix() * model;
    std::uint32_t const modelId = bgfx::setTransform(model.constData(), 1);
    auto const submitPieces = [&](auto&& mayShow, auto&& prepare, std::uint64_t firstInstance) {
        std::uint64_t triangle = 0;
        for (MeshPiece const& piece : mesh.GetPieces()) {
            if (piece.GetUploadedIndexCount() > 0 && mayShow(piece)) {
                prepare();
                bgfx::setTransform(modelId, 1);
                piece.SetBuffers();
                ids.Submit(*program, style.state.value_or(BGFXRenderer::STATE_OPAQUE), triangle,
                           firstInstance);
            }
            triangle += piece.GetTriangleCount();
        }
    };
    if (!hasInstances) {
        ViewVolume const volume(toClip, 0.0f, 0.0f, 0.0f);
        return submitPieces([&](MeshPiece const& piece) { return volume.MayShow(piece.GetBounds()); }, [] {},
                            0);
    }
    instances.ForEachVisible(ViewVolume(toClip, 0.0f, 0.0f, GetReach()),
                             [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t count,
                                 std::uint32_t rowLength, std::uint64_t instance) {
                                 auto const prepare = [&] {
                                     SetInstanceCount(count);
                                     bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
                                     uniforms.Set(BatchUniform::Range, static_cast<float>(first),
                                                  static_cast<float>(rowLength));
                                 };
                                 submitPieces([](MeshPiece const&) { return true; }, prepare, instance);
                             });
}

void MeshBatch::Data::Collect(PickCollection& collection) const {
    auto const collectAt = [&](std::uint64_t instance, auto&& placed) {
        PickElement element = collection.GetAddition();
        element.instance = instance;
        for (MeshPiece const& piece : mesh.GetPieces()) {
            for (std::uint32_t i = 0; i < piece.GetTriangleCount(); ++i, ++element.element) {
                std::array<bx::Vec3, 3> const corners = piece.GetTriangle(mesh.GetFormat(), i);
                if (collection.HasTriangle({placed(corners[0]), placed(corners[1]), placed(corners[2])}))
                    collection.Add(element);
            }
        }
    };
    if (instances.GetCount() == 0)
        return collectAt(0, [](bx::Vec3 const& place) { return place; });
    for (std::uint64_t i = 0; i < instances.GetCount(); ++i) {
        MeshInstance const instance = instances.Get(i);
        if (instance.rows == decltype(instance.rows){})
            continue; // refused
        collectAt(i, [&rows = instance.rows](bx::Vec3 const& place) {
            auto const row = [&](std::size_t r) {
                return rows[r] * place.x + rows[r + 1] * place.y + rows[r + 2] * place.z + rows[r + 3];
            };
            return bx::Vec3(row(0), row(4), row(8));
        });
    }
}

MeshBatch::MeshBatch(KeepData keepData) : m_data(std::make_shared<Data>(keepData == KeepData::Yes)) {}
MeshBatch::~MeshBatch() = default;
MeshBatch::MeshBatch(MeshBatch&& other) noexcept = default;
MeshBatch& MeshBatch::operator=(MeshBatch&& other) noexcept = default;

void MeshBatch::SetOrigin(WorldPosition const& origin) {
    m_data->origin = origin;
}

WorldPosition const& MeshBatch::GetOrigin() const {
    return m_data->origin;
}

void MeshBatch::Set(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices) {
    if (!HasOneLength(vertices))
        return;
    m_data->mesh.Clear();
    m_data->Append(vertices, indices);
}

void MeshBatch::Append(MeshVertices const& vertices, zx3D::DataSpan<std::uint32_t const> indices) {
    m_data->Append(vertices, indices);
}

void MeshBatch::Update(std::uint64_t first, MeshVertices const& vertices) {
    m_data->Update(first, vertices);
}

void MeshBatch::Clear() {
    m_data->Clear();
}

void MeshBatch::SetInstances(zx3D::DataSpan<MeshInstance const> instances) {
    m_data->instances.Set(instances);
}

void MeshBatch::UpdateInstances(std::uint64_t first, zx3D::DataSpan<MeshInstance const> instances) {
    if (!instances.IsEmpty() && IsInRange("Instances", first, instances.count, GetInstanceCount()))
        m_data->instances.Update(first, instances);
}

std::uint64_t MeshBatch::GetVertexCount() const {
    return m_data->mesh.GetVertexCount();
}

std::uint64_t MeshBatch::GetTriangleCount() const {
    return m_data->mesh.GetTriangleCount();
}

std::uint64_t MeshBatch::GetInstanceCount() const {
    return m_data->instances.GetCount();
}

bool MeshBatch::IsUploaded() const {
    return m_data->mesh.IsUploaded() && m_data->instances.IsUploaded();
}

std::optional<WorldBox> MeshBatch::GetBoundingBox() const {
    return InWorld(m_data->GetBounds(), m_data->origin);
}

void MeshBatch::Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, MeshStyle const& style,
                     QMatrix4x4 const& transform) {
    if (m_data->IsLost()) {
        m_data->lost.Raise([] {
            LogWarning("mesh-batch.lost", [] {
                return QString("A mesh is empty: bgfx was shut down, and it does not keep its data");
            });
        });
        return;
    }
    m_data->lost.Clear();
    if (GetTriangleCount() > 0 && zx3D::Context::IsInitialized())
        m_data->Draw(*renderer.m_drawing, view, style, transform);
}

void PickScene::Add(MeshBatch& batch, MeshStyle const& style, QMatrix4x4 const& transform) {
    MeshBatch::Data& data = *batch.m_data;
    if (m_collection != nullptr) {
        if (!data.mesh.KeepsData())
            return m_collection->Skip();
        m_collection->Begin(&batch, data.origin, transform, 0.0, SizeUnit::Pixels);
        return data.Collect(*m_collection);
    }
    m_ids->Begin({&batch, PickKind::Surfaces, data.origin, transform,
                  [gone = std::weak_ptr(batch.m_data)](std::uint64_t drawn, PickElement& element) {
                      element.element = drawn;
                      auto const there = gone.lock();
                      return there != nullptr && drawn < there->mesh.GetTriangleCount();
                  }});
    if (data.mesh.GetTriangleCount() > 0)
        data.DrawNumbers(*m_ids, style, transform);
}

} // namespace zarvex::zx3DQt
