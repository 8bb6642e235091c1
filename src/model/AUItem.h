#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <array>
#include <memory>

namespace korvane {

class AppServices;
struct ArchivedObject;

// One installed plug-in of any format: where it lies, whether it is on, its group, its companion
// content and the architecture of its executable.
class AUItem {
public:
    // The registry gives an item its group names, its content list and its folders; an item
    // without one (decoded for display only) has no group, no content and keeps its location.
    explicit AUItem(AppServices *registry = nullptr) : m_registry(registry) {}
    AppServices *registry() const { return m_registry; }

    QString getAUName() const { return AUName; }
    void setAUName(const QString &name); // also looks its content up (checkContent)
    QString getAULocation() const { return AULocation; }
    void setAULocation(const QString &location) { AULocation = location; }
    bool getAUGlobal() const { return bAUGlobal; }
    void setAUGlobal(bool global) { bAUGlobal = global; }
    bool getAUActive() const { return bAUActive; }
    void setAUActive(bool active) { bAUActive = active; }
    bool getSelected() const { return bSelected; }
    void setSelected(bool selected) { bSelected = selected; }
    int getItemID() const { return nItemID; }
    void setItemID(int id) { nItemID = id; }
    int getGroupID() const { return nGroupID; }
    bool groupIDEqualTo(int id) const { return nGroupID == id; }
    bool hasContent() const { return bContent; }
    int getPlattform() const { return nPlattform; }
    void setPlattformCode(int code) { nPlattform = code; }

    // The icon is the file's own; the core keeps the path it stands for, the GUI draws it.
    void initAUIcon();
    QString getAUIcon() const { return AUIcon; }

    // Group by name into the global list; getAUGroup reads the list at the stored position, so a
    // renamed group renames every member. A position past the end reads as no group.
    void setAUGroup(const QString &group);
    QString getAUGroup() const;

    bool compareObject(const AUItem &other) const { return AUName == other.AUName; }
    // Recomputes the location from the type's folder table and the two flags.
    void checkObject(int type);
    // The same from the type's four folders by location code, expanded once by a caller that
    // places many items.
    void checkObject(const std::array<QString, 4> &folders);

    void checkContent();
    int getContentMaxIndex() const;
    QString getContentByIndex(int i) const;
    void addContent(const QString &entry);
    void removeContent(int i);
    void replaceContent(const QString &entry, int i);
    QStringList contentList() const { return pContent; }

    // Architecture of the executable of the bundle at path (see MachOHeader); a path that is not a
    // bundle reads as PPC.
    void setPlattform(const QString &path);
    void setAUType(const QString &path) { setPlattform(path); }
    QString getPlattformIdent() const;
    QString getAUType() const { return getPlattformIdent(); }
    static QString plattformIdent(int code);

    // The archive form: name, location, then "YES"/"NO" for global and active.
    QStringList encodeWithCoder() const;
    // Rebuilds an item from the four decoded objects; a flag is YES only for the string "YES",
    // a missing or non-string object counts as NO. Null when name or location is not a string.
    static std::shared_ptr<AUItem>
    initWithCoder(const QList<std::shared_ptr<ArchivedObject>> &objects,
                  AppServices *registry = nullptr);

private:
    void saveContent();

    AppServices *m_registry = nullptr;
    QString AUName;
    QString AULocation;
    QString AUGroup;
    QString AUIcon;
    int nGroupID = 0;
    bool bAUGlobal = false;
    bool bAUActive = false;
    bool bContent = false;
    bool bSelected = false;
    QStringList pContent; // empty: no list
    int nItemID = 0;
    int nPlattform = 0;
};

using AUItemPtr = std::shared_ptr<AUItem>;

} // namespace korvane
