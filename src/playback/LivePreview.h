#pragma once

#include "content/Rhythm.h"
#include "playback/Schedule.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <optional>

class InstrumentLibrary;
class SoundfontPlayer;

/// Single notes, chords and loop variants heard at once, beside the transport and on a channel of
/// their own. A chord or a variant that sounds ends with the next preview of any kind. Without a
/// player, or a player without a synthesiser, nothing happens.
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

    /// Plays a variant once through as it is written. The variant that is being played, on the same
    /// instrument, is ended and not played again.
    void variant(const LoopVariant& variant, const QString& instrumentId, int bpm);

    /// Ends a chord or a variant that is being played; held notes sound on.
    void endRunning();

    /// Ends everything.
    void stop();

    /// Pitches that previews have started and not yet ended, those of variants left out.
    const QSet<int>& held() const { return held_; }

    static constexpr int kChordPreviewMs = 600;

private:
    bool canSound() const;
    void configure(const QString& instrumentId);
    void endChord();

    bool isVariantRunning() const { return next_ < events_.size(); }

    /// When an event of the variant is due, in milliseconds from its start.
    double dueMs(const ScheduledEvent& event) const;

    void playDueEvents();

    SoundfontPlayer* player_;
    InstrumentLibrary* instruments_;
    QSet<int> held_;
    /// What the channel has now; nothing at first and after a chord.
    std::optional<QString> instrumentId_;

    QList<int> chord_;
    QTimer chordTimer_;

    /// The variant that was played last, and what it asks for, in order.
    LoopVariant variant_;
    QList<ScheduledEvent> events_;
    qsizetype next_ = 0;
    double msPerBeat_ = 0.0;
    QElapsedTimer clock_;
    QTimer variantTimer_;
};
