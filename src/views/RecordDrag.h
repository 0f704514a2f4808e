#pragma once

#include <Qt>

/// A record of the song in the hands of the mouse, from the press of a button to its release. A
/// project knows its records by index, and whoever else writes to it meanwhile may put another one
/// behind the index: the drag knows its own by the value that it has left there.
template <typename Record>
class RecordDrag {
public:
    /// What a move of the mouse means to a drag.
    enum class Move {
        /// The record goes along.
        Follow,
        /// The button came up where nobody heard of it: the drag is over, as at a release.
        Finish,
        /// The record is another one by now: the drag is over, and nothing of it is left to tell.
        Drop,
    };

    /// `record` is what lies there at the press; `changed` says that the press has made it.
    explicit RecordDrag(Qt::MouseButton button, const Record& record, bool changed = false)
        : button_(button), original_(record), left_(record), changed_(changed)
    {}

    /// As it was at the press.
    const Record& original() const { return original_; }

    Move move(Qt::MouseButtons held, const Record& present) const
    {
        if (!owns(present))
            return Move::Drop;
        return held & button_ ? Move::Follow : Move::Finish;
    }

    /// Takes what the drag has made of its record. False where that is what it was already.
    bool leave(const Record& record)
    {
        if (record == left_)
            return false;
        left_ = record;
        changed_ = true;
        return true;
    }

    bool isEndedBy(Qt::MouseButton released) const { return released == button_; }

    /// Whether there is an edit to tell of at the end: the record has changed on the way, and is
    /// still the drag's own.
    bool isEdit(const Record& present) const { return changed_ && owns(present); }

private:
    bool owns(const Record& present) const { return present == left_; }

    Qt::MouseButton button_;
    Record original_;
    /// The record as the drag has left it.
    Record left_;
    bool changed_;
};
