// The importer's life, and what can go wrong in it.
#include "MeshLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <utility>

namespace viewer {

namespace {

/// What opening it would say, before a process is started for it. Empty when it can be read.
QString FindObstacle(QString const& path) {
    QFileInfo const info(path);
    if (!info.exists())
        return "There is no such file";
    if (info.isDir())
        return "It is a folder";
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    return file.size() == 0 ? "It is empty" : QString();
}

QString LastLine(QString const& text) {
    return text.trimmed().section('\n', -1).trimmed();
}

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
    connect(m_process, &QProcess::finished, this, &MeshLoader::Finish);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            Fail("The importer does not start: " + m_importer);
    });
    // The file's name is relative to where the viewer was started.
    m_process->start(m_importer, {QFileInfo(path).absoluteFilePath(), m_result->fileName()});
}

void MeshLoader::Cancel() {
    Release();
}

void MeshLoader::ReadProgress() {
    QString const last = LastLine(QString::fromLatin1(m_process->readAllStandardOutput()));
    bool isNumber = false;
    int const percent = last.toInt(&isNumber);
    if (isNumber)
        emit Progressed(percent);
}

void MeshLoader::Finish() {
    if (m_process->exitStatus() == QProcess::CrashExit) {
        Fail("The import crashed: the file is probably damaged");
        return;
    }
    if (m_process->exitCode() != 0) {
        Fail(LastLine(QString::fromLocal8Bit(m_process->readAllStandardError())));
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
