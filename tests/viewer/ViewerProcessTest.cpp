// The viewer from the command line: pictures, text, exit codes.
#include "ViewerFixture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

namespace viewer {

using namespace zarvex::testing;

namespace {

struct Result {
    int exitCode = -1;
    QString output;
    QString error;
};

Result RunViewer(QStringList const& arguments,
                 QProcessEnvironment const& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(VIEWER_PROGRAM, arguments);
    EXPECT_TRUE(process.waitForFinished(120'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << arguments.join(' ').toStdString();
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

} // namespace

class ViewerProcessTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {
protected:
    QStringList Backend() const {
        return {"--renderer", QString::fromStdString(NameOf(GetParam())).toLower()};
    }

    QTemporaryDir m_folder;
};

TEST_P(ViewerProcessTest, SavesAPictureOfAMesh) {
    QString const path = m_folder.filePath("duck.png");
    Result const result =
        RunViewer(Backend() + QStringList{"--screenshot", path, "--size", "400x300", "--view", "right",
                                          ModelPath("Collada/duck.dae")});
    EXPECT_EQ(result.exitCode, 0) << result.error.toStdString();
    QImage const picture(path);
    EXPECT_EQ(picture.size(), QSize(400, 300));
    EXPECT_GT(CountColors(picture), 500);
    EXPECT_FALSE(picture.hasAlphaChannel()) << "opaque";
}

TEST_P(ViewerProcessTest, ViewsAndProjectionsGiveDifferentPictures) {
    std::vector<QImage> pictures;
    for (QStringList const& options :
         {QStringList{"--view", "iso"}, QStringList{"--view", "top"}, QStringList{"--view", "front"},
          QStringList{"--parallel"}, QStringList{"--up", "z"}}) {
        QString const path = m_folder.filePath("picture.png");
        EXPECT_EQ(
            RunViewer(Backend() + options +
                      QStringList{"--screenshot", path, "--size", "400x300", ModelPath("OBJ/spider.obj")})
                .exitCode,
            0);
        pictures.emplace_back(path);
        for (std::size_t i = 0; i + 1 < pictures.size(); ++i)
            EXPECT_GT(DifferingShare(pictures[i], pictures.back()), 0.002) << options.join(' ').toStdString();
    }
}

TEST_P(ViewerProcessTest, PrintsTheCapabilities) {
    Result const result = RunViewer(Backend() << "--caps");
    EXPECT_EQ(result.exitCode, 0);
    // A debug build of bgfx prints there, too.
    EXPECT_TRUE(result.output.contains("Renderer Type: " + QString::fromStdString(NameOf(GetParam()))));
}

TEST_P(ViewerProcessTest, PrintsTheTimesOfFrames) {
    Result const result = RunViewer(Backend() << "--frames"
                                              << "5"
                                              << "--size"
                                              << "300x200");
    EXPECT_EQ(result.exitCode, 0) << result.error.toStdString();
    EXPECT_TRUE(result.output.contains("5 frames: median ")) << result.output.toStdString();
}

TEST_P(ViewerProcessTest, FailuresAreToldOnTheStandardErrorWithAnExitCode) {
    QString const missing = m_folder.filePath("missing.obj");
    QString const picture = m_folder.filePath("picture.png");
    Result const noFile = RunViewer(Backend() + QStringList{"--screenshot", picture, missing});
    EXPECT_EQ(noFile.exitCode, 1);
    EXPECT_TRUE(noFile.error.contains("viewer: " + missing + ": There is no such file"))
        << noFile.error.toStdString();
    EXPECT_FALSE(QFile::exists(picture));

    QFile junk(m_folder.filePath("junk.ply"));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("junk");
    junk.close();
    EXPECT_EQ(RunViewer(Backend() + QStringList{"--screenshot", picture, junk.fileName()}).exitCode, 1);

    Result const noFolder = RunViewer(Backend() + QStringList{"--screenshot", "/no/such/folder/a.png"});
    EXPECT_EQ(noFolder.exitCode, 1);
    EXPECT_TRUE(noFolder.error.contains("/no/such/folder/a.png"));
}

TEST_P(ViewerProcessTest, AMeshThatTakesTooLongIsGivenUp) {
    QString const mesh = m_folder.filePath("torus.ply");
    WriteWavyTorus(mesh, 2000, 2000);
    QString const picture = m_folder.filePath("picture.png");
    Result const result = RunViewer(Backend() + QStringList{"--screenshot", picture, "--timeout", "1", mesh});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.error.contains("viewer: " + mesh + ": It is not read after 1 s"))
        << result.error.toStdString();
    EXPECT_FALSE(QFile::exists(picture));
}

TEST_P(ViewerProcessTest, WhatIsLeftOutOfAPictureIsTold) {
    QFile mesh(m_folder.filePath("mesh.obj"));
    ASSERT_TRUE(mesh.open(QIODevice::WriteOnly));
    mesh.write("mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl m\nf 1 2 3\n");
    mesh.close();
    QFile materials(m_folder.filePath("m.mtl"));
    ASSERT_TRUE(materials.open(QIODevice::WriteOnly));
    materials.write("newmtl m\nmap_Kd /etc/passwd\n");
    materials.close();
    QString const picture = m_folder.filePath("picture.png");
    Result const result = RunViewer(Backend() + QStringList{"--screenshot", picture, mesh.fileName()});
    EXPECT_EQ(result.exitCode, 0) << result.error.toStdString();
    EXPECT_TRUE(result.error.contains("viewer: " + mesh.fileName() +
                                      ": /etc/passwd is left out. It lies outside the mesh's folder\n"))
        << result.error.toStdString();
    EXPECT_TRUE(QFile::exists(picture));
}

ZX3D_INSTANTIATE_BACKENDS(ViewerProcessTest);

TEST(ViewerProcessWithoutDisplayTest, HelpAndUsageErrorsNeedNone) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    Result const help = RunViewer({"--help"}, environment);
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.contains("--screenshot"));
    EXPECT_EQ(help.error, "");
    Result const misuse = RunViewer({"--nonsense"}, environment);
    EXPECT_EQ(misuse.exitCode, 2);
    EXPECT_TRUE(misuse.error.contains("nonsense"));
    EXPECT_EQ(misuse.output, "");
    Result const noDisplay = RunViewer({}, environment);
    EXPECT_EQ(noDisplay.exitCode, 1);
    EXPECT_TRUE(noDisplay.error.contains("display"));
}

} // namespace viewer
