// Bookkeeping of the stand-in: memory that was handed over, transient space, the end of a frame.
#include "State.h"

#include <algorithm>
#include <utility>

namespace recorder {

namespace {

constexpr uint32_t kFramesUntilRelease = 2;

constexpr std::size_t kFloatsPerMatrix = 16;

constexpr uint64_t kDefaultCaps = BGFX_CAPS_COMPUTE | BGFX_CAPS_TEXTURE_BLIT | BGFX_CAPS_TEXTURE_READ_BACK |
                                  BGFX_CAPS_SWAP_CHAIN | BGFX_CAPS_INDEX32 | BGFX_CAPS_INSTANCING |
                                  BGFX_CAPS_VERTEX_ID;

} // namespace

Bytes CopyBytes(void const* data, std::size_t size) {
    auto const* const bytes = static_cast<std::byte const*>(data);
    return bytes != nullptr ? Bytes(bytes, bytes + size) : Bytes();
}

void TransientSpace::Create(uint32_t size, uint16_t index) {
    data = std::make_unique_for_overwrite<std::byte[]>(size);
    capacity = size;
    handle = index;
}

// bgfx's own arithmetic, which wraps where `start` lies beyond the capacity or the bytes leave 32 bits.
uint32_t TransientSpace::Available(uint32_t count, uint32_t stride) const {
    uint32_t const start = Aligned(stride);
    uint32_t const end = std::min(start + count * stride, capacity);
    return (end - start) / stride;
}

uint32_t TransientSpace::Take(uint32_t& count, uint32_t stride) {
    uint32_t const start = Aligned(stride);
    count = Available(count, stride);
    offset = start + count * stride;
    return start;
}

Running::Running() : transforms(kFloatsPerMatrix) {
    // Index 0 of the transform cache is bgfx's own identity.
    for (std::size_t diagonal = 0; diagonal < kFloatsPerMatrix; diagonal += 5) {
        transforms[diagonal] = 1.0F;
    }
}

bool Running::HasFrameToExecute() const {
    return static_cast<int32_t>(frame + numberOffset - executedFrames) > 0;
}

void Running::EndFrame() {
    transforms.resize(kFloatsPerMatrix);
    bound = {};
    transientVertices.offset = 0;
    transientIndices.offset = 0;
    transientLayouts.clear();
    windowsLeaving.clear();
    numDraws = numDispatches = numBlits = 0;
    dynamicIndexBuffers.EndFrame();
    dynamicVertexBuffers.EndFrame();
    frameBuffers.EndFrame();
    indexBuffers.EndFrame();
    programs.EndFrame();
    shaders.EndFrame();
    textures.EndFrame();
    uniforms.EndFrame();
    vertexBuffers.EndFrame();
    vertexLayouts.EndFrame();
}

std::vector<std::string> Running::Describe() const {
    std::vector<std::string> texts;
    dynamicIndexBuffers.Describe(texts);
    dynamicVertexBuffers.Describe(texts);
    frameBuffers.Describe(texts);
    indexBuffers.Describe(texts);
    programs.Describe(texts);
    shaders.Describe(texts);
    textures.Describe(texts);
    uniforms.Describe(texts);
    vertexBuffers.Describe(texts);
    vertexLayouts.Describe(texts);
    return texts;
}

bool Running::ReleaseTexture(bgfx::TextureHandle texture) {
    Resource* const resource = textures.Find(texture);
    if (resource == nullptr) {
        return false;
    }
    if (--resource->owners == 0) {
        textures.Remove(texture);
    }
    return true;
}

State& State::Get() {
    static State state;
    return state;
}

State::State() : settings(DefaultSettings()) {
    UpdateCaps();
}

Settings State::DefaultSettings() {
    Settings defaults;
    defaults.supported = kDefaultCaps;
    return defaults;
}

void State::Turn() {
    turned.notify_all();
}

bool State::CanRender() const {
    bool const isHeld = settings.holdsFrames && running->executedFrames > 0; // never that of `init`
    return !isHeld && running->HasFrameToExecute();
}

bool State::IsRenderThreadBusy() const {
    return renderThread == RenderThread::Rendering ||
           (renderThread == RenderThread::Waiting && running != nullptr && running->HasFrameToExecute());
}

void State::UpdateCaps() {
    caps.supported = settings.supported;
    caps.homogeneousDepth = settings.homogeneousDepth;
    caps.originBottomLeft = settings.originBottomLeft;
    caps.limits.maxTextureSize = 16384;
    caps.limits.maxViews = 256;
    caps.limits.maxFBAttachments = 8;
    caps.limits.maxUniforms = 512;
    caps.limits.maxVertexBuffers = settings.vertexBuffers;
    caps.limits.maxDynamicVertexBuffers = settings.vertexBuffers;
    std::fill(std::begin(caps.formats), std::end(caps.formats), uint16_t(UINT16_MAX));
}

MemoryBlock& State::AddMemory() {
    return memory.emplace_back();
}

MemoryBlock* State::FindMemory(bgfx::Memory const* wanted) {
    auto const found = std::find_if(memory.begin(), memory.end(),
                                    [wanted](MemoryBlock& block) { return block.Memory() == wanted; });
    return found != memory.end() ? &*found : nullptr;
}

Bytes State::Consume(bgfx::Memory const* handedOver, std::string const& user) {
    if (handedOver == nullptr) {
        return {};
    }
    MemoryBlock* const block = FindMemory(handedOver);
    if (block == nullptr) {
        errors.push_back(user + ": memory that bgfx does not know or has let go");
        return {};
    }
    if (!block->user.empty()) {
        errors.push_back(user + ": memory that " + block->user + " has taken already");
    }
    block->user = user;
    block->usedInFrame = running->frame;
    block->snapshot = CopyBytes(handedOver->data, handedOver->size);
    return block->snapshot;
}

std::vector<Release> State::CollectReleases(bool all) {
    std::vector<Release> releases;
    for (auto block = memory.begin(); block != memory.end();) {
        bool const used = !block->user.empty();
        if (!all && !(used && running->frame - block->usedInFrame >= kFramesUntilRelease)) {
            ++block;
            continue;
        }
        bgfx::Memory const& given = *block->Memory();
        if (used && !std::equal(block->snapshot.begin(), block->snapshot.end(),
                                reinterpret_cast<std::byte const*>(given.data))) {
            errors.push_back(block->user + ": memory changed before bgfx was done with it");
        }
        if (!used) {
            leaks.push_back("memory of " + std::to_string(given.size) + " bytes that was never used");
        }
        if (block->release != nullptr) {
            releases.push_back({block->release, given.data, block->userData});
        }
        block = memory.erase(block);
    }
    return releases;
}

Recording::Recording(char const* name, std::string arguments, Needs needs)
    : m_state(State::Get()),
      m_lock(m_state.mutex),
      m_name(name),
      m_index(m_state.calls.size()) {
    m_state.calls.push_back({m_name, std::move(arguments), {}, {}});
    if (needs == Needs::Running && !IsRunning()) {
        Error("called while bgfx is not running");
    }
}

void Recording::Payload(Bytes payload) {
    m_state.calls[m_index].payload = std::move(payload);
}

void Recording::DescribeUniform(std::string const& name, std::vector<float> const& values) {
    std::string text = name;
    for (float const value : values) {
        text += ", " + Text(value);
    }
    m_state.calls[m_index].arguments = text;
}

void Recording::Error(std::string const& text) {
    m_state.errors.push_back(m_name + ": " + text);
}

} // namespace recorder
