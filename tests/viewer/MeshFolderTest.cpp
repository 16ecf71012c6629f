// What an import may open: the mesh, and what lies in its folder and below.
#include <importer/MeshFolder.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <string>

#include <sys/stat.h>

namespace viewer {

namespace fs = std::filesystem;

class MeshFolderTest : public ::testing::Test {
protected:
    MeshFolderTest() {
        fs::create_directories(m_root / "meshes/below");
        fs::create_directories(m_root / "meshes2");
        for (char const* name :
             {"meshes/mesh.obj", "meshes/a.png", "meshes/below/b.png", "meshes2/c.png", "d.png"})
            std::ofstream(m_root / name) << name;
    }

    /// What was read, or why nothing was.
    std::string Open(fs::path const& path) const {
        try {
            return MeshFolder(m_root / "meshes/mesh.obj").Open(path)->readAll().toStdString();
        } catch (FileError const& error) {
            return error.what();
        }
    }

    QTemporaryDir m_folder;
    fs::path m_root = m_folder.path().toStdString();
    std::string const m_outside = "It lies outside the mesh's folder";
};

TEST_F(MeshFolderTest, FilesInTheFolderAndBelowAreOpened) {
    EXPECT_EQ(Open("a.png"), "meshes/a.png");
    EXPECT_EQ(Open("below/b.png"), "meshes/below/b.png");
    EXPECT_EQ(Open("below/../a.png"), "meshes/a.png");
    EXPECT_EQ(Open(m_root / "meshes/a.png"), "meshes/a.png");
    EXPECT_EQ(Open("../meshes/a.png"), "meshes/a.png");
    EXPECT_EQ(Open("nothing.png"), "There is no such file");
}

TEST_F(MeshFolderTest, PathsThatLeadOutsideAreRefused) {
    EXPECT_EQ(Open("../d.png"), m_outside);
    EXPECT_EQ(Open("../meshes2/c.png"), m_outside); // whose name begins alike
    EXPECT_EQ(Open("/etc/passwd"), m_outside);
}

TEST_F(MeshFolderTest, LinksAreFollowedButNotOutOfTheFolder) {
    fs::create_symlink("below/b.png", m_root / "meshes/in.png");
    fs::create_symlink("../d.png", m_root / "meshes/out.png");
    fs::create_directory_symlink(m_root / "meshes2", m_root / "meshes/outside");
    EXPECT_EQ(Open("in.png"), "meshes/below/b.png");
    EXPECT_EQ(Open("out.png"), m_outside);
    EXPECT_EQ(Open("outside/c.png"), m_outside);
}

TEST_F(MeshFolderTest, TheMeshItselfMayBeALink) {
    fs::create_symlink("../d.png", m_root / "meshes/linked.obj");
    MeshFolder const folder(m_root / "meshes/linked.obj");
    EXPECT_EQ(folder.Open(m_root / "meshes/linked.obj")->readAll(), "d.png");
    EXPECT_THROW(folder.Open(m_root / "d.png"), FileError);
}

TEST_F(MeshFolderTest, WhatIsNoRegularFileIsRefusedAtOnce) {
    ASSERT_EQ(mkfifo((m_root / "meshes/pipe.png").c_str(), 0600), 0);
    EXPECT_EQ(Open("pipe.png"), "It is not a regular file");
    EXPECT_EQ(Open("/dev/zero"), "It is not a regular file");
    EXPECT_EQ(Open("below"), "It is a folder");
}

} // namespace viewer
