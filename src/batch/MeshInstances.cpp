// Transforms and colours in texels.
#include "MeshInstances.h"

#include "../frame/Logging.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace zarvex::zx3DQt {

namespace {

bool IsFinite(MeshInstance const& instance) {
    return std::ranges::all_of(instance.rows, [](float part) { return std::isfinite(part); });
}

/// No smaller than what it stretches anything by.
float ScaleOf(MeshInstance const& instance) {
    auto const squared = [&instance](std::size_t row) {
        auto const begin = instance.rows.begin() + static_cast<std::ptrdiff_t>(4 * row);
        return std::inner_product(begin, begin + 3, begin, 0.0f);
    };
    return std::sqrt(squared(0) + squared(1) + squared(2));
}

} // namespace

void MeshInstances::Clear() {
    m_texels.Clear();
    m_bounds.Clear();
    m_scale = 0.0f;
}

void MeshInstances::Set(zx3D::DataSpan<MeshInstance const> instances) {
    Clear();
    if (!instances.IsEmpty())
        Pack(0, instances, m_texels.Append(instances.count * kTexels));
}

void MeshInstances::Update(std::uint64_t first, zx3D::DataSpan<MeshInstance const> instances) {
    std::vector<Texel> texels(instances.count * kTexels);
    Pack(first, instances, texels);
    m_texels.Update(first * kTexels, texels);
}

void MeshInstances::Pack(std::uint64_t first, zx3D::DataSpan<MeshInstance const> instances,
                         std::span<Texel> texels) {
    std::uint64_t refused = 0;
    for (std::uint64_t i = 0; i < instances.count; ++i) {
        MeshInstance const& instance = instances.data[i];
        std::span<Texel> const place = texels.subspan(i * kTexels, kTexels);
        if (!IsFinite(instance)) {
            std::ranges::fill(place, Texel{}); // the mesh in one point
            ++refused;
            continue;
        }
        std::memcpy(place.data(), instance.rows.data(), sizeof(instance.rows));
        place[3] = {instance.rgba};
        m_bounds.At(first + i).Add(instance.rows[3], instance.rows[7], instance.rows[11]);
        m_scale = std::max(m_scale, ScaleOf(instance));
    }
    if (refused > 0)
        LogWarning("mesh-batch.instances-not-finite", [&] {
            return QString("%1 of %2 instances are not drawn: their transforms are not finite")
                .arg(refused)
                .arg(instances.count);
        });
}

MeshInstance MeshInstances::Get(std::uint64_t index) const {
    std::span<Texel const> const texels = m_texels.GetTexels().subspan(index * kTexels, kTexels);
    MeshInstance instance;
    std::memcpy(instance.rows.data(), texels.data(), sizeof(instance.rows));
    instance.rgba = texels[3][0];
    return instance;
}

bool MeshInstances::Upload(std::uint64_t& bytes) {
    std::uint64_t const before = m_texels.GetUploadedCount();
    bool const hasTextures = m_texels.Upload(bytes);
    bytes -= std::min((m_texels.GetUploadedCount() - before) * sizeof(Texel), bytes);
    return hasTextures;
}

} // namespace zarvex::zx3DQt
