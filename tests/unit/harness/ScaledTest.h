// Tests at device pixel ratios other than 1.
#pragma once

#include "Fixtures.h"

#include <zx3DQt/Library.h>

#include <QApplication>
#include <QByteArray>
#include <QScreen>
#include <QString>

#include <gtest/gtest.h>

#include <optional>

/// Runs the application at a scale, and the library in it.
class ScaledTest : public RecordedTest {
protected:
    void StartAt(char const* factor, QByteArray const& platform = "offscreen") {
        qputenv("QT_QPA_PLATFORM", platform);
        qputenv("QT_SCALE_FACTOR", factor);
        m_application.emplace(m_argc, m_argv);
        ASSERT_TRUE(zarvex::zx3DQt::Init(false));
        ASSERT_EQ(QString::number(qApp->primaryScreen()->devicePixelRatio()).toStdString(), factor);
    }

    void TearDown() override {
        zarvex::zx3DQt::Shutdown();
        m_application.reset();
        qunsetenv("QT_SCALE_FACTOR");
        RecordedTest::TearDown();
    }

private:
    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    std::optional<QApplication> m_application;
};
