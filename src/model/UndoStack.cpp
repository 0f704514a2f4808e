#include "model/UndoStack.h"

#include "model/Project.h"

UndoStack::UndoStack(QObject* parent) : QObject(parent)
{}

void UndoStack::reset(const Project& project)
{
    states_ = {project.toJson()};
    index_ = 0;
    notify();
}

void UndoStack::snapshot(const Project& project)
{
    const QJsonObject state = project.toJson();
    if (index_ >= 0 && states_.at(index_) == state)
        return;
    states_.resize(index_ + 1);
    states_.append(state);
    if (states_.size() > kUndoDepth)
        states_.removeFirst();
    index_ = states_.size() - 1;
    notify();
}

QJsonObject UndoStack::undo(const Project& project)
{
    if (!canUndo())
        return {};
    states_[index_] = project.toJson();
    --index_;
    notify();
    return states_.at(index_);
}

QJsonObject UndoStack::redo()
{
    if (!canRedo())
        return {};
    ++index_;
    notify();
    return states_.at(index_);
}

void UndoStack::notify()
{
    emit availabilityChanged(canUndo(), canRedo());
}
