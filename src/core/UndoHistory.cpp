#include "core/UndoHistory.h"

#include "core/Texts.h"

namespace korvane {

UndoHistory::UndoHistory() : m_undoTitle(korvane::tr("Undo")), m_redoTitle(korvane::tr("Redo")) {}

UndoHistory::~UndoHistory()
{
    // The steps hold calls into the managers; none may outlive this run.
    m_stack.clear();
}

void UndoHistory::undo()
{
    m_stack.undo();
    updateTitles();
}

void UndoHistory::redo()
{
    m_stack.redo();
    updateTitles();
}

void UndoHistory::updateUndoTitle()
{
    m_undoTitle = m_stack.undoText();
    emit undoTitlesChanged();
}

void UndoHistory::updateRedoTitle()
{
    m_redoTitle = m_stack.redoText();
    emit undoTitlesChanged();
}

} // namespace korvane
