// What the options mean, and how their misuse is answered.
#include <CommandLine.h>

#include <gtest/gtest.h>

namespace viewer {

namespace {

std::variant<Options, Message> Parse(QStringList arguments) {
    arguments.prepend("/usr/bin/viewer");
    return ParseCommandLine(arguments);
}

Options ParseOptions(QStringList const& arguments) {
    auto const parsed = Parse(arguments);
    EXPECT_TRUE(std::holds_alternative<Options>(parsed)) << arguments.join(' ').toStdString();
    return std::holds_alternative<Options>(parsed) ? std::get<Options>(parsed) : Options();
}

} // namespace

TEST(CommandLineTest, WithoutArgumentsTheBuiltInSceneIsShownInAWindow) {
    Options const options = ParseOptions({});
    EXPECT_TRUE(options.file.isEmpty());
    EXPECT_TRUE(options.screenshot.isEmpty());
    EXPECT_EQ(options.view, StandardView::Isometric);
    EXPECT_FALSE(options.size || options.renderer || options.samples || options.up || options.parallel ||
                 options.showCapabilities);
    EXPECT_EQ(options.frames, 0);
    EXPECT_EQ(options.timeout, 300);
}

TEST(CommandLineTest, EveryOptionIsUnderstood) {
    Options const options = ParseOptions({"--screenshot", "out.png", "--size=640x480", "--view", "top",
                                          "--renderer", "Vulkan", "--samples", "8", "--parallel", "--up", "y",
                                          "--caps", "--frames", "12", "--timeout", "20", "mesh.obj"});
    EXPECT_EQ(options.file, "mesh.obj");
    EXPECT_EQ(options.screenshot, "out.png");
    EXPECT_EQ(options.size, QSize(640, 480));
    EXPECT_EQ(options.view, StandardView::Top);
    EXPECT_EQ(options.renderer, bgfx::RendererType::Vulkan);
    EXPECT_EQ(options.samples, 8u);
    EXPECT_EQ(options.up, UpAxis::Y);
    EXPECT_TRUE(options.parallel);
    EXPECT_TRUE(options.showCapabilities);
    EXPECT_EQ(options.frames, 12);
    EXPECT_EQ(options.timeout, 20);
}

TEST(CommandLineTest, FilesWhoseNamesBeginWithADashFollowTwo) {
    EXPECT_EQ(ParseOptions({"--", "-odd.obj"}).file, "-odd.obj");
}

TEST(CommandLineTest, HelpNamesEveryOptionAndIsNoError) {
    auto const parsed = Parse({"--help"});
    ASSERT_TRUE(std::holds_alternative<Message>(parsed));
    auto const& message = std::get<Message>(parsed);
    EXPECT_EQ(message.exitCode, kSuccess);
    for (char const* option : {"--screenshot", "--size", "--view", "--renderer", "--caps", "--frames",
                               "--help", "--parallel", "--up", "--timeout", "--samples", "FILE"})
        EXPECT_TRUE(message.text.contains(option)) << option;
}

TEST(CommandLineTest, MisuseIsAnsweredWithWhatIsWrongAndAnExitCodeOfItsOwn) {
    std::pair<QStringList, char const*> const misuses[] = {
        {{"--nonsense"}, "nonsense"},
        {{"--size", "640"}, "640"},
        {{"--size", "0x480"}, "0x480"},
        {{"--size", "-1x5"}, "-1x5"},
        {{"--size", "99999x5"}, "99999x5"},
        {{"--size", "640x480x2"}, "640x480x2"},
        {{"--view", "behind"}, "behind"},
        {{"--renderer", "metal"}, "metal"},
        {{"--up", "x"}, "\"x\""},
        {{"--samples", "3"}, "\"3\""},
        {{"--samples", "many"}, "many"},
        {{"--frames", "0"}, "\"0\""},
        {{"--frames", "many"}, "many"},
        {{"--frames", "99999999999"}, "99999999999"},
        {{"--timeout", "0"}, "\"0\""},
        {{"--timeout", "never"}, "never"},
        {{"--timeout", "9999999"}, "9999999"},
        {{"--screenshot", "picture.txt"}, "picture.txt"},
        {{"--screenshot", "picture"}, "picture"},
        {{"--screenshot"}, "screenshot"},
        {{"a.obj", "b.obj"}, "one file"},
    };
    for (auto const& [arguments, named] : misuses) {
        auto const parsed = Parse(arguments);
        ASSERT_TRUE(std::holds_alternative<Message>(parsed)) << arguments.join(' ').toStdString();
        auto const& message = std::get<Message>(parsed);
        EXPECT_EQ(message.exitCode, kUsageError);
        EXPECT_TRUE(message.text.startsWith("viewer: ")) << message.text.toStdString();
        EXPECT_TRUE(message.text.contains(named)) << message.text.toStdString();
        EXPECT_TRUE(message.text.contains("--help")) << message.text.toStdString();
    }
}

} // namespace viewer
