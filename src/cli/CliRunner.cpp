#include "cli/CliRunner.h"

#include "cli/CliSession.h"
#include "cli/TextTable.h"
#include "managers/SetDocument.h"
#include "platform/Locations.h"
#include "platform/ReadOnlyFileOperations.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTextStream>

#include <list>
#include <map>

namespace korvane {

namespace {

QString onOff(bool active) {
    return active ? QStringLiteral("on") : QStringLiteral("off");
}

QString scope(bool global) {
    return global ? QStringLiteral("system") : QStringLiteral("user");
}

QString fullPath(const AUItem &item) {
    return item.getAULocation() + QLatin1Char('/') + item.getAUName();
}

// "Foo.component" and "Foo" both name Foo.component; a folder part stays ("Sub/Foo").
bool namesItem(const QString &name, const AUItem &item) {
    const QString itemName = item.getAUName();
    if (itemName == name)
        return true;
    const qsizetype dot = itemName.lastIndexOf(QLatin1Char('.'));
    return dot > itemName.lastIndexOf(QLatin1Char('/')) + 1 && itemName.left(dot) == name;
}

// The location code of the folder that holds name at path; -1 for none of the format's four.
int locationOf(int type, const QString &path, const QString &name) {
    const QString folder = path.left(path.size() - name.size() - 1);
    for (int loc = LocSystemActive; loc <= LocUserDisabled; ++loc)
        if (Locations::folderPath(type, loc) == folder)
            return loc;
    return -1;
}

// What a move from one folder of the format to another does, as done and as wanted:
// "enabled"/"enable", "disabled", "moved to system", "moved to user", or a state and a place
// joined by "and". Paths outside the four folders go by enabledFallback.
std::pair<QString, QString> moveWords(int type, const QString &from, const QString &to,
                                      const QString &name, bool enabledFallback = true) {
    const int source = locationOf(type, from, name);
    const int target = locationOf(type, to, name);
    if (source < 0 || target < 0)
        return enabledFallback ? std::pair(QStringLiteral("enabled"), QStringLiteral("enable"))
                               : std::pair(QStringLiteral("disabled"), QStringLiteral("disable"));
    const bool wasActive = source == LocSystemActive || source == LocUserActive;
    const bool isActive = target == LocSystemActive || target == LocUserActive;
    const bool wasSystem = source == LocSystemActive || source == LocSystemDisabled;
    const bool isSystem = target == LocSystemActive || target == LocSystemDisabled;
    QStringList done, wanted;
    if (wasActive != isActive) {
        done << (isActive ? QStringLiteral("enabled") : QStringLiteral("disabled"));
        wanted << (isActive ? QStringLiteral("enable") : QStringLiteral("disable"));
    }
    if (wasSystem != isSystem || done.isEmpty()) {
        done << (isSystem ? QStringLiteral("moved to system") : QStringLiteral("moved to user"));
        wanted << (isSystem ? QStringLiteral("move to system") : QStringLiteral("move to user"));
    }
    return {done.join(QStringLiteral(" and ")), wanted.join(QStringLiteral(" and "))};
}

} // namespace

CliRunner::CliRunner(QTextStream &out, QTextStream &err) : m_out(out), m_err(err) {}

int CliRunner::run(const Options &options) {
    if (options.command == Options::Help) {
        m_out << helpText();
        m_out.flush();
        return ExitDone;
    }
    if (options.command == Options::Version) {
        m_out << versionText() << '\n';
        m_out.flush();
        return ExitDone;
    }
    // A mistyped root would otherwise be scanned as empty and get fresh folders made in it.
    if (!options.root.isEmpty() && !QFileInfo(options.root).isDir())
        return usageError(QStringLiteral("--root: no folder \"%1\"").arg(options.root));
    if (!options.home.isEmpty() && !QFileInfo(options.home).isDir())
        return usageError(QStringLiteral("--home: no folder \"%1\"").arg(options.home));

    CliSession session(options, m_err);
    switch (options.command) {
    case Options::Apply:
        return applySets(session, options);
    case Options::List:
        return list(session, options);
    case Options::Enable:
        return switchNamed(session, options, true);
    case Options::Disable:
        return switchNamed(session, options, false);
    case Options::Duplicates:
        return duplicates(session, options);
    case Options::SaveSet:
        return saveSet(session, options);
    case Options::ShowSet:
        return showSet(options);
    default:
        return ExitUsage;
    }
}

int CliRunner::applySets(CliSession &session, const Options &options) {
    // Each document is read once, before anything is locked or changed: a pipe gives its bytes
    // only once, and a bad document must stop the run while nothing has happened yet.
    std::array<QString, TypeCount> paths;
    std::map<QString, QList<AUItemPtr>> documents;
    {
        const ReadOnlyScope readOnly;
        for (int type = 0; type < TypeCount; ++type) {
            if (options.sets[type].isEmpty())
                continue;
            paths[type] = CliSession::resolvePath(options.sets[type]);
            if (documents.count(paths[type]))
                continue;
            QString problem;
            std::optional<QList<AUItemPtr>> items = SetDocument::load(paths[type], &problem);
            if (!items)
                return usageError(QStringLiteral("%1 set \"%2\": %3")
                                      .arg(formatName(type), options.sets[type], problem));
            documents[paths[type]] = *items;
        }
    }
    std::list<PinnedSetDocument> pinned;
    for (const auto &[path, items] : documents)
        pinned.emplace_back(path, items);

    if (!lockLibrary(session))
        return ExitMoveFailed;
    session.startControllers();
    int status = ExitDone;
    for (int type = 0; type < TypeCount; ++type) {
        if (paths[type].isEmpty())
            continue;
        TypeManager *manager = TypeManager::forType(type);
        manager->reloadData();
        for (const QString &name : manager->mergeSet(paths[type]))
            m_err << QStringLiteral("warning: %1 set \"%2\": no installed plug-in \"%3\"\n")
                         .arg(formatName(type), options.sets[type], name);
        m_err.flush();
        if (keepInstalledCopies(manager) > 0)
            status = ExitMoveFailed;
        status = qMax(status, report(type, manager->applyAllPending()));
    }
    return status;
}

int CliRunner::list(CliSession &session, const Options &options) {
    session.startControllers();
    QJsonArray array;
    TextTable table;
    for (int type : formats(options)) {
        TypeManager *manager = TypeManager::forType(type);
        manager->reloadData();
        for (const AUItemPtr &item : std::as_const(manager->plugins)) {
            const QString group = item->getAUGroup();
            if (options.json) {
                array.append(
                    QJsonObject{{QStringLiteral("format"), formatName(type)},
                                {QStringLiteral("name"), item->getAUName()},
                                {QStringLiteral("location"), item->getAULocation()},
                                {QStringLiteral("global"), item->getAUGlobal()},
                                {QStringLiteral("active"), item->getAUActive()},
                                {QStringLiteral("group"), group},
                                {QStringLiteral("architecture"), item->getPlattformIdent()}});
            } else {
                table.addRow({formatName(type), onOff(item->getAUActive()),
                              scope(item->getAUGlobal()),
                              group.isEmpty() ? QStringLiteral("-") : group,
                              item->getPlattformIdent(), fullPath(*item)});
            }
        }
    }
    if (options.json)
        printJson(array);
    else
        table.print(m_out);
    return ExitDone;
}

int CliRunner::switchNamed(CliSession &session, const Options &options, bool on) {
    if (!lockLibrary(session))
        return ExitMoveFailed;
    session.startControllers();
    TypeManager *manager = TypeManager::forType(options.format);
    manager->reloadData();

    // Every name is checked before anything moves: a typo must not leave half a change behind.
    QList<AUItemPtr> targets;
    QStringList unknown;
    for (const QString &name : options.names) {
        bool found = false;
        for (const AUItemPtr &item : std::as_const(manager->plugins)) {
            if (namesItem(name, *item)) {
                targets << item;
                found = true;
            }
        }
        if (!found)
            unknown << name;
    }
    if (!unknown.isEmpty()) {
        for (const QString &name : std::as_const(unknown))
            m_err << QStringLiteral("KorvaneCMD: no %1 plug-in named \"%2\"\n")
                         .arg(formatName(options.format), name);
        m_err << "KorvaneCMD: nothing changed\n";
        m_err.flush();
        return ExitUsage;
    }

    for (const AUItemPtr &item : std::as_const(targets)) {
        if (item->getAUActive() == on)
            continue;
        item->setAUActive(on);
        item->checkObject(options.format);
        manager->checkLogForUpdate(item);
    }
    const int blocked = keepInstalledCopies(manager);
    const int status = report(options.format, manager->applyAllPending());
    return blocked > 0 ? int(ExitMoveFailed) : status;
}

int CliRunner::duplicates(CliSession &session, const Options &options) {
    session.startControllers();
    QJsonArray array;
    TextTable table;
    for (int type : formats(options)) {
        TypeManager *manager = TypeManager::forType(type);
        manager->reloadData();
        for (const auto &[name, count] : TypeManager::duplicateNames(manager->plugins)) {
            if (options.json)
                array.append(QJsonObject{{QStringLiteral("format"), formatName(type)},
                                         {QStringLiteral("name"), name},
                                         {QStringLiteral("count"), count}});
            else
                table.addRow({formatName(type), QString::number(count), name});
        }
    }
    if (options.json)
        printJson(array);
    else
        table.print(m_out);
    return ExitDone;
}

int CliRunner::saveSet(CliSession &session, const Options &options) {
    session.startControllers();
    TypeManager *manager = TypeManager::forType(options.format);
    manager->reloadData();
    const QString path = CliSession::resolvePath(options.file);
    if (!SetDocument::write(path, manager->plugins)) {
        m_err << QStringLiteral("KorvaneCMD: could not write \"%1\"\n").arg(path);
        m_err.flush();
        return ExitMoveFailed;
    }
    return ExitDone;
}

int CliRunner::showSet(const Options &options) {
    QString problem;
    const std::optional<QList<AUItemPtr>> items =
        SetDocument::load(CliSession::resolvePath(options.file), &problem);
    if (!items)
        return usageError(QStringLiteral("\"%1\": %2").arg(options.file, problem));

    QJsonArray array;
    TextTable table;
    for (const AUItemPtr &item : *items) {
        if (options.json)
            array.append(QJsonObject{{QStringLiteral("name"), item->getAUName()},
                                     {QStringLiteral("location"), item->getAULocation()},
                                     {QStringLiteral("global"), item->getAUGlobal()},
                                     {QStringLiteral("active"), item->getAUActive()}});
        else
            table.addRow({onOff(item->getAUActive()), scope(item->getAUGlobal()), fullPath(*item)});
    }
    if (options.json)
        printJson(array);
    else
        table.print(m_out);
    return ExitDone;
}

int CliRunner::keepInstalledCopies(TypeManager *manager) {
    // Items match set entries by name alone, so a set holding two copies of one name sends the
    // first copy to the second's place; the move would delete the second copy to make room.
    const int type = manager->typeIndex();
    QSet<QString> installed;
    for (const AULog &record : std::as_const(manager->log))
        installed.insert(record.getLogPath() + QLatin1Char('/') + record.getLogName());

    int blocked = 0;
    for (const AULog &record : std::as_const(manager->log)) {
        if (record.isLogProcessed())
            continue;
        const int index = manager->findItemIndex(record.getLogName(), record.getLogID());
        if (index < 0)
            continue;
        const AUItemPtr item = manager->plugins.at(index);
        const QString source = record.getLogPath() + QLatin1Char('/') + record.getLogName();
        const QString target = fullPath(*item);
        if (target == source || !installed.contains(target))
            continue;

        ++blocked;
        m_err << QStringLiteral(
                     "error: could not %1 \"%2\": \"%3\" -> \"%4\": another copy lies there\n")
                     .arg(moveWords(type, source, target, item->getAUName()).second,
                          item->getAUName(), source, target);
        for (int loc = LocSystemActive; loc <= LocUserDisabled; ++loc) {
            if (Locations::folderPath(type, loc) == record.getLogPath()) {
                item->setAUGlobal(loc == LocSystemActive || loc == LocSystemDisabled);
                item->setAUActive(loc == LocSystemActive || loc == LocUserActive);
            }
        }
        item->setAULocation(record.getLogPath());
        manager->checkLogForUpdate(item);
    }
    m_err.flush();
    return blocked;
}

bool CliRunner::lockLibrary(CliSession &session) {
    QString failure;
    if (session.lockLibrary(&failure))
        return true;
    m_err << "KorvaneCMD: nothing moved: " << failure << '\n';
    m_err.flush();
    return false;
}

int CliRunner::usageError(const QString &message) {
    m_err << "KorvaneCMD: " << message << '\n';
    m_err.flush();
    return ExitUsage;
}

int CliRunner::report(int type, const QList<MoveOutcome> &outcomes) {
    int status = ExitDone;
    for (const MoveOutcome &outcome : outcomes) {
        const auto [done, wanted] =
            moveWords(type, outcome.from, outcome.to, outcome.name, outcome.enabled);
        if (outcome.ok) {
            m_out << done << ' ' << outcome.name << '\n';
            continue;
        }
        status = ExitMoveFailed;
        QString line =
            QStringLiteral("error: could not %1 \"%2\": \"%3\" -> \"%4\": %5")
                .arg(wanted, outcome.name, outcome.from, outcome.to, outcome.error.reason);
        // The failing path is usually one of the two; name it when it is something else.
        const QString &at = outcome.error.path;
        if (!at.isEmpty() && at != outcome.from && at != outcome.to)
            line += QStringLiteral(" (at \"%1\")").arg(at);
        m_err << line << '\n';
    }
    m_out.flush();
    m_err.flush();
    return status;
}

void CliRunner::printJson(const QJsonArray &array) {
    m_out << QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
    m_out.flush();
}

QList<int> CliRunner::formats(const Options &options) {
    if (options.format >= 0)
        return {options.format};
    return {TypeAU, TypeRTAS, TypeMAS, TypeVST};
}

int run(const Options &options, QTextStream &out, QTextStream &err) {
    return CliRunner(out, err).run(options);
}

} // namespace korvane
