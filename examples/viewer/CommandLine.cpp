// The options, their help, and what is wrong with their values.
#include "CommandLine.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QImageWriter>
#include <QRegularExpression>

#include <stdexcept>
#include <utility>

namespace viewer {

namespace {

constexpr int kLargestSide = 32768;
constexpr int kLargestNumber = 1'000'000; // seconds of it are milliseconds in 32 bits

QCommandLineOption const kScreenshot("screenshot", "Save a picture and quit.", "PICTURE");
QCommandLineOption const kSize("size", "Size of the picture or the window, pixels.", "WxH");
QCommandLineOption const kView("view", "Look from there: iso, front, back, left, right, top or bottom.",
                               "VIEW");
QCommandLineOption const kParallel("parallel", "Parallel instead of perspective projection.");
QCommandLineOption const kUp("up", "The axis that points up: y or z.", "AXIS");
QCommandLineOption const kRenderer("renderer", "Draw with opengl or vulkan.", "NAME");
QCommandLineOption const
    kSamples("samples", "Smooth edges with 2, 4, 8 or 16 samples for each pixel, or not with 1.", "N");
QCommandLineOption const kCaps("caps", "Print what the GPU can do, and quit.");
QCommandLineOption const kFrames("frames", "Draw N frames, turning the scene, print their times, and quit.",
                                 "N");

QCommandLineOption const
    kTimeout("timeout",
             "With --screenshot or --frames: give up a mesh that is not read after so many "
             "seconds (300).",
             "SECONDS");

/// Something that cannot be done as it was asked for.
struct UsageError : std::runtime_error {
    explicit UsageError(QString const& text) : runtime_error(text.toStdString()) {}
};

template<typename T>
using Choices = std::vector<std::pair<QString, T>>;

template<typename T>
T Choose(QCommandLineParser const& parser, QCommandLineOption const& option, Choices<T> const& choices) {
    QString const value = parser.value(option).toLower();
    QStringList names;
    for (auto const& [name, choice] : choices) {
        if (name == value)
            return choice;
        names << name;
    }
    throw UsageError(QString("--%1 must be one of %2, not \"%3\"")
                         .arg(option.names().first(), names.join(", "), parser.value(option)));
}

QSize ParseSize(QString const& text) {
    static QRegularExpression const form("^([0-9]{1,6})[xX×]([0-9]{1,6})$");
    QRegularExpressionMatch const match = form.match(text);
    QSize const size(match.captured(1).toInt(), match.captured(2).toInt());
    if (size.isEmpty() || std::max(size.width(), size.height()) > kLargestSide)
        throw UsageError(QString("--size must be WIDTHxHEIGHT, each 1 to %1, not \"%2\"")
                             .arg(QString::number(kLargestSide), text));
    return size;
}

/// A number above 0.
int ParseNumber(QCommandLineParser const& parser, QCommandLineOption const& option) {
    QString const text = parser.value(option);
    bool isNumber = false;
    int const number = text.toInt(&isNumber);
    if (!isNumber || number < 1 || number > kLargestNumber)
        throw UsageError(QString("--%1 must be a number from 1 to %2, not \"%3\"")
                             .arg(option.names().first(), QString::number(kLargestNumber), text));
    return number;
}

/// Before a large mesh is read for nothing.
QString CheckPictureFormat(QString const& path) {
    QString const suffix = QFileInfo(path).suffix().toLower();
    if (!QImageWriter::supportedImageFormats().contains(suffix.toLatin1()))
        throw UsageError(QString("--screenshot: cannot write pictures of the kind of \"%1\"").arg(path));
    return path;
}

void AddOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription("Shows a mesh: OBJ, STL, PLY, glTF and many other formats.\n"
                                     "Without a file it shows what the library can draw.");
    parser.addPositionalArgument("FILE", "The mesh.", "[FILE]");
    parser.addOptions(
        {kScreenshot, kSize, kView, kParallel, kUp, kRenderer, kSamples, kCaps, kFrames, kTimeout});
    parser.addHelpOption();
    parser.addVersionOption();
}

Options ReadOptions(QCommandLineParser const& parser) {
    Options options;
    if (parser.positionalArguments().size() > 1)
        throw UsageError("one file at a time");
    options.file = parser.positionalArguments().value(0);
    if (parser.isSet(kScreenshot))
        options.screenshot = CheckPictureFormat(parser.value(kScreenshot));
    if (parser.isSet(kSize))
        options.size = ParseSize(parser.value(kSize));
    if (parser.isSet(kView)) {
        using enum StandardView;
        options.view = Choose<StandardView>(parser, kView,
                                            {{"iso", Isometric},
                                             {"front", Front},
                                             {"back", Back},
                                             {"left", Left},
                                             {"right", Right},
                                             {"top", Top},
                                             {"bottom", Bottom}});
    }
    options.parallel = parser.isSet(kParallel);
    if (parser.isSet(kUp))
        options.up = Choose<UpAxis>(parser, kUp, {{"y", UpAxis::Y}, {"z", UpAxis::Z}});
    if (parser.isSet(kRenderer))
        options.renderer = Choose<bgfx::RendererType::Enum>(
            parser, kRenderer,
            {{"opengl", bgfx::RendererType::OpenGL}, {"vulkan", bgfx::RendererType::Vulkan}});
    if (parser.isSet(kSamples))
        options.samples =
            Choose<std::uint32_t>(parser, kSamples, {{"1", 1}, {"2", 2}, {"4", 4}, {"8", 8}, {"16", 16}});
    options.showCapabilities = parser.isSet(kCaps);
    if (parser.isSet(kFrames))
        options.frames = ParseNumber(parser, kFrames);
    if (parser.isSet(kTimeout))
        options.timeout = ParseNumber(parser, kTimeout);
    return options;
}

} // namespace

std::variant<Options, Message> ParseCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    AddOptions(parser);
    QString const program = QFileInfo(arguments.value(0)).fileName();
    auto const usageError = [&program](QString const& reason) {
        return Message{QString("%1: %2\nTry \"%1 --help\".\n").arg(program, reason), kUsageError};
    };
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet("help"))
        return Message{parser.helpText(), kSuccess};
    if (parser.isSet("version"))
        return Message{"viewer of zx3DQt " ZX3DQT_VERSION "\n", kSuccess};
    try {
        return ReadOptions(parser);
    } catch (UsageError const& error) {
        return usageError(error.what());
    }
}

} // namespace viewer
