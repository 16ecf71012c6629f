// The list of troubles, and the listeners to Qt and to the tests.
#include "Trouble.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <cstdio>
#include <mutex>
#include <utility>

namespace zarvex::testing {

namespace {

std::mutex mutex;
std::vector<std::string> troubles;
std::vector<std::string> expectations;

void OnQtMessage(QtMsgType type, QMessageLogContext const& context, QString const& text) {
    // Qt says so once a process where the session has no such folder, as in a container.
    bool const aboutTheMachine = text.contains("XDG_RUNTIME_DIR");
    bool const isTrouble = type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg;
    if (isTrouble && !aboutTheMachine)
        Trouble::Report(std::string(context.category) + ": " + text.toStdString());
}

/// How a message of the libraries ends that has this name.
std::string EndOfWarning(std::string_view name) {
    return " [" + std::string(name) + "]";
}

/// Fails what runs now for all that was met, and for all that was expected and was not.
class FailureOfTests : public ::testing::EmptyTestEventListener {
    void OnTestEnd(::testing::TestInfo const&) override { Fail(); }
    void OnTestSuiteEnd(::testing::TestSuite const&) override { Fail(); }

    static void Fail() {
        for (std::string const& expected : std::exchange(expectations, {}))
            EXPECT_FALSE(Trouble::Take(expected).empty()) << "expected, but not met: " << expected;
        for (std::string const& trouble : Trouble::Take())
            ADD_FAILURE() << trouble;
    }
};

} // namespace

void Trouble::Watch() {
    qInstallMessageHandler(OnQtMessage);
    ::testing::UnitTest::GetInstance()->listeners().Append(new FailureOfTests);
}

void Trouble::Report(std::string text) {
    std::lock_guard const lock(mutex);
    std::fprintf(stderr, "trouble: %s\n", text.c_str());
    troubles.push_back(std::move(text));
}

void Trouble::Expect(std::string text) {
    expectations.push_back(std::move(text));
}

std::vector<std::string> Trouble::Take() {
    return Take({});
}

std::vector<std::string> Trouble::Take(std::string_view text) {
    std::lock_guard const lock(mutex);
    std::vector<std::string> taken;
    std::erase_if(troubles, [&](std::string& trouble) {
        bool const contains = trouble.find(text) != trouble.npos;
        if (contains)
            taken.push_back(std::move(trouble));
        return contains;
    });
    return taken;
}

void ExpectWarning(std::string_view name) {
    Trouble::Expect(EndOfWarning(name));
}

std::vector<std::string> TakeWarnings(std::string_view name) {
    return Trouble::Take(EndOfWarning(name));
}

} // namespace zarvex::testing
