#include "model/UndoStack.h"

#include "model/Project.h"
#include "model/ProjectJson.h"

UndoStack::UndoStack(QObject* parent, qint64 mostPlainBytes)
    : QObject(parent), mostPlainBytes_(mostPlainBytes)
{}

void UndoStack::reset(const Project& project)
{
    states_ = {stateOf(project, nullptr)};
    index_ = 0;
    notify();
}

void UndoStack::snapshot(const Project& project)
{
    const KeptState state = stateOf(project, index_ >= 0 ? &states_.at(index_) : nullptr);
    if (index_ >= 0 && state.hasMusicOf(states_.at(index_))) {
        states_[index_].setName(project.name);
        return;
    }
    states_.remove(index_ + 1, states_.size() - index_ - 1);
    states_.append(state);
    if (states_.size() > kUndoDepth)
        states_.removeFirst();
    index_ = states_.size() - 1;
    packDistantStates();
    notify();
}

QJsonObject UndoStack::undo(const Project& project)
{
    const auto song = undoSong(project);
    return song ? ProjectJson::write(*song) : QJsonObject();
}

QJsonObject UndoStack::redo()
{
    const auto song = redoSong();
    return song ? ProjectJson::write(*song) : QJsonObject();
}

std::optional<Song> UndoStack::undoSong(const Project& project)
{
    if (!canUndo())
        return std::nullopt;
    states_[index_] = stateOf(project, &states_.at(index_));
    --index_;
    Song state = presentState();
    notify();
    return state;
}

std::optional<Song> UndoStack::redoSong()
{
    if (!canRedo())
        return std::nullopt;
    ++index_;
    Song state = presentState();
    notify();
    return state;
}

QList<AudioTrack> UndoStack::audioTracks() const
{
    QList<AudioTrack> tracks;
    for (const KeptState& state : states_)
        tracks.append(state.audioTracks());
    return tracks;
}

void UndoStack::changeAudioTracks(const std::function<void(QList<AudioTrack>&)>& change)
{
    const KeptState* former = nullptr;
    for (KeptState& state : states_) {
        QList<AudioTrack> tracks = state.audioTracks();
        change(tracks);
        state.setAudioTracks(tracks, former, &plainBytes_);
        former = &state;
    }
    packDistantStates();
}

/// In lists of its own: whoever loads it may write into them.
Song UndoStack::presentState()
{
    states_[index_].unpack();
    packDistantStates();
    return detachedCopy(states_.at(index_).song());
}

void UndoStack::packDistantStates()
{
    const KeptState& present = states_.at(index_);
    for (qsizetype i = 0; i < index_; ++i)
        states_[i].pack(present, &plainBytes_, mostPlainBytes_);
    for (qsizetype i = states_.size() - 1; i > index_; --i)
        states_[i].pack(present, &plainBytes_, mostPlainBytes_);
}

void UndoStack::notify()
{
    emit availabilityChanged(canUndo(), canRedo());
}
