// A light's values and uniforms, and its recipes.
#include <zx3DQt/BGFXPointLightSource.h>

#include "UniformGroup.h"

#include <QVector4D>

#include <utility>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

constexpr std::array kSuffixes{"_position", "_ambient", "_diffuse", "_specular"};

Vec4 ToVec4(QVector4D const& vector) {
    return {vector.x(), vector.y(), vector.z(), vector.w()};
}

/// By position uniform, which lights of one name share.
std::vector<std::uint64_t>& NumbersOfLastSubmissions() {
    static std::vector<std::uint64_t> numbers;
    return numbers;
}

} // namespace

BGFXPointLightSource::BGFXPointLightSource() : BGFXPointLightSource(std::string()) {}

BGFXPointLightSource::BGFXPointLightSource(std::string const& name)
    : m_uniforms(InvalidUniforms<Count>()),
      m_name(name) {}

BGFXPointLightSource::BGFXPointLightSource(std::string const& name, QVector4D position, QColor const& ambient,
                                           QColor const& diffuse, QColor const& specular)
    : m_values{ToVec4(position), zx3DQt::ToVec4(ambient), zx3DQt::ToVec4(diffuse), zx3DQt::ToVec4(specular)},
      m_uniforms(InvalidUniforms<Count>()),
      m_name(name) {}

BGFXPointLightSource::BGFXPointLightSource(BGFXPointLightSource&& other)
    : m_values(other.m_values),
      m_uniforms(std::exchange(other.m_uniforms, InvalidUniforms<Count>())),
      m_run(other.m_run),
      m_name(std::move(other.m_name)),
      m_uniformName(other.m_uniformName),
      m_lastSubmission(other.m_lastSubmission) {
    other.m_name.clear();
}

BGFXPointLightSource& BGFXPointLightSource::operator=(BGFXPointLightSource&& other) {
    m_values = other.m_values;
    m_uniforms = other.m_uniforms;
    m_run = other.m_run;
    m_name = std::move(other.m_name);
    m_uniformName = other.m_uniformName;
    m_lastSubmission = other.m_lastSubmission;
    return *this;
}

BGFXPointLightSource::~BGFXPointLightSource() {
    DestroyUniforms();
}

void BGFXPointLightSource::OnContextStopping() {
    DestroyUniforms();
}

void BGFXPointLightSource::CreateUniforms() {
    m_run = CreateUniformGroup(m_name, kSuffixes, m_uniforms);
    m_uniformName = m_name;
}

void BGFXPointLightSource::DestroyUniforms() {
    DestroyUniformGroup(m_run, m_uniforms);
}

void BGFXPointLightSource::Submit() const {
    SubmitUniformGroup(m_name, m_run, m_uniforms, m_values);
    if (HasUniforms())
        m_lastSubmission = CountSubmission();
}

bool BGFXPointLightSource::HasUniforms() const {
    return bgfx::isValid(m_uniforms[Position]) && m_run.IsCurrent();
}

BGFXPointLightSource::Submission BGFXPointLightSource::CountSubmission() const {
    static std::uint64_t count = 0;
    std::uint16_t const uniform = m_uniforms[Position].idx;
    auto& lastOfUniforms = NumbersOfLastSubmissions();
    if (uniform >= lastOfUniforms.size())
        lastOfUniforms.resize(uniform + 1u);
    lastOfUniforms[uniform] = ++count;
    return {m_run, uniform, count};
}

bool BGFXPointLightSource::IsLastSubmitted() const {
    return m_lastSubmission.number != 0 && m_lastSubmission.run.IsCurrent() &&
           NumbersOfLastSubmissions()[m_lastSubmission.uniform] == m_lastSubmission.number;
}

void BGFXPointLightSource::SetPosition(QVector4D const& position) {
    m_values[Position] = ToVec4(position);
}

void BGFXPointLightSource::SetAmbient(QColor const& color) {
    m_values[Ambient] = zx3DQt::ToVec4(color);
}

void BGFXPointLightSource::SetDiffuse(QColor const& color) {
    m_values[Diffuse] = zx3DQt::ToVec4(color);
}

void BGFXPointLightSource::SetSpecular(QColor const& color) {
    m_values[Specular] = zx3DQt::ToVec4(color);
}

void BGFXPointLightSource::SetName(std::string const& name) {
    m_name = name;
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::DefaultAmbient() {
    m_light = BGFXPointLightSource();
    return SetAmbient(QColor(76, 76, 76)).SetDiffuse(Qt::black).SetSpecular(QColor(51, 51, 51));
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::DefaultDiffuse() {
    m_light = BGFXPointLightSource();
    return SetAmbient(QColor(102, 102, 102)).SetDiffuse(QColor(178, 178, 178)).SetSpecular(Qt::white);
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::SetName(std::string const& name) {
    m_light.SetName(name);
    return *this;
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::SetPosition(QVector4D const& position) {
    m_light.SetPosition(position);
    return *this;
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::SetAmbient(QColor const& color) {
    m_light.SetAmbient(color);
    return *this;
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::SetDiffuse(QColor const& color) {
    m_light.SetDiffuse(color);
    return *this;
}

BGFXPointLightSourceBuilder& BGFXPointLightSourceBuilder::SetSpecular(QColor const& color) {
    m_light.SetSpecular(color);
    return *this;
}

BGFXPointLightSource BGFXPointLightSourceBuilder::Build() {
    return std::move(m_light);
}

} // namespace zarvex::zx3DQt
