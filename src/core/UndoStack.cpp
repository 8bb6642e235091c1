#include "core/UndoStack.h"

#include "core/Texts.h"

namespace korvane {

UndoStack::UndoStack(QObject *parent) : QObject(parent) {}

void UndoStack::registerUndo(const void *target, std::function<void()> inverse)
{
    if (m_recording) {
        // An undo records the redo and a redo the undo, into the one step opened for it.
        m_recordingStep.actions.append({target, std::move(inverse)});
    } else {
        m_undo.append(Step{{{target, std::move(inverse)}}, QString()});
        m_redo.clear();
    }
    emit changed();
}

void UndoStack::setActionName(const QString &name)
{
    if (m_recording)
        m_recordingStep.name = name;
    else if (!m_undo.isEmpty())
        m_undo.last().name = name;
    else
        return;
    emit changed();
}

bool UndoStack::canUndo() const
{
    return !m_undo.isEmpty();
}

bool UndoStack::canRedo() const
{
    return !m_redo.isEmpty();
}

void UndoStack::undo()
{
    if (m_recording || m_undo.isEmpty())
        return;
    runStep(m_undo, m_redo, true);
}

void UndoStack::redo()
{
    if (m_recording || m_redo.isEmpty())
        return;
    runStep(m_redo, m_undo, false);
}

void UndoStack::runStep(QList<Step> &from, QList<Step> &to, bool undoing)
{
    const Step step = from.takeLast();
    // The inverse carries the name of the step it reverses unless the actions rename it.
    m_recordingStep = Step{{}, step.name};
    m_recording = &to;
    m_undoing = undoing;
    m_redoing = !undoing;
    for (auto it = step.actions.crbegin(); it != step.actions.crend(); ++it) {
        if (it->call)
            it->call();
    }
    m_undoing = false;
    m_redoing = false;
    m_recording = nullptr;
    if (!m_recordingStep.actions.isEmpty())
        to.append(std::move(m_recordingStep));
    m_recordingStep = Step();
    emit changed();
}

QString UndoStack::undoActionName() const
{
    return m_undo.isEmpty() ? QString() : m_undo.last().name;
}

QString UndoStack::redoActionName() const
{
    return m_redo.isEmpty() ? QString() : m_redo.last().name;
}

QString UndoStack::undoText() const
{
    const QString name = undoActionName();
    return name.isEmpty() ? korvane::tr("Undo") : korvane::tr("Undo") + QLatin1Char(' ') + name;
}

QString UndoStack::redoText() const
{
    const QString name = redoActionName();
    return name.isEmpty() ? korvane::tr("Redo") : korvane::tr("Redo") + QLatin1Char(' ') + name;
}

void UndoStack::clear()
{
    m_undo.clear();
    m_redo.clear();
    m_recordingStep.actions.clear();
    emit changed();
}

void UndoStack::removeActionsOf(const void *target)
{
    auto strip = [target](QList<Step> &stack) {
        for (qsizetype i = stack.size() - 1; i >= 0; --i) {
            stack[i].actions.removeIf([target](const Action &a) { return a.target == target; });
            if (stack[i].actions.isEmpty())
                stack.removeAt(i);
        }
    };
    strip(m_undo);
    strip(m_redo);
    m_recordingStep.actions.removeIf([target](const Action &a) { return a.target == target; });
    emit changed();
}

} // namespace korvane
