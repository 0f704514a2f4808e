#pragma once

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

class InstrumentLibrary;
class SoundfontPlayer;
struct LoopVariant;

/// Single notes, chords and loop variants heard at once, beside the transport and on a channel of
/// their own. Without a player, or a player without a synthesiser, nothing happens.
class LivePreview : public QObject {
    Q_OBJECT

public:
    /// Neither service is owned; both may be null.
    LivePreview(SoundfontPlayer* player, InstrumentLibrary* instruments, QObject* parent = nullptr);

    /// Sounds until noteOff().
    void noteOn(int pitch, const QString& instrumentId, int velocity);

    void noteOff(int pitch);

    /// Sounds a chord on the piano for kChordPreviewMs.
    void chord(const QList<int>& pitches, int velocity);

    /// Plays a variant once through as it is written. What is pending cannot be taken back, and
    /// a second variant sounds over the rest of the first.
    void variant(const LoopVariant& variant, const QString& instrumentId, int bpm);

    /// Silences what sounds at this moment.
    void stop();

    /// Pitches that previews have started and not yet ended.
    const QSet<int>& held() const { return held_; }

    static constexpr int kChordPreviewMs = 600;

private:
    bool canSound() const;
    void configure(const QString& instrumentId);

    SoundfontPlayer* player_;
    InstrumentLibrary* instruments_;
    QSet<int> held_;
    /// What the channel has now; empty after a chord.
    QString instrumentId_;
};
