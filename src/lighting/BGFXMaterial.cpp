// A material's values and uniforms.
#include <zx3DQt/BGFXMaterial.h>

#include "UniformGroup.h"

#include <utility>

namespace zarvex::zx3DQt {

namespace {

constexpr std::array kSuffixes{"_ambient", "_diffuse", "_specular", "_emission", "_shininess"};

} // namespace

BGFXMaterial::BGFXMaterial() : BGFXMaterial(std::string()) {}

BGFXMaterial::BGFXMaterial(std::string const& name) : m_uniforms(InvalidUniforms<Count>()), m_name(name) {}

BGFXMaterial::BGFXMaterial(std::string const& name, QColor const& ambient, QColor const& diffuse,
                           QColor const& specular, QColor const& emission, float shininess)
    : m_values{ToVec4(ambient), ToVec4(diffuse), ToVec4(specular), ToVec4(emission),
               Vec4{shininess, 0.0f, 0.0f, 0.0f}},
      m_uniforms(InvalidUniforms<Count>()),
      m_name(name) {}

BGFXMaterial::BGFXMaterial(BGFXMaterial&& other)
    : m_values(other.m_values),
      m_uniforms(std::exchange(other.m_uniforms, InvalidUniforms<Count>())),
      m_run(other.m_run),
      m_name(std::move(other.m_name)) {
    other.m_name.clear();
}

BGFXMaterial& BGFXMaterial::operator=(BGFXMaterial&& other) {
    m_values = other.m_values;
    m_uniforms = other.m_uniforms;
    m_run = other.m_run;
    m_name = std::move(other.m_name);
    return *this;
}

BGFXMaterial::~BGFXMaterial() {
    DestroyUniforms();
}

void BGFXMaterial::OnContextStopping() {
    DestroyUniforms();
}

void BGFXMaterial::CreateUniforms() {
    m_run = CreateUniformGroup(m_name, kSuffixes, m_uniforms);
}

void BGFXMaterial::DestroyUniforms() {
    DestroyUniformGroup(m_run, m_uniforms);
}

void BGFXMaterial::Submit() const {
    SubmitUniformGroup(m_name, m_run, m_uniforms, m_values);
}

void BGFXMaterial::SetAmbient(QColor const& color) {
    m_values[Ambient] = ToVec4(color);
}

void BGFXMaterial::SetDiffuse(QColor const& color) {
    m_values[Diffuse] = ToVec4(color);
}

void BGFXMaterial::SetSpecular(QColor const& color) {
    m_values[Specular] = ToVec4(color);
}

void BGFXMaterial::SetEmission(QColor const& color) {
    SetSpecular(color);
}

void BGFXMaterial::SetShininess(float shininess) {
    m_values[Shininess][0] = shininess;
}

void BGFXMaterial::SetName(std::string const& name) {
    m_name = name;
}

BGFXMaterialBuilder& BGFXMaterialBuilder::SetAmbient(QColor const& color) {
    m_material.SetAmbient(color);
    return *this;
}

BGFXMaterialBuilder& BGFXMaterialBuilder::SetDiffuse(QColor const& color) {
    m_material.SetDiffuse(color);
    return *this;
}

BGFXMaterialBuilder& BGFXMaterialBuilder::SetSpecular(QColor const& color) {
    m_material.SetSpecular(color);
    return *this;
}

BGFXMaterialBuilder& BGFXMaterialBuilder::SetEmission(QColor const& color) {
    m_material.SetEmission(color);
    return *this;
}

BGFXMaterialBuilder& BGFXMaterialBuilder::SetShininess(float shininess) {
    m_material.SetShininess(shininess);
    return *this;
}

BGFXMaterialBuilder& BGFXMaterialBuilder::SetName(std::string const& name) {
    m_material.SetName(name);
    return *this;
}

BGFXMaterial BGFXMaterialBuilder::Build() {
    return std::move(m_material);
}

} // namespace zarvex::zx3DQt
