// Keeping, finding and submitting lights.
#include <zx3DQt/BGFXLightingContext.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

/// "u_light0" to "u_light7".
bool IsReadByTheLightingProgram(std::string const& name) {
    return name.size() == 8 && name.starts_with("u_light") && name[7] >= '0' && name[7] <= '7';
}

} // namespace

BGFXLightingContext::BGFXLightingContext() = default;
BGFXLightingContext::~BGFXLightingContext() = default;

int BGFXLightingContext::Add(BGFXPointLightSource light) {
    int const id = m_nextId++;
    m_lights.emplace(id, std::move(light));
    return id;
}

BGFXPointLightSource const& BGFXLightingContext::Get(int id) const {
    auto const found = m_lights.find(id);
    if (found == m_lights.end())
        throw std::out_of_range("invalid map<K, T> key");
    return found->second;
}

void BGFXLightingContext::ClearAll() {
    for (auto const& [id, light] : m_lights) {
        if (light.IsLastSubmitted())
            m_dark.try_emplace(light.m_uniformName, light.m_uniformName).first->second.m_lastSubmission =
                light.m_lastSubmission;
    }
    m_lights.clear();
}

void BGFXLightingContext::Submit() const {
    SubmitDarkness();
    for (auto const& [id, light] : m_lights)
        light.Submit();
}

// bgfx keeps a uniform's last value, so a light that is gone would shine on, unless another one of its name
// was submitted since, by whomever, or is about to be.
void BGFXLightingContext::SubmitDarkness() const {
    std::erase_if(m_dark, [](auto const& entry) { return !entry.second.IsLastSubmitted(); });
    for (auto& [name, dark] : m_dark) {
        auto const hasName = [&name = name](auto const& entry) { return entry.second.m_uniformName == name; };
        if (std::ranges::any_of(m_lights, hasName))
            continue;
        if (!dark.HasUniforms())
            dark.CreateUniforms();
        dark.Submit();
    }
    // Every time, since bgfx forgets what was set after the last submission of a frame; but no endless list
    // of names that only programs of the application read.
    std::erase_if(m_dark, [](auto const& entry) { return !IsReadByTheLightingProgram(entry.first); });
}

} // namespace zarvex::zx3DQt
