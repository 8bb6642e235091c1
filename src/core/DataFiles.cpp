#include "core/DataFiles.h"

#include "codec/PropertyList.h"
#include "core/ActivityLog.h"
#include "core/DataFile.h"
#include "core/Locations.h"
#include "core/PathChecks.h"
#include "os/FileOperations.h"

namespace korvane {

DataFiles::DataFiles(const Locations &locations, FileOperations &files, UserInterface &ui,
                     ActivityLog &log)
    : m_locations(locations), m_files(files), m_log(log),
      m_saver(files, ui, locations.documentsFolder(),
              [&log](const QString &line) { log.append(line); })
{
}

bool DataFiles::write(const QString &path, const QVariant &root,
                      const std::function<bool(const QString &)> &readable)
{
    QString report;
    const bool free = DataFile::prepareToReplace(m_files, path, readable, &report);
    if (!report.isEmpty())
        m_log.append(report);
    return free && m_saver.write(path, PropertyList::toXml(root));
}

void DataFiles::log(const QString &report)
{
    m_log.append(report);
}

void DataFiles::createSupportFolder()
{
    const QString folder = m_locations.supportFolderPath();
    if (m_files.isDirectory(folder))
        return;
    // A fresh home may lack "Library/Application Support" too; without it nothing could be saved.
    createFolders(m_files, folder);
    m_files.createDirectory(folder); // a failure shows as the write that follows failing
}

void createFolders(FileOperations &files, const QString &path)
{
    // Most paths' folders are there already: one look instead of one per level.
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash > 0 && !climbsUp(path) && files.isDirectory(path.left(slash)))
        return;
    QStringList components;
    if (path.startsWith(QLatin1Char('/')))
        components.append(QStringLiteral("/"));
    for (const QString &part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts))
        components.append(part);
    // A ".." step would create folders somewhere else than on the way to the path.
    if (components.size() < 2 || climbsUp(path))
        return;

    QString current;
    for (qsizetype i = 0; i + 1 < components.size(); ++i) {
        const QString &part = components.at(i);
        if (current.isEmpty())
            current = part;
        else if (current.endsWith(QLatin1Char('/')))
            current += part;
        else
            current += QLatin1Char('/') + part;
        if (!files.exists(current))
            files.createDirectory(current); // a failure is left to the move that follows
    }
}

} // namespace korvane
