// Every file of assimp's test models is opened once, whatever it is: a mesh is drawn, anything else is a
// message.
#include "ViewerFixture.h"

#include <QDirIterator>

#include <cstdio>

namespace viewer {

using namespace zarvex::testing;

using AllModelsTest = ViewerTest;

TEST_P(AllModelsTest, AreDrawnOrRefused) {
    int drawn = 0;
    int refused = 0;
    QStringList paths;
    for (QDirIterator files(ModelPath(""), QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
        paths << files.next();
    paths.sort();
    ASSERT_GT(paths.size(), 500);
    for (QString const& path : paths) {
        SCOPED_TRACE(path.toStdString());
        m_window->Open(path);
        // Some claim so much that it takes a while to be refused.
        bool const isDone = WaitUntil([this] { return !m_window->GetLoader().IsLoading(); }) ||
                            WaitUntil([this] { return !m_window->GetLoader().IsLoading(); });
        ASSERT_TRUE(isDone);
        bool const isRefused = !TakeProblem().isEmpty();
        isRefused ? ++refused : ++drawn;
        if (!isRefused)
            WaitForFrame();
    }
    std::printf("%d drawn, %d refused\n", drawn, refused);
    EXPECT_GT(drawn, 300);
}

ZX3D_INSTANTIATE_BACKENDS(AllModelsTest);

} // namespace viewer
