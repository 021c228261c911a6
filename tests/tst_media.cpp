// The media player control on the real back end: a WAV it plays, pauses and stops with the state
// changes reported, played once or without end, a broken file's error reported once, and the file let
// go of only when the file name is emptied.

#include "TestSupport.h"

#include "controls/MediaPlayer.h"
#include "platform/VbError.h"

#include <QMediaPlayer>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

namespace {
// A mono 16-bit PCM WAV of a tone.
QByteArray wav(int milliseconds)
{
    const int rate = 8000, samples = rate * milliseconds / 1000;
    QByteArray data;
    for (int i = 0; i < samples; ++i) {
        const qint16 v = qint16((i / 10) % 2 ? 6000 : -6000);
        data.append(reinterpret_cast<const char *>(&v), 2);
    }
    QByteArray out("RIFF");
    const auto u32 = [&out](quint32 v) {
        v = qToLittleEndian(v);
        out.append(reinterpret_cast<const char *>(&v), 4);
    };
    const auto u16 = [&out](quint16 v) {
        v = qToLittleEndian(v);
        out.append(reinterpret_cast<const char *>(&v), 2);
    };
    u32(quint32(36 + data.size()));
    out += "WAVEfmt ";
    u32(16);
    u16(1);
    u16(1);
    u32(rate);
    u32(rate * 2);
    u16(2);
    u16(16);
    out += "data";
    u32(quint32(data.size()));
    return out + data;
}
} // namespace

class TestMedia final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void playsPausesAndStops();
    void playsOnceOrWithoutEnd();
    void brokenAndMissingFiles();

private:
    QTemporaryDir m_dir;
};

void TestMedia::playsPausesAndStops()
{
    const QString chime = WriteTestFile(m_dir.filePath(QStringLiteral("CHIME.WAV")), wav(3000));
    MediaPlayer player(false);
    QList<QPair<int, int>> changes;
    connect(&player, &MediaPlayer::PlayStateChange, this, [&](int o, int n) { changes.append({o, n}); });
    player.setFileName(chime);
    QCOMPARE(player.ErrorCode(), 0L);
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Playing));
    player.Pause();
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Paused));
    player.Play();
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Playing));
    player.setCurrentPosition(0);
    player.Stop();
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Stopped));
    QCOMPARE(changes, (QList<QPair<int, int>>{{0, 2}, {2, 1}, {1, 2}, {2, 0}}));
    // Stop keeps the file; an empty name lets go of it.
    QVERIFY(!player.Player()->source().isEmpty());
    player.setFileName(QString());
    QVERIFY(player.Player()->source().isEmpty());
}

void TestMedia::playsOnceOrWithoutEnd()
{
    const QString blip = WriteTestFile(m_dir.filePath(QStringLiteral("BLIP.WAV")), wav(300));
    MediaPlayer once(false);
    once.setPlayCount(1);
    once.setFileName(blip);
    QTRY_COMPARE(once.PlayState(), int(MediaPlayer::Playing));
    QTRY_COMPARE_WITH_TIMEOUT(once.PlayState(), int(MediaPlayer::Stopped), 5000);

    MediaPlayer loop(false);
    loop.setPlayCount(0);
    loop.setFileName(blip);
    QTRY_COMPARE(loop.PlayState(), int(MediaPlayer::Playing));
    QTest::qWait(1500); // five times the file's length
    QCOMPARE(loop.PlayState(), int(MediaPlayer::Playing));
    QCOMPARE(loop.PlayCount(), 0);
    loop.Stop();
}

void TestMedia::brokenAndMissingFiles()
{
    QByteArray broken = wav(500);
    broken.replace(8, 8, "XXXXXXXX"); // no WAVE, no fmt
    const QString bad = WriteTestFile(m_dir.filePath(QStringLiteral("BROKEN.WAV")), broken);
    MediaPlayer player(false);
    player.setFileName(bad);
    QVERIFY(player.ErrorCode() != 0);
    QVERIFY(!player.ErrorDescription().isEmpty());
    const long first = player.ErrorCode();
    QTest::qWait(200);
    QCOMPARE(player.ErrorCode(), first); // later reports of the same failure change nothing

    // A file that is not there is refused as it is set: the runtime's "File not found".
    try {
        player.setFileName(m_dir.filePath(QStringLiteral("GONE.WAV")));
        QFAIL("a missing file was taken");
    } catch (const VbError &e) {
        QCOMPARE(e.number, VbErr::FileNotFound);
    }
    QCOMPARE(player.FileName(), QString());
    // Good files afterwards play with no error left over, again and again: the pipeline that choked
    // on the broken file is not used again.
    const QString good = WriteTestFile(m_dir.filePath(QStringLiteral("OK.WAV")), wav(1000));
    for (int round = 0; round < 3; ++round) {
        player.setFileName(bad);
        QVERIFY(player.ErrorCode() != 0);
        player.setFileName(good);
        QCOMPARE(player.ErrorCode(), 0L);
        QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Playing));
    }
    player.Stop();
}

QTEST_MAIN(TestMedia)
#include "tst_media.moc"
