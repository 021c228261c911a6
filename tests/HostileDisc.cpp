#include "HostileDisc.h"

#include "ArchiveFixtures.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>

#include <stdexcept>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
void check(bool ok, const char *what)
{
    if (!ok)
        throw std::runtime_error(what);
}

void writeBytes(const QByteArray &path, const QByteArray &contents)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    check(fd >= 0 && ::write(fd, contents.constData(), size_t(contents.size())) == contents.size(), path.constData());
    ::close(fd);
}
} // namespace

HostileDisc::HostileDisc()
{
    const QByteArray disc = QFile::encodeName(root());
    const QByteArray out = QFile::encodeName(outside());
    check(QDir().mkpath(root() + QStringLiteral("/Sub")) && QDir().mkpath(outside()), "folders");
    writeBytes(out + "/passwd", "the station's own secret");
    writeBytes(out + "/SECRET.TXT", "outside the disc");

    add("README.TXT", QStringLiteral("/README.TXT"), "upper-case readme");
    add("readme.txt", QStringLiteral("/README.TXT"), "lower-case readme");
    add("setup.exe", QStringLiteral("/SETUP.EXE"), "lower-case setup");
    add("SETUP.EXE", QStringLiteral("/SETUP.EXE"), "upper-case setup");
    add("EVIL\nLicensed Applications - 99.EXE", QStringLiteral("/EVIL_LICENSED APPLICATIONS - 99.EXE"), "line feed");
    add("CR\rNAME.TXT", QStringLiteral("/CR_NAME.TXT"), "carriage return");
    add("a\tb.bin", QStringLiteral("/A_B.BIN"), QByteArray(3000, 't'));
    add("<script>x.txt", QStringLiteral("/_SCRIPT_X.TXT"), "markup");
    add("photo\xe2\x80\xaegpj.exe", QStringLiteral("/PHOTO_GPJ.EXE"), "right-to-left override");
    add("bad\xff\xfename.txt", QStringLiteral("/BAD__NAME.TXT"), "not UTF-8");
    add("Sub/inner.txt", QStringLiteral("/SUB/INNER.TXT"), "inner");
    check(::mkdir(disc + "/Dir\x01\xff", 0755) == 0, "a folder whose name is no text");
    add("Dir\x01\xff/in.txt", QStringLiteral("/DIR__/IN.TXT"), "in a folder whose name is no text");

    check(::symlink("/nonexistent/target", disc + "/DANGLING.TXT") == 0, "dangling link");
    check(::symlink(out + "/passwd", disc + "/PASSWD.TXT") == 0, "link to a file outside");
    check(::symlink(out.constData(), disc + "/OUTDIR") == 0, "link to a folder outside");
    check(::symlink("..", disc + "/Sub/LOOP") == 0, "looping link");
    check(::symlink("../README.TXT", disc + "/Sub/SELF.TXT") == 0, "link to a file of the disc");
    check(::mkfifo(disc + "/FIFO.TXT", 0644) == 0, "pipe");
    const int s = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray socketPath = disc + "/SOCK.TXT";
    check(s >= 0 && size_t(socketPath.size()) < sizeof address.sun_path, "socket");
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    check(::bind(s, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "socket bound");
    ::close(s);

    // The ZIP's members: the same kinds of names, two equal but for case, and a link that never lands.
    const QList<FixtureMember> members{{"a\nb.txt", "member line feed"},
                                       {"x<y>.txt", "member markup"},
                                       {"Same.txt", "member mixed case"},
                                       {"SAME.TXT", "member upper case"},
                                       {"\xe2\x80\xae" "evil.txt", "member override"},
                                       {"link\nkevro-check: warning: forged", {}, FixtureMember::Symlink, "/etc/passwd"}};
    WriteArchive(root() + QStringLiteral("/Data.zip"), members);
    m_files.append({QStringLiteral("/DATA.ZIP"), ReadTestFile(root() + QStringLiteral("/Data.zip")), false});
    for (const auto &[stored, contents] : {std::pair{"/DATA.ZIP/A_B.TXT", "member line feed"},
                                           std::pair{"/DATA.ZIP/X_Y_.TXT", "member markup"},
                                           std::pair{"/DATA.ZIP/SAME.TXT", "member mixed case"},
                                           std::pair{"/DATA.ZIP/SAME.TXT", "member upper case"},
                                           std::pair{"/DATA.ZIP/_EVIL.TXT", "member override"}})
        m_files.append({QString::fromUtf8(stored), contents, true});
}

void HostileDisc::add(const QByteArray &name, const QString &stored, const QByteArray &contents)
{
    writeBytes(QFile::encodeName(root()) + '/' + name, contents);
    m_files.append({stored, contents, false});
}

QStringList HostileDisc::NotFiles()
{
    return {QStringLiteral("DANGLING"), QStringLiteral("PASSWD"), QStringLiteral("OUTDIR"), QStringLiteral("SECRET"),
            QStringLiteral("LOOP"),     QStringLiteral("SELF"),   QStringLiteral("FIFO"),   QStringLiteral("SOCK"),
            QStringLiteral("FORGED")};
}
