// Assimp's test models are opened, each once, whatever it is: a mesh is drawn, anything else is a message.
#include "ViewerFixture.h"

#include <QDirIterator>

#include <cstdio>

namespace viewer {

using namespace zarvex::testing;

class ModelsTest : public ViewerTest {
protected:
    /// Opens a file; true when it is drawn, false when it is refused.
    bool Draws(QString const& path) {
        m_window->Open(path);
        // Some claim so much that it takes a while to be refused.
        bool const isDone = WaitUntil([this] { return !m_window->GetLoader().IsLoading(); }) ||
                            WaitUntil([this] { return !m_window->GetLoader().IsLoading(); });
        EXPECT_TRUE(isDone);
        if (!TakeProblem().isEmpty())
            return false;
        WaitForFrame();
        return true;
    }
};

/// One model for each way in which files come: text, binary, packed, in several files, with textures within
/// and without, and in formats of many programs.
TEST_P(ModelsTest, OfManyFormatsAreDrawn) {
    for (char const* const path : {"OBJ/spider.obj",
                                   "Collada/cube_UTF8BOM.dae",
                                   "ASE/ThreeCubesGreen_UTF16LE.ASE",
                                   "STL/Spider_ascii.stl",
                                   "STL/Spider_binary.stl",
                                   "PLY/float-color.ply",
                                   "PLY/cube_binary.ply",
                                   "Collada/duck.dae",
                                   "Collada/duck.zae",
                                   "glTF2/BoxTextured-glTF/BoxTextured.gltf",
                                   "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb",
                                   "FBX/spider.fbx",
                                   "FBX/phong_cube.fbx",
                                   "3DS/fels.3ds",
                                   "3MF/box.3mf",
                                   "OFF/Wuson.off",
                                   "DXF/wuson.dxf",
                                   "BLEND/TexturedPlane_ImageUvPacked_248.blend",
                                   "X/test.x",
                                   "MS3D/jeep1.ms3d",
                                   "MD2/sydney.md2",
                                   "AC/Wuson.ac",
                                   "LWO/LWO2/box_2uv_1unused.lwo",
                                   "XGL/Wuson.zgl",
                                   "IFC/AC14-FZK-Haus.ifc"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(Draws(ModelPath(path)));
    }
}

/// Takes minutes.
TEST_P(ModelsTest, AllAreDrawnOrRefused) {
    int drawn = 0;
    int refused = 0;
    QStringList paths;
    for (QDirIterator files(ModelPath(""), QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
        paths << files.next();
    paths.sort();
    ASSERT_GT(paths.size(), 500);
    for (QString const& path : paths) {
        SCOPED_TRACE(path.toStdString());
        Draws(path) ? ++drawn : ++refused;
        ASSERT_FALSE(HasFailure());
    }
    std::printf("%d drawn, %d refused\n", drawn, refused);
    EXPECT_GT(drawn, 300);
}

ZX3D_INSTANTIATE_BACKENDS(ModelsTest);

} // namespace viewer
