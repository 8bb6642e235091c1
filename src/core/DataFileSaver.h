#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <functional>

namespace korvane {

class FileOperations;
class UserInterface;

// Writes the program's data files (preferences, registries, groups and set lists) and says every
// failure where the person sees it: which file, why, with Try Again, Save Elsewhere... and Cancel.
// A settings folder left unwritable (one `sudo korvane` is enough) used to lose new groups and
// preference changes at quit without a word.
class DataFileSaver {
public:
    using Log = std::function<void(const QString &line)>;

    // elsewhere: where Save Elsewhere... opens (the person's documents folder).
    DataFileSaver(FileOperations &files, UserInterface &ui, QString elsewhere, Log log);

    // Makes path's missing folders and writes bytes there atomically. On failure the person
    // chooses: try again, keep a copy elsewhere (this run still reads the original place), or
    // leave it unsaved. After Cancel, later failures of the same file are only logged until a
    // write of it succeeds, so each changed control does not ask again. A failure in a folder
    // whose question is open waits for that answer instead of asking over it. Nobody there to
    // answer: said once per failure, never retried. True when the bytes are at path.
    bool write(const QString &path, const QByteArray &bytes);

private:
    bool attempt(const QString &path, const QByteArray &bytes, QString *reason);
    bool makeFolders(const QString &folder, QString *reason);

    FileOperations &m_files;
    UserInterface &m_ui;
    QString m_elsewhere;
    Log m_log;
    QSet<QString> m_declined;
    QSet<QString> m_asking;               // folders with a question open
    QHash<QString, QByteArray> m_waiting; // writes that failed meanwhile, newest bytes by path
};

} // namespace korvane
