#pragma once

#include "gui/table/PluginFilter.h"

#include <QList>
#include <QPair>
#include <QWidget>

class QCheckBox;
class QComboBox;

namespace korvane {

// The quick filters beside the search: on or off, system or user, an architecture the binary
// holds, the plug-ins that cannot be read, and the format where a list holds several (hidden
// until it is given formats). Each change is announced; the bar holds no rows.
class QuickFilterBar : public QWidget {
    Q_OBJECT
public:
    // prefix names the controls apart per format ("pbStateVST").
    explicit QuickFilterBar(const QString &prefix, QWidget *parent = nullptr);

    QComboBox *stateFilter() const { return m_state; }               // on and off, on, off
    QComboBox *placeFilter() const { return m_place; }               // system and user, ...
    QComboBox *architectureFilter() const { return m_architecture; } // any, then each one
    QCheckBox *unreadableFilter() const { return m_unreadable; }
    QComboBox *formatFilter() const { return m_format; } // all formats, then each one

    // The architectures to offer; a choice still among them stays chosen, else "any" is.
    void setArchitectures(const QStringList &architectures);
    // The formats to offer, as type and label; none hides the format filter.
    void setFormats(const QList<QPair<int, QString>> &formats);

    // filter with the bar's choices in place of its own (the search text stays filter's).
    PluginFilter applied(PluginFilter filter) const;
    // The controls in the order Tab visits them.
    QList<QWidget *> focusOrder() const;

signals:
    void changed();

private:
    QComboBox *m_state = nullptr;
    QComboBox *m_place = nullptr;
    QComboBox *m_architecture = nullptr;
    QCheckBox *m_unreadable = nullptr;
    QComboBox *m_format = nullptr;
};

} // namespace korvane
