#pragma once

#include "core/Plugin.h"
#include "library/FormatSettings.h"
#include "library/FormatTraits.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace korvane {

class FormatManager;
struct FileError;
struct ManagerParts;

// The set pop-up of one format manager: the known set documents, the one selected, the name in
// the set field and whether the list changed since the set was loaded; saving, opening and
// loading documents. A loaded set is merged into the manager's list and, when the preferences
// say so, applied.
class SetController : public QObject {
    Q_OBJECT
public:
    SetController(FormatManager &manager, const FormatTraits &traits, const ManagerParts &parts);

    // The pop-up's first title, for no set at all, as the sets file stores it; also what the
    // preferences keep as the default set when none is chosen.
    static QString noSetTitle();
    // The same entry as a person sees it, in their language.
    static QString shownNoSetTitle();

    void loadSetList(); // the set pop-up from the sets file, the window-load name, apply off
    void saveSetList();
    void newSet();
    // Each true when the set is on disk; a failure is said and changes nothing else.
    bool saveSet();   // to the current name; an untitled set asks for one (saveSetAs)
    bool saveSetAs(); // asks for a name, then saveSetAs(path), asking again after a failure
    bool saveSetAs(const QString &path);
    void openSet(); // asks for a document, then openSet(path)
    void openSet(const QString &path);
    void openDefaultSet(const QString &path);
    // Merges the document into the list, asks about what it names that is missing, and applies
    // when the preferences say so.
    void loadSet(const QString &path);
    // The merge of loadSet alone: no dialog, no apply; the names of saved items that match none.
    QStringList mergeSet(const QString &path);
    // Merges saved entries into the list; the names of saved items that match none.
    QStringList mergeEntries(const QList<PluginPtr> &saved);
    void selectSet(int index); // the pop-up's action with its new selection
    bool offerToSaveSet();     // Save / Don't Save / Cancel; false: Cancel
    void forgetSetEdits();     // Don't Save: the set is no longer the one shown
    bool writeSet(const QString &path, FileError *error = nullptr) const;

    QString selectedSet() const; // null for "no set"
    QString currentSetName() const { return m_setName; }
    QStringList setTitles() const { return m_setTitles; }
    int selectedSetIndex() const { return m_selectedSetIndex; }
    void selectSetIndex(int index); // selection only, no action
    bool isSetChanged() const { return m_setChanged; }
    // A plug-in of the list was changed by hand: a selected set now differs from its document.
    void noteItemChanged();

signals:
    void currentSetNameChanged(const QString &name);
    void setsChanged();

private:
    void setCurrentSetName(const QString &name);

    FormatManager &m_manager;
    const FormatTraits &m_traits;
    const ManagerParts &m_parts;
    bool m_setChanged = false;
    QString m_setName;
    QStringList m_setTitles{noSetTitle()};
    int m_selectedSetIndex = 0;
};

} // namespace korvane
