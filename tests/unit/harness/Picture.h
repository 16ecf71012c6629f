// A picture that the recorded bgfx reads back, and what is expected of images that are made of it.
#pragma once

#include <Recorder.h>

#include <QColor>
#include <QImage>
#include <QPoint>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// Colours that differ between rows, columns and channels, so that a flip or an exchange shows.
class Picture {
public:
    explicit Picture(int alpha = 255) : m_alpha(alpha) {}

    /// The colour of a pixel as it lies in memory: the first row is 0.
    [[nodiscard]] QColor At(int x, int y) const {
        return {(x * 7 + 1) % 256, (y * 11 + 2) % 256, (x + y * 3 + 100) % 256, m_alpha};
    }

    /// What `recorder::Settings::pixels` gives.
    [[nodiscard]] std::vector<std::byte> Bytes(int width, int height) const {
        std::vector<std::byte> bytes;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                QColor const color = At(x, y);
                for (int const channel : {color.red(), color.green(), color.blue(), color.alpha()})
                    bytes.push_back(std::byte(channel));
            }
        }
        return bytes;
    }

    /// Makes the recorded bgfx read this picture back, whatever the size of the texture.
    void Deliver() const {
        recorder::Settings settings = recorder::GetSettings();
        settings.pixels = [picture = *this](bgfx::TextureHandle, std::uint16_t width, std::uint16_t height) {
            return picture.Bytes(width, height);
        };
        recorder::Apply(settings);
    }

    /// The image shows this picture from `origin` on.
    void ExpectIn(QImage const& image, QPoint origin = {}) const {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                ASSERT_EQ(image.pixelColor(x, y), At(x + origin.x(), y + origin.y())) << x << ", " << y;
        }
    }

    /// The image shows all of this picture with the last row on top.
    void ExpectFlippedIn(QImage const& image) const { ExpectIn(image.mirrored()); }

private:
    int m_alpha;
};

/// Takes all of bgfx's textures but a few.
class TextureHog {
public:
    explicit TextureHog(int left) {
        for (bgfx::TextureHandle texture = Create(); bgfx::isValid(texture); texture = Create())
            m_textures.push_back(texture);
        for (int i = 0; i < left; ++i) {
            bgfx::destroy(m_textures.back());
            m_textures.pop_back();
        }
        bgfx::frame(); // until then the handles are taken
        recorder::ClearCalls();
    }

    ~TextureHog() {
        for (bgfx::TextureHandle const texture : m_textures)
            bgfx::destroy(texture);
    }

    TextureHog(TextureHog const&) = delete;
    TextureHog& operator=(TextureHog const&) = delete;

private:
    static bgfx::TextureHandle Create() {
        return bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::RGBA8);
    }

    std::vector<bgfx::TextureHandle> m_textures;
};
