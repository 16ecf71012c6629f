// A widget of Qt's that draws with OpenGL, beside ours.
#include "CornerWidget.h"

#include "render/SharedRun.h"

#include <QHBoxLayout>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>

namespace zarvex::testing {

namespace {

constexpr int kFrames = 300;

/// Draws frame after frame in one colour and counts what OpenGL reports.
class OpenGLNeighbor : public QOpenGLWidget {
public:
    OpenGLNeighbor() { setMinimumSize(100, 80); }

    int CountFrames() const { return m_frames; }
    int CountErrors() const { return m_errors; }

    void paintGL() override {
        QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
        CountErrorsOf(gl); // of whatever happened between the frames
        gl.glClearColor(1.0f, 0.0f, 1.0f, 1.0f);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        CountErrorsOf(gl);
        ++m_frames;
    }

private:
    void CountErrorsOf(QOpenGLFunctions& gl) {
        while (gl.glGetError() != GL_NO_ERROR)
            ++m_errors;
    }

    int m_frames = 0;
    int m_errors = 0;
};

} // namespace

using OpenGLNeighborTest = SharedRunTest;

TEST_P(OpenGLNeighborTest, BothDrawThreeHundredFramesWithoutAnError) {
    ForEachKind([](WidgetKind kind) {
        QWidget window;
        auto* const layout = new QHBoxLayout(&window);
        auto* const neighbor = new OpenGLNeighbor;
        auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
        layout->addWidget(neighbor, 1);
        layout->addWidget(&widget->AsQWidget(), 1);
        window.setGeometry(40, 60, 400, 200);
        ShowAndWait(window);
        for (int i = 0; i < kFrames; ++i) {
            int const frames = neighbor->CountFrames();
            int const paints = widget->CountPaints();
            widget->AsQWidget().update();
            neighbor->update();
            auto const haveDrawn = [&] {
                return neighbor->CountFrames() > frames && widget->CountPaints() > paints;
            };
            ASSERT_TRUE(WaitUntil(haveDrawn)) << "in frame " << i;
        }
        EXPECT_EQ(neighbor->CountErrors(), 0);
        ExpectShown(*widget);
        EXPECT_TRUE(WaitUntil([&] {
            QImage const image = GrabFromScreen(*neighbor);
            return image.pixel(image.rect().center()) == qRgb(255, 0, 255);
        }));
    });
}

ZX3D_INSTANTIATE_BACKENDS(OpenGLNeighborTest);

} // namespace zarvex::testing
