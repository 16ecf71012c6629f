// Pictures that the examples save of themselves.
#include "harness/LibraryRun.h"

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <set>
#include <tuple>

namespace zarvex::testing {

namespace {

int RunExample(char const* name, bgfx::RendererType::Enum backend, QString const& picture) {
    QStringList arguments{picture, "--points=300000"}; // the latter for the one that knows it
    if (backend == bgfx::RendererType::OpenGL)
        arguments.prepend("--opengl");
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QString(EXAMPLES "/") + name, arguments);
    EXPECT_TRUE(process.waitForFinished(120'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return process.exitCode();
}

bool IsOpaque(QImage const& image) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 255)
                return false;
        }
    }
    return true;
}

std::size_t CountColors(QImage const& image) {
    std::set<QRgb> colors;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            colors.insert(image.pixel(x, y));
    }
    return colors.size();
}

} // namespace

class ExamplePictureTest
    : public ::testing::TestWithParam<std::tuple<char const*, bgfx::RendererType::Enum>> {};

TEST_P(ExamplePictureTest, IsOpaqueAndShowsSomething) {
    auto const [example, backend] = GetParam();
    QTemporaryDir const folder;
    QString const path = folder.filePath("picture.png");
    EXPECT_EQ(RunExample(example, backend, path), 0);
    QImage const picture(path);
    ASSERT_FALSE(picture.isNull());
    EXPECT_FALSE(picture.hasAlphaChannel());
    EXPECT_TRUE(IsOpaque(picture));
    EXPECT_GT(picture.width(), 600);
    EXPECT_GT(CountColors(picture), 50u);
}

INSTANTIATE_TEST_SUITE_P(
    , ExamplePictureTest,
    ::testing::Combine(::testing::Values("cameras", "edges_over_faces", "first_window", "grid_and_axes",
                                         "instances", "labels", "lights", "lines_and_points", "lit_mesh",
                                         "native_widget", "offscreen_widget", "own_shader", "part_drawing",
                                         "picking", "point_cloud", "polylines"),
                       AllBackends()),
    [](auto const& row) { return std::get<0>(row.param) + ("_" + NameOf(std::get<1>(row.param))); });

TEST(ExampleWithoutAPlaceTest, APictureThatCannotBeSavedIsAFailure) {
    EXPECT_EQ(RunExample("first_window", bgfx::RendererType::OpenGL, "/no/such/folder/picture.png"), 1);
}

} // namespace zarvex::testing
