// Files that are no meshes, or harm their readers: a message, and the viewer goes on.
#include "ViewerFixture.h"

#include <QFile>
#include <QFileInfo>

namespace viewer {

using namespace zarvex::testing;

class DamagedFilesTest : public ViewerTest {
protected:
    QString Write(QString const& name, QByteArray const& bytes) {
        QString const path = m_folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }

    QString WriteProgram(QByteArray const& script) {
        QString const path = Write("importer", "#!/bin/sh\n" + script + "\n");
        EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return path;
    }

    /// Opens the file, reads the message, and sees to it that what was shown still is.
    void ExpectProblem(QString const& path, QString const& reason) {
        QString const factsBefore = Facts();
        OpenFile(path);
        QString const problem = TakeProblem();
        EXPECT_TRUE(problem.startsWith(QFileInfo(path).fileName() + " cannot be opened."))
            << problem.toStdString();
        EXPECT_TRUE(problem.contains(reason)) << problem.toStdString();
        EXPECT_EQ(Facts(), factsBefore);
        WaitForFrame();
    }

    void ExpectWorks() {
        OpenFile(ModelPath("OBJ/spider.obj"));
        EXPECT_EQ(TakeProblem(), "");
        EXPECT_TRUE(Facts().startsWith("1,368 triangles"));
        WaitForFrame();
    }
};

TEST_P(DamagedFilesTest, MissingEmptyAndUnreadableFiles) {
    ExpectWorks();
    ExpectProblem(m_folder.filePath("missing.obj"), "There is no such file");
    ExpectProblem(Write("empty.stl", ""), "It is empty");
    ExpectProblem(m_folder.path(), "It is a folder");
    ExpectWorks();
}

TEST_P(DamagedFilesTest, FilesThatAreNoMeshes) {
    ExpectWorks();
    ExpectProblem(Write("picture.xyz", "hello"), "");
    ExpectProblem(Write("text.ply", "hello"), "");
    ExpectProblem(Write("comments.obj", "# nothing\n"), "");
    QFile duck(ModelPath("Collada/duck.dae"));
    ASSERT_TRUE(duck.open(QIODevice::ReadOnly));
    ExpectProblem(Write("half.dae", duck.readAll().left(5000)), "");
    ExpectWorks();
}

TEST_P(DamagedFilesTest, FilesThatClaimToBeHuge) {
    QByteArray stl(84, '\0');
    stl[80] = stl[81] = stl[82] = '\xff'; // 16 million triangles
    stl[83] = '\x0f';
    ExpectProblem(Write("huge.stl", stl), "");
    ExpectProblem(Write("huge.ply", "ply\nformat binary_little_endian 1.0\nelement vertex 4000000000\n"
                                    "property float x\nproperty float y\nproperty float z\n"
                                    "element face 4000000000\n"
                                    "property list uchar int vertex_indices\nend_header\n"),
                  "");
    ExpectProblem(Write("huge.off", "OFF\n2000000000 2000000000 0\n0 0 0\n"), "");
    ExpectWorks();
}

TEST_P(DamagedFilesTest, CoordinatesThatAreNoPlaces) {
    ExpectProblem(Write("nan.obj", "v nan 0 0\nv inf 1 0\nv 0 1e38 0\nf 1 2 3\n"), "");
    ExpectWorks();
}

TEST_P(DamagedFilesTest, AnImportThatCrashesIsAMessage) {
    QString const good = ModelPath("OBJ/spider.obj");
    m_window->GetLoader().SetImporter(WriteProgram("kill -SEGV $$"));
    ExpectProblem(good, "crashed");
    m_window->GetLoader().SetImporter(WriteProgram("echo 'the reason' >&2; exit 1"));
    ExpectProblem(good, "the reason");
    m_window->GetLoader().SetImporter(WriteProgram("exit 0"));
    ExpectProblem(good, "left nothing");
    m_window->GetLoader().SetImporter("/no/such/program");
    ExpectProblem(good, "does not start");
}

TEST_P(DamagedFilesTest, AnImportThatNeverEndsCanBeCancelled) {
    m_window->GetLoader().SetImporter(WriteProgram("echo 30; exec sleep 1000"));
    m_window->Open(ModelPath("OBJ/spider.obj"));
    WaitForFrame();
    EXPECT_TRUE(m_window->GetLoader().IsLoading());
    m_window->GetLoader().Cancel();
    EXPECT_FALSE(m_window->GetLoader().IsLoading());
    WaitForFrame();
    EXPECT_EQ(TakeProblem(), "");
}

TEST_P(DamagedFilesTest, OpeningAnotherFileReplacesTheOneThatIsLoading) {
    QString const torus = m_folder.filePath("torus.ply");
    WriteWavyTorus(torus, 300, 300);
    m_window->Open(torus);
    m_window->Open(m_folder.filePath("missing.obj"));
    ExpectWorks();
    EXPECT_TRUE(m_window->windowTitle().startsWith("spider.obj"));
}

ZX3D_INSTANTIATE_BACKENDS(DamagedFilesTest);

} // namespace viewer
