// What a piece has in memory and on the GPU.
#include "MeshPiece.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

namespace zarvex::zx3DQt {

namespace {

constexpr MeshRoom kWhole{};

/// Triangles to a vertex, in what grows: of a closed mesh, two.
constexpr std::size_t kGrowthIndices = 6;

/// bgfx gives buffers that compute shaders may read memory of their own, and of the right size; others share
/// blocks of 3 MiB.
constexpr std::uint16_t kBufferFlags = BGFX_BUFFER_COMPUTE_READ;

/// `count` values of a vector from `first` on.
template<typename T>
bgfx::Memory const* Copy(std::vector<T> const& values, std::size_t first, std::size_t count) {
    return bgfx::copy(values.data() + first, static_cast<std::uint32_t>(count * sizeof(T)));
}

double Dot(bx::Vec3 const& a, bx::Vec3 const& b) {
    return double{a.x} * b.x + double{a.y} * b.y + double{a.z} * b.z;
}

/// The normal on the side where the corners are counter-clockwise; nothing for a triangle so thin that its
/// sides depend on the rounding of its corners, and that no pixel shows.
std::optional<bx::Vec3> FaceNormal(bx::Vec3 const& a, bx::Vec3 const& b, bx::Vec3 const& c) {
    constexpr double thin = 1e-6; // height over length
    bx::Vec3 const edges[] = {bx::sub(b, a), bx::sub(c, b), bx::sub(a, c)};
    bx::Vec3 const normal = bx::cross(edges[0], edges[1]);
    double const longest =
        std::max({Dot(edges[0], edges[0]), Dot(edges[1], edges[1]), Dot(edges[2], edges[2])});
    if (std::sqrt(Dot(normal, normal)) <= thin * longest)
        return std::nullopt;
    return normal;
}

} // namespace

MeshRoom MeshPiece::GetRoom() const {
    bool const hasBuffers = static_cast<bool>(m_vertexBuffer);
    return {(hasBuffers ? m_vertexCapacity : kWhole.vertices) - m_vertexCount,
            (hasBuffers ? m_indexCapacity : kWhole.indices) - m_indexCount};
}

void MeshPiece::Append(MeshFormat const& format, MeshVertices const& vertices, std::uint64_t first,
                       MeshPart const& part) {
    std::uint32_t const stride = format.GetStride();
    std::size_t const before = m_vertices.size();
    AddRuns(first, part.vertices);
    m_vertices.resize(before + part.vertices.size() * stride);
    std::byte* place = m_vertices.data() + before;
    for (std::uint32_t const vertex : part.vertices) {
        format.Pack(vertices, vertex, place);
        place += stride;
        bx::Vec3 const& position = vertices.positions.data[vertex];
        m_bounds.Add(position.x, position.y, position.z);
    }
    for (std::uint16_t const index : part.indices)
        m_indices.push_back(static_cast<std::uint16_t>(m_vertexCount + index));
    AddSides(vertices, part);
    m_vertexCount += static_cast<std::uint32_t>(part.vertices.size());
    m_indexCount += static_cast<std::uint32_t>(part.indices.size());
}

void MeshPiece::AddRuns(std::uint64_t first, std::vector<std::uint32_t> const& vertices) {
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        if (i > 0 && vertices[i] == vertices[i - 1] + 1)
            ++m_runs.back().count;
        else
            m_runs.push_back({first + vertices[i], 1, m_vertexCount + static_cast<std::uint32_t>(i)});
    }
}

void MeshPiece::AddSides(MeshVertices const& vertices, MeshPart const& part) {
    if (vertices.normals.IsEmpty()) {
        m_mixed = true;
        return;
    }
    for (std::size_t i = 0; i < part.indices.size() && !m_mixed; i += 3) {
        auto const vertexAt = [&](std::size_t corner) { return part.vertices[part.indices[i + corner]]; };
        auto const positionAt = [&](std::size_t corner) { return vertices.positions.data[vertexAt(corner)]; };
        auto const faceNormal = FaceNormal(positionAt(0), positionAt(1), positionAt(2));
        if (!faceNormal)
            continue;
        int outward = 0;
        int inward = 0;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            double const side = Dot(vertices.normals.data[vertexAt(corner)], *faceNormal);
            outward += side > 0.0 ? 1 : 0;
            inward += side < 0.0 ? 1 : 0;
        }
        m_outward |= outward == 3;
        m_inward |= inward == 3;
        m_mixed |= outward != 3 && inward != 3;
    }
}

