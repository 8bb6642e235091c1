#include "library/MovePlan.h"

#include "core/PathChecks.h"
#include "core/PluginList.h"
#include "core/PluginMetadata.h"
#include "library/FormatTraits.h"

#include <QStringBuilder>
#include <algorithm>
#include <cerrno>
#include <cstring>

namespace korvane {

namespace {

QString folderOf(const QString &path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

} // namespace

MovePlanner::MovePlanner(FileOperations &files, const FormatTraits &traits, const PluginList &list,
                         const Locations &locations)
    : m_files(files), m_traits(traits), m_list(list), m_guard(traits, locations)
{
    const QList<PluginRecord> &records = list.records();
    m_installed.reserve(records.size());
    for (const PluginRecord &record : records)
        m_installed.insert(record.folder() % QLatin1Char('/') % record.name());
}

const char *MovePlanner::reasonOf(MoveVerdict verdict)
{
    switch (verdict) {
    case MoveVerdict::OnePlace:
        return QT_TRANSLATE_NOOP(
            "korvane", "The source and the target are one and the same; nothing was moved");
    case MoveVerdict::OtherCopy:
        return QT_TRANSLATE_NOOP("korvane", "Another installed copy of the plug-in lies there; "
                                            "both copies are kept");
    case MoveVerdict::Unwritable: // only a check, in KorvaneCMD's English, gives this one
        return "The folder cannot be changed (no write access, locked or read-only)";
    case MoveVerdict::NoItem:
        return QT_TRANSLATE_NOOP("korvane", "No plug-in matches the pending change");
    default:
        return "";
    }
}

PlannedMove MovePlanner::pending(int recordIndex) const
{
    const PluginRecord &record = m_list.records().at(recordIndex);
    PlannedMove move;
    move.record = recordIndex;
    move.name = record.name();
    move.from = record.folder() % QLatin1Char('/') % record.name();
    const int row = m_list.findRow(record.name(), record.id());
    if (row >= 0) {
        move.item = m_list.at(row);
        move.to = move.item->location() % QLatin1Char('/') % move.item->name();
        move.enabled = move.item->isActive();
    }
    return move;
}

std::optional<FileIdentity> MovePlanner::folderIdentity(const QString &folder)
{
    if (const auto known = m_identities.constFind(folder); known != m_identities.cend())
        return *known;
    // A folder not there yet is looked for again next time.
    const std::optional<FileIdentity> found = m_files.identity(folder, true);
    if (found)
        m_identities.insert(folder, *found);
    return found;
}

void MovePlanner::refuse(PlannedMove &move, MoveVerdict verdict, const QString &at)
{
    move.verdict = verdict;
    move.error = {at, QString::fromUtf8(reasonOf(verdict))};
}

bool MovePlanner::passesTheWay(PlannedMove &move)
{
    // The scan keeps items and records in step; a record without its item cannot be applied.
    if (!move.item) {
        refuse(move, MoveVerdict::NoItem, move.from);
        return false;
    }
    // The distribution's folders are not ours to change: refused before anything else is asked.
    const QString fromFolder = m_list.records().at(move.record).folder();
    if (const QString refusal =
            m_guard.refusal(move.name, fromFolder, move.item->location(),
                            move.item->metadata() ? move.item->metadata()->package : QString());
        !refusal.isEmpty()) {
        move.verdict = MoveVerdict::Distribution;
        move.error = {move.from, refusal};
        return false;
    }
    // A " (Disabled)" folder that is a link to the active one, or a bind mount of it, holds the
    // plug-in already: whatever lies at the target would be the plug-in itself.
    const std::optional<FileIdentity> sourceFolder = folderIdentity(folderOf(move.from));
    const std::optional<FileIdentity> targetFolder = folderIdentity(folderOf(move.to));
    if (sourceFolder && targetFolder && sourceFolder->isSameItem(*targetFolder)) {
        refuse(move, MoveVerdict::OnePlace, folderOf(move.to));
        return false;
    }
    // Below the format's folder a plug-in moves only through real folders: a link on the way
    // would carry it out of the folders altogether.
    if (std::optional<FileError> step = stepOffTheWay(m_files, fromFolder, move.from, false)) {
        move.verdict = MoveVerdict::StepOffTheWay;
        move.error = std::move(*step);
        return false;
    }
    return true;
}

void MovePlanner::judgeTarget(PlannedMove &move)
{
    // What lies at the target may be the source itself by another way (a link, a hard link): it
    // is neither replaced nor taken for an identical copy.
    const std::optional<FileIdentity> there = m_files.identity(move.to, false);
    const std::optional<FileIdentity> here = m_files.identity(move.from, false);
    if (there && here && here->isSameItem(*there))
        return refuse(move, MoveVerdict::OnePlace, move.to);
    // Two copies of one plug-in (system and user folder, or a set naming both) can be marked so
    // that one goes where the other lies; making room would delete the other copy.
    const bool scannedThere = m_installed.contains(move.to);
    // An identical copy already where the plug-in belongs (one copied there by hand, or what an
    // older version left when cut short) makes this one surplus: it goes to the trash.
    if (scannedThere && m_files.holdsAllOf(move.to, move.from)
        && m_files.holdsAllOf(move.from, move.to)) {
        move.verdict = MoveVerdict::TrashIdentical;
        return;
    }
    // A copy that came after the scan and is one of the format's plug-ins is installed as much
    // as any the scan found: never made room for.
    const bool otherCopy =
        scannedThere
        || (there && there->isFolder
            && std::any_of(m_installed.cbegin(), m_installed.cend(),
                           [&](const QString &path) { return liesInside(path, move.to); }))
        || (there
            && m_traits.recognise(m_traits.recognitionTakesFullPath ? move.to : move.name,
                                  nullptr));
    if (otherCopy)
        return refuse(move, MoveVerdict::OtherCopy, move.to);
    // Whatever lies at the target may be the only copy left: without a source, nothing makes
    // room, and the move fails on the missing source.
    if (!here) {
        move.verdict = MoveVerdict::SourceGone;
        move.error = {move.from, QString::fromLocal8Bit(std::strerror(ENOENT)), ENOENT};
        return;
    }
    move.verdict = there ? MoveVerdict::TrashInTheWay : MoveVerdict::Move;
}

void MovePlanner::moved(const PlannedMove &move)
{
    m_installed.remove(move.from);
    m_installed.insert(move.to);
}

QString MovePlanner::unwritableFolder(const QString &from, const QString &to) const
{
    if (!m_files.isWritable(folderOf(from)))
        return folderOf(from);
    QString target = folderOf(to);
    while (!target.isEmpty() && !m_files.exists(target))
        target = folderOf(target);
    return target.isEmpty() || m_files.isWritable(target) ? QString() : target;
}

void MovePlanner::judge(PlannedMove &move)
{
    if (!passesTheWay(move))
        return;
    judgeTarget(move);
    // The trash takes an identical copy out of its own folder; every other move changes both
    // folders.
    if (move.verdict == MoveVerdict::TrashIdentical) {
        if (!m_files.isWritable(folderOf(move.from)))
            refuse(move, MoveVerdict::Unwritable, folderOf(move.from));
    } else if (move.moves()) {
        const QString unwritable = unwritableFolder(move.from, move.to);
        if (!unwritable.isEmpty())
            refuse(move, MoveVerdict::Unwritable, unwritable);
    }
}

QList<PlannedMove> MovePlanner::forecast()
{
    QList<PlannedMove> plan;
    const QList<PluginRecord> &records = m_list.records();
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (records.at(i).isProcessed())
            continue;
        PlannedMove move = pending(int(i));
        judge(move);
        if (move.moves())
            moved(move);
        plan << move;
    }
    return plan;
}

} // namespace korvane
