// Failures are warnings of the library: heard when only what is less important is off, and named for
// programs.
#include <DrawFixture.h>
#include <LogCapture.h>

#include <zx3DQt/BGFXMaterial.h>

#include <zx3D/ProgramFactory.h>
#include <zx3D/Text.h>

#include <QColor>
#include <QLoggingCategory>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Something that cannot be done.
struct Failure {
    char const* name;
    void (*cause)(BGFXRenderer const&, BGFXViewContext const&);
};

void DrawText(BGFXRenderer const& renderer, BGFXViewContext const& view, zx3D::FontHandle font) {
    renderer.RenderText(view, QPointF(10, 10), "text", font, Qt::white, Qt::AlignLeft);
}

constexpr Failure failures[] = {
    {"font.not-loaded", [](auto&, auto&) { EXPECT_FALSE(zx3D::LoadFont("/nowhere.ttf", 12)); }},
    {"program.not-created",
     [](auto&, auto&) { EXPECT_FALSE(zx3D::ProgramFactory::Get().CreateProgram("vs_nothing", "fs_basic")); }},
    {"surface.too-large",
     [](auto&, auto&) {
         zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
         frameBuffer.RequestResize(60'000, 10);
         frameBuffer.SubmitOnDemand();
         EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
     }},
    {"text.no-font", [](auto& renderer, auto& view) { DrawText(renderer, view, zx3D::FontHandle()); }},
    {"text.no-view",
     [](auto& renderer, auto&) {
         zx3D::FontHandle const font = zx3D::LoadDefaultFont(12).value();
         for (int i = 0; i < 2; ++i)
             DrawText(renderer, BGFXViewContext(60'000), font);
         zx3D::DestroyFont(font);
     }},
    {"uniform.missing",
     [](auto&, auto&) {
         static int count = 0;
         BGFXMaterial("unready" + std::to_string(++count)).Submit();
     }},
};

class FailureMessageTest : public DrawFixture, public testing::WithParamInterface<Failure> {
protected:
    /// What is logged about the failure under the rules.
    std::vector<LogLine> LinesUnder(char const* rules) {
        QLoggingCategory::setFilterRules(rules);
        LogCapture const log;
        GetParam().cause(*m_renderer, m_view);
        QLoggingCategory::setFilterRules("");
        return log.Lines();
    }
};

std::string ReadFile(std::filesystem::path const& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

using Levels = std::map<std::string, std::string>; // by the messages' names

/// Everything in the code that looks like a message's name; a warning unless the call says something else.
Levels MessagesOfTheCode() {
    static std::regex const pattern(
        R"re((?:MessageLevel::(\w+),\s*)?"([a-z]+(?:-[a-z]+)*\.[a-z]+(?:-[a-z]+)*)")re");
    Levels levels;
    for (char const* const folder : {"/src", "/zx3D/src"}) {
        for (auto const& entry :
             std::filesystem::recursive_directory_iterator(std::string(ZX3D_SOURCE_DIR) + folder)) {
            if (!entry.is_regular_file())
                continue;
            std::string const code = ReadFile(entry.path());
            for (std::sregex_iterator found(code.begin(), code.end(), pattern), end; found != end; ++found) {
                if (!(*found)[2].str().starts_with("zarvex."))
                    levels[(*found)[2]] = (*found)[1].matched ? (*found)[1].str() : "Warning";
            }
        }
    }
    return levels;
}

/// The rows of the table: | `name` | level | meaning |
Levels MessagesOfTheTable() {
    static std::regex const row(R"(\n\| `([a-z-]+\.[a-z-]+)` \| (\w+) \|)");
    std::string const page = ReadFile(ZX3D_SOURCE_DIR "/docs/troubleshooting.md");
    Levels levels;
    for (std::sregex_iterator found(page.begin(), page.end(), row), end; found != end; ++found)
        levels[(*found)[1]] = (*found)[2];
    return levels;
}

} // namespace

TEST_P(FailureMessageTest, IsAWarningOfTheLibraryThatIsHeardWithoutInformation) {
    std::string const name = GetParam().name;
    EXPECT_THAT(
        LinesUnder("zarvex.*.debug=false\nzarvex.*.info=false"),
        ElementsAre(testing::AllOf(testing::Field(&LogLine::level, QtWarningMsg),
                                   testing::Field(&LogLine::category, "zarvex.zx3dqt"),
                                   testing::Field(&LogLine::text, testing::EndsWith(" [" + name + "]")))));
}

TEST_P(FailureMessageTest, IsSilentWhenTheCategoriesAreOff) {
    EXPECT_THAT(LinesUnder("zarvex.*=false"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Failures, FailureMessageTest, testing::ValuesIn(failures), [](auto const& row) {
    std::string name = row.param.name;
    std::replace_if(name.begin(), name.end(), [](char c) { return c == '.' || c == '-'; }, '_');
    return name;
});

TEST(MessagesTest, TheTableInTheDocumentationHasExactlyTheMessagesOfTheCode) {
    Levels const code = MessagesOfTheCode();
    EXPECT_GT(code.size(), 10u);
    EXPECT_EQ(MessagesOfTheTable(), code);
}