void MeshPiece::Update(MeshFormat const& format, MeshVertices const& vertices, std::uint64_t first) {
    std::uint32_t const stride = format.GetStride();
    std::uint64_t const end = first + vertices.positions.count;
    // What is replaced without a gap in the piece goes there at once.
    std::vector<std::byte> packed;
    std::uint32_t place = 0;
    for (Run const& run : m_runs) {
        std::uint64_t const from = std::max(first, run.first);
        std::uint64_t const to = std::min(end, run.first + run.count);
        for (std::uint64_t vertex = from; vertex < to; ++vertex) {
            bx::Vec3 const& position = vertices.positions.data[vertex - first];
            if (!IsFinite(position))
                continue;
            auto const here = run.place + static_cast<std::uint32_t>(vertex - run.first);
            if (here != place + packed.size() / stride) {
                Overwrite(stride, place, packed);
                packed.clear();
            }
            if (packed.empty())
                place = here;
            packed.resize(packed.size() + stride);
            format.Pack(vertices, vertex - first, packed.data() + packed.size() - stride);
            m_bounds.Add(position.x, position.y, position.z);
        }
    }
    Overwrite(stride, place, packed);
}

/// Packed vertices from a place on, in memory and on the GPU.
void MeshPiece::Overwrite(std::uint32_t stride, std::uint32_t place, std::vector<std::byte> const& packed) {
    if (packed.empty())
        return;
    m_mixed = true; // which triangles they belong to is no longer known
    auto const end = place + static_cast<std::uint32_t>(packed.size() / stride);
    if (place < m_uploadedVertices)
        bgfx::update(m_vertexBuffer.Get(), place,
                     Copy(packed, 0, std::size_t{std::min(end, m_uploadedVertices) - place} * stride));
    if (end > m_droppedVertices) {
        std::uint32_t const from = std::max(place, m_droppedVertices);
        std::copy(packed.begin() + std::ptrdiff_t{from - place} * stride, packed.end(),
                  m_vertices.begin() + std::ptrdiff_t{from - m_droppedVertices} * stride);
    }
}

bool MeshPiece::Upload(MeshFormat const& format, std::uint64_t& bytes, bool keepsData) {
    if (!m_vertexBuffer && !CreateBuffers(format))
        return false;
    std::uint32_t const stride = format.GetStride();
    auto const vertices = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(m_vertexCount - m_uploadedVertices, bytes / stride));
    if (vertices > 0) {
        bgfx::update(m_vertexBuffer.Get(), m_uploadedVertices,
                     Copy(m_vertices, std::size_t{m_uploadedVertices - m_droppedVertices} * stride,
                          std::size_t{vertices} * stride));
        m_uploadedVertices += vertices;
        bytes -= std::uint64_t{vertices} * stride;
    }
    if (m_uploadedVertices < m_vertexCount)
        return true; // indices come behind them
    constexpr std::uint64_t bytesPerTriangle = 3 * sizeof(std::uint16_t);
    auto const indices = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(m_indexCount - m_uploadedIndices, bytes / bytesPerTriangle * 3));
    if (indices > 0) {
        bgfx::update(m_indexBuffer.Get(), m_uploadedIndices,
                     Copy(m_indices, m_uploadedIndices - m_droppedIndices, indices));
        m_uploadedIndices += indices;
        bytes -= indices * sizeof(std::uint16_t);
    }
    if (IsUploaded() && !keepsData) {
        m_droppedVertices = m_vertexCount;
        m_droppedIndices = m_indexCount;
        m_vertices = {};
        m_indices = {};
    }
    return true;
}

bool MeshPiece::CreateBuffers(MeshFormat const& format) {
    std::size_t const growth = std::min(m_growth, kWhole.vertices);
    m_vertexCapacity = std::max(m_vertexCount, static_cast<std::uint32_t>(growth));
    m_indexCapacity =
        std::max(m_indexCount, static_cast<std::uint32_t>(std::min(growth * kGrowthIndices, kWhole.indices)));
    zx3D::Owned vertexBuffer(
        bgfx::createDynamicVertexBuffer(m_vertexCapacity, format.GetLayout(), kBufferFlags));
    zx3D::Owned indexBuffer(bgfx::createDynamicIndexBuffer(m_indexCapacity, kBufferFlags));
    if (!vertexBuffer || !indexBuffer)
        return false;
    m_vertexBuffer = std::move(vertexBuffer);
    m_indexBuffer = std::move(indexBuffer);
    return true;
}

void MeshPiece::DropBuffers() {
    m_vertexBuffer.Reset();
    m_indexBuffer.Reset();
    m_uploadedVertices = 0;
    m_uploadedIndices = 0;
}

std::array<bx::Vec3, 3> MeshPiece::GetTriangle(MeshFormat const& format, std::uint32_t triangle) const {
    auto const corner = [&](std::size_t i) {
        bx::Vec3 position(bx::InitNone);
        std::size_t const vertex = m_indices[std::size_t{3} * triangle + i];
        std::memcpy(&position, m_vertices.data() + vertex * format.GetStride(), sizeof(position));
        return position;
    };
    return {corner(0), corner(1), corner(2)};
}

void MeshPiece::SetBuffers() const {
    bgfx::setVertexBuffer(0, m_vertexBuffer.Get(), 0, m_vertexCount);
    bgfx::setIndexBuffer(m_indexBuffer.Get(), 0, m_uploadedIndices);
}

} // namespace zarvex::zx3DQt
