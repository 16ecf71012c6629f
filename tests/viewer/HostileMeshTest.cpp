// Meshes that reach for what is not theirs, or never come to an end: the person loses nothing, and is told.
#include "ViewerFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProcess>
#include <QStatusBar>

#include <cmath>
#include <numbers>

#include <sys/stat.h>

namespace viewer {

using namespace zarvex::testing;

namespace {

/// A triangle with the material "m", from a library.
QByteArray Triangle(QByteArray const& library) {
    return "mtllib " + library +
           "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nusemtl m\nf 1/1 2/2 3/3\n";
}

/// One face of so many corners, in and out by turns, that cutting it into triangles takes hours.
QByteArray EndlessFace() {
    constexpr int corners = 60'000;
    QByteArray text;
    QByteArray face = "f";
    for (int i = 0; i < corners; ++i) {
        double const angle = 2.0 * std::numbers::pi * i / corners;
        double const radius = i % 2 == 0 ? 1.0 : 1.5;
        text += "v " + QByteArray::number(radius * std::cos(angle)) + " " +
                QByteArray::number(radius * std::sin(angle)) + " 0\n";
        face += " " + QByteArray::number(i + 1);
    }
    return text + face + "\n";
}

} // namespace

class HostileMeshTest : public ViewerTest {
protected:
    QString Write(QString const& name, QByteArray const& bytes) {
        QString const path = m_folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }

    QString MakeFifo(QString const& name) {
        QString const path = m_folder.filePath(name);
        EXPECT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        return path;
    }

    /// Lets a script import instead; the name of the file that it leaves its mesh in is its second argument.
    void Answer(QByteArray const& script) {
        QString const path = Write("importer", "#!/bin/sh\n" + script + "\n");
        EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        m_window->GetLoader().SetImporter(path);
    }

    void OpenSpider() {
        OpenFile(ModelPath("OBJ/spider.obj"));
        ASSERT_EQ(TakeProblem(), "");
    }

    /// Opens the file, reads the message, and sees to it that what was shown still is.
    void ExpectProblem(QString const& path, QString const& reason) {
        QString const factsBefore = Facts();
        ASSERT_FALSE(factsBefore.isEmpty());
        OpenFile(path);
        QString const problem = TakeProblem();
        EXPECT_TRUE(problem.contains(reason)) << problem.toStdString();
        EXPECT_LT(problem.size(), 1000);
        EXPECT_EQ(Facts(), factsBefore);
        WaitForFrame();
    }

    QString Status() const { return m_window->statusBar()->currentMessage(); }
};

TEST_P(HostileMeshTest, AFifoIsRefusedAtOnce) {
    OpenSpider();
    ExpectProblem(MakeFifo("pipe.obj"), "It is not a regular file");
    ExpectProblem("/dev/zero", "It is not a regular file");
}

TEST_P(HostileMeshTest, AFifoAsATextureIsLeftOut) {
    MakeFifo("pipe.png");
    Write("m.mtl", "newmtl m\nmap_Kd pipe.png\n");
    OpenFile(Write("mesh.obj", Triangle("m.mtl")));
    EXPECT_EQ(TakeProblem(), "");
    EXPECT_TRUE(Facts().startsWith("1 triangles")) << Facts().toStdString();
    EXPECT_EQ(Status(), "pipe.png is left out. It is not a regular file");
}

TEST_P(HostileMeshTest, FilesOutsideTheMeshsFolderAreLeftOut) {
    QDir(m_folder.path()).mkdir("inner");
    Write("outside.mtl", "newmtl m\nKd 1 0 0\n");
    QString const mesh = Write("inner/mesh.obj", Triangle("../outside.mtl"));
    OpenFile(mesh);
    EXPECT_EQ(TakeProblem(), "");
    EXPECT_TRUE(Status().contains("outside.mtl is left out. It lies outside the mesh's folder"))
        << Status().toStdString();
    QImage(4, 4, QImage::Format_RGB32).save(m_folder.filePath("outside.png"));
    QFile::link(m_folder.filePath("outside.png"), m_folder.filePath("inner/link.png"));
    for (QByteArray const& texture :
         {QByteArray("../outside.png"), QByteArray("link.png"), QByteArray("/etc/passwd")}) {
        Write("inner/m.mtl", "newmtl m\nmap_Kd " + texture + "\n");
        OpenFile(Write("inner/mesh.obj", Triangle("m.mtl")));
        EXPECT_EQ(TakeProblem(), "");
        EXPECT_EQ(Status(), texture + " is left out. It lies outside the mesh's folder");
    }
}

TEST_P(HostileMeshTest, AnImportThatNeverEndsIsEnded) {
    OpenSpider();
    m_window->GetLoader().SetTimeLimit(std::chrono::seconds(1));
    ExpectProblem(Write("endless.obj", EndlessFace()), "It takes more than 1 s to read");
}

TEST_P(HostileMeshTest, TheImportMayNotCallAllOfTheKernel) {
    m_window->Open(Write("endless.obj", EndlessFace()));
    auto const seccompMode = [this] {
        auto const* const process = m_window->GetLoader().findChild<QProcess*>();
        QFile status(QString("/proc/%1/status").arg(process->processId()));
        if (!status.open(QIODevice::ReadOnly))
            return QByteArray();
        QByteArray const text = status.readAll();
        return text.mid(text.indexOf("\nSeccomp:") + 9, 2).trimmed();
    };
    EXPECT_TRUE(WaitUntil([&] { return seccompMode() == "2"; })) << seccompMode().toStdString(); // a filter
    m_window->GetLoader().Cancel();
}

TEST_P(HostileMeshTest, AnswersThatCannotBeDrawnAreRefused) {
    OpenSpider();
    QString const spider = ModelPath("OBJ/spider.obj");
    MeshPiece piece;
    piece.vertices = {{{0, 0, 0}, {0, 0, 1}, {1, 1, 1, 1}}, {{1, 0, 0}, {0, 0, 1}, {1, 1, 1, 1}}};
    piece.indices = {0, 1, 2};
    MeshContent content;
    content.materials.resize(1);
    content.pieces = {piece};
    QFile answer(m_folder.filePath("answer"));
    ASSERT_TRUE(answer.open(QIODevice::ReadWrite));
    ASSERT_TRUE(WriteMesh(answer, content));
    Answer("cat '" + QFile::encodeName(answer.fileName()) + "' > \"$2\"");
    ExpectProblem(spider, "The importer has left nothing that can be read");
    ASSERT_TRUE(answer.resize(answer.size() - 3));
    ExpectProblem(spider, "The importer has left nothing that can be read");
}

TEST_P(HostileMeshTest, WhatTheImportSaysIsCutAndPlain) {
    OpenSpider();
    QString const spider = ModelPath("OBJ/spider.obj");
    Answer("head -c 3000000 /dev/zero | tr '\\0' x >&2; exit 1");
    ExpectProblem(spider, "xxx");
    Answer("printf '<b>bold\\033[31m</b>\\n' >&2; exit 1");
    ExpectProblem(spider, "<b>bold?[31m</b>");
    OpenFile(spider);
    for (QLabel const* const label : m_window->findChild<QMessageBox*>()->findChildren<QLabel*>())
        EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
            << label->text().toStdString();
    TakeProblem();
}

ZX3D_INSTANTIATE_BACKENDS(HostileMeshTest);

} // namespace viewer
