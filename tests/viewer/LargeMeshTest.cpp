// Two million triangles: progress, cancel, and how long frames take.
#include "ViewerFixture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <cstdio>

namespace viewer {

using namespace zarvex::testing;

static void Write(QString const& path, QByteArray const& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
}

class LargeMeshTest : public ViewerTest {
protected:
    LargeMeshTest() : m_path(m_folder.filePath("torus.ply")) { WriteWavyTorus(m_path, 1000, 1000); }

    QString m_path;
};

TEST_P(LargeMeshTest, LoadsWithProgressAndOrbits) {
    auto* const progress = m_window->findChild<QProgressBar*>();
    EXPECT_FALSE(progress->isVisible());
    std::vector<int> percents;
    QObject::connect(&m_window->GetLoader(), &MeshLoader::Progressed, m_window.get(),
                     [&](int percent) { percents.push_back(percent); });
    QElapsedTimer clock;
    clock.start();
    m_window->Open(m_path);
    EXPECT_TRUE(progress->isVisible());
    // The longest time that the window does not answer.
    qint64 last = 0;
    qint64 longest = 0;
    ASSERT_TRUE(WaitUntil([&] {
        longest = std::max(longest, clock.elapsed() - last);
        last = clock.elapsed();
        return !m_window->GetLoader().IsLoading();
    }));
    std::printf("loaded in %lld ms; the window did not answer for at most %lld ms\n",
                static_cast<long long>(clock.elapsed()), static_cast<long long>(longest));
    EXPECT_FALSE(progress->isVisible());
    EXPECT_GT(percents.size(), 3u);
    EXPECT_TRUE(std::ranges::is_sorted(percents));
    EXPECT_TRUE(Facts().startsWith("2,000,000 triangles")) << Facts().toStdString();

    std::vector<double> times;
    QObject::connect(&GetScene(), &Scene::FrameDrawn, m_window.get(),
                     [&](double milliseconds) { times.push_back(milliseconds); });
    OrbitCamera const before = GetCamera();
    for (int i = 0; i < 8; ++i)
        QTest::keyClick(&GetView(), Qt::Key_Left);
    WaitForFrame();
    EXPECT_GT((TowardsViewer(GetCamera()) - TowardsViewer(before)).length(), 0.5f);
    std::ranges::sort(times);
    std::printf("%zu frames of two million triangles: median %.1f ms, longest %.1f ms\n", times.size(),
                times[times.size() / 2], times.back());
    EXPECT_GT(CountColors(Grab()), 1000);
}

TEST_P(LargeMeshTest, CancelKeepsWhatWasShown) {
    OpenFile(ModelPath("OBJ/spider.obj"));
    m_window->Open(m_path);
    auto* const cancel = m_window->findChild<QPushButton*>("cancel");
    EXPECT_TRUE(cancel->isVisible());
    QTest::mouseClick(cancel, Qt::LeftButton);
    EXPECT_FALSE(m_window->GetLoader().IsLoading());
    EXPECT_FALSE(cancel->isVisible());
    WaitForFrame();
    EXPECT_TRUE(Facts().startsWith("1,368 triangles"));
    EXPECT_TRUE(m_window->windowTitle().startsWith("spider.obj"));
}

TEST_P(LargeMeshTest, PointsEdgesAndNormalsAreDrawn) {
    WriteWavyTorus(m_path, 500, 500); // a quarter: edges and normals are several lines for each triangle
    OpenFile(m_path);
    for (char const* const key : {"W", "D", "N"}) {
        Type(key);
        WaitForFrame();
        EXPECT_GT(CountColors(Grab()), 100) << key;
    }
}

TEST_P(LargeMeshTest, MoreMaterialsThanBgfxHasBuffersAreDrawn) {
    constexpr int count = 5000;
    QByteArray materials;
    QByteArray triangles = "mtllib many.mtl\n";
    for (int i = 0; i < count; ++i) {
        materials += QString("newmtl m%1\nKd %2 %3 1\n").arg(i).arg(i % 100 / 100.0).arg(i / 5000.0).toUtf8();
        triangles += QString("v %1 %2 0\nv %3 %2 0\nv %1 %4 0\nusemtl m%5\nf -3 -2 -1\n")
                         .arg(i % 100)
                         .arg(i / 100)
                         .arg(i % 100 + 1)
                         .arg(i / 100 + 1)
                         .arg(i)
                         .toUtf8();
    }
    Write(m_folder.filePath("many.mtl"), materials);
    Write(m_folder.filePath("many.obj"), triangles);
    OpenFile(m_folder.filePath("many.obj"));
    EXPECT_TRUE(Facts().startsWith("5,000 triangles"));
    EXPECT_GT(CountColors(Grab()), 2000);
}

ZX3D_INSTANTIATE_BACKENDS(LargeMeshTest);

} // namespace viewer
