// A system without fonts still shows labels.
#include <zx3D/Text.h>

#include <Fixtures.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdlib>
#include <fstream>

using namespace zarvex::zx3D;

namespace {

class TextWithoutSystemFontsTest : public ContextFixture {
protected:
    static std::size_t DrawnQuads(FontHandle font, char const* text) {
        recorder::ClearCalls();
        TextBufferHandle const buffer = CreateTextBuffer(TextBufferType::Transient, font);
        AppendText(buffer, text);
        SubmitTextBuffer(buffer, 0, 0);
        DestroyTextBuffer(buffer);
        return recorder::Draws().empty() ? 0 : recorder::Draws().front().vertices.size() / 64;
    }
};

} // namespace

TEST_F(TextWithoutSystemFontsTest, TheDefaultFontIsThere) {
    auto const font = LoadDefaultFont(14);
    ASSERT_TRUE(font);
    EXPECT_EQ(DrawnQuads(*font, "label"), 5u);
    DestroyFont(*font);
}

TEST_F(TextWithoutSystemFontsTest, ThereIsNoSystemFontAndAMessageSaysSo) {
    EXPECT_FALSE(LoadSystemFont("DejaVu Sans", 14));
    EXPECT_THAT(m_callback.traces, testing::ElementsAre(testing::HasSubstr("the system has no font")));
}

TEST_F(TextWithoutSystemFontsTest, LettersThatAFontLacksComeFromTheDefaultFont) {
    std::string mono = DEFAULT_FONT_FILE;
    mono.replace(mono.rfind("DejaVuSans"), 10, "DejaVuSansMono");
    auto const font = LoadFont(mono, 14);
    ASSERT_TRUE(font);
    EXPECT_EQ(DrawnQuads(*font, "aש"), 2u);
    DestroyFont(*font);
}

TEST_F(TextWithoutSystemFontsTest, LettersThatNoFontHasShowAMark) {
    auto const font = LoadDefaultFont(14);
    EXPECT_EQ(DrawnQuads(*font, "日"), 1u);
    DestroyFont(*font);
}

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    // Before anything starts fontconfig.
    QTemporaryDir const folder;
    std::string const config = folder.filePath("fonts.conf").toStdString();
    std::ofstream(config) << "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig/>";
    setenv("FONTCONFIG_FILE", config.c_str(), 1);
    return RUN_ALL_TESTS();
}
