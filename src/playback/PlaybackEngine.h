#pragma once

#include "music/NoteEvent.h"
#include "playback/Schedule.h"
#include "playback/Transport.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <memory>

class InstrumentLibrary;
class LivePreview;
class LoopLibrary;
class Project;
class SoundfontPlayer;
class VoiceMixer;
class VoiceOutput;
struct LoopVariant;
struct Track;

/// The transport: plays the open project in real time, with its playhead, repeat range, metronome
/// and voices, and beside it the previews of single sounds. Also the public door of how a project
/// becomes notes and how channels are given their instruments.
///
/// Everything runs on the GUI thread. The project may change between ticks; what has changed is
/// heard after refreshChannels() and rescheduleIfPlaying(). Without a project, a player or a
/// synthesiser nothing plays.
class PlaybackEngine : public QObject {
    Q_OBJECT

public:
    /// None of the services is owned.
    PlaybackEngine(SoundfontPlayer* player, LoopLibrary* library, InstrumentLibrary* instruments,
                   QObject* parent = nullptr);
    ~PlaybackEngine() override;

    // ---- The song as notes ----

    /// All notes of a track; see NoteRenderer::trackNotes(). `library` may be null.
    static QList<NoteEvent> renderTrackNotes(const Project& project, const Track& track,
                                             const LoopLibrary* library);

    /// The chord notes of the harmony track; see NoteRenderer::harmonyNotes().
    static QList<NoteEvent> renderHarmonyNotes(const Project& project);

    // ---- The transport ----

    /// Stops, and makes a project (which is not owned, and may be null) the one to play from its
    /// first beat on.
    void setProject(Project* project);

    /// Starts, or starts again, from a beat; a negative one stands for where playback was left.
    /// Notes that began before it are not heard, but for those that the humanizer may have moved
    /// ahead of it; see Transport::startCursor().
    void play(double fromBeat = -1.0);

    /// Stops and keeps the position.
    void pause();

    /// Stops and goes back to the start: of the repeat range where there is one. Ends a preview
    /// that is being played, too.
    void stop();

    /// Moves the playhead, and goes on playing from there if it plays. A negative beat counts as 0.
    void setPlayheadBeat(double beat);

    /// As setPlayheadBeat(), and starts to play where nothing plays yet.
    void seek(double beat);

    /// In beats. A change of the tempo while playing keeps the beat and counts from there on: from
    /// the next tick or rescheduleIfPlaying().
    double playheadBeat() const;

    bool isPlaying() const { return playing_; }

    void setMetronomeEnabled(bool on);

    /// Switches the repeat range on, in beats; a start below 0 counts as 0. A range that does not
    /// end after it starts changes nothing.
    void setLoopRange(double start, double end);

    void clearLoopRange();

    /// Takes the project's notes anew without losing the place. Voices are taken anew at once where
    /// others are muted or soloed, or the tempo is another; as soon as they are mixed where the
    /// gain or a fade of one is another; else at the next start or wrap only.
    void rescheduleIfPlaying();

    /// Gives every channel the instrument and the volume of its track, and has the voices prepared.
    void refreshChannels();

    /// Index of the first scheduled event at a beat or later; their number if there is none.
    int cursorForBeat(double beat) const;

    /// Begins to mix the voices of the project on another thread, unless they are mixed as they
    /// are, so that what starts next need not wait for them.
    void prepareVoices();

    /// Whether a start need not wait for the voices.
    bool voicesReady() const;

    /// Plays the voices of the project from a beat on, in place of what plays.
    void startVoicePlayback(double fromBeat);

    void stopVoicePlayback();

    /// Folder of the project's audio clips; empty for a work that was never saved.
    QString projectDir;

    // ---- Channels ----

    /// See ChannelInstrument::configure().
    static void configureChannel(SoundfontPlayer* player, InstrumentLibrary* instruments,
                                 int channel, const QString& instrumentId);

    /// configureChannel() with the engine's own services.
    void configureChannelForInstrument(int channel, const QString& instrumentId);

    /// Gives a channel the instrument and the volume of a track.
    void setupTrackChannel(int channel, const Track& track);

    // ---- Previews: see LivePreview ----

    void previewNoteOn(int pitch, const QString& instrumentId, int velocity);
    void previewNoteOff(int pitch);
    void previewChord(const QList<int>& pitches, int velocity);

    /// Plays a variant once, as it is written, or ends it if it is being played; `lengthBeats` has
    /// no effect.
    void previewVariant(const LoopVariant& variant, const QString& instrumentId, int bpm,
                        double lengthBeats);
    void stopPreview();

    /// Pitches that previews have started and not yet ended.
    const QSet<int>& previewHeld() const;

signals:
    /// At every tick while playing, and at every jump. In beats.
    void playheadChanged(double beat);

    void playingChanged(bool playing);

    /// Around a wait for voices that are not mixed yet: true before it, false behind.
    void waitingForVoices(bool waiting);

private:
    void onTick();

    /// Sets out anew from the present beat where what plays no longer runs with the project: in
    /// another tempo, or with other voices muted.
    void followProject();

    /// Goes on with the voices as they are now, once they are mixed.
    void followLevels();

    /// The whole project, from its first beat on; the position is a matter of the cursor.
    void buildSchedule();
    void setSongEnd();

    /// Makes a beat the one from which the time that passes is counted, for notes and voices.
    void startTogether(double beat);

    /// All voices from the start of the song to the end of the last one, interleaved stereo; empty
    /// where there are none.
    QList<float> mixedVoices();

    void playVoices(const QList<float>& mix, double fromBeat);

    void dispatch(int first, int next);
    void ceasePlaying();
    void moveIdlePlayhead(double beat);

    SoundfontPlayer* player_;
    LoopLibrary* library_;
    InstrumentLibrary* instruments_;
    Project* project_ = nullptr;
    std::unique_ptr<VoiceMixer> mixer_;
    std::unique_ptr<VoiceOutput> voices_;
    std::unique_ptr<LivePreview> preview_;

    Score score_;
    /// Silence that the song ends with.
    double tailBeats_ = 0.0;
    /// Index of the next event to fire.
    int cursor_ = 0;
    QTimer tickTimer_;
    /// Time since the playhead was at `anchorBeat_`.
    QElapsedTimer clock_;
    double anchorBeat_ = 0.0;
    /// The tempo in which the time since then has passed.
    qint32 tempo_ = 0;
    /// Which of the voice tracks were heard then.
    QList<bool> voicesHeard_;
    /// Gains and fades of the clips as they are heard, and whether others are to be.
    QList<float> voiceLevels_;
    bool levelsAwaited_ = false;
    /// The playhead while nothing plays.
    double idleBeat_ = 0.0;
    bool playing_ = false;
    RepeatRange range_;
    bool metronomeEnabled_ = false;
};
