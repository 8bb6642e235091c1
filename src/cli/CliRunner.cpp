#include "cli/CliRunner.h"

#include "cli/CliSession.h"
#include "cli/TextTable.h"
#include "managers/SetDocument.h"
#include "platform/Locations.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTextStream>

namespace korvane {

namespace {

QString onOff(bool active)
{
    return active ? QStringLiteral("on") : QStringLiteral("off");
}

QString scope(bool global)
{
    return global ? QStringLiteral("system") : QStringLiteral("user");
}

QString fullPath(const AUItem &item)
{
    return item.getAULocation() + QLatin1Char('/') + item.getAUName();
}

// "Foo.component" and "Foo" both name Foo.component; a folder part stays ("Sub/Foo").
bool namesItem(const QString &name, const AUItem &item)
{
    const QString itemName = item.getAUName();
    if (itemName == name)
        return true;
    const qsizetype dot = itemName.lastIndexOf(QLatin1Char('.'));
    return dot > itemName.lastIndexOf(QLatin1Char('/')) + 1 && itemName.left(dot) == name;
}

} // namespace

CliRunner::CliRunner(QTextStream &out, QTextStream &err) : m_out(out), m_err(err) {}

int CliRunner::run(const Options &options)
{
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
    case Options::Apply: return applySets(session, options);
    case Options::List: return list(session, options);
    case Options::Enable: return switchNamed(session, options, true);
    case Options::Disable: return switchNamed(session, options, false);
    case Options::Duplicates: return duplicates(session, options);
    case Options::SaveSet: return saveSet(session, options);
    case Options::ShowSet: return showSet(options);
    default: return ExitUsage;
    }
}

int CliRunner::applySets(CliSession &session, const Options &options)
{
    std::array<QString, TypeCount> paths;
    for (int type = 0; type < TypeCount; ++type) {
        if (options.sets[type].isEmpty())
            continue;
        paths[type] = CliSession::resolvePath(options.sets[type]);
        if (!SetDocument::isReadable(paths[type]))
            return usageError(QStringLiteral("%1 set \"%2\" is missing or not a set document")
                                  .arg(formatName(type), options.sets[type]));
    }

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
        keepInstalledCopies(manager);
        status = qMax(status, report(manager->applyAllPending()));
    }
    return status;
}

int CliRunner::list(CliSession &session, const Options &options)
{
    session.startControllers();
    QJsonArray array;
    TextTable table;
    for (int type : formats(options)) {
        TypeManager *manager = TypeManager::forType(type);
        manager->reloadData();
        for (const AUItemPtr &item : std::as_const(manager->plugins)) {
            const QString group = item->getAUGroup();
            if (options.json) {
                array.append(QJsonObject{{QStringLiteral("format"), formatName(type)},
                                         {QStringLiteral("name"), item->getAUName()},
                                         {QStringLiteral("location"), item->getAULocation()},
                                         {QStringLiteral("global"), item->getAUGlobal()},
                                         {QStringLiteral("active"), item->getAUActive()},
                                         {QStringLiteral("group"), group},
                                         {QStringLiteral("architecture"), item->getPlattformIdent()}});
            } else {
                table.addRow({formatName(type), onOff(item->getAUActive()), scope(item->getAUGlobal()),
                              group.isEmpty() ? QStringLiteral("-") : group, item->getPlattformIdent(),
                              fullPath(*item)});
            }
        }
    }
    if (options.json)
        printJson(array);
    else
        table.print(m_out);
    return ExitDone;
}

int CliRunner::switchNamed(CliSession &session, const Options &options, bool on)
{
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
            m_err << QStringLiteral("KorvaneCMD: no %1 plug-in named \"%2\"\n").arg(formatName(options.format), name);
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
    keepInstalledCopies(manager);
    return report(manager->applyAllPending());
}

int CliRunner::duplicates(CliSession &session, const Options &options)
{
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

int CliRunner::saveSet(CliSession &session, const Options &options)
{
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

int CliRunner::showSet(const Options &options)
{
    const QString path = CliSession::resolvePath(options.file);
    if (!SetDocument::isReadable(path))
        return usageError(QStringLiteral("\"%1\" is missing or not a set document").arg(options.file));

    QJsonArray array;
    TextTable table;
    for (const AUItemPtr &item : SetDocument::read(path)) {
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

void CliRunner::keepInstalledCopies(TypeManager *manager)
{
    // Items match set entries by name alone, so a set holding two copies of one name sends the
    // first copy to the second's place; the move would delete the second copy to make room.
    const int type = manager->typeIndex();
    QSet<QString> installed;
    for (const AULog &record : std::as_const(manager->log))
        installed.insert(record.getLogPath() + QLatin1Char('/') + record.getLogName());

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

        m_err << QStringLiteral("warning: %1 \"%2\" stays in \"%3\": another copy lies at \"%4\"\n")
                     .arg(formatName(type), item->getAUName(), record.getLogPath(), target);
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
}

int CliRunner::usageError(const QString &message)
{
    m_err << "KorvaneCMD: " << message << '\n';
    m_err.flush();
    return ExitUsage;
}

int CliRunner::report(const QList<MoveOutcome> &outcomes)
{
    int status = ExitDone;
    for (const MoveOutcome &outcome : outcomes) {
        if (outcome.ok) {
            m_out << (outcome.enabled ? "enabled " : "disabled ") << outcome.name << '\n';
            continue;
        }
        status = ExitMoveFailed;
        QString line = QStringLiteral("error: could not %1 \"%2\": \"%3\" -> \"%4\": %5")
                           .arg(outcome.enabled ? QStringLiteral("enable") : QStringLiteral("disable"),
                                outcome.name, outcome.from, outcome.to, outcome.error.reason);
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

void CliRunner::printJson(const QJsonArray &array)
{
    m_out << QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
    m_out.flush();
}

QList<int> CliRunner::formats(const Options &options)
{
    if (options.format >= 0)
        return {options.format};
    return {TypeAU, TypeRTAS, TypeMAS, TypeVST};
}

int run(const Options &options, QTextStream &out, QTextStream &err)
{
    return CliRunner(out, err).run(options);
}

} // namespace korvane
