#pragma once

#include <QObject>
#include <QString>
#include <array>

namespace korvane {

// The launch-script generator: an AppleScript that runs the bundle's KorvaneCMD with the sets
// selected in the chosen formats' managers, then brings Logic Pro to the front.
class LumoScript : public QObject {
    Q_OBJECT
public:
    static LumoScript *getLumoScript();
    static void install(LumoScript *script);

    // $KORVANE_BUNDLE, else the application's folder, else the current folder.
    static QString bundlePath();

    void openScriptWindow(); // builds silently, then shows the panel
    void changeArgument();   // the segments changed: rebuild, telling about types without a set
    void saveScript();       // asks for a file name, then savePanelDidEnd
    void savePanelDidEnd(int returnCode, const QString &path);

    // sctrlType: one independently selectable segment per format, by type index.
    bool isSegmentSelected(int segment) const;
    void setSegmentSelected(int segment, bool selected); // state only, as a click leaves it
    QString script() const { return teScript; }
    void setScript(const QString &text); // the user edited the text view
    bool isWindowVisible() const { return m_visible; }

signals:
    void scriptChanged();
    void segmentsChanged();
    void windowShown();

private:
    void build(bool tell);

    std::array<bool, 4> sctrlType{};
    QString teScript;
    bool m_visible = false;
};

} // namespace korvane
