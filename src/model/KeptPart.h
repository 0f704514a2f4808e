#pragma once

#include <QByteArray>

#include <optional>

/// One part of a former state: a track, a voice track or the chord lane. It never changes, and
/// equal states share it.
template <typename Record>
class KeptPart {
public:
    /// Adds what it takes to `plainBytes` for as long as it is held plain. The sum outlives it.
    KeptPart(const Record& record, qint64* plainBytes);
    ~KeptPart();
    KeptPart(const KeptPart&) = delete;
    KeptPart& operator=(const KeptPart&) = delete;

    Record record() const;

    bool equals(const Record& record) const { return plain_ && *plain_ == record; }

    bool isPlain() const { return plain_.has_value(); }

    /// Gives the memory of the record for a small fraction of it.
    void pack();
    void unpack();

private:
    std::optional<Record> plain_;
    QByteArray packed_;
    qint64* plainBytes_;
};
