#pragma once

#include "voice/ClipSound.h"
#include "voice/WavePeaks.h"

#include <QHash>
#include <QObject>
#include <QThreadPool>

#include <memory>
#include <stop_token>

/// The outlines of audio files, each read once, on a thread of its own. They are kept in memory
/// until forget(), and nowhere else. All operations belong to one thread.
class WaveOutlines : public QObject {
    Q_OBJECT

public:
    explicit WaveOutlines(QObject* parent = nullptr);

    /// Calls off what is being read.
    ~WaveOutlines() override;

    /// The outline of a file as it is by its sign of what it holds. Null until it is read, which
    /// begins with the first question: arrived() tells. Of a file that cannot be read: one without
    /// length.
    std::shared_ptr<const WavePeaks> of(const ClipSource& file);

    /// Whether a file that was asked for is not read yet.
    bool isReading() const;

    /// Keeps nothing of the files so far: those of another work are asked for next.
    void forget();

signals:
    /// Another outline can be had.
    void arrived();

private:
    struct Outline {
        ClipSource file;
        /// Null while it is read.
        std::shared_ptr<const WavePeaks> peaks;
    };

    void read(const ClipSource& file);
    void take(const ClipSource& file, const std::shared_ptr<const WavePeaks>& peaks);

    /// By their paths.
    QHash<QString, Outline> outlines_;
    std::stop_source stop_;
    /// One thread, on which files follow one another. The last member: it waits for the thread.
    QThreadPool thread_;
};
