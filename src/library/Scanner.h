#pragma once

#include "core/Format.h"
#include "library/FormatTraits.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <memory>

namespace korvane {

class PluginList;
class ScanCache;
class PluginMetadataReader;
struct ManagerParts;

// Lists every folder pair of a format and fills a list with the plug-ins it recognises there, each
// with the record of where it was found. It makes the folders the format's row asks for, lists a
// folder that is one with another only once (and says so, once per run), and finishes or undoes
// the moves another run left cut short, under the folders' lock, before it reads the folders.
class Scanner {
public:
    Scanner(const FormatTraits &traits, const ManagerParts &parts);

    // The list emptied and filled anew, in listing order.
    void scan(PluginList &list);

private:
    // One folder's entries as the scan considers them: direct, or below it with subfolders on.
    QStringList listFolder(int loc, const QString &folder, ScanCache *cache) const;
    // Finishes or undoes the moves cut short among the format's folders; true when the folders are
    // to be listed again.
    bool settleInterruptedMoves(const QStringList &folders, const QList<QStringList> &listings);

    const FormatTraits &m_traits;
    const ManagerParts &m_parts;
    // Pairs of the format's folders found to be one folder, each said once per run.
    QSet<QString> m_saidOneFolder;
    // What the plug-ins' files say, remembered across scans (PluginMetadataReader).
    std::shared_ptr<PluginMetadataReader> m_metadata;
};

} // namespace korvane
