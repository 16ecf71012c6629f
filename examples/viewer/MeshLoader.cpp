// The importer's life, and what can go wrong in it.
#include "MeshLoader.h"

#include "PlainText.h"
#include "RegularFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <algorithm>
#include <utility>

namespace viewer {

namespace {

/// What opening it would say, before a process is started for it. Empty when it can be read.
QString FindObstacle(QString const& path) {
    try {
        return OpenRegularFile(QFile::encodeName(path).toStdString())->size() == 0 ? "It is empty"
                                                                                   : QString();
    } catch (FileError const& obstacle) {
        return obstacle.what();
    }
}

/// What was said last, as far as it is kept: an import may say anything, without end.
QByteArray LastLine(QByteArray const& text) {
    QByteArray const trimmed = text.trimmed();
    return trimmed.mid(trimmed.lastIndexOf('\n') + 1);
}

constexpr qsizetype kMostKept = 4096; // bytes of what the importer says

} // namespace

MeshLoader::MeshLoader(QObject* parent)
    : QObject(parent),
      m_importer(QCoreApplication::applicationDirPath() + "/viewer_importer") {}

MeshLoader::~MeshLoader() {
    Cancel();
    for (QProcess* const process : findChildren<QProcess*>())
        process->waitForFinished(); // it was killed
}

void MeshLoader::Load(QString const& path) {
    Cancel();
    m_path = path;
    m_complaints.clear();
    m_process = new QProcess(this);
    if (QString const obstacle = FindObstacle(path); !obstacle.isEmpty()) {
        FailLater(obstacle);
        return;
    }
    m_result = std::make_unique<QTemporaryFile>(QDir::temp().filePath("viewer-XXXXXX.mesh"));
    if (!m_result->open()) {
        FailLater("There is no room for temporary files: " + m_result->errorString());
        return;
    }
    connect(m_process, &QProcess::readyReadStandardOutput, this, &MeshLoader::ReadProgress);
    connect(m_process, &QProcess::readyReadStandardError, this, &MeshLoader::ReadComplaints);
    connect(m_process, &QProcess::finished, this, &MeshLoader::Finish);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            Fail("The importer does not start: " + m_importer);
    });
    // The file's name is relative to where the viewer was started.
    m_process->start(m_importer, {QFileInfo(path).absoluteFilePath(), m_result->fileName(),
                                  QString::number(m_timeLimit.count())});
}

void MeshLoader::Cancel() {
    Release();
}

void MeshLoader::ReadProgress() {
    bool isNumber = false;
    int const percent = LastLine(m_process->readAllStandardOutput()).toInt(&isNumber);
    if (isNumber)
        emit Progressed(std::clamp(percent, 0, 100));
}

void MeshLoader::ReadComplaints() {
    m_complaints = (m_complaints + m_process->readAllStandardError()).right(kMostKept);
}

void MeshLoader::Finish() {
    if (m_process->exitStatus() == QProcess::CrashExit) {
        Fail("The import crashed: the file is probably damaged");
        return;
    }
    if (m_process->exitCode() != 0) {
        ReadComplaints();
        Fail(ToPlainLine(LastLine(m_complaints)));
        return;
    }
    std::shared_ptr<MeshFile const> mesh = MeshFile::Open(m_result->fileName());
    if (mesh == nullptr) {
        Fail("The importer has left nothing that can be read");
        return;
    }
    Release(); // the mapping does not need the file's name
    emit Loaded(std::move(mesh));
}

void MeshLoader::FailLater(QString const& reason) {
    auto const failUnlessCancelled = [this, process = m_process, reason] {
        if (process == m_process)
            Fail(reason);
    };
    QMetaObject::invokeMethod(m_process, failUnlessCancelled, Qt::QueuedConnection);
}

void MeshLoader::Fail(QString const& reason) {
    Release();
    emit Failed(reason.isEmpty() ? "It cannot be read" : reason);
}

void MeshLoader::Release() {
    m_result.reset();
    QProcess* const process = std::exchange(m_process, nullptr);
    if (process == nullptr)
        return;
    process->disconnect(this);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    if (process->state() == QProcess::NotRunning)
        process->deleteLater(); // not now: perhaps it is what calls
    process->kill();
}

} // namespace viewer
