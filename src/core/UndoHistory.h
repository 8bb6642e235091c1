#pragma once

#include "core/UndoStack.h"

#include <QObject>
#include <QString>

namespace korvane {

// The run's one undo stack and the titles the Edit menu shows for it ("Undo Switch On", "Redo").
// Who registers a step updates the titles after it; the menu follows undoTitlesChanged.
class UndoHistory : public QObject {
    Q_OBJECT
public:
    UndoHistory();
    ~UndoHistory() override;

    UndoStack *stack() { return &m_stack; }
    void undo();
    void redo();
    void updateUndoTitle();
    void updateRedoTitle();
    void updateTitles()
    {
        updateUndoTitle();
        updateRedoTitle();
    }
    QString undoTitle() const { return m_undoTitle; }
    QString redoTitle() const { return m_redoTitle; }

signals:
    void undoTitlesChanged();

private:
    UndoStack m_stack;
    QString m_undoTitle;
    QString m_redoTitle;
};

} // namespace korvane
