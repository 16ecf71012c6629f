// Keeping, finding and submitting lights.
#include <zx3DQt/BGFXLightingContext.h>

#include <algorithm>
#include <functional>
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
        if (bgfx::isValid(light.m_uniforms[0]))
            m_clearedNames.insert(light.m_uniformName);
    }
    m_lights.clear();
}

void BGFXLightingContext::Submit() const {
    SubmitDarkness();
    for (auto const& [id, light] : m_lights)
        light.Submit();
}

void BGFXLightingContext::SubmitDarkness() const {
    // bgfx keeps a uniform's last value, so a light that is gone would shine on.
    for (std::string const& name : m_clearedNames) {
        auto const hasName = [&name](auto const& idAndLight) {
            return idAndLight.second.m_uniformName == name;
        };
        if (std::none_of(m_lights.begin(), m_lights.end(), hasName))
            BGFXPointLightSource::SubmitDark(name);
    }
    // Every time, since bgfx forgets what was set after the last submission of a frame; but no endless list
    // of names that only programs of the application read.
    std::erase_if(m_clearedNames, std::not_fn(IsReadByTheLightingProgram));
}

} // namespace zarvex::zx3DQt
