// The media player control on the real back end, with WAVs of the test's own (the loop without end is
// tst_players' loop boxes).

#include "TestSupport.h"

#include "controls/MediaPlayer.h"
#include "platform/VbError.h"

#include <QDataStream>
#include <QMediaPlayer>
#include <QTemporaryDir>
#include <QTest>

namespace {
// A mono 16-bit PCM WAV of a tone.
QByteArray wav(int milliseconds)
{
    const quint32 rate = 8000, bytes = 2 * rate * quint32(milliseconds) / 1000;
    QByteArray out;
    QDataStream s(&out, QIODevice::WriteOnly);
    s.setByteOrder(QDataStream::LittleEndian);
    s.writeRawData("RIFF", 4);
    s << quint32(36 + bytes);
    s.writeRawData("WAVEfmt ", 8);
    s << quint32(16) << quint16(1) << quint16(1) << rate << 2 * rate << quint16(2) << quint16(16);
    s.writeRawData("data", 4);
    s << bytes;
    for (quint32 i = 0; i < bytes / 2; ++i)
        s << qint16((i / 10) % 2 ? 6000 : -6000);
    return out;
}
} // namespace

class TestMedia final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void playsPausesAndStops();
    void brokenAndMissingFiles();

private:
    QTemporaryDir m_dir;
};

// Play, Pause and Stop with their state changes; a file played once, as by default, stops at its end;
// the file is let go of only when the name is emptied.
void TestMedia::playsPausesAndStops()
{
    MediaPlayer player(false);
    QList<QPair<int, int>> changes;
    connect(&player, &MediaPlayer::PlayStateChange, this, [&](int o, int n) { changes.append({o, n}); });
    player.setFileName(WriteTestFile(m_dir.filePath(QStringLiteral("CHIME.WAV")), wav(3000)));
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Playing));
    player.Pause();
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Paused));
    player.Play();
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Playing));
    player.Stop();
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Stopped));
    QCOMPARE(changes, (QList<QPair<int, int>>{{0, 2}, {2, 1}, {1, 2}, {2, 0}}));
    player.setFileName(WriteTestFile(m_dir.filePath(QStringLiteral("BLIP.WAV")), wav(300)));
    QTRY_COMPARE(player.PlayState(), int(MediaPlayer::Playing));
    QTRY_COMPARE_WITH_TIMEOUT(player.PlayState(), int(MediaPlayer::Stopped), 5000);
    QVERIFY(!player.Player()->source().isEmpty());
    player.setFileName(QString());
    QVERIFY(player.Player()->source().isEmpty());
}

void TestMedia::brokenAndMissingFiles()
{
    QByteArray broken = wav(500);
    broken.replace(8, 8, "XXXXXXXX"); // no WAVE, no fmt
    const QString bad = WriteTestFile(m_dir.filePath(QStringLiteral("BROKEN.WAV")), broken);
    MediaPlayer player(false);
    player.setFileName(bad);
    const long first = player.ErrorCode();
    QVERIFY(first != 0 && !player.ErrorDescription().isEmpty());
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
}

QTEST_MAIN(TestMedia)
#include "tst_media.moc"
