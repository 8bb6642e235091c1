#pragma once

#include "core/Plugin.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

class QFormLayout;
class QLabel;
class QPushButton;

namespace korvane {

class FormatManager;

// Beside the table: what Korvane knows of the selected plug-in, as plain text (names and
// identifiers come from the plug-ins' own files): name, vendor, version, identifiers,
// architectures, package, the plug-ins inside a bundle, where it lies, its companion content, why
// its files cannot be read, and a button that shows its folder in the desktop's file manager.
class DetailsPane : public QWidget {
    Q_OBJECT
public:
    explicit DetailsPane(QWidget *parent = nullptr);

    // The plug-in to show (none: the pane says nothing is selected). formats: every format its
    // product is installed in, where the all-formats view knows it.
    void showPlugin(FormatManager *manager, const PluginPtr &item, const QStringList &formats = {});
    PluginPtr plugin() const { return m_item; }
    // Shown again from what the plug-in says now (a mark, a rescan).
    void refresh();

    // A field by its English label ("Vendor"), for tests; null for none.
    QLabel *field(const QString &label) const;
    bool isFieldShown(const QString &label) const;
    QPushButton *showButton() const { return m_show; }

private:
    QLabel *addField(const char *label);
    void setField(const char *label, const QString &text);

    QPointer<FormatManager> m_manager;
    PluginPtr m_item;
    QStringList m_formats;
    QLabel *m_empty = nullptr;
    QWidget *m_body = nullptr;
    QWidget *m_scroll = nullptr;
    QFormLayout *m_form = nullptr;
    QLabel *m_contentHeading = nullptr;
    QLabel *m_content = nullptr;
    QPushButton *m_show = nullptr;
    QList<QPair<const char *, QLabel *>> m_fields;
};

} // namespace korvane
