#include "model/KeptPart.h"

#include "model/Song.h"
#include "support/TestProgram.h"

#include <QTest>

#include <memory>

namespace KeptPartTests {

class KeptPartTest : public QObject {
    Q_OBJECT

private slots:
    void packedOrNotItIsTheSame();
    void memoryIsCountedWhileItIsPlain();
    void onlyWhatIsPlainIsFoundEqual();
};

namespace {

Track trackWithNotes()
{
    Track track;
    track.name = QStringLiteral("Melodía");
    track.instrumentId = QStringLiteral("charango");
    MelodyBlock block;
    for (int i = 0; i < 50; ++i)
        block.notes.append({.pitch = 60 + i % 12, .startBeat = 0.25 * i, .durationBeats = 0.25});
    track.melodyBlocks.append(block);
    return track;
}

} // namespace

void KeptPartTest::packedOrNotItIsTheSame()
{
    qint64 bytes = 0;
    const Track track = trackWithNotes();
    KeptPart<Track> part(track, &bytes);
    QCOMPARE(part.record(), track);
    for (int i = 0; i < 2; ++i) {
        part.pack();
        QVERIFY(!part.isPlain());
        QCOMPARE(part.record(), track);
        part.unpack();
        QVERIFY(part.isPlain());
        QCOMPARE(part.record(), track);
    }
}

void KeptPartTest::memoryIsCountedWhileItIsPlain()
{
    qint64 bytes = 1000;
    {
        KeptPart<Track> part(trackWithNotes(), &bytes);
        const qint64 plain = bytes;
        // The notes alone take this much.
        QVERIFY(plain >= 1000 + 50 * qint64{sizeof(NoteEvent)});
        for (int i = 0; i < 2; ++i) {
            part.pack();
            part.pack();
            QCOMPARE(bytes, 1000);
            part.unpack();
            part.unpack();
            QCOMPARE(bytes, plain);
        }
        KeptPart<Track> packed(trackWithNotes(), &bytes);
        packed.pack();
        QCOMPARE(bytes, plain);
    }
    QCOMPARE(bytes, 1000);
}

void KeptPartTest::onlyWhatIsPlainIsFoundEqual()
{
    qint64 bytes = 0;
    const Track track = trackWithNotes();
    KeptPart<Track> part(track, &bytes);
    QVERIFY(part.equals(track));
    QVERIFY(!part.equals(Track()));
    part.pack();
    QVERIFY(!part.equals(track));
}

VELTA_GUILESS_TEST(KeptPartTest)

} // namespace KeptPartTests

#include "KeptPartTest.moc"
