#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <functional>

namespace korvane {

// The program's one undo history. Every registration made outside undo and redo is one
// undoable step; what an undo registers becomes the redo, and what a redo registers the undo.
class UndoStack : public QObject {
    Q_OBJECT
public:
    explicit UndoStack(QObject *parent = nullptr);

    // Records the inverse of a change; target identifies who made it (removeActionsOf).
    void registerUndo(const void *target, std::function<void()> inverse);
    // Names the step on top of the stack being recorded into.
    void setActionName(const QString &name);

    bool canUndo() const;
    bool canRedo() const;
    void undo(); // nothing to undo: nothing happens
    void redo();
    bool isUndoing() const { return m_undoing; }
    bool isRedoing() const { return m_redoing; }

    QString undoActionName() const;
    QString redoActionName() const;
    // "Undo X" / "Redo X", or the bare word when the step has no name (or there is none).
    QString undoText() const;
    QString redoText() const;

    void clear();
    void removeActionsOf(const void *target);

signals:
    void changed();

private:
    struct Action {
        const void *target;
        std::function<void()> call;
    };
    struct Step {
        QList<Action> actions;
        QString name;
    };
    void runStep(QList<Step> &from, QList<Step> &to, bool undoing);

    QList<Step> m_undo;
    QList<Step> m_redo;
    QList<Step> *m_recording = nullptr; // the stack an undo or redo is recording its inverse into
    Step m_recordingStep;               // that inverse, pushed when the undo or redo has run
    bool m_undoing = false;
    bool m_redoing = false;
};

} // namespace korvane
