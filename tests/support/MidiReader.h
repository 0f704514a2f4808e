#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

/// A strict reader of Standard MIDI Files, for judging written ones: whatever is malformed is an
/// error, and nothing is skipped or repaired.
namespace MidiReader {

struct Event {
    /// Absolute time.
    qint64 tick = 0;
    /// The status byte, the channel included; 0xFF for a meta event.
    int status = 0;
    /// Only for meta events.
    int metaType = -1;
    /// Data bytes of a channel message, or the content of a meta event.
    QByteArray data;

    friend bool operator==(const Event&, const Event&) = default;

    int kind() const { return status & 0xF0; }

    int channel() const { return status & 0x0F; }

    bool isMeta(int type) const { return status == 0xFF && metaType == type; }

    int dataByte(qsizetype index) const { return static_cast<unsigned char>(data.at(index)); }
};

struct MidiTrack {
    /// The end of track is checked and left out.
    QList<Event> events;

    /// Events of one kind, such as 0x90.
    QList<Event> ofKind(int kind) const
    {
        QList<Event> found;
        for (const Event& event : events) {
            if (event.status != 0xFF && event.kind() == kind)
                found.append(event);
        }
        return found;
    }

    /// The track's name; null when no event gives one.
    QString name() const
    {
        for (const Event& event : events) {
            if (event.isMeta(0x03))
                return QString::fromUtf8(event.data);
        }
        return {};
    }
};

struct File {
    int format = -1;
    int division = 0;
    QList<MidiTrack> tracks;
    /// Empty for a well-formed file.
    QString error;
};

/// Walks over bytes; the first step past the end, or any complaint, spoils all that follow.
class Cursor {
public:
    explicit Cursor(const QByteArray& bytes) : bytes_(bytes) {}

    bool atEnd() const { return at_ >= bytes_.size(); }

    bool ok() const { return error_.isEmpty(); }

    QString error() const { return error_; }

    void complain(const QString& what)
    {
        if (ok())
            error_ = QStringLiteral("%1 at byte %2").arg(what).arg(at_);
    }

    int peek() const { return atEnd() ? -1 : static_cast<unsigned char>(bytes_.at(at_)); }

    int byte()
    {
        if (atEnd())
            complain(QStringLiteral("unexpected end"));
        if (!ok())
            return 0;
        return static_cast<unsigned char>(bytes_.at(at_++));
    }

    qint64 number(int bytes)
    {
        qint64 value = 0;
        for (int i = 0; i < bytes; ++i)
            value = value * 256 + byte();
        return value;
    }

    QByteArray take(qint64 count)
    {
        if (count > bytes_.size() - at_)
            complain(QStringLiteral("unexpected end"));
        if (!ok())
            return {};
        at_ += count;
        return bytes_.mid(at_ - count, count);
    }

    qint64 variableLength()
    {
        qint64 value = 0;
        for (int i = 0; i < 4; ++i) {
            const int next = byte();
            value = value * 128 + next % 128;
            if (next < 128)
                return value;
        }
        complain(QStringLiteral("a quantity of more than four bytes"));
        return 0;
    }

private:
    QByteArray bytes_;
    qsizetype at_ = 0;
    QString error_;
};

inline QByteArray readDataBytes(Cursor& cursor, int status)
{
    const bool one = (status & 0xF0) == 0xC0 || (status & 0xF0) == 0xD0;
    const QByteArray data = cursor.take(one ? 1 : 2);
    for (const char value : data) {
        if (static_cast<unsigned char>(value) > 127)
            cursor.complain(QStringLiteral("a status byte among the data"));
    }
    return data;
}

inline void checkMeta(Cursor& cursor, const Event& event)
{
    static const QList<std::pair<int, qsizetype>> kFixedSizes{{0x2F, 0}, {0x51, 3}, {0x58, 4}};
    for (const auto& [type, size] : kFixedSizes) {
        if (event.metaType == type && event.data.size() != size)
            cursor.complain(QStringLiteral("a meta event of the wrong size"));
    }
}

/// `running` is the status in force, which an event may leave out; 0 for none.
inline Event readEvent(Cursor& cursor, int& running)
{
    Event event;
    const bool saysStatus = cursor.peek() >= 128;
    event.status = saysStatus ? cursor.byte() : running;
    if (event.status == 0xFF) {
        running = 0;
        event.metaType = cursor.byte();
        event.data = cursor.take(cursor.variableLength());
        checkMeta(cursor, event);
    } else if (event.status >= 0x80 && event.status < 0xF0) {
        running = event.status;
        event.data = readDataBytes(cursor, event.status);
    } else {
        cursor.complain(QStringLiteral("no status that a file may hold"));
    }
    return event;
}

inline MidiTrack readTrack(Cursor& file)
{
    MidiTrack track;
    if (file.take(4) != "MTrk")
        file.complain(QStringLiteral("no track chunk"));
    Cursor cursor(file.take(file.number(4)));
    qint64 now = 0;
    int running = 0;
    bool ended = false;
    while (file.ok() && cursor.ok() && !ended) {
        now += cursor.variableLength();
        Event event = readEvent(cursor, running);
        event.tick = now;
        ended = event.isMeta(0x2F);
        if (!ended)
            track.events.append(event);
    }
    if (!cursor.ok())
        file.complain(QStringLiteral("in a track: ") + cursor.error());
    else if (!cursor.atEnd())
        file.complain(QStringLiteral("bytes behind the end of a track"));
    return track;
}

inline File read(const QByteArray& bytes)
{
    File file;
    Cursor cursor(bytes);
    if (cursor.take(4) != "MThd" || cursor.number(4) != 6)
        cursor.complain(QStringLiteral("no header"));
    file.format = static_cast<int>(cursor.number(2));
    const qint64 count = cursor.number(2);
    file.division = static_cast<int>(cursor.number(2));
    for (qint64 i = 0; cursor.ok() && i < count; ++i)
        file.tracks.append(readTrack(cursor));
    if (cursor.ok() && !cursor.atEnd())
        cursor.complain(QStringLiteral("bytes behind the last chunk"));
    file.error = cursor.error();
    return file;
}

} // namespace MidiReader
