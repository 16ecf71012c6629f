// Any bytes as a text, appended in two parts that may cut a character, at any place with any alignment.
#include "Drawing.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>

using namespace zarvex::zx3D;

namespace {

FontHandle TheFont() {
    static FontHandle const font = LoadDefaultFont(14).value();
    return font;
}

/// Mostly a place on a target, sometimes any float.
float ConsumePosition(FuzzedDataProvider& data) {
    if (data.ConsumeIntegralInRange(0, 7) != 0)
        return data.ConsumeFloatingPointInRange(-100.0f, 1000.0f);
    float const positions[] = {0.5f, -1e6f, 16777216.0f, 1e20f, -1e38f, INFINITY, -INFINITY, NAN};
    return data.PickValueInArray(positions);
}

float ConsumeFactor(FuzzedDataProvider& data) {
    float const factors[] = {0.0f, 0.0f, 0.5f, 1.0f, 0.3f, -2.0f, 1e9f, NAN};
    return data.PickValueInArray(factors);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    StartContext();
    FuzzedDataProvider data(bytes, size); // numbers come from the end, so that texts may stand as they are
    FuzzedText text{.type = static_cast<TextBufferType>(data.ConsumeIntegralInRange(0, 2)),
                    .font = TheFont()};
    text.horizontal = ConsumeFactor(data);
    text.vertical = ConsumeFactor(data);
    text.x = ConsumePosition(data);
    text.y = ConsumePosition(data);
    text.rgba = data.ConsumeIntegral<std::uint32_t>();
    std::size_t const cut = data.ConsumeIntegral<std::uint16_t>();
    std::vector<char> const content = data.ConsumeRemainingBytes<char>();
    std::string_view const all(content.data(), content.size());
    text.content = all.substr(0, cut);
    text.more = all.substr(text.content.size());
    DrawChecked(text);
    return 0;
}
