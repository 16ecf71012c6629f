// What a picker asks of bgfx, and what it says when that cannot be.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/Library.h>
#include <zx3DQt/Picker.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMouseEvent>

#include <cstddef>
#include <cstring>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::IsEmpty;

namespace {

class PickerTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_view.SetViewport({0, 0, 100, 50});
        Configure([](recorder::Settings& settings) {
            settings.readLatency = 0;                     // at the end of the frame, as a render thread does
            settings.actsAs = bgfx::RendererType::OpenGL; // Noop cannot pick
        });
        LineSegment const lines[] = {{{{0, 0, 0}}, {{1, 1, 0}}}};
        m_lines.Set(lines);
        StartFrame();
        m_lines.Draw(*m_renderer, m_view);
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
        recorder::ClearCalls();
    }

    void TearDown() override {
        m_picker.reset();
        DrawFixture::TearDown();
    }

    /// Lets the event loop run until the condition holds.
    template<typename Condition>
    static bool Wait(Condition condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    }

    LineBatch m_lines{LineBatch::KeepData::Yes};
    std::optional<Picker> m_picker{std::in_place, bgfx::ViewId(30),
                                   [this](PickScene& scene) { scene.Add(m_lines); }};
};

} // namespace

TEST_F(PickerTest, NothingIsMadeUntilSomethingIsAsked) {
    m_picker->SetView(m_view);
    QObject target;
    m_picker->Follow(&target, [](auto const&) {});
    for (int i = 0; i < 5; ++i) {
        m_picker->SetView(m_view);
        QCoreApplication::processEvents();
    }
    EXPECT_THAT(recorder::CallNames(), IsEmpty());
}

TEST_F(PickerTest, AndNothingIsLeft) {
    m_picker->SetView(m_view);
    int answers = 0;
    m_picker->Pick({50, 25}, [&](std::optional<PickHit> const& hit) {
        EXPECT_FALSE(hit); // the stand-in draws nothing
        ++answers;
    });
    EXPECT_THAT(recorder::CallNames(), IsEmpty()) << "not in the caller's frame";
    ASSERT_TRUE(Wait([&] { return answers == 1; }));
    EXPECT_EQ(recorder::CountCalls("frame"), 1u);
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), 5u);
    EXPECT_EQ(recorder::CountCalls("createFrameBuffer"), 1u);
    EXPECT_EQ(recorder::CountCalls("readTexture"), 2u);
    recorder::ClearCalls();
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    EXPECT_THAT(recorder::CallNames(), IsEmpty());
}

TEST_F(PickerTest, WhatIsOutsideTheViewCostsNoFrame) {
    m_picker->SetView(m_view);
    int answers = 0;
    for (QPointF const& place : {QPointF(-20, 25), QPointF(50, 70), QPointF(qQNaN(), 3), QPointF(1e300, 3)})
        m_picker->Pick(place, [&](auto const& hit) { answers += hit ? 100 : 1; });
    m_picker->PickRect({-50, -50, 20, 20},
                       [&](auto const& elements) { answers += elements.empty() ? 1 : 100; });
    ASSERT_TRUE(Wait([&] { return answers == 5; }));
    EXPECT_EQ(recorder::CountCalls("frame"), 0u);
}

TEST_F(PickerTest, WithoutAViewItFindsNothing) {
    ExpectWarning("picker.no-view");
    int answers = 0;
    m_picker->Pick({50, 25}, [&](auto const& hit) { answers += hit ? 100 : 1; });
    m_picker->PickRect({0, 0, 10, 10}, [&](auto const& elements) { answers += elements.empty() ? 1 : 100; });
    EXPECT_FALSE(m_picker->PickNow({50, 25}));
    EXPECT_THAT(m_picker->PickRectNow({0, 0, 10, 10}, PickRange::All), IsEmpty());
    ASSERT_TRUE(Wait([&] { return answers == 2; }));
}

TEST_F(PickerTest, WithoutReadingBackItFindsNothing) {
    ExpectWarning("picker.unsupported");
    Configure([](recorder::Settings& settings) { settings.supported &= ~BGFX_CAPS_TEXTURE_READ_BACK; });
    m_picker->SetView(m_view);
    int answers = 0;
    for (int i = 0; i < 2; ++i) // said once
        m_picker->Pick({50, 25}, [&](auto const& hit) { answers += hit ? 100 : 1; });
    ASSERT_TRUE(Wait([&] { return answers == 2; }));
    EXPECT_EQ(recorder::CountCalls("frame"), 0u);
}

TEST_F(PickerTest, AShutdownAnswersWhatIsAsked) {
    ExpectWarning("picker.stopped");
    m_picker->SetView(m_view);
    int answers = 0;
    for (int i = 0; i < 3; ++i)
        m_picker->Pick({50, 25}, [&](auto const& hit) { answers += hit ? 100 : 1; });
    QCoreApplication::sendPostedEvents(); // the first one is under way
    m_renderer.reset();
    zx3DQt::Shutdown();
    EXPECT_EQ(answers, 3);
}

TEST_F(PickerTest, SearchesWhatIsKeptForAll) {
    m_picker->SetView(m_view);
    recorder::ClearCalls();
    EXPECT_EQ(m_picker->PickRectNow({60, 0, 10, 25}, PickRange::All),
              (std::vector{PickElement{.batch = &m_lines}}));
    EXPECT_THAT(m_picker->PickRectNow({0, 0, 40, 50}, PickRange::All), IsEmpty());
    EXPECT_THAT(recorder::CallNames(), IsEmpty());
    ExpectWarning("picker.not-kept");
    m_lines = LineBatch();
    EXPECT_THAT(m_picker->PickRectNow({60, 0, 10, 25}, PickRange::All), IsEmpty());
}

TEST_F(PickerTest, FindsWhatTheNumbersSay) {
    // In both textures: the first element of the first draw call, at (0, 1, 0) with depth 1.
    float const numbers[] = {0.0f, 1.0f, 0.0f, 1.0f};
    Configure([&](recorder::Settings& settings) {
        settings.pixels = [&](bgfx::TextureHandle, std::uint16_t width, std::uint16_t height) {
            std::vector<std::byte> bytes(sizeof(numbers) * width * height);
            for (std::size_t i = 0; i < std::size_t(width) * height; ++i)
                std::memcpy(bytes.data() + i * sizeof(numbers), numbers, sizeof(numbers));
            return bytes;
        };
    });
    m_lines.SetOrigin({100.0, 200.0, 300.0});
    m_view.SetOrigin(m_lines.GetOrigin());
    m_picker->SetView(m_view);
    std::optional<PickHit> const hit = m_picker->PickNow({50.5, 25.5});
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->what, (PickElement{.batch = &m_lines}));
    EXPECT_EQ(hit->distance, 0.0);
    EXPECT_EQ(hit->position, (WorldPosition{100.0, 201.0, 300.0}))
        << "the second texture's numbers are the place";

    int answers = 0;
    QObject target;
    m_picker->Follow(&target, [&](std::optional<PickHit> const& under) {
        EXPECT_TRUE(under);
        ++answers;
    });
    for (int i = 0; i < 3; ++i) {
        QMouseEvent move(QEvent::MouseMove, QPointF(50, 20 + i), QPointF(50, 20 + i), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&target, &move);
        bool isDone = false;
        m_picker->Pick({1, 1}, [&](auto const&) { isDone = true; });
        ASSERT_TRUE(Wait([&] { return isDone; }));
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(Wait([&] { return answers > 0; }));
    EXPECT_EQ(answers, 1);
}
