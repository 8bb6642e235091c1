#pragma once

#include <QWidget>
#include <memory>

class QLabel;
class QListWidget;
class QPushButton;

namespace korvane {

class Plugin;
class InfoPanelModel;

// The info panel: name, version and info string of one plug-in, and, where the preferences allow
// it, its companion folders with Add and Remove. It shows whatever InfoPanelModel holds; while it
// is open InfoPanelModel follows the table selection, so the panel does too.
class InfoPanel : public QWidget {
    Q_OBJECT
public:
    explicit InfoPanel(InfoPanelModel &info, QWidget *parent = nullptr);

    QLabel *nameField() const { return m_name; }
    QLabel *versionField() const { return m_version; }
    QLabel *infoField() const { return m_info; }
    QListWidget *contentList() const { return m_content; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void refresh();

    InfoPanelModel &m_model;
    QLabel *m_name = nullptr;
    QLabel *m_version = nullptr;
    QLabel *m_info = nullptr;
    QWidget *m_contentBox = nullptr;
    QListWidget *m_content = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
    std::weak_ptr<Plugin> m_shown;
};

} // namespace korvane
