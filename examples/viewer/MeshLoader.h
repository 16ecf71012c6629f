// Loading a mesh without the window noticing: another process imports it.
#pragma once

#include "MeshFile.h"

#include <QObject>
#include <QString>
#include <QTemporaryFile>

#include <chrono>
#include <memory>

class QProcess;

namespace viewer {

/// Runs viewer_importer, which lies beside the application, and takes over what it has read.
///
/// One file at a time: `Load` cancels what is under way. Every `Load` that is not cancelled ends with
/// `Loaded` or `Failed`, sent from the event loop.
class MeshLoader : public QObject {
    Q_OBJECT

public:
    explicit MeshLoader(QObject* parent = nullptr);
    ~MeshLoader() override;

    void Load(QString const& path);

    /// Takes effect at once. Harmless when nothing is loading.
    void Cancel();

    bool IsLoading() const { return m_process != nullptr; }
    QString const& GetPath() const { return m_path; }

    /// Another importer than the one beside the application.
    void SetImporter(QString const& program) { m_importer = program; }

    /// CPU time that an import may take.
    void SetTimeLimit(std::chrono::seconds limit) { m_timeLimit = limit; }

signals:
    void Progressed(int percent);
    void Loaded(std::shared_ptr<viewer::MeshFile const> mesh);
    /// `reason`: a sentence for people.
    void Failed(QString const& reason);

private:
    void ReadProgress();
    void ReadComplaints();
    void Finish();
    void Fail(QString const& reason);
    /// From the event loop, as every other end of a load.
    void FailLater(QString const& reason);
    void Release();

    QString m_importer;
    QString m_path;
    QByteArray m_complaints; ///< the end of what the importer wrote to its standard error
    std::chrono::seconds m_timeLimit{600};
    QProcess* m_process = nullptr;
    std::unique_ptr<QTemporaryFile> m_result;
};

} // namespace viewer
